#pragma once
// Numbering the nodes of edges when the order of elements is raised: each
// edge of the mesh gets its run of new IDs once, in the order in which the
// elements meet it, and every element lists the runs of its edges.

#include <cstdint>

#include "foundation/element_conventions.h"
#include "treisoma/vector_num.h"

namespace kelm {
namespace tesskit2d {

constexpr std::uint64_t id_limit = 0xFFFFFFFFu; // null_id is never a node

/// Whether column `c` of a 3- or 4-row `conn` is a triangle.
inline bool is_triangle(const dense2D<unsigned>& conn, const unsigned* c) noexcept {
  return conn.rows == 3 || c[3] == null_id;
}

inline unsigned edge_node(const unsigned* c, bool triangle, unsigned e, unsigned end) noexcept {
  return c[triangle ? triangle_edge[e][end] : quadrangle_edge[e][end]];
}

/// The edges of a mesh filed under their lower end node: node v owns the
/// slots from `start[v]` to `start[v + 1]`, one for every time an element
/// (or the caller's list of known edges) names an edge whose lower end is v,
/// so that an edge met for the first time always finds a free slot. A slot
/// holds the upper end plus one (0 while free, which fresh storage already
/// reads), the first ID of the edge's run and, where runs are longer than
/// one node, whether the edge was first met from its upper end.
///
/// A lookup reads the few slots of one node. On a mesh numbered with
/// neighbours near each other in memory those are near the slots just read;
/// on any numbering the table is half the size of a hash table of the same
/// edges, and the slots of the next elements' nodes can be requested ahead.
class edge_table {
public:
  /// Sizes the table for `conn` and files the `edges` the caller gives
  /// (first one wins when listed twice). False when memory runs out, or the
  /// table would pass 32-bit sizes; nothing else is changed then.
  bool build(const dense2D<unsigned>& conn, const dense2D<unsigned>& edges, unsigned ne, unsigned n_nodes) noexcept;

  /// Copies the corners and numbers the edge nodes in one pass over the
  /// elements: an edge met for the first time takes the next `ne` IDs from
  /// `next_id` on (advanced past them), and every element writes the run of
  /// its edges straight away, reversed where it runs against the direction
  /// the edge was first met in (an edge from a node to itself always reads
  /// as reversed), and null_id in the rows it leaves, so that `out` (already
  /// sized) needs no fill beforehand. False when the IDs ran past 32 bits.
  bool number(const dense2D<unsigned>& conn, unsigned ne, dense2D<unsigned>& out, std::uint64_t& next_id) noexcept;

private:
  vector_num<unsigned> start_;
  vector_num<unsigned> slots_;
  unsigned width_ = 2; // unsigned per slot: 3 where the direction matters
};

/// Copies the corners of every element into `out`, for a raise without edge
/// nodes.
void copy_corners(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept;

} // namespace tesskit2d
} // namespace kelm
