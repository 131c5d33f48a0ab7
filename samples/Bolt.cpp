#include "samples/Bolt.h"

#include <algorithm>
#include <cmath>

#include <QBuffer>
#include <QImage>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/stl/STLFile.h"
#include "samples/Soup.h"

namespace {

// A half-inch bolt without its thread.
constexpr double kShank = 0.25; ///< radii and lengths in inches
constexpr double kAcrossFlats = 0.375;
constexpr double kHead = 0.3125;
constexpr double kLength = 1.8125;
constexpr double kNut = 0.4375;

constexpr int kSides = 48;

// Where the two stand on the plate, and how far the nut is turned.
constexpr double kBoltX = 0.75, kNutX = 2, kY = 0.75;
constexpr double kNutTurn = 1.0 / 12;

/// From the axis to the rim of the hexagon.
double HexagonRadius(double turns)
{
    const double fromFlat = std::remainder(turns, 1.0 / 6) * kTurn;
    return kAcrossFlats / std::cos(fromFlat);
}

Ring Circle(double radius, double z)
{
    Ring ring;
    for (int side = 0; side < kSides; ++side)
        ring.push_back(Polar(radius, double(side) / kSides, z));
    return ring;
}

/// A cone of 30 degrees takes the corners off: there the rim lies further from the hexagon's face at @p z.
Ring Hexagon(double z, double inwards)
{
    Ring ring;
    for (int side = 0; side < kSides; ++side) {
        const double turns = double(side) / kSides, radius = HexagonRadius(turns);
        ring.push_back(Polar(radius, turns, z + inwards * (radius - 0.96 * kAcrossFlats) * 0.577));
    }
    return ring;
}

Soup Bolt()
{
    Soup soup;
    const Ring first = Circle(0.96 * kAcrossFlats, 0);
    AddFloor(soup, first, {0, 0, 0});
    AddBands(soup, {first, Hexagon(0, 1), Hexagon(kHead, 0), Circle(kShank, kHead),
                    Circle(kShank, kLength - 0.05), Circle(kShank - 0.05, kLength)});
    AddLid(soup, Circle(kShank - 0.05, kLength), {0, 0, float(kLength)});
    return soup;
}

Soup Nut()
{
    const double rim = 0.96 * kAcrossFlats;
    Soup soup;
    AddBands(soup, {Circle(kShank, 0.03), Circle(kShank + 0.03, 0), Circle(rim, 0), Hexagon(0, 1),
                    Hexagon(kNut, -1), Circle(rim, kNut), Circle(kShank + 0.03, kNut),
                    Circle(kShank, kNut - 0.03), Circle(kShank, 0.03)});
    return soup;
}

QRgb ColourAt(double x, double y)
{
    constexpr QRgb kPlate = 0xFFF2F0EB, kSteel = 0xFF8C9199, kLightSteel = 0xFFB4B9C0, kBrass = 0xFFC0A040;
    const auto reach = [&](double middle) { return std::hypot(x - middle, y - kY); };
    const auto isInHexagon = [&](double middle, double turn) {
        return reach(middle) < HexagonRadius(std::atan2(y - kY, x - middle) / kTurn - turn);
    };
    if (isInHexagon(kBoltX, 0))
        return reach(kBoltX) < kShank ? kLightSteel : kSteel;
    return isInHexagon(kNutX, kNutTurn) && reach(kNutX) > kShank ? kBrass : kPlate;
}

/// The plate seen from above.
QByteArray Picture()
{
    constexpr int kPixelsPerInch = 64;
    QImage picture(11 * kPixelsPerInch / 4, 3 * kPixelsPerInch / 2, QImage::Format_RGB32);
    for (int row = 0; row < picture.height(); ++row)
        for (int column = 0; column < picture.width(); ++column)
            picture.setPixel(
                column, row,
                ColourAt((column + 0.5) / kPixelsPerInch, (picture.height() - row - 0.5) / kPixelsPerInch));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return buffer.data();
}

Mesh MeshOf(const Soup& soup)
{
    Mesh mesh(0.03F);
    std::vector<Vector3D<float>> normals(soup.size() / 3);
    STLFile::StitchTriangleSoup(soup, normals, *mesh.GetFacesVecPtr(), *mesh.GetVerticesVecPtr());
    mesh.SetFaceNum(int(mesh.GetFacesVecPtr()->size()));
    return mesh;
}

Model3MF::ModelObjectInfo Object(Mesh& mesh, const char* name, double x, double turn)
{
    Model3MF::ModelObjectInfo object;
    object.mesh = &mesh;
    object.name = QLatin1String(name);
    object.position = {float(x), float(kY), 0};
    const double cosine = std::cos(kTurn * turn), sine = std::sin(kTurn * turn);
    object.transform.set(0, 0, cosine);
    object.transform.set(0, 1, -sine);
    object.transform.set(1, 0, sine);
    object.transform.set(1, 1, cosine);
    return object;
}

} // namespace

bool WriteBolt(const QString& directory)
{
    Mesh bolt = MeshOf(Bolt()), nut = MeshOf(Nut());
    Model3MF package;
    package.SetUnit(QStringLiteral("inch"));
    package.AddDescription(QStringLiteral("Title"), QStringLiteral("Half-inch bolt and nut"));
    package.AddDescription(QStringLiteral("Description"), QStringLiteral("Hexagon, without the thread"));
    Model3MF::BaseMaterial colours;
    colours.id = 3;
    colours.colors = {QStringLiteral("#8C9199"), QStringLiteral("#C0A040")};
    package.SetMaterial(colours);
    package.SetImage(Picture(), QStringLiteral("Metadata/thumbnail.png"));
    return package.SaveFile(directory + QStringLiteral("bolt.3mf"),
                            {Object(bolt, "bolt", kBoltX, 0), Object(nut, "nut", kNutX, kNutTurn)}, {});
}
