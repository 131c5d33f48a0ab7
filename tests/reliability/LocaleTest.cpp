#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <iterator>
#include <locale>
#include <map>
#include <thread>

#include <QLocale>
#include <QStringList>

#include "tests/common/Directory.h"
#include "tests/common/MadeLocales.h"
#include "tests/reliability/Formats.h"
#include "tests/reliability/StoppedClock.h"

// Commas in numbers, an i whose capital is no I, digits that are none of ours: nothing in a file depends on
// where the host thinks it is.

namespace {

using namespace test;

constexpr const char* kNames[] = {"de_DE.UTF-8", "tr_TR.UTF-8", "fa_IR.UTF-8"};

/// Back to C in the end.
class Locales {
public:
    Locales() = default;
    ~Locales() { Set("C"); }
    Locales(const Locales&) = delete;
    Locales& operator=(const Locales&) = delete;

    /// For the C library, the C++ library and Qt.
    static void Set(const char* name)
    {
        EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
        std::locale::global(std::locale(name));
        QLocale::setDefault(QLocale(QString::fromLatin1(name).left(5)));
    }

private:
    MadeLocales m_locales{{std::begin(kNames), std::end(kNames)}};
};

const Locales& OurLocales()
{
    static const Locales kLocales;
    return kLocales;
}

class LocaleOf : public testing::TestWithParam<Reader> {
protected:
    const Locales& m_locales = OurLocales();
};
class LocaleOfWriter : public testing::TestWithParam<Writer> {
protected:
    const Locales& m_locales = OurLocales();
};

INSTANTIATE_TEST_SUITE_P(EveryReader, LocaleOf, testing::ValuesIn(AllReaders()), NameOfFormat());
INSTANTIATE_TEST_SUITE_P(EveryWriter, LocaleOfWriter, testing::ValuesIn(Writers()), NameOfFormat());

/// Calls with each locale in turn, and then while another thread goes through the C library's.
template<typename Call>
void InEveryLocale(const Call& call)
{
    for (const char* const name : kNames) {
        SCOPED_TRACE(name);
        Locales::Set(name);
        call();
    }
    Locales::Set("C");
    std::atomic<bool> isOver{false};
    std::atomic<int> changes{0};
    std::thread changing([&] {
        for (std::size_t i = 0; !isOver; ++i, ++changes)
            std::setlocale(LC_NUMERIC, kNames[i % 3]);
        std::setlocale(LC_NUMERIC, "C");
    });
    while (changes < 100)
        call();
    isOver = true;
    changing.join();
}

} // namespace

TEST(Locales, DifferInWhatMatters)
{
    static_cast<void>(OurLocales());
    const std::map<std::string, char> separators = {{"de_DE.UTF-8", ','}, {"tr_TR.UTF-8", ','}};
    for (const auto& [name, separator] : separators) {
        Locales::Set(name.c_str());
        EXPECT_EQ(std::localeconv()->decimal_point[0], separator) << name;
    }
    Locales::Set("fa_IR.UTF-8");
    EXPECT_EQ(QLocale().toString(7), QString(QChar(0x06f7)));
    Locales::Set("C");
}

TEST_P(LocaleOf, ReadsTheSameInAnyAndWhileItChanges)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    GetParam().writeSample(path);
    const QByteArray expected = GetParam().read(path);
    ASSERT_FALSE(expected.isEmpty());
    InEveryLocale([&] { EXPECT_EQ(GetParam().read(path), expected); });
}

TEST_P(LocaleOfWriter, WritesTheSameBytesInAnyAndWhileItChanges)
{
    const StoppedClock clock;
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    ASSERT_TRUE(GetParam().write(path));
    const QByteArray expected = Directory::Read(path);
    ASSERT_FALSE(expected.isEmpty());
    InEveryLocale([&] {
        EXPECT_TRUE(GetParam().write(path));
        EXPECT_EQ(Directory::Read(path), expected);
    });
}
