#include "fileformat/cad/CadDocument_p.h"

#include <string>

#include <Interface_Static.hxx>
#include <TCollection_ExtendedString.hxx>
#include <UnitsMethods.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include "fileformat/cad/ExternalFiles_p.h"

namespace kr::cad {

namespace {

std::mutex& TurnMutex()
{
    // Never destroyed: a thread may still read while the process ends.
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

TCollection_ExtendedString ExtendedString(const QString& text)
{
    static_assert(sizeof(Standard_ExtCharacter) == sizeof(QChar), "both are units of UTF-16");
    TCollection_ExtendedString result(text.size(), Standard_ExtCharacter());
    for (int i = 0; i < text.size(); ++i)
        result.SetValue(i + 1, text[i].unicode());
    return result;
}

// OpenCASCADE's unit of length, which its readers turn a file's unit into, is a setting of the process. It is
// the millimetre while this lives.
class MillimetresMeanwhile {
public:
    MillimetresMeanwhile()
        : m_setting(Interface_Static::CVal(kSetting)), m_millimetres(UnitsMethods::GetCasCadeLengthUnit())
    {
        Interface_Static::SetCVal(kSetting, "MM");
    }
    ~MillimetresMeanwhile()
    {
        Interface_Static::SetCVal(kSetting, m_setting.c_str());
        UnitsMethods::SetCasCadeLengthUnit(m_millimetres);
    }
    MillimetresMeanwhile(const MillimetresMeanwhile&) = delete;
    MillimetresMeanwhile& operator=(const MillimetresMeanwhile&) = delete;

private:
    static constexpr const char* kSetting = "xstep.cascade.unit";
    std::string m_setting;
    double m_millimetres; // readers set this one from the other
};

} // namespace

CadDocument::CadDocument(const QString& fileName)
    : m_turn(TurnMutex()), m_application(XCAFApp_Application::GetApplication())
{
    m_stepReader.SetNameMode(true);
    // The document is never saved, so that no format goes by this name.
    m_application->NewDocument(ExtendedString(fileName), m_document);
}

CadDocument::~CadDocument()
{
    if (!m_turn.owns_lock())
        m_turn.lock();
    m_application->Close(m_document);
}

bool CadDocument::Read(Format format, const QString& fileName)
{
    const MillimetresMeanwhile millimetres;
    const QByteArray path = fileName.toUtf8();
    return format == Format::Step ? ReadStep(path.constData()) : ReadIges(path.constData());
}

bool CadDocument::ReadStep(const char* path)
{
    return m_stepReader.ReadFile(path) == IFSelect_RetDone &&
           CanFollowExternalFiles(m_stepReader.Reader().WS()) && m_stepReader.Transfer(m_document);
}

bool CadDocument::ReadIges(const char* path)
{
    return m_igesReader.ReadFile(path) == IFSelect_RetDone && m_igesReader.Transfer(m_document);
}

TDF_LabelSequence CadDocument::FreeShapes() const
{
    TDF_LabelSequence labels;
    XCAFDoc_DocumentTool::ShapeTool(m_document->Main())->GetFreeShapes(labels);
    return labels;
}

} // namespace kr::cad
