#include "samples/Gasket.h"

#include <cmath>

#include <QString>

#include "fileformat/path/DXFPathFile.h"
#include "samples/Rings.h"

namespace {

using Contour = DXFPathFile::Contour;

struct Centre {
    double x, y;
};

// Three bores in a row; a screw above and below between them, and one at each end.
constexpr Centre kBores[] = {{-42, 0}, {0, 0}, {42, 0}};
constexpr Centre kScrews[] = {{-72, 0}, {-21, 24}, {-21, -24}, {21, 24}, {21, -24}, {72, 0}};
constexpr double kBoreRadius = 16, kScrewRadius = 3;
constexpr double kLugRadius = 8, kRingRadius = 22;

/// To a thousandth of a millimetre: further digits would be those of the machine that made them.
double Rounded(double number)
{
    return std::round(number * 1000) / 1000;
}

void AddArc(Contour& contour, const Centre& centre, double radius, double fromTurns, double toTurns,
            int steps)
{
    for (int step = 0; step <= steps; ++step) {
        const double angle = kTurn * (fromTurns + (toTurns - fromTurns) * step / steps);
        contour.emplace_back(Rounded(centre.x + radius * std::cos(angle)),
                             Rounded(centre.y + radius * std::sin(angle)));
    }
}

void Close(Contour& contour)
{
    contour.push_back(contour.front());
}

/// A circle, its last point being the first one to the last bit.
Contour Circle(const Centre& centre, double radius, int sides)
{
    Contour contour;
    AddArc(contour, centre, radius, 0, double(sides - 1) / sides, sides - 1);
    Close(contour);
    return contour;
}

/// Around the lugs of the screws and the rings of the outer bores, to the left from the right end on.
Contour Outline()
{
    Contour contour;
    AddArc(contour, kScrews[5], kLugRadius, -0.18, 0.18, 12);
    AddArc(contour, kBores[2], kRingRadius, 0.13, 0.25, 8);
    AddArc(contour, kScrews[3], kLugRadius, 0.14, 0.36, 10);
    AddArc(contour, kScrews[1], kLugRadius, 0.14, 0.36, 10);
    AddArc(contour, kBores[0], kRingRadius, 0.25, 0.37, 8);
    AddArc(contour, kScrews[0], kLugRadius, 0.32, 0.68, 12);
    AddArc(contour, kBores[0], kRingRadius, 0.63, 0.75, 8);
    AddArc(contour, kScrews[2], kLugRadius, 0.64, 0.86, 10);
    AddArc(contour, kScrews[4], kLugRadius, 0.64, 0.86, 10);
    AddArc(contour, kBores[2], kRingRadius, 0.75, 0.87, 8);
    Close(contour);
    return contour;
}

/// The outline and all that is cut out of it.
std::vector<Contour> Cuts()
{
    std::vector<Contour> contours = {Outline()};
    for (const Centre& bore : kBores)
        contours.push_back(Circle(bore, kBoreRadius, 64));
    for (const Centre& screw : kScrews)
        contours.push_back(Circle(screw, kScrewRadius, 24));
    return contours;
}

/// A cross in each bore.
std::vector<Contour> CentreMarks()
{
    constexpr double kReach = 6;
    std::vector<Contour> contours;
    for (const auto& [x, y] : kBores) {
        contours.push_back({{x - kReach, y}, {x + kReach, y}});
        contours.push_back({{x, y - kReach}, {x, y + kReach}});
    }
    return contours;
}

/// A bead of sealant around each bore, not quite closed.
std::vector<Contour> Beads()
{
    std::vector<Contour> contours;
    for (const Centre& bore : kBores)
        AddArc(contours.emplace_back(), bore, 19, 0.05, 0.95, 40);
    return contours;
}

} // namespace

bool WriteGasket(const QString& directory)
{
    return DXFPathFile::WriteDXFPathFile({{1, Cuts()}, {2, CentreMarks()}, {3, Beads()}},
                                         {{1, "cut"}, {2, "centre marks"}, {3, "sealant \xC3\x98 38"}},
                                         directory + QStringLiteral("gasket.path"));
}
