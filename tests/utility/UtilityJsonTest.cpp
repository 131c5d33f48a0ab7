#include "core/utility/Utility.h"

#include "tests/utility/FileTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <charconv>
#include <cmath>
#include <csignal>
#include <cstring>
#include <limits>
#include <random>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

class UtilityJson : public testing::Test {
protected:
    QString Path(const char* name = "document.texture") const
    {
        return m_directory.filePath(QString::fromUtf8(name));
    }
    QStringList Entries() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot | QDir::System);
    }

    /// Loads a file of these bytes; the code, -1 when result and code disagree.
    int CodeFor(const QByteArray& bytes)
    {
        WriteFile(Path(), bytes);
        return CodeOf(Path());
    }
    int CodeOf(const QString& path)
    {
        m_loaded = Sample();
        int error = 99;
        const bool isLoaded = Utility::LoadJsonFile(m_loaded, path, error);
        EXPECT_EQ(isLoaded, error == Utility::JsonNoError);
        EXPECT_TRUE(isLoaded || m_loaded == Sample()) << "a failure must leave the object";
        return error;
    }
    static QJsonObject Sample()
    {
        return {{QStringLiteral("name"), QString::fromUtf8("\xE6\x9C\xA8")},
                {QStringLiteral("size"), 2.5},
                {QStringLiteral("list"), QJsonArray{1, true, QJsonValue::Null}}};
    }

    QJsonObject m_loaded;
    QTemporaryDir m_directory;
};

/// A full disk for files beyond the given size, as long as it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limited{bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_previous{};
    void (*m_handler)(int) = nullptr;
};

unsigned ModeOf(const QString& path)
{
    struct stat status = {};
    EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
    return status.st_mode & 0777u;
}

QJsonObject LargeObject()
{
    return {{QStringLiteral("image_data"), QString(1 << 20, QLatin1Char('A'))}};
}

double Stored(double value, int decimals)
{
    QJsonObject object;
    Utility::AddDoubleValueToJsonObj(object, "key", value, decimals);
    EXPECT_TRUE(object.value(QStringLiteral("key")).isDouble());
    return object.value(QStringLiteral("key")).toDouble();
}

std::string StoredText(double value, int decimals)
{
    QJsonObject object;
    Utility::AddDoubleValueToJsonObj(object, "k", value, decimals);
    QByteArray text;
    Utility::GetJsonBuffer(object, text, QJsonDocument::Compact);
    return text.mid(5, text.size() - 6).toStdString(); // {"k":...}
}

// Rounds by hand in the decimal digits of the exact value.
double RoundedInDigits(double value, int decimals)
{
    char digits[1500];
    const char* end =
        std::to_chars(digits, digits + sizeof digits, std::fabs(value), std::chars_format::fixed, 1074).ptr;
    std::string text = '0' + std::string(digits, static_cast<std::size_t>(end - digits));
    const std::size_t kept = text.find('.') + 1 + static_cast<std::size_t>(decimals);
    const bool roundsUp = text.at(kept) >= '5';
    text.resize(kept);
    for (std::size_t i = kept; roundsUp && i-- > 0;) {
        if (text[i] == '.')
            continue;
        text[i] = text[i] == '9' ? '0' : static_cast<char>(text[i] + 1);
        if (text[i] != '0')
            break;
    }
    return std::copysign(QString::fromStdString(text).toDouble(), value);
}

} // namespace

TEST_F(UtilityJson, LoadsTheTopObject)
{
    EXPECT_EQ(CodeFor("{\"a\": 1, \"b\": {\"c\": \"x\"}}"), Utility::JsonNoError);
    EXPECT_EQ(m_loaded,
              (QJsonObject{{QStringLiteral("a"), 1},
                           {QStringLiteral("b"), QJsonObject{{QStringLiteral("c"), QStringLiteral("x")}}}}));
}

TEST_F(UtilityJson, LoadsBytesAsTheyAre)
{
    QByteArray bytes("old");
    int error = 99;
    for (const int size : {0, 1, 5, (1 << 20) - 1, 1 << 20, (1 << 20) + 1, 3'000'000}) {
        QByteArray expected(size, '\0');
        for (int i = 0; i < size; ++i)
            expected[i] = static_cast<char>(i % 251);
        WriteFile(Path(), expected);
        EXPECT_TRUE(Utility::LoadJsonBytes(bytes, Path(), error));
        EXPECT_EQ(error, Utility::JsonNoError);
        EXPECT_TRUE(bytes == expected) << size;
    }
}

TEST_F(UtilityJson, LeavesTheBytesOnFailure)
{
    QByteArray bytes("old");
    int error = 99;
    EXPECT_FALSE(Utility::LoadJsonBytes(bytes, Path("missing"), error));
    EXPECT_EQ(error, Utility::JsonFileUnreadable);
    WriteFile(Path(), "{}");
    ASSERT_TRUE(QFile::resize(Path(), 1'000'000'001));
    EXPECT_FALSE(Utility::LoadJsonBytes(bytes, Path(), error));
    EXPECT_EQ(error, Utility::JsonFileTooLarge);
    EXPECT_EQ(bytes, "old");
}

TEST_F(UtilityJson, LoadsAnEmptyObject)
{
    EXPECT_EQ(CodeFor("{}"), Utility::JsonNoError);
    EXPECT_TRUE(m_loaded.isEmpty());
}

TEST_F(UtilityJson, PassesOverAByteOrderMark)
{
    EXPECT_EQ(CodeFor("\xEF\xBB\xBF{\"a\": 1}"), Utility::JsonNoError);
    EXPECT_EQ(m_loaded.value(QStringLiteral("a")).toInt(), 1);
}

TEST_F(UtilityJson, LetsTheLastOfEqualKeysCount)
{
    EXPECT_EQ(CodeFor("{\"a\": 1, \"a\": 2}"), Utility::JsonNoError);
    EXPECT_EQ(m_loaded.value(QStringLiteral("a")).toInt(), 2);
}

TEST_F(UtilityJson, ReportsAFileThatCannotBeRead)
{
    const test::MessageCounter messages;
    EXPECT_EQ(CodeOf(Path("missing")), Utility::JsonFileUnreadable);
    EXPECT_EQ(CodeOf(m_directory.path()), Utility::JsonFileUnreadable);
    EXPECT_EQ(CodeOf(QString()), Utility::JsonFileUnreadable);
    EXPECT_EQ(CodeOf(QString(QChar(0))), Utility::JsonFileUnreadable);
    EXPECT_EQ(CodeOf(QStringLiteral("/proc/self/mem")), Utility::JsonFileUnreadable);
}

TEST_F(UtilityJson, ReportsAFileThatIsTooLarge)
{
    // Sparse: it takes no room on the disk, and nothing of it is read.
    WriteFile(Path(), "{}");
    ASSERT_TRUE(QFile::resize(Path(), qint64(1) << 40));
    EXPECT_EQ(CodeOf(Path()), Utility::JsonFileTooLarge);
    ASSERT_TRUE(QFile::resize(Path(), 1'000'000'001));
    EXPECT_EQ(CodeOf(Path()), Utility::JsonFileTooLarge);
}

TEST_F(UtilityJson, ReportsTextThatIsNoJson)
{
    for (const char* text : {"", " ", "{", "{}x", "{\"a\": }", "{'a': 1}", "{\"a\": 1,}", "solid part",
                             "\"text\"", "{\"a\": \"\xFF\"}", "[1, 2"})
        EXPECT_EQ(CodeFor(text), Utility::JsonSyntaxError) << text;
    EXPECT_EQ(CodeFor(QByteArray("{}\0", 3)), Utility::JsonSyntaxError);
}

TEST_F(UtilityJson, ReportsADocumentWithoutATopObject)
{
    EXPECT_EQ(CodeFor("[]"), Utility::JsonNotAnObject);
    EXPECT_EQ(CodeFor("[{\"a\": 1}]"), Utility::JsonNotAnObject);
}

TEST_F(UtilityJson, EndsOnDeepNesting)
{
    QByteArray text;
    for (int i = 0; i < 100000; ++i)
        text += "{\"a\":";
    EXPECT_EQ(CodeFor(text), Utility::JsonSyntaxError);
    EXPECT_EQ(CodeFor(QByteArray(1000000, '[')), Utility::JsonSyntaxError);
}

TEST_F(UtilityJson, ReportsTruncationAtEveryByte)
{
    const QByteArray whole = QJsonDocument(Sample()).toJson(QJsonDocument::Compact);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_EQ(CodeFor(whole.left(size)), Utility::JsonSyntaxError) << size;
    EXPECT_EQ(CodeFor(whole), Utility::JsonNoError);
}

TEST_F(UtilityJson, SavesTheBufferByteForByte)
{
    for (const auto format : {QJsonDocument::Indented, QJsonDocument::Compact}) {
        ASSERT_TRUE(Utility::SaveJsonFile(Sample(), Path(), format));
        QByteArray buffer("old");
        Utility::GetJsonBuffer(Sample(), buffer, format);
        EXPECT_EQ(ReadFile(Path()), buffer.toStdString());
    }
}

TEST_F(UtilityJson, WritesBothLayouts)
{
    QByteArray buffer;
    Utility::GetJsonBuffer({{QStringLiteral("a"), 1.5}}, buffer, QJsonDocument::Compact);
    EXPECT_EQ(buffer, "{\"a\":1.5}");
    Utility::GetJsonBuffer({{QStringLiteral("a"), 1.5}}, buffer, QJsonDocument::Indented);
    EXPECT_EQ(buffer, "{\n    \"a\": 1.5\n}\n");
}

TEST_F(UtilityJson, LoadsWhatItSaved)
{
    const QString path = Path("\xE6\xA8\xA1 \xF0\x9F\xA7\x8A.texture");
    ASSERT_TRUE(Utility::SaveJsonFile(Sample(), path, QJsonDocument::Indented));
    QJsonObject loaded;
    int error = 99;
    EXPECT_TRUE(Utility::LoadJsonFile(loaded, path, error));
    EXPECT_EQ(loaded, Sample());
}

TEST_F(UtilityJson, ReplacesAnExistingFileAndKeepsItsPermissions)
{
    WriteFile(Path(), QByteArray(100000, 'x'));
    const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(Path(), permissions));
    ASSERT_TRUE(Utility::SaveJsonFile(Sample(), Path(), QJsonDocument::Compact));
    EXPECT_EQ(CodeOf(Path()), Utility::JsonNoError);
    EXPECT_EQ(m_loaded, Sample());
    EXPECT_EQ(ModeOf(Path()), 0640u);
}

TEST_F(UtilityJson, GivesANewFileTheUsualPermissions)
{
    const mode_t previous = umask(027);
    const bool isSaved = Utility::SaveJsonFile(Sample(), Path(), QJsonDocument::Compact);
    umask(previous);
    ASSERT_TRUE(isSaved);
    EXPECT_EQ(ModeOf(Path()), 0640u);
}

TEST_F(UtilityJson, CreatesTheTargetOfADanglingLink)
{
    ASSERT_TRUE(QFile::link(Path("target"), Path("link")));
    ASSERT_TRUE(Utility::SaveJsonFile(Sample(), Path("link"), QJsonDocument::Compact));
    EXPECT_TRUE(QFileInfo(Path("link")).isSymLink());
    EXPECT_EQ(CodeOf(Path("target")), Utility::JsonNoError);
}

TEST_F(UtilityJson, WritesThroughASymbolicLink)
{
    WriteFile(Path("target"), "old");
    ASSERT_TRUE(QFile::link(Path("target"), Path("link")));
    ASSERT_TRUE(Utility::SaveJsonFile(Sample(), Path("link"), QJsonDocument::Compact));
    EXPECT_TRUE(QFileInfo(Path("link")).isSymLink());
    EXPECT_EQ(CodeOf(Path("target")), Utility::JsonNoError);
    EXPECT_EQ(m_loaded, Sample());
}

TEST_F(UtilityJson, KeepsTheOldFileWhenTheDiskIsFull)
{
    WriteFile(Path(), "old");
    bool isSaved = true;
    {
        const FileSizeLimit fullDisk(4096);
        isSaved = Utility::SaveJsonFile(LargeObject(), Path(), QJsonDocument::Compact);
    }
    EXPECT_FALSE(isSaved);
    EXPECT_EQ(ReadFile(Path()), "old");
    EXPECT_EQ(Entries().size(), 1) << "nothing may be left beside it";
}

TEST_F(UtilityJson, FailsOnAFullDeviceAndLeavesTheDevice)
{
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), QStringLiteral("/dev/full"), QJsonDocument::Compact));
    EXPECT_FALSE(Utility::SaveJsonFile(LargeObject(), QStringLiteral("/dev/full"), QJsonDocument::Compact));
    const QFileInfo device(QStringLiteral("/dev/full"));
    EXPECT_TRUE(device.exists() && !device.isFile());
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), Path("link")));
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), Path("link"), QJsonDocument::Compact));
}

TEST_F(UtilityJson, WritesIntoAPipe)
{
    const QByteArray name = QFile::encodeName(Path());
    ASSERT_EQ(mkfifo(name.constData(), 0600), 0);
    QFile reader;
    ASSERT_TRUE(reader.open(::open(name.constData(), O_RDWR | O_NONBLOCK), QIODevice::ReadOnly,
                            QFile::AutoCloseHandle));
    ASSERT_TRUE(Utility::SaveJsonFile(Sample(), Path(), QJsonDocument::Compact));
    QByteArray buffer;
    Utility::GetJsonBuffer(Sample(), buffer, QJsonDocument::Compact);
    EXPECT_EQ(reader.read(buffer.size()), buffer);
    EXPECT_FALSE(QFileInfo(Path()).isFile());
}

TEST_F(UtilityJson, FailsWhereNoFileCanBe)
{
    const test::MessageCounter messages;
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), m_directory.path(), QJsonDocument::Compact));
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), Path("missing/document"), QJsonDocument::Compact));
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), QString(), QJsonDocument::Compact));
    EXPECT_FALSE(Utility::SaveJsonFile(Sample(), Path() + QChar(0), QJsonDocument::Compact));
    EXPECT_TRUE(Entries().isEmpty());
}

TEST(UtilityJsonDouble, RoundsToTheGivenPlaces)
{
    EXPECT_EQ(StoredText(123.456789, 4), "123.4568");
    EXPECT_EQ(StoredText(-123.456789, 2), "-123.46");
    EXPECT_EQ(StoredText(0.1, 4), "0.1");
    EXPECT_EQ(StoredText(45, 2), "45");
    EXPECT_EQ(StoredText(0.1 + 0.2, 2), "0.3");
    EXPECT_EQ(StoredText(1e-5, 4), "0");
}

TEST(UtilityJsonDouble, RoundsTiesAwayFromZero)
{
    EXPECT_EQ(Stored(0.125, 2), 0.13);
    EXPECT_EQ(Stored(-0.125, 2), -0.13);
    EXPECT_EQ(Stored(0.375, 2), 0.38);
    EXPECT_EQ(Stored(2.5, 0), 3.0);
    EXPECT_EQ(Stored(0.5, 0), 1.0);
}

TEST(UtilityJsonDouble, RoundsTheExactValueNotItsShortText)
{
    EXPECT_EQ(Stored(1.005, 2), 1.0);
    EXPECT_EQ(Stored(2.345, 2), 2.35);
    EXPECT_EQ(Stored(1.115, 2), 1.11);
}

TEST(UtilityJsonDouble, StoresZeroWithoutSign)
{
    EXPECT_FALSE(std::signbit(Stored(-0.0, 4)));
    EXPECT_FALSE(std::signbit(Stored(-0.00001, 4)));
    EXPECT_EQ(StoredText(-0.00001, 4), "0");
}

TEST(UtilityJsonDouble, StoresWhatIsNotFiniteAsNull)
{
    for (const double value :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(StoredText(value, 2), "null");
}

TEST(UtilityJsonDouble, TakesAnyNumberOfPlaces)
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(Stored(1.75, -3), 2.0);
    EXPECT_EQ(Stored(1.75, std::numeric_limits<int>::min()), 2.0);
    EXPECT_EQ(Stored(kLargest, 4), kLargest);
    EXPECT_EQ(Stored(kLargest, std::numeric_limits<int>::max()), kLargest);
    EXPECT_EQ(Stored(kSmallest, std::numeric_limits<int>::max()), kSmallest);
    EXPECT_EQ(Stored(0.1, 1000), 0.1);
}

TEST(UtilityJsonDouble, ReplacesTheKeyAndKeepsTheOthers)
{
    QJsonObject object{{QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                          "e"),
                        1},
                       {QStringLiteral("other"), 2}};
    Utility::AddDoubleValueToJsonObj(object,
                                     "gr\xC3\xB6\xC3\x9F"
                                     "e",
                                     3.14159, 2);
    EXPECT_EQ(object, (QJsonObject{{QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                                      "e"),
                                    3.14},
                                   {QStringLiteral("other"), 2}}));
}

TEST(UtilityJsonDouble, RoundsRandomDoublesAsTheirDigitsSay)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> exponent(-8, 18);
    std::uniform_int_distribution<int> places(0, 12);
    for (int i = 0; i < 20000; ++i) {
        const double magnitude = std::pow(10.0, exponent(random));
        const double value = random() % 2 == 0 ? magnitude : -magnitude;
        const int decimals = places(random);
        EXPECT_EQ(Stored(value, decimals), RoundedInDigits(value, decimals)) << value << ' ' << decimals;
    }
}

TEST(UtilityJsonDouble, RoundsExactTiesAsTheirDigitsSay)
{
    std::mt19937_64 random(8);
    for (int i = 0; i < 20000; ++i) {
        const double value = (static_cast<double>(random() % 2000001) - 1000000.0) / 64.0;
        const int decimals = static_cast<int>(random() % 7);
        EXPECT_EQ(Stored(value, decimals), RoundedInDigits(value, decimals)) << value << ' ' << decimals;
    }
}
