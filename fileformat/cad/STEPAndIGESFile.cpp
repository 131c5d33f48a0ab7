#include "fileformat/cad/STEPAndIGESFile.h"

#include <memory>
#include <optional>
#include <utility>

#include <QDir>
#include <QFile>
#include <QString>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/cad/CadModule_p.h"
#include "fileformat/cad/IgesSections_p.h"
#include "fileformat/cad/ModuleLoader_p.h"
#include "fileformat/common/PlainFile_p.h"

namespace {

using kr::cad::Format;

struct Ending {
    const char* text;
    Format format;
};

constexpr Ending kEndings[] = {
    {".stp", Format::Step},
    {".step", Format::Step},
    {".igs", Format::Iges},
    {".iges", Format::Iges},
};

std::optional<Format> FormatOf(const QString& fileName)
{
    for (const Ending& ending : kEndings)
        if (fileName.endsWith(QLatin1String(ending.text), Qt::CaseInsensitive))
            return ending.format;
    return std::nullopt;
}

// OpenCASCADE would wait at a pipe for somebody to write into it.
bool IsWorthReading(const QString& fileName, Format format)
{
    QFile file(fileName);
    return kr::OpenForReading(file) && (format != Format::Iges || kr::cad::AreIgesSectionsWhole(file));
}

std::vector<Mesh*> HandOver(kr::cad::MeshList meshes)
{
    std::vector<Mesh*> handedOver;
    handedOver.reserve(meshes.size());
    for (std::unique_ptr<Mesh>& mesh : meshes)
        handedOver.push_back(mesh.release());
    return handedOver;
}

// OpenCASCADE looks for parts that a STEP file keeps in other files beside it only if it is told its
// directory.
QString AbsolutePath(const QString& fileName)
{
    return QDir::current().absoluteFilePath(fileName);
}

bool Load(const kr::cad::Request& request, std::vector<Mesh*>& meshes)
{
    std::optional<kr::cad::Import> import = kr::cad::Module()(request);
    if (!import)
        return false;
    meshes = HandOver(std::move(import->meshes));
    return import->shapeCount > 0;
}

} // namespace

bool STEPAndIGESFile::LoadFile(const QString& fileName, std::vector<Mesh*>& meshes, double deflection,
                               double angle, bool prefixFileName)
{
    const std::optional<Format> format = FormatOf(fileName);
    const QString baseName = Utility::GetFileNameNoComplexExtension(fileName);
    if (!format || baseName.isEmpty() || !IsWorthReading(fileName, *format))
        return false;
    try {
        return Load(
            {*format, AbsolutePath(fileName), prefixFileName ? baseName : QString(), deflection, angle},
            meshes);
    } catch (...) {
        meshes.clear();
        throw;
    }
}

bool STEPAndIGESFile::LoadFile(const QString& fileName, std::vector<Mesh*>& meshes, double deflection,
                               double angle)
{
    return LoadFile(fileName, meshes, deflection, angle, true);
}
