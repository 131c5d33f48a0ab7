#pragma once

#include <array>
#include <optional>
#include <vector>

#include <Eigen/Core>

#include "apps/krmodel/CornerNormals.h"
#include "apps/krmodel/GroundShadow.h"
#include "apps/krmodel/SparseDepths.h"
#include "apps/krmodel/VisibilityBuffer.h"

namespace krmodel {

/// Colours one sample at a time of what a visibility buffer shows. Safe from several threads.
class Shader {
public:
    /// The arguments must outlive the shader.
    /// @param projected the scene's points in the picture
    Shader(const Scene& scene, const Camera& camera, const VisibilityBuffer& visible,
           const std::vector<ScreenPoint>& projected);

    Colour At(int x, int y) const
    {
        const int face = m_visible.FaceAt(x, y);
        return face < 0 ? GroundAt(x, y) : SurfaceAt(face, x, y);
    }

private:
    Colour GroundAt(int x, int y) const;
    Colour SurfaceAt(int face, int x, int y) const;
    Colour Lit(const Colour& material, const Eigen::Vector3f& normal, const Eigen::Vector3f& toViewer,
               float open) const;
    std::array<float, 3> WeightsAt(int face, int x, int y) const;
    Eigen::Vector3f NormalAt(int face, const std::array<float, 3>& weights) const;
    Colour PaintAt(int face, const std::array<float, 3>& weights) const;
    bool ShowsBack(int face, const Eigen::Vector3f& toViewer) const;
    float OcclusionAt(int x, int y, const Eigen::Vector3f& point, const Eigen::Vector3f& normal) const;

    const Scene& m_scene;
    const Camera& m_camera;
    const VisibilityBuffer& m_visible;
    const std::vector<ScreenPoint>& m_projected;
    SparseDepths m_depths;
    CornerNormals m_normals;
    std::optional<GroundShadow> m_shadow;
};

} // namespace krmodel
