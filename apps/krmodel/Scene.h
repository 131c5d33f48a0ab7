#pragma once

#include <vector>

#include <Eigen/Core>

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/Formats.h"

namespace krmodel {

/// All meshes of a model as one list of triangles in camera axes, of a size around 1 and in the middle of the
/// picture.
struct Scene {
    std::vector<Eigen::Vector3f> points;
    /// (-1, -1, -1) for a face that cannot be drawn: an index outside, a corner that is not finite.
    std::vector<TriangleFace> faces;
    /// The faces across the edges, as Mesh::GetFaceNeighbours(); -1 everywhere where a mesh provides none.
    std::vector<TriangleFace> neighbours;
    float groundHeight = 0; ///< along the camera's up direction, where the model stands
};

/// @param camera is moved back until the model fits
Scene BuildScene(const Model& model, Camera& camera);

} // namespace krmodel
