#include "apps/krmodel/Verification.h"

#include <algorithm>
#include <cmath>

#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

/// Far more than arithmetic in another order makes, far less than a digit of any format is worth.
constexpr double kTolerance = 1e-6;
/// A placement has six digits, and its translation is a float.
constexpr double kPlacementTolerance = 1e-5;

using Point = Vector3D<float>;

double VolumeOfTetrahedron(const Point& apex, const Facet& facet)
{
    double edges[3][3];
    for (size_t i = 0; i < 3; ++i) {
        edges[i][0] = double(facet[i].x) - double(apex.x);
        edges[i][1] = double(facet[i].y) - double(apex.y);
        edges[i][2] = double(facet[i].z) - double(apex.z);
    }
    const auto& [a, b, c] = edges;
    return (a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
            a[2] * (b[0] * c[1] - b[1] * c[0])) /
           6;
}

bool IsFinite(const Facet& facet)
{
    return std::all_of(facet.begin(), facet.end(), [](const Point& corner) {
        return std::isfinite(corner.x) && std::isfinite(corner.y) && std::isfinite(corner.z);
    });
}

/// What is compared of a set of facets.
class Surface {
public:
    /// Volumes are measured from @p apex: near the facets, so that no digits are lost far from the origin.
    explicit Surface(const Point& apex) : m_apex(apex) {}

    void Add(const Facet& facet)
    {
        ++m_facets;
        // Nothing can be said of where such a facet lies.
        if (!IsFinite(facet))
            return;
        ++m_finiteFacets;
        const double volume = VolumeOfTetrahedron(m_apex, facet);
        m_volume += volume;
        m_volumeOfAll += std::abs(volume);
        for (const Point& corner : facet)
            Extend(corner);
    }
    void Add(const Mesh& mesh, const std::vector<Point>& vertices)
    {
        const std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
        for (int i = 0; i < mesh.GetFaceNum(); ++i) {
            const TriangleFace& face = faces.at(size_t(i));
            Add({vertices.at(size_t(face[0])), vertices.at(size_t(face[1])), vertices.at(size_t(face[2]))});
        }
    }

    /// Why @p read is not the same.
    std::optional<QString> FindDifference(const Surface& read) const
    {
        if (read.m_facets != m_facets)
            return QStringLiteral("it holds %1 facets instead of %2")
                .arg(CountText(read.m_facets), CountText(m_facets));
        if (read.m_finiteFacets != m_finiteFacets)
            return QStringLiteral("it holds %1 facets with finite corners instead of %2")
                .arg(CountText(read.m_finiteFacets), CountText(m_finiteFacets));
        for (size_t axis = 0; axis < 3; ++axis)
            if (!AreNear(m_minimum[axis], read.m_minimum[axis]) ||
                !AreNear(m_maximum[axis], read.m_maximum[axis]))
                return QStringLiteral("its bounds differ along %1").arg(QLatin1Char("xyz"[axis]));
        if (std::abs(read.m_volume - m_volume) > kTolerance * m_volumeOfAll)
            return QStringLiteral("its facets enclose another volume");
        return std::nullopt;
    }

private:
    static bool AreNear(float a, float b)
    {
        return std::abs(double(a) - double(b)) <=
               kTolerance * std::max(std::abs(double(a)), std::abs(double(b)));
    }
    void Extend(const Point& corner)
    {
        const bool isFirst = m_isEmpty;
        m_isEmpty = false;
        const float values[] = {corner.x, corner.y, corner.z};
        for (size_t axis = 0; axis < 3; ++axis) {
            m_minimum[axis] = isFirst ? values[axis] : std::min(m_minimum[axis], values[axis]);
            m_maximum[axis] = isFirst ? values[axis] : std::max(m_maximum[axis], values[axis]);
        }
    }

    Point m_apex;
    qint64 m_facets = 0;
    qint64 m_finiteFacets = 0;
    float m_minimum[3] = {};
    float m_maximum[3] = {};
    bool m_isEmpty = true;
    double m_volume = 0;
    double m_volumeOfAll = 0; ///< each facet's without its sign: what the sum was made from
};

/// A point near the mesh's facets.
Point ApexOf(const Mesh& mesh)
{
    return mesh.GetBoundingBox().minimum;
}

std::optional<QString> CannotBeRead()
{
    return QStringLiteral("it cannot be read");
}

/// @return false when the file cannot be read
bool AddFile(Surface& surface, const Format& format, const QString& fileName, Encoding encoding)
{
    if (format.visitFacets)
        return format.visitFacets(fileName, encoding, [&](const Facet& facet) { surface.Add(facet); });
    Model read;
    if (format.load(fileName, {}, read))
        return false;
    for (const auto& mesh : read.meshes)
        surface.Add(*mesh, *mesh->GetVerticesVecPtr());
    return true;
}

/// For a format that makes one of all objects.
std::optional<QString> CompareFacets(const Format& format, const QString& fileName, const Model& written,
                                     Encoding encoding)
{
    const Point apex = written.meshes.empty() ? Point() : ApexOf(*written.meshes.front());
    Surface expected(apex), found(apex);
    for (const auto& mesh : written.meshes)
        expected.Add(*mesh, RoundedVertices(*mesh, format.RoundingOf(encoding)));
    if (!AddFile(found, format, fileName, encoding))
        return CannotBeRead();
    return expected.FindDifference(found);
}

bool ArePlacedAlike(const Mesh& a, const Mesh& b)
{
    const Matrix4<double> first = a.GetTransformMatrix(), second = b.GetTransformMatrix();
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column) {
            const double x = first.get(row, column), y = second.get(row, column);
            const bool areBothNoNumbers = !std::isfinite(x) && !std::isfinite(y);
            if (!areBothNoNumbers &&
                !(std::abs(x - y) <= kPlacementTolerance * std::max(std::abs(x), std::abs(y))))
                return false;
        }
    return true;
}

std::optional<QString> CompareObject(const Mesh& written, const Mesh& read, Rounding rounding)
{
    const Point apex = ApexOf(written);
    Surface expected(apex), found(apex);
    expected.Add(written, RoundedVertices(written, rounding));
    found.Add(read, *read.GetVerticesVecPtr());
    if (auto difference = expected.FindDifference(found))
        return difference;
    if (!ArePlacedAlike(written, read))
        return QStringLiteral("an object lies in another place");
    return std::nullopt;
}

std::optional<QString> CompareObjects(const Format& format, const QString& fileName, const Model& written,
                                      Encoding encoding)
{
    Model read;
    if (format.load(fileName, {}, read))
        return CannotBeRead();
    if (read.meshes.size() != written.meshes.size())
        return QStringLiteral("it holds %1 objects instead of %2")
            .arg(CountText(qint64(read.meshes.size())), CountText(qint64(written.meshes.size())));
    for (size_t i = 0; i < written.meshes.size(); ++i)
        if (auto difference = CompareObject(*written.meshes[i], *read.meshes[i], format.RoundingOf(encoding)))
            return difference;
    if (read.metadata.size() != written.metadata.size())
        return QStringLiteral("metadata are missing");
    if (read.colours.texts.size() != written.colours.texts.size())
        return QStringLiteral("colours are missing");
    if (read.thumbnail.bytes.isEmpty() != written.thumbnail.bytes.isEmpty())
        return QStringLiteral("the thumbnail is missing");
    return std::nullopt;
}

} // namespace

std::optional<QString> FindDifference(const Format& format, const QString& fileName, const Model& written,
                                      Encoding encoding)
{
    const auto compare = format.contents == Contents::Objects ? CompareObjects : CompareFacets;
    return compare(format, fileName, written, encoding);
}

} // namespace krmodel
