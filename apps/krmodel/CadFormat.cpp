#include "apps/krmodel/CadFormat.h"

#include <exception>
#include <new>
#include <utility>

#include "fileformat/cad/STEPAndIGESFile.h"

namespace krmodel::cad {

namespace {

/// A document without shapes empties the list, any other failure leaves it as it is: so what lies in it
/// beforehand tells them apart.
struct MeshList {
    MeshList() : meshes(1, nullptr) {}
    MeshList(const MeshList&) = delete;
    MeshList& operator=(const MeshList&) = delete;
    ~MeshList()
    {
        for (Mesh* const mesh : meshes)
            delete mesh;
    }

    void MoveTo(Model& model)
    {
        model.meshes.reserve(meshes.size());
        for (Mesh*& mesh : meshes)
            model.meshes.emplace_back(std::exchange(mesh, nullptr));
    }

    std::vector<Mesh*> meshes;
};

std::optional<Refusal> Load(const char* formatName, const QString& fileName, const ReadOptions& options,
                            Model& model)
{
    MeshList list;
    const bool isLoaded = STEPAndIGESFile::LoadFile(fileName, list.meshes, options.deflection, options.angle,
                                                    options.prefixesFileName);
    if (!isLoaded && list.meshes.empty())
        return Refusal{
            ExitCode::Empty,
            QStringLiteral("holds no solid, shell or surface to make facets of; a compound's loose "
                           "faces do not count")};
    if (!isLoaded)
        return NotReadableAs(formatName);
    list.MoveTo(model);
    model.unit = {QStringLiteral("millimeter"), 1};
    return std::nullopt;
}

/// What OpenCASCADE throws is no standard exception. What is one tells that the library that holds it cannot
/// be loaded.
std::optional<Refusal> Guarded(const char* formatName, const QString& fileName, const ReadOptions& options,
                               Model& model)
{
    try {
        return Load(formatName, fileName, options, model);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        return Refusal{ExitCode::NotReadable, QString::fromUtf8(exception.what())};
    } catch (...) {
        return Refusal{ExitCode::NotReadable,
                       QStringLiteral("not readable as %1, no facets could be made of its surfaces")
                           .arg(QLatin1String(formatName))};
    }
}

} // namespace

std::optional<Refusal> LoadStep(const QString& fileName, const ReadOptions& options, Model& model)
{
    return Guarded("STEP", fileName, options, model);
}

std::optional<Refusal> LoadIges(const QString& fileName, const ReadOptions& options, Model& model)
{
    return Guarded("IGES", fileName, options, model);
}

} // namespace krmodel::cad
