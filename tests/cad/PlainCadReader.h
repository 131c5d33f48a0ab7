#pragma once

#include <array>
#include <string>
#include <vector>

#include <QString>

#include "core/math/TriangleFace.h"
#include "core/math/Vector3D.h"

class Mesh;

// STEP and IGES files read as plainly as OpenCASCADE allows: one shape after the other, vertices merged by a
// sorted map. The library does the same by tasks, in place; both must always agree to the last bit.

namespace test {

enum class PlacedKind { Solid, Shell, Face };

/// A face of a shape with the triangles as the mesher left them, whichever way the face is turned.
struct PlainCadFace {
    bool isReversed = false;
    std::vector<std::array<Vector3D<float>, 3>> triangles;
};

/// A shape of the document at its place, as a mesh. Shapes without a vertex are among them.
struct PlainCadMesh {
    PlacedKind kind = PlacedKind::Solid;
    QString name;
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    std::vector<PlainCadFace> pieces;
    std::vector<Vector3D<float>> rawVertices; ///< before the merge
    double size = 0;                          ///< four times the longest side of its box
    double exactVolume = 0;                   ///< those of the shape, no triangles involved
    double exactArea = 0;
};

struct PlainCad {
    bool isLoaded = false;
    std::vector<PlainCadMesh> placed;

    /// What a load gives: the meshes that have vertices.
    std::vector<const PlainCadMesh*> Meshes() const;
};

PlainCad ReadPlainCad(const QString& fileName, double deflection, double angle, bool prefixFileName = true);

/// The first thing that differs between meshes and what they must be; empty when nothing does.
std::string Difference(const PlainCad& plain, const std::vector<Mesh*>& meshes);

} // namespace test
