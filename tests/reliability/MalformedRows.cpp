#include "tests/reliability/MalformedRows.h"

#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "tests/common/Directory.h"
#include "tests/common/OpenFiles.h"

namespace test {

namespace {

std::ostream& operator<<(std::ostream& stream, const Vector3D<float>& point)
{
    return stream << point.x << ' ' << point.y << ' ' << point.z;
}

std::ostream& operator<<(std::ostream& stream, const Vector2D<float>& point)
{
    return stream << point.x << ' ' << point.y;
}

std::ostream& operator<<(std::ostream& stream, const TriangleFace& face)
{
    return stream << face.v[0] << ' ' << face.v[1] << ' ' << face.v[2];
}

template<typename Value>
void Add(std::ostream& stream, const std::vector<Value>& values)
{
    const char* separator = "";
    for (const Value& value : values) {
        stream << separator << value;
        separator = ", ";
    }
}

} // namespace

void ExpectResults(const MalformedRows& rows, const char* fileName, std::string (*read)(const QString& path),
                   const std::map<std::string, QByteArray>& others)
{
    const Directory directory;
    for (const auto& [name, bytes] : others)
        directory.Write(bytes, QString::fromStdString(name));
    for (const MalformedRow& row : rows) {
        SCOPED_TRACE(row.fault);
        const QString path = directory.Write(row.bytes, QString::fromLatin1(fileName));
        EXPECT_EQ(read(path), row.result);
        EXPECT_FALSE(IsOpen(path));
    }
}

void ExpectRowCount(const std::vector<MalformedRows>& tables, std::size_t count)
{
    std::set<std::string> faults;
    std::size_t rowCount = 0;
    for (const MalformedRows& table : tables) {
        rowCount += table.size();
        for (const MalformedRow& row : table)
            EXPECT_TRUE(faults.insert(row.fault).second) << row.fault;
    }
    EXPECT_EQ(rowCount, count);
}

QByteArray Changed(QByteArray bytes, const QByteArray& before, const QByteArray& after)
{
    EXPECT_TRUE(bytes.contains(before)) << before.constData();
    return bytes.replace(before, after);
}

QByteArray Overwritten(QByteArray bytes, int offset, const QByteArray& after)
{
    EXPECT_LE(offset + after.size(), bytes.size());
    return bytes.replace(offset, after.size(), after);
}

QByteArray Utf16(const QByteArray& ascii)
{
    QByteArray text;
    for (const char letter : ascii)
        text.append(letter).append('\0');
    return text;
}

std::string TextOf(const Mesh& mesh)
{
    EXPECT_EQ(mesh.GetVertexNum(), static_cast<int>(mesh.GetVerticesVecPtr()->size()));
    EXPECT_EQ(mesh.GetFaceNum(), static_cast<int>(mesh.GetFacesVecPtr()->size()));
    std::ostringstream text;
    text.precision(7);
    Add(text, *mesh.GetVerticesVecPtr());
    text << " | ";
    Add(text, *mesh.GetFacesVecPtr());
    if (mesh.GetTexCoordVecPtr()->empty() && mesh.GetTextureFacesVecPtr()->empty())
        return text.str();
    text << " | ";
    Add(text, *mesh.GetTexCoordVecPtr());
    text << " | ";
    Add(text, *mesh.GetTextureFacesVecPtr());
    return text.str();
}

} // namespace test
