#include "apps/krmodel/GroundShadow.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

#include "apps/krmodel/VisibilityBuffer.h"

namespace krmodel {

namespace {

constexpr int kSide = 320;
constexpr int kMargin = 40; ///< cells around the shadow, into which its soft border runs
constexpr size_t kBlurRadius = 6;
constexpr int kBlurPasses = 3; ///< three running means look like a Gaussian

/// Running mean over 2 * kBlurRadius + 1 cells of one row or column; beyond its ends there is no shadow.
void BlurLine(float* first, size_t step)
{
    float line[kSide + 2 * kBlurRadius + 1] = {};
    for (size_t i = 0; i < kSide; ++i)
        line[i + kBlurRadius] = first[i * step];
    float sum = 0;
    for (size_t i = 0; i < 2 * kBlurRadius; ++i)
        sum += line[i];
    for (size_t i = 0; i < kSide; ++i) {
        sum += line[i + 2 * kBlurRadius];
        first[i * step] = sum / float(2 * kBlurRadius + 1);
        sum -= line[i];
    }
}

} // namespace

GroundShadow::GroundShadow(const Scene& scene, const Eigen::Vector3f& up, const Eigen::Vector3f& toLight)
    : m_right(up.unitOrthogonal()), m_forward(up.cross(m_right)), m_cells(size_t(kSide) * kSide, 0.0F)
{
    std::vector<Eigen::Vector2f> thrown;
    thrown.reserve(scene.points.size());
    Eigen::AlignedBox2f bounds;
    for (const Eigen::Vector3f& point : scene.points) {
        const float height = up.dot(point) - scene.groundHeight;
        thrown.push_back(OnGround(point - toLight * (height / up.dot(toLight))));
        if (point.allFinite())
            bounds.extend(thrown.back());
    }
    if (bounds.isEmpty())
        return;
    const float extent = std::max(bounds.sizes().maxCoeff(), 1e-3F);
    m_cellsPerLength = (kSide - 2 * kMargin) / extent;
    m_origin = bounds.min() - Eigen::Vector2f::Constant(kMargin / m_cellsPerLength);
    Draw(scene, thrown);
    Blur();
}

Eigen::Vector2f GroundShadow::OnGround(const Eigen::Vector3f& point) const
{
    return {m_right.dot(point), m_forward.dot(point)};
}

void GroundShadow::Draw(const Scene& scene, const std::vector<Eigen::Vector2f>& thrown)
{
    VisibilityBuffer cells({kSide, kSide});
    const auto inCells = [&](int index) {
        const Eigen::Vector2f cell = (thrown[size_t(index)] - m_origin) * m_cellsPerLength;
        return ScreenPoint{cell.x(), cell.y(), 1};
    };
    for (const TriangleFace& face : scene.faces)
        if (face[0] >= 0)
            cells.Draw(0, inCells(face[0]), inCells(face[1]), inCells(face[2]));
    for (int row = 0; row < kSide; ++row)
        for (int column = 0; column < kSide; ++column)
            m_cells[size_t(row) * kSide + size_t(column)] = cells.FaceAt(column, row) < 0 ? 0.0F : 1.0F;
}

void GroundShadow::Blur()
{
    for (int pass = 0; pass < kBlurPasses; ++pass)
        for (size_t line = 0; line < kSide; ++line) {
            BlurLine(&m_cells[line * kSide], 1);
            BlurLine(&m_cells[line], kSide);
        }
}

float GroundShadow::Cell(int column, int row) const
{
    const bool isInside = column >= 0 && row >= 0 && column < kSide && row < kSide;
    return isInside ? m_cells[size_t(row) * kSide + size_t(column)] : 0;
}

float GroundShadow::At(const Eigen::Vector3f& point) const
{
    const Eigen::Vector2f cell =
        (OnGround(point) - m_origin) * m_cellsPerLength - Eigen::Vector2f::Constant(0.5F);
    if (!(cell.cwiseAbs().maxCoeff() < 2 * kSide))
        return 0;
    const int column = int(std::floor(cell.x())), row = int(std::floor(cell.y()));
    const float right = cell.x() - float(column), down = cell.y() - float(row);
    const float above = Cell(column, row) * (1 - right) + Cell(column + 1, row) * right;
    const float below = Cell(column, row + 1) * (1 - right) + Cell(column + 1, row + 1) * right;
    return above * (1 - down) + below * down;
}

} // namespace krmodel
