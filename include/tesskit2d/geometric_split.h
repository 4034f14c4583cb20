#pragma once
// Splitting elements with the help of their coordinates: any linear mesh
// into quadrangles only, and quadrangles into triangles along the better
// diagonal.
//
// Triangle quality, used to choose a diagonal: 2 sqrt(3) * (twice the area)
// / (perimeter * longest edge), 1 for an equilateral triangle. In 2D the
// area is signed (negative for a clockwise triangle), in 3D it is not.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Splits every element of a linear mesh into quadrangles through its
/// mid-edge nodes and a centre node, appending them to `out_conn`.
///
/// - `coords`: in-out, 2 or 3 rows by #nodes. The new nodes are appended:
///   one per distinct edge (an edge shared by two elements gets one node),
///   then one per element, numbered as `convert_into_high_order` with one
///   node per edge and one inside each element numbers them.
/// - `conn`: 3 rows by #elements (triangles), or 4 rows with `null_id` in
///   row 3 for a triangle. Not changed.
/// - `out_conn`: appended to; empty (rows * cols of 0) or 4 rows. Existing
///   columns stay first and unchanged; an empty one gets 4 rows.
/// - `edges`: 3 rows by #known edges, or empty: edges whose mid node exists
///   already (ends in rows 0 and 1, mid node in row 2), which is used
///   instead of a new one.
///
/// Children, as corners a, b, c (d), mid nodes m_ab etc. and centre o: a
/// triangle gives (a, m_ab, o, m_ca), (b, m_bc, o, m_ab), (c, m_ca, o, m_bc);
/// a quadrangle gives (a, m_ab, o, m_da), (b, m_bc, o, m_ab), (c, m_cd, o,
/// m_bc), (d, m_da, o, m_cd). Child i starts at corner i and keeps the
/// parent's orientation, so the total area is unchanged.
///
/// Statuses in checking order: 0 on success and when `conn` has no columns
/// (nothing else is looked at); -1 `coords` has neither 2 nor 3 rows; -2
/// `conn` has neither 3 nor 4 rows or holds an ID that is not a node; -3
/// `out_conn` is not empty and has other than 4 rows; -4 `edges` is not
/// empty and is not a 3-row array of node IDs; -199 memory ran out, with
/// `coords` back to its former columns and `out_conn` unchanged but for
/// capacity. Any failure of the order-raising step is reported as -199.
TESSKIT2D_EXPORT int split_into_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out_conn,
                                   const dense2D<unsigned>& edges);

/// Cuts each quadrangle into two triangles along the diagonal that gives
/// the better worst triangle, appending them to `out_conn`; triangles are
/// copied.
///
/// - `coords`: in, 2 or 3 rows by #nodes. Not changed.
/// - `conn`: 3 rows (triangles, copied as they are) or 4 rows (quadrangles,
///   with `null_id` in row 3 for a triangle).
/// - `out_conn`: appended to; empty (rows * cols of 0) or 3 rows.
///
/// A quadrangle's corners are first rotated so that its smallest ID comes
/// first, as a, b, c, d. Cutting along a-c gives (a, b, c), (c, d, a);
/// along b-d, (b, c, d), (d, a, b). The cut along b-d is taken only when its
/// worse triangle beats the worse of a-c by more than 1e-12, so a near-tie
/// goes to the diagonal through the smallest ID, and the choice does not
/// depend on which corner a column starts with. In 2D a non-convex
/// quadrangle is thus cut through its reflex corner.
///
/// Returns the number of quadrangles split (0 for 3-row input), so test the
/// result for `< 0`. Statuses in checking order: 0 when `conn` has no
/// columns; -1 `coords` has neither 2 nor 3 rows; -2 `conn` has neither 3
/// nor 4 rows or holds an ID that is not a node; -3 `out_conn` is not empty
/// and has other than 3 rows; -199 memory ran out, `out_conn` unchanged but
/// for capacity.
///
/// The overload without `coords` (in linear_reduction.h) always cuts along
/// rows 0-2.
TESSKIT2D_EXPORT int split_Q4_into_T3(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      dense2D<unsigned>& out_conn);

} // namespace tesskit2d
} // namespace kelm
