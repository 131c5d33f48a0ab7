#pragma once

#include <vector>

#include <Eigen/Core>

#include "apps/krmodel/Camera.h"
#include "apps/krmodel/Formats.h"
#include "apps/krmodel/Paint.h"

namespace krmodel {

/// All meshes of a model as one list of triangles in camera axes, of a size around 1 and in the middle of the
/// picture.
struct Scene {
    std::vector<Eigen::Vector3f> points;
    /// (-1, -1, -1) for a face that cannot be drawn: an index outside, a corner that is not finite.
    std::vector<TriangleFace> faces;
    /// The faces across the edges, as Mesh::GetFaceNeighbours(); -1 everywhere where a mesh provides none.
    std::vector<TriangleFace> neighbours;
    /// The first is for faces whose material is not known.
    std::vector<Paint> paints = {Paint()};
    std::vector<int> paintOfFace; ///< indices in paints, for the first faces or for none
    std::vector<Vector2D<float>> textureCoordinates;
    std::vector<TriangleFace> textureFaces; ///< for the first faces or for none; all indices are good
    float groundHeight = 0;                 ///< along the camera's up direction, where the model stands

    const Paint& PaintOf(int face) const
    {
        return size_t(face) < paintOfFace.size() ? paints[size_t(paintOfFace[size_t(face)])] : paints[0];
    }
};

/// @param camera is moved back until the model fits
Scene BuildScene(const Model& model, Camera& camera);

} // namespace krmodel
