// Writes a spacer, a tube to put a screw through, as STL: MakeSpacer OUTER INNER HEIGHT SPACER.stl (mm)
#include <cmath>
#include <cstdio>
#include <vector>

#include <QString>

#include "core/math/Vector3D.h"
#include "core/utility/Utility.h"
#include "fileformat/stl/STLFile.h"

namespace {

using Point = Vector3D<float>;
constexpr int kSides = 96;

/// Two triangles, counter-clockwise seen from outside.
void AddQuad(std::vector<Point>& corners, const Point& a, const Point& b, const Point& c, const Point& d)
{
    corners.insert(corners.end(), {a, b, c, a, c, d});
}

std::vector<Point> Spacer(double outerRadius, double innerRadius, double height)
{
    const auto at = [](double radius, int side, double z) {
        // The last side ends in the very point in which the first one begins.
        const double angle = 2 * std::acos(-1.0) * (side % kSides) / kSides;
        return Point(float(radius * std::cos(angle)), float(radius * std::sin(angle)), float(z));
    };
    std::vector<Point> corners;
    for (int side = 0; side < kSides; ++side) {
        const Point outerLow[] = {at(outerRadius, side, 0), at(outerRadius, side + 1, 0)};
        const Point outerHigh[] = {at(outerRadius, side, height), at(outerRadius, side + 1, height)};
        const Point innerLow[] = {at(innerRadius, side, 0), at(innerRadius, side + 1, 0)};
        const Point innerHigh[] = {at(innerRadius, side, height), at(innerRadius, side + 1, height)};
        AddQuad(corners, outerLow[0], outerLow[1], outerHigh[1], outerHigh[0]);
        AddQuad(corners, outerHigh[0], outerHigh[1], innerHigh[1], innerHigh[0]);
        AddQuad(corners, innerHigh[0], innerHigh[1], innerLow[1], innerLow[0]);
        AddQuad(corners, innerLow[0], innerLow[1], outerLow[1], outerLow[0]);
    }
    return corners;
}

} // namespace

int main(int argc, char** argv)
{
    const auto number = [&](int i) { return Utility::ConvertBufferToDouble(i < argc ? argv[i] : nullptr); };
    const double outer = number(1), inner = number(2), height = number(3);
    if (argc != 5 || !(outer > inner && inner > 0 && height > 0)) {
        std::fputs("MakeSpacer OUTER INNER HEIGHT SPACER.stl: two diameters and a height in mm\n", stderr);
        return 1;
    }
    return STLFile::SaveFile(QString::fromUtf8(argv[4]), Spacer(outer / 2, inner / 2, height), false, 80) ? 0
                                                                                                          : 1;
}
