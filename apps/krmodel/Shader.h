#pragma once

#include <algorithm>
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
           const std::vector<ScreenPoint>& projected, const Background& background);

    Sample At(int x, int y) const
    {
        const int face = m_visible.FaceAt(x, y);
        return face < 0 ? GroundAt(x, y) : Opaque(SurfaceAt(face, x, y));
    }

private:
    static Sample Opaque(const Colour& colour)
    {
        // Brighter than a picture can be, a sample would outshine its neighbours in the pixel.
        return {std::min(colour.x(), 1.0F), std::min(colour.y(), 1.0F), std::min(colour.z(), 1.0F), 1};
    }
    Sample GroundAt(int x, int y) const;
    float ShadowAt(int x, int y) const;
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
    const Background& m_background;
    SparseDepths m_depths;
    CornerNormals m_normals;
    std::optional<GroundShadow> m_shadow;
};

} // namespace krmodel
