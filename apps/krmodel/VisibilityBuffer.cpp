#include "apps/krmodel/VisibilityBuffer.h"

#include <algorithm>
#include <cmath>

namespace krmodel {

namespace {

/// The side of a triangle's edge: positive inside. In doubles, so that neighbours leave no pixel between
/// them.
struct EdgeLine {
    double perX, perY, constant;

    EdgeLine(const ScreenPoint& from, const ScreenPoint& to)
        : perX(double(from.y) - double(to.y)),
          perY(double(to.x) - double(from.x)),
          constant(-perX * double(from.x) - perY * double(from.y))
    {}
};

/// The part of a pixel row that lies inside; both ends belong to it.
struct Span {
    double first, last;

    void Clip(const EdgeLine& edge, double y)
    {
        const double atRow = edge.perY * y + edge.constant;
        if (edge.perX > 0)
            first = std::max(first, -atRow / edge.perX);
        else if (edge.perX < 0)
            last = std::min(last, -atRow / edge.perX);
        else if (atRow < 0)
            last = first - 1;
    }
};

double TwiceArea(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c)
{
    return (double(b.x) - double(a.x)) * (double(c.y) - double(a.y)) -
           (double(b.y) - double(a.y)) * (double(c.x) - double(a.x));
}

/// The inverse distance of a triangle's points, which is linear over the picture.
class Plane {
public:
    Plane(const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c, double twiceArea)
        : m_farthest(std::min({a.inverseDistance, b.inverseDistance, c.inverseDistance})),
          m_nearest(std::max({a.inverseDistance, b.inverseDistance, c.inverseDistance}))
    {
        const double ux = double(b.x) - double(a.x), uy = double(b.y) - double(a.y);
        const double vx = double(c.x) - double(a.x), vy = double(c.y) - double(a.y);
        const double u = double(b.inverseDistance) - double(a.inverseDistance);
        const double v = double(c.inverseDistance) - double(a.inverseDistance);
        m_perX = (u * vy - v * uy) / twiceArea;
        m_perY = (v * ux - u * vx) / twiceArea;
        m_constant = double(a.inverseDistance) - m_perX * double(a.x) - m_perY * double(a.y);
    }

    /// A sliver's plane is steep; between its corners' distances it must stay.
    float At(double x, double y) const
    {
        return std::clamp(float(m_perX * x + m_perY * y + m_constant), m_farthest, m_nearest);
    }

private:
    double m_perX, m_perY, m_constant;
    float m_farthest, m_nearest;
};

// Pixels are looked at in their middle.
constexpr double kMiddle = 0.5;

constexpr double kSmallestTwiceArea = 1e-9;

} // namespace

VisibilityBuffer::VisibilityBuffer(QSize size)
    : m_size(size),
      m_inverseDistances(size_t(size.width()) * size_t(size.height()), 0.0F),
      m_faces(m_inverseDistances.size(), -1)
{}

void VisibilityBuffer::Draw(int face, const ScreenPoint& a, const ScreenPoint& b, const ScreenPoint& c)
{
    const double twiceArea = TwiceArea(a, b, c);
    if (!(std::abs(twiceArea) > kSmallestTwiceArea))
        return;
    if (twiceArea < 0) {
        Draw(face, a, c, b);
        return;
    }
    const EdgeLine edges[] = {EdgeLine(a, b), EdgeLine(b, c), EdgeLine(c, a)};
    const Plane depth(a, b, c, twiceArea);
    const auto [top, bottom] = std::minmax({a.y, b.y, c.y});
    const auto [left, right] = std::minmax({a.x, b.x, c.x});
    const int firstRow = std::max(0, int(std::ceil(double(top) - kMiddle)));
    const int lastRow = std::min(m_size.height() - 1, int(std::floor(double(bottom) - kMiddle)));
    for (int row = firstRow; row <= lastRow; ++row) {
        Span span{std::max(kMiddle, double(left)), std::min(m_size.width() - kMiddle, double(right))};
        for (const EdgeLine& edge : edges)
            span.Clip(edge, row + kMiddle);
        const int firstColumn = int(std::ceil(span.first - kMiddle));
        const int lastColumn = int(std::floor(span.last - kMiddle));
        for (int column = firstColumn; column <= lastColumn; ++column)
            Cover(IndexOf(column, row), face, depth.At(column + kMiddle, row + kMiddle));
    }
}

void VisibilityBuffer::Cover(size_t pixel, int face, float inverseDistance)
{
    if (inverseDistance <= m_inverseDistances[pixel])
        return;
    m_inverseDistances[pixel] = inverseDistance;
    m_faces[pixel] = face;
}

} // namespace krmodel
