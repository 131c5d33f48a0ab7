#pragma once

#include <memory>
#include <vector>

#include "fileformat/cad/CadModule_p.h"
#include "fileformat/cad/ShapeWalk_p.h"

class TopoDS_Face;

namespace kr::cad {

/// What the caller of an import asks for, in the units that the kinds of shapes give it.
struct Fineness {
    double deflection = 0;
    double angle = 0;
};

/// What the deflection of solids and shells is a part of: four times the longest side of the box around the
/// exact geometry, of its finite part if it is open; 1 if there is none.
double ComputeShapeSize(const TopoDS_Shape& shape);

/// The mesh of a loose face, its vertices not merged, neither named nor finished.
/// Deflection: length in model units, at least 0.0001. Angle: radians.
/// @return null when there are no vertices
std::unique_ptr<Mesh> TessellateFace(const TopoDS_Face& face, const Fineness& fineness);

/// The mesh of a placed shape, named, not finished. A loose face is done by TessellateFace().
/// Deflection: thousandths of ComputeShapeSize(). Angle: degrees.
/// @return null when there are no vertices
std::unique_ptr<Mesh> TessellateShape(const PlacedShape& placed, const Fineness& fineness);

/// The meshes of all shapes, null where a shape has no triangles; on all cores.
MeshList TessellateShapes(const std::vector<PlacedShape>& shapes, const Fineness& fineness);

/// Provides normals and neighbours at their first request and sets the volume.
void FinishMesh(Mesh& mesh);

/// Finishes all meshes; on all cores.
void FinishMeshes(const MeshList& meshes);

} // namespace kr::cad
