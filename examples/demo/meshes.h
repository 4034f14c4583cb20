#pragma once
// The demo's built-in meshes.

#include "tesskit2d/mesh.h"

namespace demo {

using kelm::dense2D;

/// Nodes of an (n + 1) by (n + 1) grid on the unit square, row by row.
dense2D<double> grid_nodes(unsigned n);

/// The n by n quadrangles of that grid, counter-clockwise.
dense2D<unsigned> grid_quadrangles(unsigned n);

/// A quadratic mesh of the unit square on a (2n + 1) by (2n + 1) grid of
/// nodes: the left half as Q9 quadrangles, the right half as pairs of T6
/// triangles, in one 9-row mixed array.
dense2D<unsigned> mixed_quadratic_grid(unsigned n);

} // namespace demo
