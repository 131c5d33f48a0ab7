#pragma once

#include <vector>

#include <QSize>

#include "apps/krmodel/Camera.h"

namespace krmodel {

/// For each pixel the face that is nearest to the viewer.
class VisibilityBuffer {
public:
    explicit VisibilityBuffer(QSize size);

    /// Draws a triangle from either side; one without area is not seen. The points must be finite and in
    /// front of the viewer.
    void Draw(int face, const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c);

    QSize GetSize() const { return m_size; }
    /// -1 where nothing was drawn; also outside the picture.
    int FaceAt(int x, int y) const { return IsInside(x, y) ? m_faces[IndexOf(x, y)] : -1; }
    /// 0 where nothing was drawn; also outside the picture.
    float InverseDistanceAt(int x, int y) const
    {
        return IsInside(x, y) ? m_inverseDistances[IndexOf(x, y)] : 0;
    }

private:
    void Cover(size_t pixel, int face, float inverseDistance);
    bool IsInside(int x, int y) const
    {
        return x >= 0 && y >= 0 && x < m_size.width() && y < m_size.height();
    }
    size_t IndexOf(int x, int y) const { return size_t(y) * size_t(m_size.width()) + size_t(x); }

    QSize m_size;
    std::vector<float> m_inverseDistances;
    std::vector<int> m_faces;
};

} // namespace krmodel
