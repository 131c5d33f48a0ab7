#include "apps/krmodel/Scene.h"

#include <algorithm>
#include <iterator>

#include <Eigen/Geometry>
#include <QColor>
#include <QHash>

#include "apps/krmodel/Materials.h"

namespace krmodel {

namespace {

using Box = Eigen::AlignedBox3d;

/// In doubles: the extent of a mesh may be beyond the range of a float.
template<class Visit>
void ForEachVertex(const Model& model, Visit visit)
{
    for (const auto& mesh : model.meshes)
        for (const Vector3D<float>& vertex : *mesh->GetVerticesVecPtr())
            visit(Eigen::Vector3d(double(vertex.x), double(vertex.y), double(vertex.z)));
}

Box BoundsOf(const Model& model)
{
    Box bounds;
    ForEachVertex(model, [&](const Eigen::Vector3d& point) {
        if (point.allFinite())
            bounds.extend(point);
    });
    return bounds.isEmpty() ? Box(Eigen::Vector3d::Zero(), Eigen::Vector3d::Zero()) : bounds;
}

void AddPoints(const Model& model, const Box& bounds, const Camera& camera, Scene& scene)
{
    const double radius = bounds.diagonal().norm() / 2;
    const double scale = radius > 0 ? 1 / radius : 1;
    const Eigen::Vector3d centre = bounds.center();
    ForEachVertex(model, [&](const Eigen::Vector3d& point) {
        scene.points.push_back((camera.GetRotation() * (point - centre) * scale).cast<float>());
    });
    scene.groundHeight = float((bounds.min().z() - centre.z()) * scale);
}

bool IsDrawable(const TriangleFace& face, const std::vector<Eigen::Vector3f>& points)
{
    return std::all_of(std::begin(face.v), std::end(face.v), [&](int index) {
        return index >= 0 && size_t(index) < points.size() && points[size_t(index)].allFinite();
    });
}

TriangleFace Shifted(const TriangleFace& face, int offset)
{
    const auto shifted = [offset](int index) { return index < 0 ? -1 : index + offset; };
    return {shifted(face[0]), shifted(face[1]), shifted(face[2])};
}

void AddFaces(const Model& model, Scene& scene)
{
    const TriangleFace none(-1, -1, -1);
    int firstPoint = 0;
    for (const auto& mesh : model.meshes) {
        const int firstFace = int(scene.faces.size());
        for (const TriangleFace& face : *mesh->GetFacesVecPtr()) {
            const TriangleFace shifted = Shifted(face, firstPoint);
            scene.faces.push_back(IsDrawable(shifted, scene.points) ? shifted : none);
        }
        for (const TriangleFace& across : mesh->GetFaceNeighbours())
            scene.neighbours.push_back(Shifted(across, firstFace));
        scene.neighbours.resize(scene.faces.size(), none);
        firstPoint += int(mesh->GetVerticesVecPtr()->size());
    }
}

/// What objects are told apart by, to be mixed with light; none like the back of a surface.
const Colour kObjectColours[] = {
    kOwnColour,
    {0.66F, 0.42F, 0.14F},
    {0.22F, 0.45F, 0.24F},
    {0.40F, 0.29F, 0.56F},
    {0.60F, 0.58F, 0.54F},
    {0.10F, 0.44F, 0.45F},
    {0.64F, 0.33F, 0.44F},
    {0.62F, 0.57F, 0.18F},
};

/// The colours that a package names; those that can be understood.
std::vector<Colour> ColoursOf(const Model& model)
{
    std::vector<Colour> colours;
    // "#RRGGBB" or "#RRGGBBAA"; Qt would take the latter's parts for others.
    for (const QString& text : model.colours.texts)
        if (const QColor colour(text.left(7)); text.startsWith(QLatin1Char('#')) && colour.isValid())
            colours.push_back(Decoded(colour.rgb()));
    return colours;
}

/// Objects of one name are of one kind, as the screws of an assembly; one without a name is a kind of its
/// own.
std::vector<int> KindOfEachObject(const Model& model)
{
    std::vector<int> kinds;
    QHash<QString, int> kindOfName;
    int count = 0;
    for (const auto& mesh : model.meshes) {
        const QString name = mesh->GetObjectName();
        const bool isKnown = kindOfName.contains(name);
        kinds.push_back(isKnown ? kindOfName.value(name) : count++);
        if (!name.isEmpty())
            kindOfName.insert(name, kinds.back());
    }
    return kinds;
}

void AddObjectPaints(const Model& model, Scene& scene)
{
    std::vector<Colour> colours = ColoursOf(model);
    if (colours.empty() && model.meshes.size() > 1)
        colours.assign(std::begin(kObjectColours), std::end(kObjectColours));
    if (colours.empty())
        return;
    const int firstPaint = int(scene.paints.size());
    for (const Colour& colour : colours)
        scene.paints.emplace_back(colour);
    const std::vector<int> kinds = KindOfEachObject(model);
    for (size_t i = 0; i < kinds.size(); ++i)
        scene.paintOfFace.insert(scene.paintOfFace.end(), model.meshes[i]->GetFacesVecPtr()->size(),
                                 firstPaint + kinds[i] % int(colours.size()));
}

void AddGroupPaints(const Model& model, Scene& scene)
{
    for (const int group : GroupOfEachFace(model))
        scene.paintOfFace.push_back(group + 1);
    if (scene.paintOfFace.empty())
        return;
    for (const MeshTextureGroup& group : model.groups)
        scene.paints.emplace_back(group.material);
    const Mesh& mesh = *model.meshes[0];
    if (!HoldsTexture(mesh))
        return;
    scene.textureCoordinates = *mesh.GetTexCoordVecPtr();
    scene.textureFaces = *mesh.GetTextureFacesVecPtr();
}

/// Moves the scene sideways until what the camera sees of it lies in the middle of the picture.
void Centre(Scene& scene, const Camera& camera)
{
    Eigen::AlignedBox2f seen;
    for (const Eigen::Vector3f& point : scene.points) {
        const ScreenPoint screen = camera.Project(point);
        if (point.allFinite())
            seen.extend(Eigen::Vector2f(screen.x, screen.y));
    }
    if (seen.isEmpty())
        return;
    const float inverseDistance = camera.Project(Eigen::Vector3f::Zero()).inverseDistance;
    const Eigen::Vector3f middle = camera.Unproject({seen.center().x(), seen.center().y(), inverseDistance});
    for (Eigen::Vector3f& point : scene.points)
        point -= middle;
    scene.groundHeight -= middle.dot(camera.GetUp());
}

void Fit(Scene& scene, Camera& camera)
{
    const auto include = [&] {
        for (const Eigen::Vector3f& point : scene.points)
            if (point.allFinite())
                camera.Include(point);
    };
    include();
    Centre(scene, camera);
    include();
}

} // namespace

Scene BuildScene(const Model& model, Camera& camera)
{
    Scene scene;
    AddPoints(model, BoundsOf(model), camera, scene);
    AddFaces(model, scene);
    if (model.groups.empty())
        AddObjectPaints(model, scene);
    else
        AddGroupPaints(model, scene);
    Fit(scene, camera);
    return scene;
}

} // namespace krmodel
