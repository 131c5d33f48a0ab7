#pragma once

#include <vector>

#include "samples/Rings.h"

// Most samples are skins: closed rings of points, one above the other, joined by bands of triangles. Angles
// run counter-clockwise seen from above, rings from the inside of the model's section over its outside; so
// the triangles face outwards.

using Soup = std::vector<Point>; ///< three corners a triangle

inline void AddTriangle(Soup& soup, const Point& a, const Point& b, const Point& c)
{
    soup.insert(soup.end(), {a, b, c});
}

inline void AddQuad(Soup& soup, const Point& a, const Point& b, const Point& c, const Point& d)
{
    AddTriangle(soup, a, b, c);
    AddTriangle(soup, a, c, d);
}

/// Joins two rings of equally many points. Seen from outside, @p upper lies above @p lower.
inline void AddBand(Soup& soup, const Ring& lower, const Ring& upper)
{
    for (size_t i = 0; i < lower.size(); ++i) {
        const size_t next = (i + 1) % lower.size();
        AddQuad(soup, lower[i], lower[next], upper[next], upper[i]);
    }
}

inline void AddBands(Soup& soup, const std::vector<Ring>& rings)
{
    for (size_t i = 1; i < rings.size(); ++i)
        AddBand(soup, rings[i - 1], rings[i]);
}

/// Closes a ring with a fan around @p centre that faces upwards.
inline void AddLid(Soup& soup, const Ring& ring, const Point& centre)
{
    for (size_t i = 0; i < ring.size(); ++i)
        AddTriangle(soup, ring[i], ring[(i + 1) % ring.size()], centre);
}

inline void AddFloor(Soup& soup, const Ring& ring, const Point& centre)
{
    AddLid(soup, Ring(ring.rbegin(), ring.rend()), centre);
}
