#include <BRepPrimAPI_MakeBox.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopLoc_Location.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <sys/stat.h>

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/cad/STEPAndIGESFile.h"
#include "tests/cad/SilentOpenCascade.h"
#include "tests/common/Directory.h"

// STEP files whose parts lie in other STEP files.

namespace {

class ExternalParts : public testing::Test {
protected:
    /// Writes an assembly of two boxes into one file, each box into one of its own.
    ExternalParts()
    {
        const test::SilentOpenCascade silence;
        const Handle(XCAFApp_Application) application = XCAFApp_Application::GetApplication();
        Handle(TDocStd_Document) document;
        application->NewDocument("external", document);
        AddAssembly(XCAFDoc_DocumentTool::ShapeTool(document->Main()));
        STEPCAFControl_Writer writer;
        EXPECT_TRUE(writer.Transfer(document, STEPControl_AsIs, "part-"));
        EXPECT_EQ(writer.Write(Path("main.stp").toUtf8().constData()), IFSelect_RetDone);
        application->Close(document);
    }
    ~ExternalParts() override
    {
        for (Mesh* const mesh : m_meshes)
            delete mesh;
    }

    QString Path(const char* name) const { return m_directory.Path(QString::fromLatin1(name)); }

    /// Writes the file again, with other files named for its parts.
    void Rename(const char* from, const char* to, const char* newName = "main.stp") const
    {
        const QByteArray text = test::Directory::Read(Path("main.stp")).replace(from, to);
        EXPECT_TRUE(text.contains(to));
        m_directory.Write(text, QString::fromLatin1(newName));
    }

    /// Whether a load is refused and leaves the caller's list alone; it ends in any case.
    bool IsRefused(const char* name)
    {
        Mesh other(0.03f);
        std::vector<Mesh*> meshes = {&other};
        return !STEPAndIGESFile::LoadFile(Path(name), meshes, 1, 20, false) &&
               meshes == std::vector<Mesh*>{&other};
    }

    std::vector<Mesh*> m_meshes;

    test::Directory m_directory;

private:
    static void AddAssembly(const Handle(XCAFDoc_ShapeTool) & tool)
    {
        const TDF_Label assembly = tool->NewShape();
        TDataStd_Name::Set(assembly, "Assembly");
        for (const double side : {1.0, 2.0}) {
            const TDF_Label part = tool->AddShape(BRepPrimAPI_MakeBox(side, side, side).Shape(), false);
            TDataStd_Name::Set(part, side > 1 ? "Large" : "Small");
            tool->AddComponent(assembly, part, TopLoc_Location());
        }
        tool->UpdateAssemblies();
    }
};

TEST_F(ExternalParts, AreReadFromTheFolderOfTheFile)
{
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    ASSERT_EQ(m_meshes.size(), 2u);
    EXPECT_DOUBLE_EQ(m_meshes[0]->GetVolume(), 1);
    EXPECT_DOUBLE_EQ(m_meshes[1]->GetVolume(), 8);
    EXPECT_EQ(m_meshes[0]->GetObjectName(), QStringLiteral("Small"));
}

TEST_F(ExternalParts, AreReadWhereverTheProgramRuns)
{
    const QString relative = QDir::current().relativeFilePath(Path("main.stp"));
    ASSERT_TRUE(QDir::isRelativePath(relative));
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(relative, m_meshes, 1, 20, false));
    EXPECT_EQ(m_meshes.size(), 2u);
}

TEST_F(ExternalParts, OneFileMayBeNamedTwice)
{
    Rename("part-Small.stp", "part-Large.stp");
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    EXPECT_DOUBLE_EQ(m_meshes.at(0)->GetVolume(), 8);
}

TEST_F(ExternalParts, AreFollowedThroughFilesThatNameOthers)
{
    Rename("part-Large.stp", "main.stp", "outer.stp");
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("outer.stp"), m_meshes, 1, 20, false));
    EXPECT_GE(m_meshes.size(), 2u);
}

TEST_F(ExternalParts, ThatNameEachOtherAreRefused)
{
    Rename("part-Small.stp", "other.stp");
    Rename("other.stp", "main.stp", "other.stp");
    EXPECT_TRUE(IsRefused("main.stp"));
    EXPECT_TRUE(IsRefused("other.stp"));
}

TEST_F(ExternalParts, ThatNameEachOtherByLongerAndLongerPathsAreRefused)
{
    ASSERT_TRUE(QDir(Path(".")).mkdir(QStringLiteral("x")));
    Rename("part-Small.stp", "x/../other.stp");
    Rename("other.stp", "main.stp", "other.stp");
    EXPECT_TRUE(IsRefused("main.stp"));
}

TEST_F(ExternalParts, ThatArePipesAreRefused)
{
    ASSERT_EQ(mkfifo(Path("pipe.stp").toUtf8().constData(), 0600), 0);
    Rename("part-Small.stp", "pipe.stp");
    EXPECT_TRUE(IsRefused("main.stp"));
    EXPECT_TRUE(IsRefused("pipe.stp"));
}

TEST_F(ExternalParts, ThatAreNoSTEPFilesAreLeftOut)
{
    m_directory.Write("text", QStringLiteral("part-Small.stp"));
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    ASSERT_EQ(m_meshes.size(), 1u);
    EXPECT_DOUBLE_EQ(m_meshes[0]->GetVolume(), 8);
}

TEST_F(ExternalParts, ThatAreMissingAreLeftOut)
{
    ASSERT_TRUE(QFile::remove(Path("part-Small.stp")));
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    ASSERT_EQ(m_meshes.size(), 1u);
    EXPECT_DOUBLE_EQ(m_meshes[0]->GetVolume(), 8);
}

TEST_F(ExternalParts, WithoutANameAreLeftOut)
{
    Rename("'part-Small.stp'", "''");
    ASSERT_TRUE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    ASSERT_EQ(m_meshes.size(), 1u);
    EXPECT_DOUBLE_EQ(m_meshes[0]->GetVolume(), 8);
}

TEST_F(ExternalParts, ThatAreAllMissingGiveNothing)
{
    const QStringList parts = QDir(Path(".")).entryList({QStringLiteral("part-*")});
    ASSERT_EQ(parts.size(), 2);
    for (const QString& part : parts)
        ASSERT_TRUE(QFile::remove(QDir(Path(".")).filePath(part)));
    EXPECT_FALSE(STEPAndIGESFile::LoadFile(Path("main.stp"), m_meshes, 1, 20, false));
    EXPECT_TRUE(m_meshes.empty());
}

} // namespace
