#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "core/math/Vector3D.h"

/// Triangle soups for tests: three corners a facet.
using SoupCorners = std::vector<Vector3D<float>>;

/// The 12 facets of an axis-parallel cube, wound outwards.
SoupCorners CubeSoup(const Vector3D<float>& minimum, float size);

/// An open sheet of n x n squares of the given size in the plane z = 0, two facets a square.
SoupCorners SheetSoup(int n, float size);

/// A closed ring of rows x columns squares, two facets a square, wound outwards.
SoupCorners TorusSoup(int rows, int columns, float ringRadius, float tubeRadius);

/// A strip of n squares whose ends are joined with half a twist.
SoupCorners MoebiusSoup(int n);

SoupCorners Turned(const SoupCorners& soup);
SoupCorners Joined(const SoupCorners& a, const SoupCorners& b);

/// Zero normals, one a facet: what a binary file leaves.
std::vector<Vector3D<float>> NoNormals(const SoupCorners& soup);

using Random = std::mt19937;

void ShuffleFacets(SoupCorners& soup, Random& random);
void RotateCorners(SoupCorners& soup, Random& random);
/// Swaps two corners of each facet with the given probability.
void FlipFacets(SoupCorners& soup, double probability, Random& random);
/// Moves each corner with the given probability by up to the given distance on each axis.
void JitterCorners(SoupCorners& soup, double probability, float distance, Random& random);

/// A soup of any sort: shapes, pieces and defects are drawn at random.
SoupCorners RandomSoup(Random& random);
