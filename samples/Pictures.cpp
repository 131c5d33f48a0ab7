#include "samples/Pictures.h"

#include <algorithm>
#include <cmath>

#include <QImage>
#include <QUuid>

#include "core/mesh/MeshTextureInfo.h"
#include "fileformat/texture/TextureFile.h"
#include "samples/Rings.h"

namespace {

constexpr int kPetals = 8;

/// A place in a picture: from the middle (0, 0) to the edges at -1 and 1, y upwards.
struct Place {
    double x, y;

    double Radius() const { return std::hypot(x, y); }
    double Turns() const { return std::atan2(y, x) / kTurn; }
};

/// From 0 at the distance @p width to 1 at 0, rounded on top.
double Bead(double distance, double width)
{
    const double part = distance / width;
    return std::sqrt(std::max(0.0, 1 - part * part));
}

/// A ring of petals, each a dome with a furrow along its middle; 0 between them.
double PetalsAt(const Place& place, int count, double turn, double inner, double outer)
{
    const double along = (place.Radius() - inner) / (outer - inner);
    if (along <= 0 || along >= 1)
        return 0;
    const double around = place.Turns() * count + turn;
    const double across = 2 * std::abs(around - std::floor(around) - 0.5);
    const double width = 0.95 * std::pow(std::sin(kTurn / 2 * std::pow(along, 0.75)), 0.7);
    const double furrow = 0.12 * std::exp(-across * across / 0.004);
    return across < width ? (0.35 + 0.65 * along) * (Bead(across, width) - furrow) : 0;
}

/// How high the medal is, 0..1.
double MedalAt(const Place& place)
{
    const double radius = place.Radius();
    const double bead = place.Turns() * 40;
    const double alongBeads = (bead - std::floor(bead) - 0.5) * kTurn * 0.8 / 40;
    return std::max({radius < 0.97 ? 0.15 : 0.0, Bead(radius - 0.92, 0.05),
                     0.55 * Bead(std::hypot(radius - 0.8, alongBeads), 0.045),
                     0.6 * PetalsAt(place, kPetals, 0, 0.1, 0.72),
                     0.85 * PetalsAt(place, kPetals, 0.5, 0.05, 0.5), Bead(radius, 0.14)});
}

QImage Medal()
{
    constexpr int kSide = 160;
    QImage picture(kSide, kSide, QImage::Format_Grayscale8);
    for (int row = 0; row < kSide; ++row)
        for (int column = 0; column < kSide; ++column) {
            const Place place = {(2 * column + 1.0) / kSide - 1, 1 - (2 * row + 1.0) / kSide};
            picture.scanLine(row)[column] = uchar(std::lround(255 * std::clamp(MedalAt(place), 0.0, 1.0)));
        }
    return picture;
}

/// Bands of two colours over and under each other, two by two in a picture; they meet at its edges.
QImage Weave()
{
    constexpr int kSide = 48, kBand = kSide / 2, kGap = 2;
    constexpr QRgb kWarp = 0xFFB5651D, kWeft = 0xFFE3C08A, kShade = 0xFF4A2C14;
    QImage picture(kSide, kSide, QImage::Format_RGB32);
    for (int row = 0; row < kSide; ++row)
        for (int column = 0; column < kSide; ++column) {
            const bool isWarpOnTop = (row / kBand + column / kBand) % 2 == 0;
            const int across = (isWarpOnTop ? column : row) % kBand;
            const bool isGap = across < kGap || across >= kBand - kGap;
            picture.setPixel(column, row, isGap ? kShade : isWarpOnTop ? kWarp : kWeft);
        }
    return picture;
}

} // namespace

bool WriteMedal(const QString& directory)
{
    return Medal().save(directory + QStringLiteral("medal.png"), "PNG");
}

bool WriteWeave(const QString& directory)
{
    MeshTextureInfo info;
    info.load(Weave(), false, false, false, 0);
    info.fileName = QStringLiteral("weave.png");
    MeshMaterialParameters parameters;
    parameters.matrix.repeat = {4, 4, 1};
    parameters.matrix.rotation.z = 45;
    parameters.matrix.updateMatrix();
    TextureFile texture;
    return texture.Load(&info, parameters, QUuid()) &&
           texture.SaveFile(directory + QStringLiteral("weave.texture"));
}
