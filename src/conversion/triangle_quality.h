#pragma once
// The shape measure that chooses a quadrangle's diagonal.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Shape quality of the triangle of nodes a, b, c of `coords` (2 or 3 rows):
/// 2 sqrt(3) * (twice its area) / (perimeter * longest edge), which is 1 for
/// an equilateral triangle and falls to 0 as it flattens. In 2D the area is
/// signed, so a clockwise triangle has a negative quality; in 3D it is never
/// negative. Clamped to [-1, 1]; a degenerate triangle (no perimeter) gives
/// 0, and a NaN coordinate gives NaN in 2D and 0 in 3D.
double triangle_quality(const dense2D<double>& coords, unsigned a, unsigned b, unsigned c) noexcept;

} // namespace tesskit2d
} // namespace kelm
