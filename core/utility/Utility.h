#pragma once

#include "core/utility/KRCoreUtilityExport.h"

#include <QJsonDocument>
#include <QString>
#include <QUuid>

#include <string>
#include <vector>

class QByteArray;
class QJsonObject;

/// Numbers, file names, dates, JSON files and identifiers. Nothing here depends on the locale or keeps
/// anything between calls; every operation may run on several threads at once, and none prints or throws
/// anything of its own.
class KRCORE_UTILITY_EXPORT Utility {
public:
    /// Why LoadJsonFile() failed.
    enum JsonFileError : int {
        JsonNoError = 0,
        JsonFileUnreadable = 1, ///< no such file, a directory, no permission, or a read failed
        JsonFileTooLarge = 2,   ///< more than 1,000,000,000 bytes
        JsonSyntaxError = 3, ///< no JSON document in UTF-8, or one nested deeper than Qt reads (1024 levels)
        JsonNotAnObject = 4, ///< a JSON document whose top is an array
    };

    /// Reads a whole text as a decimal number: exactly, bit for bit, what QString::toDouble() gives for it.
    /// So blanks around the number are passed over, "inf" and "nan" are read, too large a number is infinite,
    /// and text that is no number, hexadecimal or followed by anything else reads as 0.
    /// @param text  NUL-terminated, UTF-8; null reads as 0
    static double ConvertBufferToDouble(const char* text);

    /// The same for a QString.
    static double ConvertStringToDoubleValue(const QString& text);

    /// Reads a whole text as a decimal integer, blanks around it passed over. Anything else reads as 0, also
    /// a fraction ("3.7"), an exponent and a number outside the 32-bit range.
    static int ConvertStringToIntValue(const QString& text);

    /// Splits @p text at every occurrence of @p separator, from left to right, into @p out, which is emptied
    /// first. Empty pieces are kept: n separators give n + 1 pieces, an empty text one empty piece. An empty
    /// separator splits nowhere. The arguments may be elements of @p out.
    static void SplitString(std::vector<QString>& out, const QString& text, const QString& separator);

    /// The directory part of a path with its trailing separator, so that a file name can be appended
    /// directly; empty when the path has none. The separator is '/', on Windows also '\'. Nothing is resolved
    /// or looked up.
    static QString GetFilePath(const QString& path);

    /// The file name without directory and without its last extension, which starts at the last dot: "a.tar"
    /// for "x.d/a.tar.gz", "a" for "a.". Empty for ".bashrc", all of which is an extension.
    static QString GetFileNameNoExtension(const QString& path);

    /// The file name without directory and without any of its extensions, the first of which starts at the
    /// first dot: "a" for "x.d/a.tar.gz". Empty for ".bashrc".
    static QString GetFileNameNoComplexExtension(const QString& path);

    /// Whether @p path is a file that can be opened for reading; false for a directory and a socket. A pipe
    /// or device is judged by its permissions: opening it could wait for the other end.
    [[nodiscard]] static bool TestFileReadable(const QString& path);

    /// @{
    /// The current local date or time in a pattern of QDate::toString() or QTime::toString(), with ASCII
    /// digits and English names in every locale. Letters that mean nothing in the one kind of pattern stand
    /// for themselves.
    /// @param pattern  UTF-8, as is the result
    static std::string FormatDateString(const std::string& pattern);
    static std::string FormatTimeString(const std::string& pattern);
    /// @}

    /// Reads the object that is the JSON document in the file @p path. A byte-order mark is passed over, and
    /// of equal keys the last counts.
    /// @param out    replaced on success, else left as it was
    /// @param error  a JsonFileError, JsonNoError on success
    [[nodiscard]] static bool LoadJsonFile(QJsonObject& out, const QString& path, int& error);

    /// Reads the bytes of the file @p path as LoadJsonFile() does before it parses them, with the same
    /// limits.
    /// @param out    replaced on success, else left as it was
    /// @param error  JsonNoError, JsonFileUnreadable or JsonFileTooLarge
    [[nodiscard]] static bool LoadJsonBytes(QByteArray& out, const QString& path, int& error);

    /// Writes @p object as a JSON document to the file @p path. The document is written aside, into the same
    /// directory, and takes the place of an existing file only when it is whole: after a failure that file is
    /// as it was. Its permissions are kept, a symbolic link is followed. Devices and pipes are written
    /// directly.
    /// @return true when every byte was written
    [[nodiscard]] static bool SaveJsonFile(const QJsonObject& object, const QString& path,
                                           QJsonDocument::JsonFormat format);

    /// Replaces @p out with @p object as a JSON document in UTF-8.
    static void GetJsonBuffer(const QJsonObject& object, QByteArray& out, QJsonDocument::JsonFormat format);

    /// Stores @p value in @p object under @p key, rounded to the given number of decimal places: the
    /// double nearest to the decimal number, so that its JSON text has no more places. The exact value is
    /// rounded, a tie away from zero (0.125 to 0.13; 1.005, which lies below its text, to 1). What rounds
    /// to zero is stored as 0 without a sign. JSON has no infinity and no NaN: these are stored as null,
    /// which readers take as 0.
    /// @param key       UTF-8
    /// @param decimals  below 0 counts as 0
    static void AddDoubleValueToJsonObj(QJsonObject& object, const std::string& key, double value,
                                        int decimals);

    /// The name-based UUID, version 5 (SHA-1), of the UTF-8 bytes of @p name in @p nameSpace: equal for equal
    /// arguments, on every machine.
    static QUuid CreateNewUUIDFromNameSpace(const QString& name, const QUuid& nameSpace);
};
