#pragma once
// The worker behind the order-raising exports, shared with the splits that
// need mid-edge and centre nodes.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Adds `n_edge_nodes` nodes on every edge, `n_quad_nodes` (a perfect square)
/// inside every quadrangle and `n_tri_nodes` (0, 1 or 3) inside every
/// triangle of the 3- or 4-row `conn`, appending the nodes to `coords` and
/// rebuilding `out_conn`. Arguments, statuses and layout are those of the
/// worker form of `convert_into_high_order`, which is this function.
int raise_order(dense2D<double>& coords, const dense2D<unsigned>& conn, unsigned n_edge_nodes, unsigned n_quad_nodes,
                unsigned n_tri_nodes, dense2D<unsigned>& out_conn, const dense2D<unsigned>& edges);

} // namespace tesskit2d
} // namespace kelm
