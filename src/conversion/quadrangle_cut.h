#pragma once
// The diagonal along which a quadrangle is cut into two triangles. Every form
// of split_Q4_into_T3 that looks at coordinates goes through here, so that
// they all cut a given quadrangle alike.

#include <algorithm>

#include "conversion/triangle_quality.h"
#include "foundation/tolerances.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// A quadrangle's corners a, b, c, d, rotated from its column so that the
/// smallest ID comes first (the first of two equal ones). A cut chosen on
/// them is a property of the corners, not of the row a column starts with, so
/// two columns holding the same quadrangle are cut alike.
struct rotated_quadrangle {
  unsigned a, b, c, d;
};

inline rotated_quadrangle smallest_first(const unsigned* column) noexcept {
  const unsigned k = static_cast<unsigned>(std::min_element(column, column + 4) - column);
  return {column[k], column[(k + 1) % 4], column[(k + 2) % 4], column[(k + 3) % 4]};
}

/// The two triangles of a cut, in the order they are written: (a, b, c) then
/// (c, d, a) along a-c, (b, c, d) then (d, a, b) along b-d. Both keep the
/// quadrangle's orientation.
struct triangle_pair {
  unsigned first[3], second[3];
};

inline triangle_pair cut_along(const rotated_quadrangle& q, bool along_bd) noexcept {
  if (along_bd) return {{q.b, q.c, q.d}, {q.d, q.a, q.b}};
  return {{q.a, q.b, q.c}, {q.c, q.d, q.a}};
}

/// The cut whose worse triangle has the better `triangle_quality`: true for
/// b-d. The cut along b-d has to win by more than 1e-12, so near-ties go to
/// the diagonal through the smallest ID. In the plane an inverted triangle
/// has a negative quality, so a non-convex quadrangle is cut through its
/// reflex corner.
inline bool better_cut_is_bd(const dense2D<double>& coords, const rotated_quadrangle& q) noexcept {
  const double along_ac = std::min(triangle_quality(coords, q.a, q.b, q.c), triangle_quality(coords, q.c, q.d, q.a));
  const double along_bd = std::min(triangle_quality(coords, q.b, q.c, q.d), triangle_quality(coords, q.d, q.a, q.b));
  return along_ac <= along_bd - tolerance::diagonal_tie;
}

} // namespace tesskit2d
} // namespace kelm
