#include "tests/reliability/MalformedSheet.h"

#include <sstream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/common/Directory.h"
#include "tests/reliability/MalformedRows.h"

namespace test {

namespace {

std::string TextOfPart(const Mesh& mesh)
{
    std::ostringstream text;
    const MeshBoundingBox box = mesh.GetBoundingBox();
    text << mesh.GetFaceNum() << " faces of " << mesh.GetVertexNum() << " vertices from " << box.minimum.x
         << ' ' << box.minimum.y << ' ' << box.minimum.z << " to " << box.maximum.x << ' ' << box.maximum.y
         << ' ' << box.maximum.z << ' ' << mesh.GetObjectName().toStdString();
    return text.str();
}

CadPartPointer Sheet()
{
    return Part(QStringLiteral("Sheet"), PieceOf(Box(10, 20, 30), CadPiece::Face));
}

} // namespace

QByteArray SheetAsSTEP()
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("sheet.step"));
    EXPECT_TRUE(WriteSTEP(path, {Sheet()}));
    return Directory::Read(path);
}

QByteArray SheetAsIGES()
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("sheet.iges"));
    EXPECT_TRUE(WriteIGES(path, {Sheet()}));
    return Directory::Read(path);
}

std::string ReadSheet(const QString& path)
{
    const CadMeshes meshes(path, kDeflection, kAngle, false);
    if (!meshes.IsLoaded()) {
        EXPECT_EQ(meshes.Count(), 0u);
        return kRefused;
    }
    EXPECT_EQ(OpenDocumentCount(), 0);
    std::string text;
    for (const Mesh* const mesh : meshes.All()) {
        EXPECT_TRUE(IsWhole(*mesh));
        text += TextOfPart(*mesh);
    }
    return text;
}

} // namespace test
