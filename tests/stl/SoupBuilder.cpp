#include "tests/stl/SoupBuilder.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace {

using Point = Vector3D<float>;

constexpr double kTwoPi = 6.283185307179586;

void AddQuad(SoupCorners& soup, const Point& a, const Point& b, const Point& c, const Point& d)
{
    soup.insert(soup.end(), {a, b, c, a, c, d});
}

bool Chance(Random& random, double probability)
{
    return std::uniform_real_distribution<double>(0, 1)(random) < probability;
}

int Pick(Random& random, int low, int high)
{
    return std::uniform_int_distribution<int>(low, high)(random);
}

float Number(Random& random, float low, float high)
{
    return std::uniform_real_distribution<float>(low, high)(random);
}

Point RandomPoint(Random& random, float size)
{
    return {Number(random, -size, size), Number(random, -size, size), Number(random, -size, size)};
}

SoupCorners RandomShape(Random& random)
{
    switch (Pick(random, 0, 6)) {
    case 0:
        return CubeSoup(RandomPoint(random, 3), Number(random, 0.5f, 3));
    case 1:
        return SheetSoup(Pick(random, 1, 4), Number(random, 0.2f, 2));
    case 2:
        return TorusSoup(Pick(random, 3, 5), Pick(random, 3, 6), 5, 2);
    case 3:
        return MoebiusSoup(Pick(random, 3, 7));
    case 4: { // facets anywhere
        SoupCorners soup;
        for (int i = 3 * Pick(random, 1, 6); i > 0; --i)
            soup.push_back(RandomPoint(random, 3));
        return soup;
    }
    case 5: { // corners from few places: every kind of edge and fan
        SoupCorners places, soup;
        for (int i = Pick(random, 3, 7); i > 0; --i)
            places.push_back(RandomPoint(random, 3));
        for (int i = 3 * Pick(random, 2, 16); i > 0; --i)
            soup.push_back(places[std::size_t(Pick(random, 0, int(places.size()) - 1))]);
        return soup;
    }
    default: { // a fan of facets round one edge
        SoupCorners soup;
        for (int i = Pick(random, 2, 6); i > 0; --i)
            soup.insert(soup.end(), {Point(0, 0, 0), Point(0, 0, 1), RandomPoint(random, 2)});
        return soup;
    }
    }
}

// Splits an edge of one facet only: its neighbour has a longer edge there.
void AddTJunction(SoupCorners& soup, Random& random)
{
    const std::size_t t = 3 * std::size_t(Pick(random, 0, int(soup.size() / 3) - 1));
    const Point a = soup[t], b = soup[t + 1], c = soup[t + 2];
    const Point middle((a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2);
    soup[t + 1] = middle;
    soup.insert(soup.end(), {middle, b, c});
}

// Opens an edge into two and puts a facet of nearly no width between.
void AddSliver(SoupCorners& soup, Random& random)
{
    const std::size_t t = 3 * std::size_t(Pick(random, 0, int(soup.size() / 3) - 1));
    const Point a = soup[t], b = soup[t + 1];
    const Point beside(a.x + Number(random, -1e-4f, 1e-4f), a.y, a.z + Number(random, -1e-4f, 1e-4f));
    soup.insert(soup.end(), {b, a, beside});
    if (Chance(random, 0.5))
        soup[t] = beside;
}

void SpoilCorner(SoupCorners& soup, Random& random)
{
    constexpr float kOdd[] = {0.0f,
                              -0.0f,
                              std::numeric_limits<float>::quiet_NaN(),
                              std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::max(),
                              std::numeric_limits<float>::denorm_min(),
                              1e-20f};
    Point& p = soup[std::size_t(Pick(random, 0, int(soup.size()) - 1))];
    float* const axis[] = {&p.x, &p.y, &p.z};
    *axis[Pick(random, 0, 2)] = kOdd[Pick(random, 0, 7)];
}

// Zeros of both signs, as a mirrored half of a model has them.
void MixZeroSigns(SoupCorners& soup, Random& random)
{
    for (Point& p : soup) {
        if (Chance(random, 0.5))
            p.x = std::round(p.x) + 0.0f;
        if (p.x == 0 && Chance(random, 0.5))
            p.x = -p.x;
        if (p.y == 0 && Chance(random, 0.5))
            p.y = -p.y;
    }
}

void AddDefect(SoupCorners& soup, Random& random)
{
    const auto anyFacet = [&] {
        return soup.begin() + 3 * std::ptrdiff_t(Pick(random, 0, int(soup.size() / 3) - 1));
    };
    switch (Pick(random, 0, 10)) {
    case 0:
        return FlipFacets(soup, 0.3, random);
    case 1: { // the same facet twice
        const SoupCorners facet(anyFacet(), soup.end());
        soup.insert(soup.end(), facet.begin(), facet.begin() + 3);
        return;
    }
    case 2: { // two corners alike
        const auto facet = anyFacet();
        facet[Pick(random, 0, 2)] = facet[Pick(random, 0, 2)];
        return;
    }
    case 3:
        return AddTJunction(soup, random);
    case 4:
        return JitterCorners(soup, 0.3, 1e-5f, random);
    case 5:
        return JitterCorners(soup, 0.3, Number(random, 0.001f, 0.2f), random);
    case 6:
        return AddSliver(soup, random);
    case 7:
        return MixZeroSigns(soup, random);
    case 8:
        return SpoilCorner(soup, random);
    case 9: { // a hole
        const auto facet = anyFacet();
        if (soup.size() > 3)
            soup.erase(facet, facet + 3);
        return;
    }
    default:
        return ShuffleFacets(soup, random);
    }
}

} // namespace

SoupCorners CubeSoup(const Vector3D<float>& minimum, float size)
{
    const auto at = [&](int x, int y, int z) {
        return Point(minimum.x + float(x) * size, minimum.y + float(y) * size, minimum.z + float(z) * size);
    };
    SoupCorners soup;
    AddQuad(soup, at(0, 0, 0), at(0, 1, 0), at(1, 1, 0), at(1, 0, 0));
    AddQuad(soup, at(0, 0, 1), at(1, 0, 1), at(1, 1, 1), at(0, 1, 1));
    AddQuad(soup, at(0, 0, 0), at(1, 0, 0), at(1, 0, 1), at(0, 0, 1));
    AddQuad(soup, at(0, 1, 0), at(0, 1, 1), at(1, 1, 1), at(1, 1, 0));
    AddQuad(soup, at(0, 0, 0), at(0, 0, 1), at(0, 1, 1), at(0, 1, 0));
    AddQuad(soup, at(1, 0, 0), at(1, 1, 0), at(1, 1, 1), at(1, 0, 1));
    return soup;
}

SoupCorners SheetSoup(int n, float size)
{
    SoupCorners soup;
    const auto at = [&](int i, int j) { return Point(float(i) * size, float(j) * size, 0); };
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            AddQuad(soup, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return soup;
}

SoupCorners TorusSoup(int rows, int columns, float ringRadius, float tubeRadius)
{
    const auto at = [&](int i, int j) {
        const double u = kTwoPi * double(i % rows) / rows, v = kTwoPi * double(j % columns) / columns;
        const double r = double(ringRadius) + double(tubeRadius) * std::cos(v);
        return Point(float(r * std::cos(u)), float(r * std::sin(u)), float(double(tubeRadius) * std::sin(v)));
    };
    SoupCorners soup;
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j)
            AddQuad(soup, at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1));
    return soup;
}

SoupCorners MoebiusSoup(int n)
{
    const auto at = [&](int i, float side) {
        const double turn = kTwoPi * double(i % n) / n, half = turn / 2;
        const double w = i >= n ? -double(side) : double(side);
        const double r = 5 + w * std::cos(half);
        return Point(float(r * std::cos(turn)), float(r * std::sin(turn)), float(w * std::sin(half)));
    };
    SoupCorners soup;
    for (int i = 0; i < n; ++i)
        AddQuad(soup, at(i, -1), at(i + 1, -1), at(i + 1, 1), at(i, 1));
    return soup;
}

SoupCorners Turned(const SoupCorners& soup)
{
    SoupCorners turned = soup;
    for (std::size_t i = 0; i + 2 < turned.size(); i += 3)
        std::swap(turned[i], turned[i + 1]);
    return turned;
}

SoupCorners Joined(const SoupCorners& a, const SoupCorners& b)
{
    SoupCorners both = a;
    both.insert(both.end(), b.begin(), b.end());
    return both;
}

std::vector<Vector3D<float>> NoNormals(const SoupCorners& soup)
{
    return std::vector<Vector3D<float>>(soup.size() / 3);
}

void ShuffleFacets(SoupCorners& soup, Random& random)
{
    for (std::size_t i = soup.size() / 3; i-- > 1;) {
        const std::size_t j = std::size_t(Pick(random, 0, int(i)));
        if (i != j)
            std::swap_ranges(soup.begin() + std::ptrdiff_t(3 * i), soup.begin() + std::ptrdiff_t(3 * i + 3),
                             soup.begin() + std::ptrdiff_t(3 * j));
    }
}

void RotateCorners(SoupCorners& soup, Random& random)
{
    for (auto facet = soup.begin(); facet != soup.end(); facet += 3)
        std::rotate(facet, facet + Pick(random, 0, 2), facet + 3);
}

void FlipFacets(SoupCorners& soup, double probability, Random& random)
{
    for (std::size_t i = 0; i + 2 < soup.size(); i += 3)
        if (Chance(random, probability))
            std::swap(soup[i + std::size_t(Pick(random, 0, 1))], soup[i + 2]);
}

void JitterCorners(SoupCorners& soup, double probability, float distance, Random& random)
{
    for (Point& p : soup)
        if (Chance(random, probability))
            p += RandomPoint(random, distance);
}

SoupCorners RandomSoup(Random& random)
{
    SoupCorners soup = RandomShape(random);
    for (int more = Pick(random, 0, 5); more > 3; --more)
        soup = Joined(soup, RandomShape(random));
    if (Chance(random, 0.3))
        soup = Turned(soup);
    if (Chance(random, 0.5))
        ShuffleFacets(soup, random);
    if (Chance(random, 0.5))
        RotateCorners(soup, random);
    for (int defects = Pick(random, 0, 4); defects > 0; --defects)
        AddDefect(soup, random);
    return soup;
}
