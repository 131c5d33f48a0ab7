#pragma once

#include <vector>

#include "apps/krmodel/Scene.h"

namespace krmodel {

/// The soft shadow that a scene throws on the plane that it stands on.
class GroundShadow {
public:
    /// @param up      unit vector, normal of the ground
    /// @param toLight unit vector, well above the ground
    GroundShadow(const Scene& scene, const Eigen::Vector3f& up, const Eigen::Vector3f& toLight);

    /// How dark the shadow is at a point of the ground: 0 none, 1 full.
    float At(const Eigen::Vector3f& point) const;

private:
    Eigen::Vector2f OnGround(const Eigen::Vector3f& point) const;
    float Cell(int column, int row) const;
    void Draw(const Scene& scene, const std::vector<Eigen::Vector2f>& thrown);
    void Blur();

    Eigen::Vector3f m_right;
    Eigen::Vector3f m_forward;
    Eigen::Vector2f m_origin = Eigen::Vector2f::Zero(); ///< of the first cell
    float m_cellsPerLength = 1;
    std::vector<float> m_cells; ///< kSide rows of kSide
};

} // namespace krmodel
