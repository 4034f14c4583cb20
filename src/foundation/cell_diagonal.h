#pragma once
// The diagonal that cuts a cell of a layered or structured grid into two
// triangles.

namespace kelm {
namespace tesskit2d {

/// Whether cell (a, b) is cut along its first diagonal (cur0-top1 of a swept
/// edge, A-C of a grid cell) rather than its second, by `pattern`: 0 never,
/// 2 where a + b is even, so that neighbouring cells alternate, and any other
/// value always. The grids refuse values outside 0 to 2 before they get here;
/// several sweeps let them through on purpose, and they then act as 1.
constexpr bool first_diagonal(int pattern, unsigned a, unsigned b) noexcept {
  return pattern == 2 ? (a + b) % 2 == 0 : pattern != 0;
}

} // namespace tesskit2d
} // namespace kelm
