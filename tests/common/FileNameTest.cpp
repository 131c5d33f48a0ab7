#include <map>
#include <vector>

#include <QJsonObject>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "core/mesh/MeshMaterialInfo.h"
#include "core/mesh/MeshTextureGroup.h"
#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/Utility.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/cad/STEPAndIGESFile.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/texture/TextureFile.h"
#include "tests/common/Directory.h"
#include "tests/common/MessageCounter.h"

// Names that no file can have, given to everything that reads or writes a file.

namespace {

using test::Directory;
using test::MessageCounter;

/// Returns whether anything was read or written.
struct Operation {
    const char* name;
    bool (*run)(const QString& fileName);
};

constexpr Operation kReaders[] = {
    {"STL",
     [](const QString& fileName) {
         Mesh mesh(0.03f);
         return STLFile::LoadFile(fileName, mesh, false, 80, false);
     }},
    {"OBJ",
     [](const QString& fileName) {
         Mesh mesh(0.03f);
         std::vector<MeshTextureGroup> groups;
         return OBJFile::LoadFile(fileName, mesh, groups, false, 0);
     }},
    {"MTL",
     [](const QString& fileName) {
         std::vector<MeshMaterialInfo> materials;
         return OBJFile::LoadMTLFile(fileName, materials, 0);
     }},
    // Where nothing is found there is nothing wrong: it returns true then.
    {"3MF",
     [](const QString& fileName) {
         Model3MF package;
         return !package.LoadFile(fileName) || !package.GetObjects().empty();
     }},
    {"CAD",
     [](const QString& fileName) {
         std::vector<Mesh*> meshes;
         return STEPAndIGESFile::LoadFile(fileName, meshes, 0.1, 20);
     }},
    {"relief",
     [](const QString& fileName) {
         Mesh mesh(0.03f);
         return ImageFile::LoadFile(fileName, mesh, 10, 10, 0, false, 1, 2, 100);
     }},
    {"texture",
     [](const QString& fileName) {
         TextureFile texture;
         return texture.LoadFile(fileName);
     }},
    {"path",
     [](const QString& fileName) {
         DXFPathFile::Paths paths;
         std::map<int, QString> names;
         return DXFPathFile::ReadDXFPathFile(paths, names, fileName);
     }},
    {"picture of a material",
     [](const QString& fileName) {
         MeshTextureInfo texture;
         return texture.load({QStringLiteral("map_Kd"), fileName}, QStringLiteral("/"), 0);
     }},
    {"JSON",
     [](const QString& fileName) {
         QJsonObject object;
         int error = 0;
         return Utility::LoadJsonFile(object, fileName, error);
     }},
};

constexpr Operation kWriters[] = {
    {"STL text", [](const QString& fileName) { return STLFile::SaveFile(fileName, Mesh(0.03f), true, 80); }},
    {"STL binary",
     [](const QString& fileName) { return STLFile::SaveFile(fileName, Mesh(0.03f), false, 80); }},
    {"OBJ", [](const QString& fileName) { return OBJFile::SaveFile(fileName, Mesh(0.03f), false, false); }},
    {"3MF",
     [](const QString& fileName) {
         return Model3MF().SaveFile(fileName, {}, {0, 0, 0});
     }},
    {"texture", [](const QString& fileName) { return TextureFile().SaveFile(fileName); }},
    {"path", [](const QString& fileName) { return DXFPathFile::WriteDXFPathFile({}, {}, fileName); }},
    {"JSON",
     [](const QString& fileName) { return Utility::SaveJsonFile({}, fileName, QJsonDocument::Compact); }},
};

QStringList NamesWithANul(const QString& file)
{
    const QChar nul = QChar::Null;
    return {QString(nul), file + nul, file + nul + QStringLiteral(".step"), nul + file};
}

} // namespace

TEST(FileName, WithANulIsThatOfNoFileToRead)
{
    const Directory directory;
    const QString kept = directory.Write("0 0 0 0", QStringLiteral("kept.step"));
    for (const Operation& reader : kReaders) {
        SCOPED_TRACE(reader.name);
        const MessageCounter messages;
        for (const QString& name : NamesWithANul(kept))
            EXPECT_FALSE(reader.run(name));
        EXPECT_EQ(messages.Count(), 0);
    }
}

TEST(FileName, WithANulLetsNoWriterTouchTheFileOfTheNameBeforeIt)
{
    for (const Operation& writer : kWriters) {
        SCOPED_TRACE(writer.name);
        const Directory directory;
        const QString kept = directory.Write("kept");
        const MessageCounter messages;
        for (const QString& name : NamesWithANul(kept))
            EXPECT_FALSE(writer.run(name));
        EXPECT_EQ(messages.Count(), 0);
        EXPECT_EQ(Directory::Read(kept), "kept");
    }
}

TEST(FileName, OfNoFileIsRefusedInSilence)
{
    const Directory directory;
    const QString kept = directory.Write("kept", QStringLiteral("kept.step"));
    const QStringList names = {QString(),
                               QStringLiteral(""),
                               QStringLiteral("/"),
                               directory.Path(QString()),
                               directory.Path(QStringLiteral("none/file.step")),
                               kept + QStringLiteral("/file.step")};
    const MessageCounter messages;
    for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        for (const Operation& reader : kReaders)
            EXPECT_FALSE(reader.run(name)) << reader.name;
        for (const Operation& writer : kWriters)
            EXPECT_FALSE(writer.run(name)) << writer.name;
    }
    EXPECT_EQ(messages.Count(), 0);
    EXPECT_EQ(Directory::Read(kept), "kept");
}
