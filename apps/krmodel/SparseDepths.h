#pragma once

#include <vector>

#include "apps/krmodel/VisibilityBuffer.h"

namespace krmodel {

/// The distances of every third sample of every third row, for who looks at many places far apart: few enough
/// to stay in the processor's cache, where all of them do not.
class SparseDepths {
public:
    explicit SparseDepths(const VisibilityBuffer& visible)
        : m_columns((visible.GetSize().width() + kStep - 1) / kStep),
          m_rows((visible.GetSize().height() + kStep - 1) / kStep)
    {
        m_inverseDistances.reserve(size_t(m_columns) * size_t(m_rows));
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; ++column)
                m_inverseDistances.push_back(visible.InverseDistanceAt(SampleOf(column), SampleOf(row)));
    }

    /// The sample near this place; its inverse distance is 0 where nothing was drawn, and outside the
    /// picture.
    ScreenPoint Near(float x, float y) const
    {
        const int column = int(x) / kStep, row = int(y) / kStep;
        const bool isInside = x >= 0 && y >= 0 && column < m_columns && row < m_rows;
        return {float(SampleOf(column)) + 0.5F, float(SampleOf(row)) + 0.5F,
                isInside ? m_inverseDistances[size_t(row) * size_t(m_columns) + size_t(column)] : 0};
    }

private:
    static constexpr int kStep = 3;

    /// The middle one of three.
    static int SampleOf(int index) { return index * kStep + kStep / 2; }

    int m_columns, m_rows;
    std::vector<float> m_inverseDistances;
};

} // namespace krmodel
