#pragma once
// Placing the nodes that raising the order adds: on the straight edges
// between corners, and inside elements through their shape functions.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Places the `ne` new nodes of every edge that `out` numbers from `n_nodes`
/// up to `end_id`, once each, where the element walk first met the edge:
/// node k of an edge stored as (A, B) at local s = (k + 1) * 2 / (ne + 1) - 1
/// on the segment from A (s = -1) to B (s = 1). Edges given by the caller
/// have IDs below `n_nodes` and keep the positions they have.
void place_edge_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<unsigned>& out, unsigned ne,
                      unsigned n_nodes, unsigned end_id) noexcept;

/// Numbers and places the interior nodes, element by element from `next_id`
/// on: an m by m grid in a quadrangle, `nt` nodes in a triangle.
void place_interior_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out, unsigned ne,
                          unsigned m, unsigned nt, unsigned n_nodes, unsigned next_id) noexcept;

} // namespace tesskit2d
} // namespace kelm
