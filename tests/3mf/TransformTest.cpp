#include <cmath>
#include <initializer_list>
#include <limits>

#include <gtest/gtest.h>

#include "fileformat/3mf/Model3MF.h"

namespace {

Matrix4<double> Read(const char* text)
{
    return Model3MF::ConvertFrom3MFMatStrToMat(QString::fromUtf8(text));
}

std::string Write(const Matrix4<double>& matrix)
{
    return Model3MF::ConvertFromMatTo3MFMatStr(matrix).toStdString();
}

std::string ReadAndWrite(const char* text)
{
    return Write(Read(text));
}

void ExpectElements(const Matrix4<double>& matrix, std::initializer_list<double> rows)
{
    int i = 0;
    for (const double expected : rows) {
        EXPECT_EQ(matrix.m[i], expected) << "element " << i;
        ++i;
    }
    EXPECT_EQ(i, 16);
}

constexpr std::initializer_list<double> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

} // namespace

TEST(Model3MFTransform, MakesColumnsOfRowsAndTheTranslationTheLastOne)
{
    ExpectElements(Read("1 2 3 4 5 6 7 8 9 10 11 12"), {1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12, 0, 0, 0, 1});
}

TEST(Model3MFTransform, ReadsAndWritesATranslation)
{
    const char* const text = "1 0 0 0 1 0 0 0 1 10 20 30";
    const Matrix4<double> matrix = Read(text);
    EXPECT_EQ(matrix.get(0, 3), 10);
    EXPECT_EQ(matrix.get(1, 3), 20);
    EXPECT_EQ(matrix.get(2, 3), 30);
    EXPECT_EQ(Write(matrix), text);
}

TEST(Model3MFTransform, IsTheIdentityWhenEmpty)
{
    ExpectElements(Read(""), kIdentity);
    ExpectElements(Model3MF::ConvertFrom3MFMatStrToMat(QString()), kIdentity);
    ExpectElements(Read("    "), kIdentity);
}

TEST(Model3MFTransform, LeavesMissingNumbersAsInTheIdentity)
{
    ExpectElements(Read("7"), {7, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    ExpectElements(Read("2 0 0 0 2 0 0 0 2 5"), {2, 0, 0, 5, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1});
}

TEST(Model3MFTransform, PassesOverTheThirteenthNumberAndAllBehindIt)
{
    ExpectElements(Read("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17"),
                   {1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12, 0, 0, 0, 1});
}

TEST(Model3MFTransform, PassesOverEmptyParts)
{
    EXPECT_EQ(ReadAndWrite("  1   2 3  4 5 6 7 8 9 10 11    12  "), "1 2 3 4 5 6 7 8 9 10 11 12");
}

TEST(Model3MFTransform, SeparatesAtBlanksAlone)
{
    // A tab or a line end leaves one part that is no number.
    EXPECT_EQ(ReadAndWrite("1\t2 3 4"), "0 3 4 0 1 0 0 0 1 0 0 0");
    EXPECT_EQ(ReadAndWrite("1\n2 3\n4 5"), "0 0 5 0 1 0 0 0 1 0 0 0");
    EXPECT_EQ(ReadAndWrite("1,2,3"), "0 0 0 0 1 0 0 0 1 0 0 0");
    EXPECT_EQ(ReadAndWrite("7\xC2\xA0 8"), "7 8 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFTransform, ReadsWhatIsNoNumberAsZero)
{
    EXPECT_EQ(ReadAndWrite("x 2 0x10 1e 5mm -- . 8 9"), "0 2 0 0 0 0 0 8 9 0 0 0");
}

TEST(Model3MFTransform, ReadsAllSpellingsOfNumbers)
{
    const Matrix4<double> matrix = Read("+1 -2.5e-3 .5 5. 1E3 007 -0 inf -inf nan 1e400 1e-400");
    EXPECT_EQ(matrix.get(0, 0), 1);
    EXPECT_EQ(matrix.get(1, 0), -0.0025);
    EXPECT_EQ(matrix.get(2, 0), 0.5);
    EXPECT_EQ(matrix.get(0, 1), 5);
    EXPECT_EQ(matrix.get(1, 1), 1000);
    EXPECT_EQ(matrix.get(2, 1), 7);
    EXPECT_TRUE(std::signbit(matrix.get(0, 2)));
    EXPECT_EQ(matrix.get(1, 2), std::numeric_limits<double>::infinity());
    EXPECT_EQ(matrix.get(2, 2), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(matrix.get(0, 3)));
    EXPECT_EQ(matrix.get(1, 3), std::numeric_limits<double>::infinity());
    EXPECT_EQ(matrix.get(2, 3), 0);
}

TEST(Model3MFTransform, ReadsDoublesToTheLastBit)
{
    EXPECT_EQ(Read("0.1").get(0, 0), 0.1);
    EXPECT_EQ(Read("123456789.123456789").get(0, 0), 123456789.123456789);
    EXPECT_EQ(Read("2.2250738585072011e-308").get(0, 0), 2.2250738585072011e-308);
}

TEST(Model3MFTransform, WritesSixSignificantDigits)
{
    Matrix4<double> matrix;
    matrix.set(0, 3, 123.4567);
    matrix.set(1, 3, 1234567.8);
    matrix.set(2, 3, 1e-5);
    EXPECT_EQ(Write(matrix), "1 0 0 0 1 0 0 0 1 123.457 1.23457e+06 1e-05");
}

TEST(Model3MFTransform, WritesColumnAfterColumnWithoutTheLastRow)
{
    Matrix4<double> matrix;
    for (int i = 0; i < 16; ++i)
        matrix.m[i] = i;
    EXPECT_EQ(Write(matrix), "0 4 8 1 5 9 2 6 10 3 7 11");
}

TEST(Model3MFTransform, WritesNegativeZeroAsZero)
{
    Matrix4<double> matrix;
    matrix.set(0, 3, -0.0);
    EXPECT_EQ(Write(matrix), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFTransform, HoldsTheLastRowWhateverTheText)
{
    for (const char* const text : {"", "1", "x y z", "9 9 9 9 9 9 9 9 9 9 9 9 9 9 9 9"}) {
        const Matrix4<double> matrix = Read(text);
        EXPECT_EQ(matrix.m[12], 0);
        EXPECT_EQ(matrix.m[13], 0);
        EXPECT_EQ(matrix.m[14], 0);
        EXPECT_EQ(matrix.m[15], 1);
    }
}
