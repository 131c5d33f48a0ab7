#pragma once

#include <Eigen/Core>
#include <QSize>

namespace krmodel {

/// A direction to look from: the viewer stands in front (-y) of the model and walks around it to the right.
struct View {
    const char* name;
    double azimuthDegrees;
    double elevationDegrees; ///< 90 looks down on the model
};

/// The first one is the default.
constexpr View kViews[] = {
    {"three-quarter", -32, 26}, {"front", 0, 0}, {"right", 90, 0},   {"back", 180, 0},
    {"left", -90, 0},           {"top", 0, 90},  {"bottom", 0, -90}, {"iso", 45, 35.264},
};

/// A point of the picture: pixels from the top left corner, and one over the distance from the viewer, which
/// is linear across a triangle of the picture.
struct ScreenPoint {
    float x = 0;
    float y = 0;
    float inverseDistance = 0;
};

/// A perspective camera. Camera axes: x to the right, y up, z towards the viewer, who stands at (0, 0,
/// distance).
class Camera {
public:
    Camera(const View& view, QSize size);

    /// Turns model axes into camera axes; row 2 points to the viewer.
    const Eigen::Matrix3d& GetRotation() const { return m_rotation; }
    /// The model's z axis in camera axes.
    Eigen::Vector3f GetUp() const { return m_rotation.col(2).cast<float>(); }
    QSize GetSize() const { return m_size; }

    /// Moves the camera so far away that a point in camera axes lies in the picture, with some space around
    /// it.
    void Include(const Eigen::Vector3f& point);

    /// @param point in camera axes, nearer than the viewer
    ScreenPoint Project(const Eigen::Vector3f& point) const;
    /// The inverse of Project().
    Eigen::Vector3f Unproject(const ScreenPoint& point) const
    {
        const float distance = 1 / point.inverseDistance;
        const float scale = distance / m_focalPixels;
        return {(point.x - float(m_size.width()) / 2) * scale, (float(m_size.height()) / 2 - point.y) * scale,
                m_distance - distance};
    }
    Eigen::Vector3f GetPosition() const { return {0, 0, m_distance}; }
    /// Pixels that a length takes at the given distance from the viewer.
    float PixelsOf(float length, float inverseDistance) const
    {
        return length * inverseDistance * m_focalPixels;
    }

private:
    Eigen::Matrix3d m_rotation;
    QSize m_size;
    float m_focalPixels;
    float m_distance;
};

} // namespace krmodel
