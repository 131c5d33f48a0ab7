#include <gtest/gtest.h>

#include <QLocale>
#include <QtGlobal>

// Every test here runs where digits, decimal point and names are others than in C.
int main(int argc, char** argv)
{
    qputenv("LC_ALL", "ar_EG.UTF-8");
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

TEST(UtilityTests, RunUnderAForeignLocale)
{
    EXPECT_NE(QLocale::system().zeroDigit(), QLatin1Char('0'));
    EXPECT_EQ(QLocale().decimalPoint(), QLatin1Char(','));
}
