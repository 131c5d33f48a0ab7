#include "apps/krmodel/Loss.h"

#include <algorithm>
#include <cstdio>

#include "apps/krmodel/LossList.h"

namespace krmodel {

namespace {

using Points = std::vector<Vector3D<float>>;

bool IsSame(const Vector3D<float>& a, const Vector3D<float>& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool HasCornerTwice(const TriangleFace& face, const Points& vertices)
{
    const auto corner = [&](int i) -> const Vector3D<float>& { return vertices.at(size_t(face[i])); };
    return IsSame(corner(0), corner(1)) || IsSame(corner(1), corner(2)) || IsSame(corner(2), corner(0));
}

qint64 CountCollapsing(const Mesh& mesh, Rounding rounding)
{
    const Points& exact = *mesh.GetVerticesVecPtr();
    const Points rounded = RoundedVertices(mesh, rounding);
    const std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    return std::count_if(faces.begin(), faces.end(), [&](const TriangleFace& face) {
        return HasCornerTwice(face, rounded) && !HasCornerTwice(face, exact);
    });
}

void AddCollapsing(LossList& losses, const Model& model, Rounding rounding)
{
    if (rounding == Rounding::None)
        return;
    qint64 count = 0;
    for (const auto& mesh : model.meshes)
        count += CountCollapsing(*mesh, rounding);
    losses.Add("collapsed-facets", count,
               rounding == Rounding::SixDecimals
                   ? "%1 {facet|facets}, whose corners fall together when rounded to six decimals"
                   : "%1 {facet|facets}, whose corners fall together when rounded to six digits");
}

qint64 CountTextureFaces(const Model& model)
{
    qint64 count = 0;
    for (const auto& mesh : model.meshes)
        count += qint64(mesh->GetTextureFacesVecPtr()->size());
    return count;
}

qint64 CountNames(const Model& model)
{
    return std::count_if(model.meshes.begin(), model.meshes.end(),
                         [](const auto& mesh) { return !mesh->GetObjectName().isEmpty(); });
}

/// What only a format of objects has.
void AddObjects(LossList& losses, const Model& model)
{
    const auto objectCount = qint64(model.meshes.size());
    losses.Add("object-names", CountNames(model), "the {name|names} of %1 {object|objects}");
    losses.Add("objects", objectCount > 1 ? objectCount : 0, "the division into %1 objects");
    losses.Add("metadata", model.metadata.size(), "%1 metadata {entry|entries}");
    losses.Add("colours", qint64(model.colours.texts.size()), "%1 {colour|colours}");
    losses.Add("thumbnail", model.thumbnail.bytes.isEmpty() ? 0 : 1, "the thumbnail");
}

} // namespace

std::vector<Loss> FindOutputLosses(const Model& model, const Format& from, const Format& to,
                                   Encoding encoding)
{
    LossList losses;
    if (!to.holdsTexture)
        losses.Add("texture-coordinates", CountTextureFaces(model),
                   "the texture coordinates of %1 {facet|facets}");
    losses.Add("materials", qint64(model.groups.size()),
               "the {material|materials} of %1 {group|groups} of facets");
    if (from.contents == Contents::Objects && to.contents == Contents::Facets)
        AddObjects(losses, model);
    AddCollapsing(losses, model, to.RoundingOf(encoding));
    return losses.Get();
}

void PrintLosses(const QString& fileName, const std::vector<Loss>& losses)
{
    for (const Loss& loss : losses)
        std::fprintf(stderr, "krmodel: %s: not carried: %s\n", qUtf8Printable(fileName),
                     qUtf8Printable(loss.text));
}

} // namespace krmodel
