#include "core/utility/Utility.h"

#include "core/common/DecimalText_p.h"
#include "core/common/FileName_p.h"

#include <QByteArray>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QLocale>
#include <QSaveFile>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace {

// Qt's strings end near 2^30 characters, and one string may be nearly all of a document.
constexpr int kMaxJsonBytes = 1'000'000'000;

// From here on rounding to decimal places changes no double: half a unit of this place is less than half the
// distance between the smallest two.
constexpr int kMaxDecimals = 324;

bool IsAscii(char character)
{
    return static_cast<unsigned char>(character) < 0x80;
}

std::string_view WithoutBlanks(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    const std::size_t end = text.find_last_not_of(kBlanks) + 1; // 0 when there is nothing else
    return text.substr(begin, std::max(begin, end) - begin);
}

QString FileName(const QString& path)
{
    const QString portable = QDir::fromNativeSeparators(path);
    return portable.mid(portable.lastIndexOf(QLatin1Char('/')) + 1);
}

// Sockets have names and permissions as files have, but are never opened.
bool IsSocket(const QString& path)
{
    std::error_code error;
    return std::filesystem::is_socket(QFile::encodeName(path).toStdString(), error);
}

// Takes no more than the limit and one byte from a file, whatever size it claims: a device claims 0.
bool ReadUpToLimit(QFile& file, QByteArray& bytes)
{
    constexpr int kBlock = 1 << 20;
    bytes.reserve(static_cast<int>(std::clamp<qint64>(file.size(), 0, kMaxJsonBytes)) + kBlock);
    qint64 count = 1;
    while (count > 0 && bytes.size() <= kMaxJsonBytes) {
        const int size = bytes.size(), wanted = std::min(kBlock, kMaxJsonBytes + 1 - size);
        bytes.resize(size + wanted);
        count = std::max<qint64>(file.read(bytes.data() + size, wanted), 0);
        bytes.resize(size + static_cast<int>(count));
    }
    return file.error() == QFileDevice::NoError;
}

Utility::JsonFileError ReadJsonBytes(const QString& path, QByteArray& bytes)
{
    QFile file(path);
    if (!Utility::TestFileReadable(path) || !file.open(QIODevice::ReadOnly))
        return Utility::JsonFileUnreadable;
    if (file.size() > kMaxJsonBytes)
        return Utility::JsonFileTooLarge;
    if (!ReadUpToLimit(file, bytes))
        return Utility::JsonFileUnreadable;
    return bytes.size() > kMaxJsonBytes ? Utility::JsonFileTooLarge : Utility::JsonNoError;
}

Utility::JsonFileError ParseJsonObject(const QByteArray& bytes, QJsonObject& object)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (document.isNull())
        return Utility::JsonSyntaxError;
    if (!document.isObject())
        return Utility::JsonNotAnObject;
    object = document.object();
    return Utility::JsonNoError;
}

bool WriteWhole(QFileDevice& file, const QByteArray& bytes)
{
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

double Utility::ConvertBufferToDouble(const char* text)
{
    if (!text)
        return 0.0;
    const std::string_view whole(text);
    // Among the characters beyond ASCII are blanks too, and Qt knows which.
    if (!std::all_of(whole.begin(), whole.end(), IsAscii))
        return QString::fromUtf8(text).toDouble();
    const std::string_view number = WithoutBlanks(whole);
    double value = 0.0;
    kr::ParseDecimal(number.data(), number.data() + number.size(), value);
    return value;
}

double Utility::ConvertStringToDoubleValue(const QString& text)
{
    return text.toDouble();
}

int Utility::ConvertStringToIntValue(const QString& text)
{
    return text.toInt();
}

void Utility::SplitString(std::vector<QString>& out, const QString& text, const QString& separator)
{
    const QString whole = text; // either argument may live in `out`
    const QString boundary = separator;
    out.clear();
    int begin = 0;
    int end = boundary.isEmpty() ? -1 : whole.indexOf(boundary);
    while (end >= 0) {
        out.push_back(whole.mid(begin, end - begin));
        begin = end + boundary.size();
        end = whole.indexOf(boundary, begin);
    }
    out.push_back(whole.mid(begin));
}

QString Utility::GetFilePath(const QString& path)
{
    const QString portable = QDir::fromNativeSeparators(path);
    return portable.left(portable.lastIndexOf(QLatin1Char('/')) + 1);
}

QString Utility::GetFileNameNoExtension(const QString& path)
{
    const QString name = FileName(path);
    return name.left(name.lastIndexOf(QLatin1Char('.'))); // without a dot left(-1), the whole name
}

QString Utility::GetFileNameNoComplexExtension(const QString& path)
{
    const QString name = FileName(path);
    return name.left(name.indexOf(QLatin1Char('.')));
}

bool Utility::TestFileReadable(const QString& path)
{
    const QFileInfo info(path);
    if (!kr::CanNameAFile(path) || !info.exists() || info.isDir())
        return false;
    return info.isFile() ? QFile(path).open(QIODevice::ReadOnly) : info.isReadable() && !IsSocket(path);
}

// The plain toString() of Qt's dates follows the system's locale, down to its digits.
std::string Utility::FormatDateString(const std::string& pattern)
{
    return QLocale::c().toString(QDate::currentDate(), QString::fromStdString(pattern)).toStdString();
}

std::string Utility::FormatTimeString(const std::string& pattern)
{
    return QLocale::c().toString(QTime::currentTime(), QString::fromStdString(pattern)).toStdString();
}

bool Utility::LoadJsonFile(QJsonObject& out, const QString& path, int& error)
{
    QByteArray bytes;
    if (LoadJsonBytes(bytes, path, error))
        error = ParseJsonObject(bytes, out);
    return error == JsonNoError;
}

bool Utility::LoadJsonBytes(QByteArray& out, const QString& path, int& error)
{
    QByteArray bytes;
    error = ReadJsonBytes(path, bytes);
    if (error != JsonNoError)
        return false;
    out.swap(bytes);
    return true;
}

bool Utility::SaveJsonFile(const QJsonObject& object, const QString& path, QJsonDocument::JsonFormat format)
{
    if (!kr::CanNameAFile(path))
        return false;
    QByteArray bytes;
    GetJsonBuffer(object, bytes, format);
    // A new file must not take the place of a device.
    const QFileInfo target(path);
    if (target.exists() && !target.isFile()) {
        QFile device(path);
        return WriteWhole(device, bytes);
    }
    QSaveFile file(path);
    return WriteWhole(file, bytes) && file.commit();
}

void Utility::GetJsonBuffer(const QJsonObject& object, QByteArray& out, QJsonDocument::JsonFormat format)
{
    out = QJsonDocument(object).toJson(format);
}

void Utility::AddDoubleValueToJsonObj(QJsonObject& object, const std::string& key, double value, int decimals)
{
    const QString name = QString::fromStdString(key);
    if (!std::isfinite(value)) {
        object.insert(name, QJsonValue::Null);
        return;
    }
    // By way of the text: multiplying by a power of ten would round once before the rounding.
    const double rounded = QString::number(value, 'f', std::clamp(decimals, 0, kMaxDecimals)).toDouble();
    object.insert(name, rounded == 0.0 ? 0.0 : rounded);
}

QUuid Utility::CreateNewUUIDFromNameSpace(const QString& name, const QUuid& nameSpace)
{
    return QUuid::createUuidV5(nameSpace, name);
}
