#include "tests/cad/RandomCad.h"

namespace test {

namespace {

constexpr int kDeepestAssembly = 3;

int RandomInt(std::mt19937& random, int first, int last)
{
    return std::uniform_int_distribution<int>(first, last)(random);
}

double RandomDouble(std::mt19937& random, double first, double last)
{
    return std::uniform_real_distribution<double>(first, last)(random);
}

CadPlacement RandomPlacement(std::mt19937& random)
{
    CadPlacement placement;
    if (RandomInt(random, 0, 4) == 0)
        return placement;
    placement.x = RandomDouble(random, -100, 100);
    placement.y = RandomDouble(random, -100, 100);
    placement.z = RandomInt(random, -2, 2);
    if (RandomInt(random, 0, 1) == 0)
        return placement;
    placement.degrees = RandomInt(random, 0, 1) == 0 ? 90 : RandomDouble(random, -180, 180);
    placement.axisX = RandomInt(random, -1, 1);
    placement.axisY = RandomInt(random, -1, 1);
    return placement;
}

CadShape RandomSolid(std::mt19937& random)
{
    const double size = RandomDouble(random, 0.5, 30);
    switch (RandomInt(random, 0, 4)) {
    case 0:
        return Cylinder(size, 2);
    case 1:
        return Sphere(size);
    case 2:
        return Torus(size, size / 4);
    case 3:
        return PiercedBox(size, size / 2, 3, size / 5);
    default:
        return Box(size, 1, 5);
    }
}

CadShape RandomPiece(std::mt19937& random)
{
    switch (RandomInt(random, 0, 5)) {
    case 0:
        return PieceOf(RandomSolid(random), CadPiece::Shell);
    case 1:
        return PieceOf(RandomSolid(random), CadPiece::Face);
    case 2:
        return PiercedFace(RandomDouble(random, 8, 20), 1);
    case 3:
        return CylinderFace(RandomDouble(random, 1, 9), 4);
    case 4:
        return CollapsedFace();
    default:
        return PieceOf(Box(1, 2, 3), RandomInt(random, 0, 1) == 0 ? CadPiece::Wire : CadPiece::Edge);
    }
}

CadShape RandomCompound(std::mt19937& random, int depth)
{
    std::vector<CadShape> shapes;
    for (int i = RandomInt(random, 1, 3); i > 0; --i) {
        const int kind = RandomInt(random, 0, depth > 0 ? 4 : 3);
        const CadShape shape = kind == 4   ? RandomCompound(random, depth - 1)
                               : kind == 3 ? RandomPiece(random)
                                           : RandomSolid(random);
        shapes.push_back(Moved(shape, RandomPlacement(random)));
    }
    return Compound(shapes);
}

CadShape RandomShape(std::mt19937& random)
{
    const int kind = RandomInt(random, 0, 9);
    CadShape shape = kind < 5   ? RandomSolid(random)
                     : kind < 8 ? RandomPiece(random)
                                : RandomCompound(random, 2);
    if (RandomInt(random, 0, 3) == 0)
        shape = Moved(shape, RandomPlacement(random));
    return RandomInt(random, 0, 5) == 0 ? Reversed(shape) : shape;
}

QString RandomName(std::mt19937& random, const QString& fileName)
{
    switch (RandomInt(random, 0, 9)) {
    case 0:
        return fileName;
    case 1:
        return QStringLiteral(" ");
    case 2:
        return QString();
    case 3:
        return QStringLiteral(" padded ");
    default:
        return QStringLiteral("Part %1").arg(RandomInt(random, 1, 99));
    }
}

CadPartPointer RandomPart(std::mt19937& random, const QString& fileName, int depth)
{
    const QString name = RandomName(random, fileName);
    if (depth == 0 || RandomInt(random, 0, 2) > 0)
        return Part(name, RandomShape(random));
    std::vector<CadInstance> components;
    for (int i = RandomInt(random, 1, 2); i > 0; --i) {
        const CadPartPointer part = RandomPart(random, fileName, depth - 1);
        for (int instance = RandomInt(random, 1, 2); instance > 0; --instance)
            components.push_back({part, RandomPlacement(random)});
    }
    return Assembly(name, components);
}

} // namespace

std::vector<CadPartPointer> RandomCadDocument(std::mt19937& random, const QString& fileName)
{
    std::vector<CadPartPointer> parts;
    for (int i = RandomInt(random, 1, 2); i > 0; --i)
        parts.push_back(RandomPart(random, fileName, RandomInt(random, 0, kDeepestAssembly)));
    return parts;
}

} // namespace test
