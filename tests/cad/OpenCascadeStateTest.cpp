#include <map>
#include <string>
#include <thread>

#include <IGESControl_Controller.hxx>
#include <IGESControl_Writer.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <STEPCAFControl_Controller.hxx>
#include <TColStd_HSequenceOfHAsciiString.hxx>
#include <UnitsMethods.hxx>
#include <XCAFApp_Application.hxx>

#include <gtest/gtest.h>

#include "fileformat/cad/ImportFile_p.h"
#include "fileformat/cad/Silence_p.h"
#include "tests/cad/CadFiles.h"
#include "tests/common/Directory.h"

// What an import leaves behind in OpenCASCADE, which other code of the process may use too: nothing.

namespace {

using namespace kr::cad;
using test::Directory;

Message_SequenceOfPrinters& Printers()
{
    return Message::DefaultMessenger()->ChangePrinters();
}

TEST(CadSilence, TakesThePrintersAwayAndGivesThemBack)
{
    ASSERT_GT(Printers().Length(), 0);
    const Handle(Message_Printer) first = Printers().First();
    const int count = Printers().Length();
    {
        const Silence silence;
        EXPECT_EQ(Printers().Length(), 0);
    }
    EXPECT_EQ(Printers().Length(), count);
    EXPECT_EQ(Printers().First(), first);
}

TEST(CadSilence, LastsAsLongAsAnyOfThem)
{
    const int count = Printers().Length();
    {
        const Silence outer;
        {
            const Silence inner;
        }
        EXPECT_EQ(Printers().Length(), 0);
    }
    EXPECT_EQ(Printers().Length(), count);
}

TEST(CadSilence, KeepsPrintersThatAreAddedMeanwhile)
{
    const int count = Printers().Length();
    const Handle(Message_Printer) added = new Message_PrinterOStream;
    {
        const Silence silence;
        Message::DefaultMessenger()->AddPrinter(added);
    }
    EXPECT_EQ(Printers().Length(), count + 1);
    EXPECT_EQ(Printers().Last(), added);
    EXPECT_TRUE(Message::DefaultMessenger()->RemovePrinter(added));
}

TEST(CadSilence, MayBeginAndEndOnSeveralThreadsAtOnce)
{
    const int count = Printers().Length();
    const auto beginAndEnd = [] {
        for (int i = 0; i < 1000; ++i)
            const Silence silence;
    };
    std::thread other(beginAndEnd);
    beginAndEnd();
    other.join();
    EXPECT_EQ(Printers().Length(), count);
}

/// OpenCASCADE's settings as they are now, by name.
std::map<std::string, std::string> Settings()
{
    std::map<std::string, std::string> settings;
    const Handle(TColStd_HSequenceOfHAsciiString) names = Interface_Static::Items();
    for (int i = 1; i <= names->Length(); ++i) {
        const Standard_CString name = names->Value(i)->ToCString();
        settings[name] = Interface_Static::CVal(name);
    }
    settings["unit of length"] = std::to_string(UnitsMethods::GetCasCadeLengthUnit());
    settings["documents"] = std::to_string(XCAFApp_Application::GetApplication()->NbDocuments());
    settings["printers"] = std::to_string(Printers().Length());
    return settings;
}

class OpenCascadeState : public testing::Test {
protected:
    OpenCascadeState()
    {
        // They define their settings when they are first used.
        STEPCAFControl_Controller::Init();
        IGESControl_Controller::Init();
        const Silence silence;
        const std::vector<test::CadPartPointer> parts = {
            test::Part(QStringLiteral("Part"), test::Box(10, 20, 30))};
        EXPECT_TRUE(test::WriteSTEP(m_directory.Path(QStringLiteral("box.step")), parts));
        EXPECT_TRUE(test::WriteIGES(m_directory.Path(QStringLiteral("box.iges")), parts));
        m_directory.Write("no CAD file", QStringLiteral("text.step"));
    }
    ~OpenCascadeState() override
    {
        Interface_Static::SetCVal("xstep.cascade.unit", "MM");
        UnitsMethods::SetCasCadeLengthUnit(1);
    }

    std::optional<Import> Read(Format format, const char* name, double deflection = 1) const
    {
        Request request;
        request.format = format;
        request.fileName = m_directory.Path(QString::fromLatin1(name));
        request.deflection = deflection;
        request.angle = 20;
        return ImportFile(request);
    }

private:
    Directory m_directory;
};

TEST_F(OpenCascadeState, IsAsBeforeAfterAnImport)
{
    const std::map<std::string, std::string> before = Settings();
    ASSERT_GT(before.size(), 50u);
    EXPECT_TRUE(Read(Format::Step, "box.step"));
    EXPECT_EQ(Settings(), before);
    EXPECT_TRUE(Read(Format::Iges, "box.iges"));
    EXPECT_EQ(Settings(), before);
}

TEST_F(OpenCascadeState, IsAsBeforeAfterAFileThatCannotBeRead)
{
    const std::map<std::string, std::string> before = Settings();
    EXPECT_FALSE(Read(Format::Step, "text.step"));
    EXPECT_FALSE(Read(Format::Iges, "text.step"));
    EXPECT_FALSE(Read(Format::Step, "missing.step"));
    EXPECT_EQ(Settings(), before);
}

TEST_F(OpenCascadeState, IsAsBeforeAfterAnException)
{
    const std::map<std::string, std::string> before = Settings();
    EXPECT_THROW(Read(Format::Step, "box.step", 0), Standard_Failure);
    EXPECT_THROW(Read(Format::Iges, "box.iges", 0), Standard_Failure);
    EXPECT_EQ(Settings(), before);
}

TEST_F(OpenCascadeState, KeepsAnotherUnitOfLengthWhichDoesNotCount)
{
    ASSERT_TRUE(Interface_Static::SetCVal("xstep.cascade.unit", "INCH"));
    UnitsMethods::SetCasCadeLengthUnit(1000);
    const std::map<std::string, std::string> before = Settings();
    for (const Format format : {Format::Step, Format::Iges}) {
        const std::optional<Import> import = Read(format, format == Format::Step ? "box.step" : "box.iges");
        ASSERT_TRUE(import && import->meshes.size() == 1);
        EXPECT_FLOAT_EQ(import->meshes[0]->GetBoundingBox().maximum.z, 30);
    }
    EXPECT_EQ(Settings(), before);
}

} // namespace
