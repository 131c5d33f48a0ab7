#include "apps/krmodel/PathDrawing.h"

#include <algorithm>
#include <vector>

#include <QPainter>
#include <QPainterPath>

#include "apps/krmodel/Look.h"
#include "apps/krmodel/PathReport.h"

namespace krmodel {

namespace {

constexpr double kMargin = 0.06; ///< of the picture's shorter side
constexpr double kLineWidth = 0.004;
constexpr double kThinnestLine = 1.2; ///< in pixels
constexpr float kLineShade = 0.3F;
constexpr int kFillAlpha = 110;

/// Carries points into the picture. It halves first: the largest numbers lie further apart than numbers
/// reach.
class Fit {
public:
    Fit(const PathBounds& bounds, QSize size)
        : m_middle(bounds.minimum.x / 2 + bounds.maximum.x / 2, bounds.minimum.y / 2 + bounds.maximum.y / 2),
          m_centre(size.width() / 2.0, size.height() / 2.0)
    {
        const double margin = kMargin * std::min(size.width(), size.height());
        const double halfWidth = bounds.maximum.x / 2 - bounds.minimum.x / 2;
        const double halfHeight = bounds.maximum.y / 2 - bounds.minimum.y / 2;
        const double roomX = m_centre.x() - margin, roomY = m_centre.y() - margin;
        const bool isWide = halfWidth / roomX >= halfHeight / roomY;
        m_half = isWide ? halfWidth : halfHeight;
        m_room = isWide ? roomX : roomY;
    }

    QPointF operator()(const Vector2D<double>& point) const
    {
        return {m_centre.x() + Part(point.x, m_middle.x) * m_room,
                m_centre.y() - Part(point.y, m_middle.y) * m_room};
    }

private:
    double Part(double coordinate, double middle) const
    {
        return m_half > 0 ? (coordinate / 2 - middle / 2) / m_half * 2 : 0;
    }

    Vector2D<double> m_middle;
    QPointF m_centre;
    double m_half; ///< the way from the middle that becomes the room; 0 when all points are one
    double m_room;
};

/// A contour in the picture, in pieces between points that are not finite.
std::vector<QPolygonF> PiecesOf(const DXFPathFile::Contour& contour, const Fit& fit)
{
    std::vector<QPolygonF> pieces;
    bool isDown = false;
    for (const Vector2D<double>& point : contour) {
        const bool wasDown = isDown;
        isDown = IsFinite(point);
        if (!isDown)
            continue;
        if (!wasDown)
            pieces.emplace_back();
        pieces.back() << fit(point);
    }
    return pieces;
}

void Fill(QPainter& painter, const std::vector<DXFPathFile::Contour>& contours, const Fit& fit)
{
    QPainterPath inside;
    inside.setFillRule(Qt::OddEvenFill);
    for (const DXFPathFile::Contour& contour : contours) {
        const std::vector<QPolygonF> pieces = PiecesOf(contour, fit);
        if (IsClosed(contour) && pieces.size() == 1)
            inside.addPolygon(pieces.front());
    }
    QColor colour(Encoded(kOwnColour));
    colour.setAlpha(kFillAlpha);
    painter.fillPath(inside, colour);
}

/// A line without length, of which nothing would be drawn.
bool IsDot(const QPolygonF& piece)
{
    return piece.count(piece.front()) == piece.size();
}

void Stroke(QPainter& painter, const std::vector<DXFPathFile::Contour>& contours, const Fit& fit)
{
    for (const DXFPathFile::Contour& contour : contours)
        for (const QPolygonF& piece : PiecesOf(contour, fit)) {
            if (IsDot(piece))
                painter.drawPoint(piece.front());
            else
                painter.drawPolyline(piece);
        }
}

QPen Pen(QSize size)
{
    QPen pen(QColor(Encoded(kOwnColour * kLineShade)));
    pen.setWidthF(std::max(kThinnestLine, kLineWidth * std::min(size.width(), size.height())));
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    return pen;
}

void DrawBackground(QPainter& painter, QSize size)
{
    for (int row = 0; row < size.height(); ++row) {
        const float down = (float(row) + 0.5F) / float(size.height());
        const Colour colour = kBackgroundTop + (kBackgroundBottom - kBackgroundTop) * down;
        painter.fillRect(0, row, size.width(), 1, QColor(Encoded(colour)));
    }
}

} // namespace

QImage DrawPaths(const DXFPathFile::Paths& paths, QSize size)
{
    const Fit fit(Measure(paths).bounds, size);
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    DrawBackground(painter, size);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Pen(size));
    for (const auto& [id, contours] : paths)
        Fill(painter, contours, fit);
    for (const auto& [id, contours] : paths)
        Stroke(painter, contours, fit);
    painter.end();
    return image;
}

} // namespace krmodel
