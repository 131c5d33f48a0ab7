#include "fileformat/cad/ExternalFiles_p.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include <OSD_Path.hxx>
#include <STEPConstruct_ExternRefs.hxx>
#include <STEPControl_Reader.hxx>
#include <TCollection_AsciiString.hxx>
#include <XSControl_WorkSession.hxx>

#include <QFileInfo>
#include <QString>

namespace kr::cad {

namespace {

using Names = std::vector<std::string>;

// No assembly is made of more levels or files than this.
constexpr int kMostLevels = 50;
constexpr std::size_t kMostFiles = 20'000;

Names NamesIn(const Handle(XSControl_WorkSession) & session)
{
    STEPConstruct_ExternRefs references(session);
    references.LoadExternRefs();
    Names names;
    for (int i = 1; i <= references.NbExternRefs(); ++i)
        if (const Standard_CString name = references.FileName(i); name && *name)
            names.emplace_back(name);
    return names;
}

Names NamesIn(const std::string& path)
{
    const Handle(XSControl_WorkSession) session = new XSControl_WorkSession;
    session->SelectNorm("STEP");
    STEPControl_Reader reader(session, false);
    return reader.ReadFile(path.c_str()) == IFSelect_RetDone ? NamesIn(session) : Names();
}

// Where OpenCASCADE looks for a file that another one names.
std::string PathOf(const std::string& name, const std::string& namingFile)
{
    OSD_Path directory(namingFile.c_str());
    directory.SetName("");
    directory.SetExtension("");
    TCollection_AsciiString directoryName;
    directory.SystemName(directoryName);
    const TCollection_AsciiString path = OSD_Path::AbsolutePath(directoryName, name.c_str());
    return path.IsEmpty() ? name : path.ToCString();
}

// Goes the way that OpenCASCADE will go: from name to name, each but once, depth first.
class Follower {
public:
    bool CanFollow(const Names& names, const std::string& namingFile, int level)
    {
        for (const std::string& name : names)
            if (m_followed.count(name) == 0 && !CanFollow(name, namingFile, level))
                return false;
        return true;
    }

private:
    bool CanFollow(const std::string& name, const std::string& namingFile, int level)
    {
        const std::string path = PathOf(name, namingFile);
        const QFileInfo file(QString::fromStdString(path));
        if (file.exists() && !CanFollow(file, path, level))
            return false;
        m_followed.insert(name); // only now: what leads back to this name is followed again
        return true;
    }

    bool CanFollow(const QFileInfo& file, const std::string& path, int level)
    {
        return file.isFile() && level < kMostLevels && ++m_fileCount <= kMostFiles &&
               CanFollow(NamesOf(file, path), path, level + 1);
    }

    // A file may go by many names; it is read once.
    const Names& NamesOf(const QFileInfo& file, const std::string& path)
    {
        const auto [entry, isNew] = m_names.try_emplace(file.canonicalFilePath());
        if (isNew)
            entry->second = NamesIn(path);
        return entry->second;
    }

    std::set<std::string> m_followed;
    std::map<QString, Names> m_names;
    std::size_t m_fileCount = 0;
};

} // namespace

bool CanFollowExternalFiles(const Handle(XSControl_WorkSession) & session)
{
    return Follower().CanFollow(NamesIn(session), session->LoadedFile(), 0);
}

} // namespace kr::cad
