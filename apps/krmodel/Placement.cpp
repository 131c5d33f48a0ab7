#include "apps/krmodel/Placement.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <Eigen/Geometry>

#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

/// What its last written digit, the sixth, may lack. Below that nobody meant anything.
constexpr double kTolerance = 1e-5;

Eigen::Matrix3d LinearPartOf(const Matrix4<double>& transform)
{
    Eigen::Matrix3d linear;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            linear(row, column) = transform.get(row, column);
    return linear;
}

Eigen::Vector3d TranslationOf(const Matrix4<double>& transform)
{
    return {transform.get(0, 3), transform.get(1, 3), transform.get(2, 3)};
}

bool IsFinite(const Vector3D<float>& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

bool IsIdentity(const Eigen::Matrix3d& linear, const Eigen::Vector3d& translation)
{
    return linear == Eigen::Matrix3d::Identity() && translation == Eigen::Vector3d::Zero();
}

void TurnRound(std::vector<TriangleFace>& faces)
{
    for (TriangleFace& face : faces)
        std::swap(face[1], face[2]);
}

void Refinalise(Mesh& mesh)
{
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
}

bool ApplyTransform(Mesh& mesh, double scale)
{
    const Eigen::Matrix3d linear = scale * LinearPartOf(mesh.GetTransformMatrix());
    const Eigen::Vector3d translation = scale * TranslationOf(mesh.GetTransformMatrix());
    mesh.SetTransformMatrix({});
    if (IsIdentity(linear, translation))
        return true;
    bool stayFinite = true;
    for (Vector3D<float>& vertex : *mesh.GetVerticesVecPtr()) {
        const bool wasFinite = IsFinite(vertex);
        const Eigen::Vector3d from(double(vertex.x), double(vertex.y), double(vertex.z));
        const Eigen::Vector3f placed = (linear * from + translation).cast<float>();
        vertex = {placed.x(), placed.y(), placed.z()};
        stayFinite = stayFinite && (!wasFinite || IsFinite(vertex));
    }
    if (linear.determinant() < 0) {
        TurnRound(*mesh.GetFacesVecPtr());
        TurnRound(*mesh.GetTextureFacesVecPtr());
    }
    Refinalise(mesh);
    return stayFinite;
}

Matrix4<double> WithScaledTranslation(Matrix4<double> transform, double scale)
{
    for (int row = 0; row < 3; ++row)
        transform.set(row, 3, scale * transform.get(row, 3));
    return transform;
}

bool PlaceMesh(Mesh& mesh, Placing placing, double scale)
{
    if (placing == Placing::Apply)
        return ApplyTransform(mesh, scale);
    const Matrix4<double> kept = WithScaledTranslation(mesh.GetTransformMatrix(), scale);
    mesh.SetTransformMatrix({});
    const bool staysFinite = ApplyTransform(mesh, scale);
    if (placing == Placing::Keep)
        mesh.SetTransformMatrix(kept);
    return staysFinite;
}

void Append(std::vector<TriangleFace>& faces, const Mesh& mesh, size_t verticesBefore)
{
    for (TriangleFace face : *mesh.GetFacesVecPtr()) {
        for (int& corner : face.v)
            corner += int(verticesBefore);
        faces.push_back(face);
    }
}

QString VectorText(const Eigen::Vector3d& vector)
{
    return QStringLiteral("%1 %2 %3")
        .arg(NumberText(vector.x()), NumberText(vector.y()), NumberText(vector.z()));
}

/// "rotated by 90° about z"; the axis only if it is one of the coordinates'.
QString RotationText(const Eigen::Matrix3d& rotation)
{
    const Eigen::AngleAxisd turn(rotation);
    const double degrees = turn.angle() * 180 / double(EIGEN_PI);
    Eigen::Index main = 0;
    const double onMain = turn.axis().cwiseAbs().maxCoeff(&main);
    // Seen from the axis's tip: about the other end of an axis is the other way round.
    const bool isMain = onMain > 1 - kTolerance;
    const double shown = isMain && turn.axis()[main] < 0 && degrees < 180 - kTolerance ? -degrees : degrees;
    const QString text = QStringLiteral("rotated by %1°").arg(QString::number(shown, 'g', 4));
    return isMain ? text + QStringLiteral(" about ") + QLatin1Char("xyz"[main]) : text;
}

QString ScaleText(const Eigen::Vector3d& scale)
{
    const bool isUniform = scale.maxCoeff() - scale.minCoeff() < kTolerance * scale.maxCoeff();
    return QStringLiteral("scaled by ") + (isUniform ? NumberText(scale.x()) : VectorText(scale));
}

/// What a linear map does, in words; nothing for the identity.
QStringList LinearTexts(Eigen::Matrix3d linear)
{
    const Eigen::Vector3d scale = linear.colwise().norm();
    const double determinant = linear.determinant();
    if (std::abs(determinant) <= 1e-9 * scale.prod())
        return {QStringLiteral("flattened")};
    linear *= scale.cwiseInverse().asDiagonal();
    if (!(linear.transpose() * linear).isIdentity(kTolerance))
        return {QStringLiteral("skewed")};
    if (determinant < 0) {
        Eigen::Index mirrored = 0;
        linear.diagonal().minCoeff(&mirrored);
        linear.col(mirrored) *= -1;
    }
    QStringList texts;
    if (!linear.isIdentity(kTolerance))
        texts << RotationText(linear);
    if (!scale.isOnes(kTolerance))
        texts << ScaleText(scale);
    if (determinant < 0)
        texts << QStringLiteral("mirrored");
    return texts;
}

} // namespace

bool Place(Model& model, Placing placing, const Unit& unit)
{
    const double scale = model.unit.millimetres / unit.millimetres;
    bool stayFinite = true;
    for (const auto& mesh : model.meshes)
        stayFinite = PlaceMesh(*mesh, placing, scale) && stayFinite;
    model.unit = unit;
    return stayFinite;
}

bool PlaceInMillimetres(Model& model)
{
    return Place(model, Placing::Apply, Unit{QStringLiteral("millimeter"), 1});
}

bool MergeObjects(Model& model)
{
    constexpr size_t kMostEntries = size_t(std::numeric_limits<int>::max());
    if (model.meshes.size() < 2)
        return true;
    size_t vertexCount = 0, faceCount = 0;
    for (const auto& mesh : model.meshes) {
        vertexCount += mesh->GetVerticesVecPtr()->size();
        faceCount += mesh->GetFacesVecPtr()->size();
    }
    if (vertexCount > kMostEntries || faceCount > kMostEntries)
        return false;
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    vertices.reserve(vertexCount);
    faces.reserve(faceCount);
    for (const auto& mesh : model.meshes) {
        Append(faces, *mesh, vertices.size());
        const auto& own = *mesh->GetVerticesVecPtr();
        vertices.insert(vertices.end(), own.begin(), own.end());
    }
    model.meshes.resize(1);
    Mesh& merged = *model.meshes.front();
    merged.Cleanup();
    merged.AddVertexAndFaces(vertices, faces);
    Refinalise(merged);
    return true;
}

QString PlacementText(const Matrix4<double>& transform)
{
    const Eigen::Matrix3d linear = LinearPartOf(transform);
    const Eigen::Vector3d translation = TranslationOf(transform);
    if (!linear.allFinite() || !translation.allFinite())
        return QStringLiteral("not finite");
    QStringList texts;
    if (translation != Eigen::Vector3d::Zero())
        texts << QStringLiteral("moved by ") + VectorText(translation);
    texts << LinearTexts(linear);
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral(", "));
}

} // namespace krmodel
