// Makes the models of this directory: MakeSamples DIRECTORY
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include <QString>

#include "fileformat/stl/STLFile.h"
#include "samples/Balloon.h"
#include "samples/Bearing.h"
#include "samples/Bolt.h"
#include "samples/Gasket.h"
#include "samples/Pictures.h"
#include "samples/Rings.h"
#include "samples/Soup.h"

namespace {

// One tooth of the gear and the gap before it: where on the pitch, and how far from root (0) to tip (1).
struct ToothPoint {
    double pitch, rise;
};
constexpr ToothPoint kTooth[] = {{0.00, 0}, {0.20, 0},    {0.26, 0.28}, {0.32, 0.68}, {0.39, 1},
                                 {0.61, 1}, {0.68, 0.68}, {0.74, 0.28}, {0.80, 0}};
constexpr int kTeeth = 20;

Ring GearRing(double rootRadius, double toothHeight, double z)
{
    Ring ring;
    for (int tooth = 0; tooth < kTeeth; ++tooth)
        for (const ToothPoint& point : kTooth)
            ring.push_back(Polar(rootRadius + point.rise * toothHeight, (tooth + point.pitch) / kTeeth, z));
    return ring;
}

/// A spur gear with a hub and a bore; millimetres, as all samples.
Soup Gear()
{
    const auto circle = [](double radius, double z) { return GearRing(radius, 0, z); };
    Soup soup;
    AddBands(soup, {circle(6, 0), GearRing(19.6, 4, 0), GearRing(20, 4.2, 0.6), GearRing(20, 4.2, 8.4),
                    GearRing(19.6, 4, 9), circle(11.5, 9), circle(11, 15.4), circle(10.4, 16),
                    circle(6.6, 16), circle(6, 15.4), circle(6, 0)});
    return soup;
}

constexpr int kVaseSides = 48;
constexpr double kVaseHeight = 90;
constexpr double kVaseWall = 2.2;

Ring VaseRing(double height, double inset)
{
    Ring ring;
    const double along = height / kVaseHeight;
    const double radius = 24 + 11 * std::sin(kTurn * (0.80 * along + 0.02)) + 7 * along * along;
    for (int side = 0; side < kVaseSides; ++side) {
        const double turns = double(side) / kVaseSides;
        const double flute = 1 + 0.07 * std::cos(kTurn * 6 * turns);
        ring.push_back(Polar(radius * flute - inset, turns + 0.28 * along, height));
    }
    return ring;
}

/// A fluted vase, twisted around its axis, with a wall of even thickness.
Soup Vase()
{
    constexpr int kSteps = 17;
    std::vector<Ring> outside, inside;
    for (int step = 0; step <= kSteps; ++step) {
        outside.push_back(VaseRing(kVaseHeight * step / kSteps, 0));
        inside.push_back(VaseRing(kVaseHeight - (kVaseHeight - kVaseWall) * step / kSteps, kVaseWall));
    }
    Soup soup;
    AddFloor(soup, outside.front(), {0, 0, 0});
    AddBands(soup, outside);
    AddBand(soup, outside.back(), inside.front());
    AddBands(soup, inside);
    AddLid(soup, inside.back(), {0, 0, float(kVaseWall)});
    return soup;
}

/// A turning knob with finger grips.
Soup Knob()
{
    struct Step {
        double radius, grip, z;
    };
    constexpr Step kSteps[] = {{10, 0, 0},      {10, 0, 4},      {17, 1.6, 5},  {18, 2, 6},  {18, 2, 14},
                               {17, 1.8, 15.4}, {15, 1.2, 16.4}, {11, 0.5, 17}, {6, 0, 17.3}};
    constexpr int kSides = 40;
    std::vector<Ring> rings;
    for (const Step& step : kSteps) {
        Ring ring;
        for (int side = 0; side < kSides; ++side) {
            const double turns = double(side) / kSides;
            ring.push_back(Polar(step.radius + step.grip * std::cos(kTurn * 5 * turns), turns, step.z));
        }
        rings.push_back(ring);
    }
    Soup soup;
    AddFloor(soup, rings.front(), {0, 0, 0});
    AddBands(soup, rings);
    AddLid(soup, rings.back(), {0, 0, 17.4F});
    return soup;
}

using Place = std::function<Point(double across, double up, double out)>;

void AddTorus(Soup& soup, const Place& place)
{
    constexpr int kAround = 48, kAcross = 20;
    constexpr double kRadius = 20, kTube = 5;
    std::vector<Ring> rings;
    for (int i = 0; i <= kAround; ++i) {
        Ring ring;
        for (int j = 0; j < kAcross; ++j) {
            const double around = kTurn * (i % kAround) / kAround, across = kTurn * j / kAcross;
            const double radius = kRadius + kTube * std::cos(across);
            ring.push_back(
                place(radius * std::cos(around), radius * std::sin(around), kTube * std::sin(across)));
        }
        rings.push_back(ring);
    }
    for (size_t i = 1; i < rings.size(); ++i)
        AddBand(soup, rings[i], rings[i - 1]);
}

/// Two links of a chain: one file, two pieces.
Soup Links()
{
    Soup soup;
    AddTorus(soup, [](double a, double b, double c) { return Point(float(a), float(b), float(c)); });
    AddTorus(soup, [](double a, double b, double c) { return Point(float(a + 22), float(-c), float(b)); });
    return soup;
}

/// A wavy sheet: a surface with a border, no solid.
Soup Sheet()
{
    constexpr int kCells = 17;
    const auto at = [](int i, int j) {
        const double x = 40.0 * i / kCells, y = 40.0 * j / kCells;
        return Point(float(x), float(y), float(10 + 4 * std::sin(x / 6) * std::cos(y / 8)));
    };
    Soup soup;
    for (int i = 0; i < kCells; ++i)
        for (int j = 0; j < kCells; ++j)
            AddQuad(soup, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return soup;
}

/// A cube of side 20, each face divided into cells by cells squares.
Soup Cube(int cells)
{
    Soup soup;
    const auto addFace = [&](const std::function<Point(float, float)>& at) {
        const auto grid = [&](int i, int j) {
            return at(20.0F * float(i) / float(cells), 20.0F * float(j) / float(cells));
        };
        for (int i = 0; i < cells; ++i)
            for (int j = 0; j < cells; ++j)
                AddQuad(soup, grid(i, j), grid(i + 1, j), grid(i + 1, j + 1), grid(i, j + 1));
    };
    addFace([](float u, float v) { return Point(v, u, 0); });
    addFace([](float u, float v) { return Point(u, v, 20); });
    addFace([](float u, float v) { return Point(u, 0, v); });
    addFace([](float u, float v) { return Point(v, 20, u); });
    addFace([](float u, float v) { return Point(0, v, u); });
    addFace([](float u, float v) { return Point(20, u, v); });
    return soup;
}

/// A cube whose triangles all face inwards.
Soup InwardCube()
{
    const Soup outward = Cube(1);
    return Soup(outward.rbegin(), outward.rend());
}

/// A cube whose triangles miss each other by up to a hundred thousandth of a millimetre.
Soup JitteredCube()
{
    Soup soup = Cube(6);
    unsigned state = 20;
    const auto jitter = [&state] {
        state = state * 1664525U + 1013904223U;
        return float(double(state >> 8) / double(1U << 24) * 2e-5 - 1e-5);
    };
    for (Point& point : soup)
        point += Point(jitter(), jitter(), jitter());
    return soup;
}

struct Sample {
    const char* fileName;
    Soup (*make)();
    bool isText;
};

constexpr Sample kSamples[] = {
    {"gear.stl", Gear, false},
    {"vase.stl", Vase, false},
    {"links.stl", Links, false},
    {"knob.stl", Knob, true},
    {"sheet.stl", Sheet, true},
    {"cube-inward.stl", InwardCube, true},
    {"cube-jittered.stl", JitteredCube, false},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: MakeSamples DIRECTORY\n", stderr);
        return 1;
    }
    const QString directory = QString::fromUtf8(argv[1]) + QLatin1Char('/');
    bool isWritten = true;
    for (const auto& write : {WriteBalloon, WriteBearing, WriteBolt, WriteGasket, WriteMedal, WriteWeave})
        isWritten = write(directory) && isWritten;
    for (const Sample& sample : kSamples)
        isWritten =
            STLFile::SaveFile(directory + QLatin1String(sample.fileName), sample.make(), sample.isText, 80) &&
            isWritten;
    if (!isWritten)
        std::fprintf(stderr, "cannot write all samples into %s\n", argv[1]);
    return isWritten ? 0 : 1;
}
