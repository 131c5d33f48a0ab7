#include <stdexcept>
#include <string>

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include "fileformat/cad/ModuleLoader_p.h"
#include "tests/common/Directory.h"
#include "tests/common/RunProgram.h"

// The library that holds OpenCASCADE is loaded when it is needed.

namespace {

using namespace test;
using kr::cad::LoadModule;

const QString kFileFormatLibrary = QStringLiteral(KRCORE_FILEFORMAT_LIBRARY);
const std::string kCadLibrary = KRCORE_CAD_LIBRARY_FILE;

std::string MessageOf(const std::vector<std::string>& libraries)
{
    try {
        LoadModule(libraries);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "loaded";
}

TEST(ModuleLoader, FindsTheImportInItsLibrary)
{
    EXPECT_NE(LoadModule({kCadLibrary}), nullptr);
}

TEST(ModuleLoader, GoesOnToTheNextNameWhenALibraryIsMissing)
{
    EXPECT_EQ(LoadModule({"/nowhere/library.so", kCadLibrary}), LoadModule({kCadLibrary}));
}

TEST(ModuleLoader, TellsWhatIsMissingAndWhy)
{
    const std::string message = MessageOf({"/nowhere/library.so"});
    EXPECT_EQ(message.find("STEP and IGES files cannot be read without " KRCORE_CAD_LIBRARY), 0u) << message;
    EXPECT_NE(message.find("/nowhere/library.so"), std::string::npos) << message;
}

TEST(ModuleLoader, RefusesALibraryWithoutTheImport)
{
    const std::string message = MessageOf({kFileFormatLibrary.toStdString()});
    EXPECT_NE(message.find(kr::cad::kModuleEntry), std::string::npos) << message;
}

class LoadedProgram : public testing::Test {
protected:
    /// Runs the program with the library of the formats where the other one may lie beside it, or not.
    ProgramRun RunWithCopy(bool withCadLibrary) const
    {
        EXPECT_TRUE(Copy(kFileFormatLibrary));
        EXPECT_TRUE(!withCadLibrary || Copy(QString::fromStdString(kCadLibrary)));
        const QString model = m_directory.Write("no STEP file", QStringLiteral("model.step"));
        return RunProgram(QStringLiteral(KRCORE_CAD_LOAD_PROGRAM), {model}, {},
                          {QStringLiteral("LD_LIBRARY_PATH=") + m_directory.Path(QString())});
    }

private:
    bool Copy(const QString& library) const
    {
        return QFile::copy(library, m_directory.Path(QFileInfo(library).fileName()));
    }

    Directory m_directory;
};

TEST_F(LoadedProgram, FindsTheLibraryBesideTheOneOfTheFormats)
{
    const ProgramRun run = RunWithCopy(true);
    EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
    EXPECT_EQ(run.output, QStringLiteral("not read, 1 mesh as before\n"));
}

TEST_F(LoadedProgram, TellsThatTheLibraryIsMissing)
{
    const ProgramRun run = RunWithCopy(false);
    EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
    EXPECT_TRUE(run.output.startsWith(QStringLiteral("no mesh: STEP and IGES files cannot be read without ")))
        << run.output.toStdString();
    EXPECT_TRUE(run.errors.isEmpty()) << run.errors.toStdString();
}

} // namespace
