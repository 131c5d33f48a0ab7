#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <vector>

#include <QByteArray>
#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fuzz/MeshFromBytes.h"
#include "fuzz/NamedMemoryFile.h"
#include "fuzz/Require.h"

// Model3MF::SaveFile of any objects: the package that comes out is read, and holds the meshes, their
// placements and the image that went in.

namespace {

using fuzz::Require;
using Object = Model3MF::ModelObjectInfo;

QString Text(FuzzedDataProvider& bytes)
{
    return QString::fromStdString(bytes.ConsumeRandomLengthString(20));
}

/// Whether a number comes back as it can be, written with six significant digits.
bool AreSame(float written, float read)
{
    const float expected = QByteArray::number(double(written), 'g', 6).toFloat();
    return expected == read || (std::isnan(expected) && std::isnan(read));
}

bool AreSame(const Vector3D<float>& written, const Vector3D<float>& read)
{
    return AreSame(written.x, read.x) && AreSame(written.y, read.y) && AreSame(written.z, read.z);
}

/// Those that the reader keeps: each index names a vertex.
std::vector<TriangleFace> ValidFaces(const Mesh& mesh)
{
    std::vector<TriangleFace> faces;
    const int count = int(mesh.GetVerticesVecPtr()->size());
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        if (face.v[0] >= 0 && face.v[1] >= 0 && face.v[2] >= 0 && face.v[0] < count && face.v[1] < count &&
            face.v[2] < count)
            faces.push_back(face);
    }
    return faces;
}

void RequireSame(const Mesh& written, const Mesh& read)
{
    const auto& expected = *written.GetVerticesVecPtr();
    const auto& vertices = *read.GetVerticesVecPtr();
    Require(vertices.size() == expected.size());
    for (std::size_t i = 0; i < vertices.size(); ++i)
        Require(AreSame(expected[i], vertices[i]));
    Require(*read.GetFacesVecPtr() == ValidFaces(written));
    fuzz::RequireWhole(read);
}

/// Where the object belongs, rounded as its text is.
Matrix4<double> PlacementOf(const Object& object, const Vector3D<float>& offset)
{
    Matrix4<double> placement = object.transform;
    Vector3D<float> translation = object.position;
    translation += object.offset;
    translation += offset;
    placement.set(0, 3, double(translation.x));
    placement.set(1, 3, double(translation.y));
    placement.set(2, 3, double(translation.z));
    for (double& value : placement.m)
        value = QByteArray::number(value, 'g', 6).toDouble();
    return placement;
}

void RequirePlacement(const Matrix4<double>& written, const Matrix4<double>& read)
{
    // What is not finite spreads in the product with the identity.
    const auto isFinite = [](double value) { return std::isfinite(value); };
    if (std::all_of(std::begin(written.m), std::end(written.m), isFinite))
        Require(std::equal(std::begin(written.m), std::end(written.m), std::begin(read.m)));
}

void FillSettings(FuzzedDataProvider& bytes, Model3MF& package)
{
    package.SetUnit(Text(bytes));
    Model3MF::BaseMaterial material;
    material.id = bytes.ConsumeIntegralInRange<int>(-1, 3);
    for (int left = bytes.ConsumeIntegralInRange<int>(0, 3); left > 0; --left)
        material.colors.push_back(Text(bytes));
    package.SetMaterial(material);
    for (int left = bytes.ConsumeIntegralInRange<int>(0, 3); left > 0; --left) {
        const QString name = Text(bytes);
        package.AddDescription(name, Text(bytes));
    }
    if (bytes.ConsumeBool())
        package.SetImage(QByteArray::fromStdString(bytes.ConsumeRandomLengthString(60)),
                         QStringLiteral("Metadata/thumbnail.png"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::NamedMemoryFile kFile(QStringLiteral("model.3mf"));
    FuzzedDataProvider bytes(data, size);
    Model3MF package;
    std::list<Mesh> meshes;
    std::vector<Object> objects(bytes.ConsumeIntegralInRange<std::size_t>(0, 3));
    fuzz::MeshFromBytes maker(bytes);
    for (Object& object : objects) {
        maker.Fill(meshes.emplace_back(0.03f), -1);
        object.mesh = &meshes.back();
        object.position = maker.Point();
        object.offset = maker.Point();
        object.transform.set(1, 2, double(maker.Coordinate()));
        object.name = Text(bytes);
    }
    FillSettings(bytes, package);
    kFile.Write(nullptr, 0);
    const Vector3D<float> offset = maker.Point();
    Require(package.SaveFile(kFile.Name(), objects, offset));
    Model3MF read;
    Require(read.LoadFile(kFile.Name()));
    const std::vector<Mesh*> found = read.GetObjects();
    Require(found.size() == objects.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        RequireSame(*objects[i].mesh, *found[i]);
        RequirePlacement(PlacementOf(objects[i], offset), found[i]->GetTransformMatrix());
        delete found[i];
    }
    QString imageName;
    Require(read.GetImage(imageName) == package.GetImage(imageName));
    return 0;
}
