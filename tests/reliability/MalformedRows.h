#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <QByteArray>
#include <QString>

class Mesh;

// Tables of damaged files with what exactly comes of each.

namespace test {

/// A file with one thing wrong.
struct MalformedRow {
    const char* fault; ///< what is wrong, in words that no other row of the format has
    QByteArray bytes;
    std::string result; ///< what comes of it, written as the format's test writes it
};

using MalformedRows = std::vector<MalformedRow>;

constexpr char kRefused[] = "refused";
constexpr char kOutOfRange[] = "throws std::out_of_range";

/// Puts each row's file under the name @p fileName and expects that @p read, which gets its path, gives the
/// row's result and leaves no descriptor of the file open.
/// @param others  what lies beside the file, by its name
void ExpectResults(const MalformedRows& rows, const char* fileName, std::string (*read)(const QString& path),
                   const std::map<std::string, QByteArray>& others = {});

/// Expects that the tables have so many rows, no fault twice.
void ExpectRowCount(const std::vector<MalformedRows>& tables, std::size_t count);

/// The bytes with every @p before, of which there is one at least, as @p after.
QByteArray Changed(QByteArray bytes, const QByteArray& before, const QByteArray& after);
/// The bytes with @p after in the place of as many bytes from @p offset on.
QByteArray Overwritten(QByteArray bytes, int offset, const QByteArray& after);
/// ASCII text in UTF-16, low byte first, without a mark.
QByteArray Utf16(const QByteArray& ascii);

/// "x y z, x y z | i j k": the vertices, then the faces; with texture coordinates or faces these follow in
/// the same way. Numbers have up to seven digits. Expects counts that agree with the lists.
std::string TextOf(const Mesh& mesh);

} // namespace test
