#include "apps/krmodel/Camera.h"

#include <algorithm>
#include <cmath>

namespace krmodel {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr double kFieldOfViewDegrees = 26;
constexpr float kFilledPart = 0.84F;
constexpr float kNearestDistance = 1.5F;

Eigen::Matrix3d RotationOf(const View& view)
{
    const double azimuth = view.azimuthDegrees * kDegree, elevation = view.elevationDegrees * kDegree;
    const Eigen::Vector3d right(std::cos(azimuth), std::sin(azimuth), 0);
    const Eigen::Vector3d towards(std::sin(azimuth) * std::cos(elevation),
                                  -std::cos(azimuth) * std::cos(elevation), std::sin(elevation));
    const Eigen::Vector3d up(-std::sin(azimuth) * std::sin(elevation),
                             std::cos(azimuth) * std::sin(elevation), std::cos(elevation));
    Eigen::Matrix3d rotation;
    rotation << right.transpose(), up.transpose(), towards.transpose();
    return rotation;
}

} // namespace

Camera::Camera(const View& view, QSize size)
    : m_rotation(RotationOf(view)),
      m_size(size),
      m_focalPixels(
          float(std::min(size.width(), size.height()) / 2.0 / std::tan(kFieldOfViewDegrees / 2 * kDegree))),
      m_distance(kNearestDistance)
{}

void Camera::Include(const Eigen::Vector3f& point)
{
    const float halfWidth = kFilledPart * float(m_size.width()) / 2,
                halfHeight = kFilledPart * float(m_size.height()) / 2;
    const float sideways = std::max(std::abs(point.x()) / halfWidth, std::abs(point.y()) / halfHeight);
    m_distance = std::max(m_distance, point.z() + sideways * m_focalPixels);
}

ScreenPoint Camera::Project(const Eigen::Vector3f& point) const
{
    const float inverse = 1 / (m_distance - point.z());
    const float scale = m_focalPixels * inverse;
    return {float(m_size.width()) / 2 + point.x() * scale, float(m_size.height()) / 2 - point.y() * scale,
            inverse};
}

} // namespace krmodel
