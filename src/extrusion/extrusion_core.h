#pragma once
// What every extrusion shares whatever its path: the list of swept nodes,
// the numbering of new nodes and the elements between layers.
//
// Layer 0 is the input nodes themselves. Layer j = 1 .. n_layers holds one
// copy of each swept node, in `used_nodes` order: the copy of
// used_nodes[p] in layer j is column n_nodes + (j - 1) C + p of `coords`,
// with C the number of swept nodes.

#include "foundation/vector_fast.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Lists the distinct nodes of the E2 edges `conn` in order of first
/// appearance (columns in order, row 0 before row 1), so that edges sharing
/// a node share its swept copies and the result is conforming without
/// merging. 0, or -199 when the list or its table cannot be sized; a key
/// lost to memory later on is not reported.
int collect_used_nodes(const dense2D<unsigned>& conn, id_list& used_nodes) noexcept;

/// Appends the E * n_layers quadrangles of the sweep to `conn_out`, widening
/// it to 4 rows (new entries `null_id`). Edge e, layer k is column
/// old_cols + e n_layers + k, holding (cur0, cur1, top1, top0): the edge's
/// nodes in layer k, then their copies in layer k + 1 in reverse order.
/// 0, or -199 with `conn_out` unchanged.
int extrude_elements_Q4(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        dense2D<unsigned>& conn_out) noexcept;

/// As `extrude_elements_Q4` with two triangles per cell, at columns
/// old_cols + 2 (e n_layers + k) and the next, in 3 rows. `pattern` picks the
/// diagonal: 0 cur1-top0 everywhere, 2 cur0-top1 where e + k is even and
/// cur1-top0 where it is odd, any other value cur0-top1 everywhere.
int extrude_elements_T3(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        int pattern, dense2D<unsigned>& conn_out) noexcept;

} // namespace tesskit2d
} // namespace kelm
