#pragma once
// Numbering the nodes of edges when the order of elements is raised: each
// edge of the mesh gets its run of new IDs once, in the order in which the
// elements meet it, and every element lists the runs of its edges.

#include <cstdint>

#include "foundation/edge2.h"
#include "foundation/element_conventions.h"
#include "foundation/hash_table.h"

namespace kelm {
namespace tesskit2d {

using edge_record = triad<pair<edge2, unsigned>, unsigned, unsigned>;
using edge_map = hash_table<edge_record>;

constexpr std::uint64_t id_limit = 0xFFFFFFFFu; // null_id is never a node

/// Whether column `c` of a 3- or 4-row `conn` is a triangle.
inline bool is_triangle(const dense2D<unsigned>& conn, const unsigned* c) noexcept {
  return conn.rows == 3 || c[3] == null_id;
}

inline unsigned edge_node(const unsigned* c, bool triangle, unsigned e, unsigned end) noexcept {
  return c[triangle ? triangle_edge[e][end] : quadrangle_edge[e][end]];
}

/// Copies the corners and numbers the edge nodes in one pass over the
/// elements: an edge met for the first time takes the next `ne` IDs from
/// `next_id` on (advanced past them), and every element writes the run of
/// its edges straight away, reversed where it runs against the stored key,
/// and null_id in the rows it leaves, so that `out` (already sized) needs no
/// fill beforehand. False when a key could not be stored or the IDs ran past
/// 32 bits.
bool number_edges(const dense2D<unsigned>& conn, unsigned ne, edge_map& map, dense2D<unsigned>& out,
                  std::uint64_t& next_id) noexcept;

/// Copies the corners of every element into `out`, for a raise without edge
/// nodes.
void copy_corners(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept;

} // namespace tesskit2d
} // namespace kelm
