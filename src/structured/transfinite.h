#pragma once
// Interior points of a structured grid from its four sides.

namespace kelm {
namespace tesskit2d {

/// Writes to `out` the `rows` (2 or 3) coordinates of the interior grid
/// position (i, j) by bilinearly blended transfinite interpolation of the
/// four sides, with u = i / M and v = j / N:
///
///   X(i, j) = (1 - v) X(i, 0) + v X(i, N) + (1 - u) X(0, j) + u X(M, j)
///           - (1 - u)(1 - v) X(0, 0) - u (1 - v) X(M, 0)
///           - u v X(M, N) - (1 - u) v X(0, N)
///
/// Only boundary nodes enter, read from the coordinate columns at `x` with
/// stride `ld`; their IDs come from `grid_node_id` over `boundary`. The
/// parameters are index ratios, so the spacing of the boundary nodes alone
/// shapes the grid.
void transfinite_point(const double* x, unsigned ld, unsigned rows, unsigned i, unsigned j, unsigned M, unsigned N,
                       unsigned n_nodes, const unsigned* boundary, double* out) noexcept;

/// The same for the whole grid line i, j = 1 .. N - 1, written to the
/// columns `out`, `out + ld`, ... with the values `transfinite_point` gives;
/// the terms of the line are looked up once.
void transfinite_line(const double* x, unsigned ld, unsigned rows, unsigned i, unsigned M, unsigned N, unsigned n_nodes,
                      const unsigned* boundary, double* out) noexcept;

} // namespace tesskit2d
} // namespace kelm
