#pragma once
// Node counts and local edges of the element kinds.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Nodes of an element of kind `type`, for every value 0 to 22; 0 for any
/// value outside the enumeration.
int element_node_count(element_type type) noexcept;

/// The kind a linear surface array is checked as: 3 rows hold triangles
/// only, and any other row count (4 in practice) a mixed array in which
/// `null_id` in row 3 marks a triangle.
constexpr element_type surface_kind(unsigned rows) noexcept { return rows == 3 ? T3 : MIXED; }

/// Whether `conn` is a linear surface array over `n_nodes` nodes: 3 rows of
/// triangles or 4 rows of mixed columns, every node ID below `n_nodes` (and
/// `null_id` only in row 3 of a 4-row array). A 3-row array is checked as
/// triangles, since the mixed check would refuse its row count.
bool surface_ids_valid(const dense2D<unsigned>& conn, unsigned n_nodes) noexcept;

/// The triangles of a linear surface array: every column of a 3-row array,
/// the columns with `null_id` in row 3 of any other.
unsigned triangle_count(const dense2D<unsigned>& conn) noexcept;

/// Local corner pairs of the edges, in edge order. A triangle's edge i lies
/// opposite corner i; a quadrangle's edge i starts at corner i.
constexpr unsigned triangle_edge[3][2] = {{1, 2}, {2, 0}, {0, 1}};
constexpr unsigned quadrangle_edge[4][2] = {{0, 1}, {1, 2}, {2, 3}, {3, 0}};

/// Writes the two nodes of local edge `i` of the 4-row column `column` to
/// `out_pair` and returns the position after them. Row 3 of `null_id` makes
/// the column a triangle; for a triangle and i of 3 or more nothing is
/// written and `out_pair` is returned unchanged.
inline unsigned* element_edge(unsigned i, const unsigned* column, unsigned* out_pair) noexcept {
  if (column[3] == null_id) {
    if (i >= 3) return out_pair;
    out_pair[0] = column[triangle_edge[i][0]];
    out_pair[1] = column[triangle_edge[i][1]];
  } else {
    out_pair[0] = column[quadrangle_edge[i][0]];
    out_pair[1] = column[quadrangle_edge[i][1]];
  }
  return out_pair + 2;
}

/// Counts the entries equal to `value` along the run from `begin` to `end`
/// in steps of `stride`. With row 3 of a 4-row conn and `null_id`, the number
/// of triangles.
inline unsigned count_null_rows(const unsigned* begin, unsigned stride, const unsigned* end, unsigned value) noexcept {
  unsigned n = 0;
  for (const unsigned* p = begin; p < end; p += stride)
    n += *p == value;
  return n;
}

} // namespace tesskit2d
} // namespace kelm
