#include "apps/krmodel/MaterialTable.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QTemporaryDir>

#include "tests/common/PictureFiles.h"
#include "tests/common/RunProgram.h"

namespace {

using krmodel::MaterialTable;
using krmodel::Model;

MeshTextureGroup Group(const std::string& name, int firstFaceIndex, int faceCount)
{
    MeshTextureGroup group;
    group.material.name = name;
    group.firstFaceIndex = firstFaceIndex;
    group.faceCount = faceCount;
    return group;
}

Model ModelOf(size_t faceCount)
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->GetFacesVecPtr()->resize(faceCount);
    return model;
}

QStringList Lines(const QString& text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

TEST(MaterialTable, IsEmptyWithoutGroups)
{
    EXPECT_EQ(MaterialTable(Model(), QStringLiteral("a.obj")), QString());
}

TEST(MaterialTable, ShowsColoursPicturesAndWhatIsMissing)
{
    const QTemporaryDir directory;
    const QString there = directory.filePath(QStringLiteral("wood.png"));
    ASSERT_TRUE(test::PlainPicture(4, 2, 0xff804000).save(there));
    Model model = ModelOf(1234);
    model.groups = {Group("wood", 0, 1200), Group("ghost", -1, 0), Group("wood", 1200, 34)};
    MeshMaterialInfo& wood = model.groups[0].material;
    wood.setDiffuse({0.5F, 0.25F, 0.1F});
    wood.diffuseTexture.fileName = there;
    ASSERT_TRUE(wood.diffuseTexture.load(QImage(there), false, false, false, 0));
    wood.bumpTexture.fileName = directory.filePath(QStringLiteral("maps/grain.png"));
    EXPECT_EQ(MaterialTable(model, directory.filePath(QStringLiteral("table.obj"))),
              QStringLiteral("  material  groups  first face  faces  diffuse       texture\n"
                             "  wood           2           0  1,234  0.5 0.25 0.1  wood.png 4 x 2, bump "
                             "maps/grain.png missing\n"
                             "  ghost          1        none      0  not found\n"));
}

TEST(MaterialTable, SaysWhenFacesCannotBeTold)
{
    Model model = ModelOf(10);
    model.groups = {Group("wood", 0, 11)};
    EXPECT_EQ(Lines(MaterialTable(model, QStringLiteral("a.obj")))[1],
              QStringLiteral("  wood           1     unknown     11  not found"));
}

TEST(MaterialTable, TellsAFileThatIsNoPictureFromAMissingOne)
{
    const QTemporaryDir directory;
    const QString fileName = directory.filePath(QStringLiteral("wood.png"));
    QFile file(fileName);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    Model model;
    model.groups = {Group("wood", 0, 1)};
    model.groups[0].material.diffuseTexture.fileName = fileName;
    const QString table = MaterialTable(model, directory.filePath(QStringLiteral("table.obj")));
    EXPECT_TRUE(table.contains(QStringLiteral("wood.png not a picture\n"))) << table.toStdString();
}

TEST(MaterialTable, ShowsTheFirstOfThousandsAndCountsTheOthers)
{
    Model model;
    for (int i = 0; i < 5000; ++i)
        model.groups.push_back(Group("material" + std::to_string(i), i, 1));
    const QStringList lines = Lines(MaterialTable(model, QStringLiteral("a.obj")));
    ASSERT_EQ(lines.size(), 1 + 30 + 1);
    EXPECT_TRUE(lines[30].startsWith(QStringLiteral("  material29 ")));
    EXPECT_EQ(lines[31], QStringLiteral("  and 4,970 more"));
}

TEST(MaterialTable, KeepsNamesFromSteeringTheTerminal)
{
    Model model;
    model.groups = {Group("a\x1b[2J\x07\xe2\x80\xaezz", 0, 1), Group("K\xc3\xa4se", 1, 1)};
    const QStringList lines = Lines(MaterialTable(model, QStringLiteral("a.obj")));
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("  a?[2J??zz "))) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].startsWith(QString::fromUtf8("  K\xc3\xa4se "))) << lines[2].toStdString();
}

TEST(MaterialTable, LeavesOutTheMiddleOfALongName)
{
    Model model;
    model.groups = {Group("begin" + std::string(100'000, 'x') + "end", 0, 1)};
    const QString line = Lines(MaterialTable(model, QStringLiteral("a.obj")))[1];
    EXPECT_TRUE(line.startsWith(QStringLiteral("  beginx")));
    EXPECT_TRUE(line.contains(QStringLiteral("xend ")));
    EXPECT_LT(line.size(), 100);
}

} // namespace
