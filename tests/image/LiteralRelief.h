#pragma once

#include <string>
#include <vector>

#include <QImage>

#include "core/mesh/Mesh.h"

namespace test {

/// The numbers that ImageFile::LoadFile() takes, in its order.
struct ReliefArguments {
    float sizeX = 30;
    float sizeY = 20;
    int blurRadius = 0;
    bool brightIsHigh = true;
    float minHeight = 1;
    float maxHeight = 4;
    int scalePercent = 100;
};

struct LiteralRelief {
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
};

/// The relief of a picture that is loaded, step by step and vertex by vertex, with nothing shared: the
/// measure of the library's result. The picture must have 2 pixels a side after scaling.
LiteralRelief MakeLiteralRelief(QImage image, const ReliefArguments& arguments);

/// What is not bit for bit the same, in words; empty when all is.
std::string DifferenceOf(const Mesh& mesh, const LiteralRelief& expected);

} // namespace test
