#include "fileformat/cad/ImportFile_p.h"

#include <algorithm>
#include <utility>

#include "fileformat/cad/CadDocument_p.h"
#include "fileformat/cad/ShapeWalk_p.h"
#include "fileformat/cad/Silence_p.h"
#include "fileformat/cad/Tessellation_p.h"

namespace kr::cad {

namespace {

// One mesh for each shape of the document, null for those without triangles.
std::optional<MeshList> TessellatedShapes(const Request& request)
{
    CadDocument document(request.fileName);
    if (!document.Read(request.format, request.fileName))
        return std::nullopt;
    const std::vector<PlacedShape> shapes = CollectShapes(document.FreeShapes(), request.rootName);
    document.EndTurn();
    return TessellateShapes(shapes, {request.deflection, request.angle});
}

} // namespace

std::optional<Import> ImportFile(const Request& request)
{
    const Silence silence;
    std::optional<MeshList> meshes = TessellatedShapes(request);
    if (!meshes)
        return std::nullopt;
    Import import{meshes->size(), std::move(*meshes)};
    import.meshes.erase(std::remove(import.meshes.begin(), import.meshes.end(), nullptr),
                        import.meshes.end());
    FinishMeshes(import.meshes);
    return import;
}

} // namespace kr::cad
