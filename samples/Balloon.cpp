#include "samples/Balloon.h"

#include <array>

#include <QByteArray>
#include <QFile>
#include <QImage>

#include "samples/Rings.h"

namespace {

constexpr int kGores = 12;
constexpr int kSidesOfGore = 4;

/// The text of an OBJ file. All faces have texture coordinates: around a body to the right, from its first
/// ring to the last upwards.
class ObjText {
public:
    void Use(const char* material) { m_text += QByteArray("usemtl ") + material + '\n'; }

    /// Adds a skin over rings of equally many points, closed by a polygon at both ends.
    void AddBody(const std::vector<Ring>& rings)
    {
        AddRings(rings);
        const int last = int(rings.size()) - 1;
        for (int row = 0; row < last; ++row)
            AddBand(row, row + 1, row + 1);
        AddLid(0, true);
        AddLid(last, false);
        EndBody(rings);
    }

    /// Adds a skin whose last ring is joined to the first one.
    void AddHoop(const std::vector<Ring>& rings)
    {
        AddRings(rings);
        const int count = int(rings.size());
        for (int row = 0; row < count; ++row)
            AddBand(row, (row + 1) % count, row + 1);
        EndBody(rings);
    }

    QByteArray GetText() const { return m_text; }

private:
    void AddNumbers(const char* keyword, std::initializer_list<double> numbers)
    {
        m_text += keyword;
        for (const double number : numbers)
            m_text += ' ' + QByteArray::number(number, 'f', 3);
        m_text += '\n';
    }

    /// A ring more of texture coordinates than of points: at the end of a hoop the picture does not begin
    /// anew. So it is around each ring.
    void AddRings(const std::vector<Ring>& rings)
    {
        m_sides = int(rings[0].size());
        for (const Ring& ring : rings)
            for (const Point& point : ring)
                AddNumbers("v", {double(point.x), double(point.y), double(point.z)});
        for (size_t row = 0; row <= rings.size(); ++row)
            for (int side = 0; side <= m_sides; ++side)
                AddNumbers("vt", {double(side) / m_sides, double(row) / double(rings.size())});
    }

    void AddCorner(int row, int textureRow, int side)
    {
        m_text += ' ' + QByteArray::number(m_firstPoint + row * m_sides + side % m_sides) + '/' +
                  QByteArray::number(m_firstCoordinate + textureRow * (m_sides + 1) + side);
    }

    void AddBand(int row, int nextRow, int nextTextureRow)
    {
        for (int side = 0; side < m_sides; ++side) {
            m_text += 'f';
            AddCorner(row, row, side);
            AddCorner(row, row, side + 1);
            AddCorner(nextRow, nextTextureRow, side + 1);
            AddCorner(nextRow, nextTextureRow, side);
            m_text += '\n';
        }
    }

    void AddLid(int row, bool facesDown)
    {
        m_text += 'f';
        for (int side = 0; side < m_sides; ++side)
            AddCorner(row, row, facesDown ? m_sides - 1 - side : side);
        m_text += '\n';
    }

    void EndBody(const std::vector<Ring>& rings)
    {
        m_firstPoint += m_sides * int(rings.size());
        m_firstCoordinate += (m_sides + 1) * int(rings.size() + 1);
    }

    QByteArray m_text = "mtllib balloon.mtl\n";
    int m_sides = 0;
    int m_firstPoint = 1;
    int m_firstCoordinate = 1;
};

Ring Circle(int sides, double radius, double z, double turn = 0)
{
    Ring ring;
    for (int side = 0; side < sides; ++side)
        ring.push_back(Polar(radius, double(side) / sides + turn, z));
    return ring;
}

/// The gores of the envelope bulge between their seams.
Ring Gores(double radius, double z)
{
    constexpr int kSides = kGores * kSidesOfGore;
    Ring ring;
    for (int side = 0; side < kSides; ++side) {
        const double bulge = std::sin(kTurn / 2 * (side % kSidesOfGore) / kSidesOfGore);
        ring.push_back(Polar(radius * (1 + 0.04 * bulge), double(side) / kSides, z));
    }
    return ring;
}

/// A cone from the mouth up, and from where it touches it a sphere.
std::vector<Ring> Envelope()
{
    constexpr double kRadius = 30, kMiddle = 66, kMouth = 6, kSlope = 40 * kTurn / 360;
    constexpr int kConeSteps = 4, kSphereSteps = 13;
    std::vector<Ring> rings;
    const double coneLength = kRadius / std::tan(kSlope) - kMouth / std::sin(kSlope);
    for (int step = kConeSteps; step > 0; --step) {
        const double along = coneLength * step / kConeSteps;
        rings.push_back(Gores(kRadius * std::cos(kSlope) - along * std::sin(kSlope),
                              kMiddle - kRadius * std::sin(kSlope) - along * std::cos(kSlope)));
    }
    constexpr double kCrown = 87 * kTurn / 360;
    for (int step = 0; step <= kSphereSteps; ++step) {
        const double angle = -kSlope + (kCrown + kSlope) * step / kSphereSteps;
        rings.push_back(Gores(kRadius * std::cos(angle), kMiddle + kRadius * std::sin(angle)));
    }
    return rings;
}

std::vector<Ring> Basket()
{
    constexpr double kToSide = 0.125;
    return {Circle(4, 6.4, 0, kToSide), Circle(4, 7.4, 9, kToSide), Circle(4, 6.6, 9, kToSide),
            Circle(4, 5.8, 1, kToSide)};
}

std::vector<Ring> Rim()
{
    constexpr double kToSide = 0.125;
    return {Circle(4, 7.8, 9, kToSide), Circle(4, 7.8, 10, kToSide), Circle(4, 6.3, 10, kToSide),
            Circle(4, 6.3, 9, kToSide)};
}

std::vector<Ring> Rope(double turns)
{
    constexpr double kThickness = 0.35;
    const auto around = [](const Point& middle) {
        Ring ring = Circle(6, kThickness, 0);
        for (Point& point : ring)
            point += middle;
        return ring;
    };
    return {around(Polar(7.0, turns, 9.5)), around(Polar(5.6, turns, 27))};
}

std::vector<Ring> LoadRing()
{
    constexpr int kSides = 32;
    return {Circle(kSides, 6.9, 17.6), Circle(kSides, 6.9, 18.8), Circle(kSides, 5.7, 18.8),
            Circle(kSides, 5.7, 17.6)};
}

QByteArray Model()
{
    ObjText model;
    model.Use("envelope");
    model.AddBody(Envelope());
    model.Use("wicker");
    model.AddBody(Basket());
    model.Use("leather");
    model.AddHoop(Rim());
    model.Use("rope");
    for (const double turns : {0.125, 0.375, 0.625, 0.875})
        model.AddBody(Rope(turns));
    model.Use("brass");
    model.AddHoop(LoadRing());
    return model.GetText();
}

constexpr char kMaterials[] = "newmtl envelope\nKd 1 1 1\nmap_Kd balloon.png\n"
                              "newmtl wicker\nKd 0.72 0.53 0.30\n"
                              "newmtl leather\nKd 0.40 0.22 0.12\n"
                              "newmtl rope\nKd 0.85 0.80 0.68\n"
                              "newmtl brass\nKd 0.80 0.62 0.25\nKs 0.9 0.8 0.5\nNs 80\n";

/// The colour of the envelope, @p across in gores, @p up from the mouth (0) to the crown (1).
QRgb PaintAt(double across, double up)
{
    constexpr QRgb kRed = 0xFFD2402C, kCream = 0xFFF6E7C4, kBlue = 0xFF1F4E79, kYellow = 0xFFF2B134;
    const double fromSeam = std::abs(across - std::floor(across) - 0.5);
    const double zigzag = 0.12 * fromSeam;
    if (up < 0.12 || up > 0.93)
        return kBlue;
    if (std::abs(up - 0.46 - zigzag) < 0.07)
        return kBlue;
    if (std::abs(up - 0.46 - zigzag) < 0.09)
        return kYellow;
    return int(across) % 2 == 0 ? kRed : kCream;
}

QImage Picture()
{
    constexpr int kWidth = 40 * kGores, kHeight = 400;
    QImage picture(kWidth, kHeight, QImage::Format_RGB32);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            picture.setPixel(x, y, PaintAt((x + 0.5) * kGores / kWidth, 1 - (y + 0.5) / kHeight));
    return picture;
}

bool WriteText(const QString& fileName, const QByteArray& text)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush();
}

} // namespace

bool WriteBalloon(const QString& directory)
{
    return WriteText(directory + QStringLiteral("balloon.obj"), Model()) &&
           WriteText(directory + QStringLiteral("balloon.mtl"), kMaterials) &&
           Picture().save(directory + QStringLiteral("balloon.png"), "PNG");
}
