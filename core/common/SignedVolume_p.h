#pragma once

#include <cmath>

#include "core/math/Vector3D.h"

namespace kr {

/// The signed volume inside a surface, facet by facet: the divergence theorem, in double precision.
///
/// Each facet spans a tetrahedron with the first corner of the first facet taken; from a point far away the
/// terms would be large and cancel. A facet without area adds exactly 0, because the area comes from
/// differences of its own corners, which are exact for corners of like size. A facet with a corner that is
/// not finite is passed over.
class SignedVolume {
public:
    SignedVolume() = default;
    /// For those who know the first corner that counts.
    explicit SignedVolume(const Vector3D<float>& origin)
        : m_origin{double(origin.x), double(origin.y), double(origin.z)}, m_hasOrigin(true)
    {}

    void Add(const Vector3D<float>& a, const Vector3D<float>& b, const Vector3D<float>& c)
    {
        const Vector3D<double> area = CalcAreaVector(a, b, c);
        if (!m_hasOrigin && !TakeOrigin(a, area))
            return;
        const double part = (double(a.x) - m_origin.x) * area.x + (double(a.y) - m_origin.y) * area.y +
                            (double(a.z) - m_origin.z) * area.z;
        m_sixfold += std::isfinite(part) ? part : 0.0;
    }

    /// Adds the part of a facet that was worked out elsewhere: six times the volume of its tetrahedron.
    void AddSixfold(double part) { m_sixfold += part; }

    /// Positive when the facets wind counter-clockwise seen from outside.
    double Value() const { return m_sixfold / 6; }

private:
    bool TakeOrigin(const Vector3D<float>& corner, const Vector3D<double>& area)
    {
        m_hasOrigin = std::isfinite(area.x + area.y + area.z);
        m_origin = {double(corner.x), double(corner.y), double(corner.z)};
        return m_hasOrigin;
    }

    Vector3D<double> m_origin;
    double m_sixfold = 0;
    bool m_hasOrigin = false;
};

} // namespace kr
