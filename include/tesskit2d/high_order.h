#pragma once
/// \file
/// \brief Raising a linear mesh of triangles, quadrangles or both to a
/// higher order: new nodes along every edge and inside every element, and
/// longer columns.
///
/// \par Layout of a raised column
/// The corners (3 for a triangle, 4 for a quadrangle), then the
/// `n_edge_nodes` nodes of edge 0, of edge 1, and so on in local edge order,
/// then the interior nodes. A triangle's edge i lies opposite corner i,
/// (1, 2), (2, 0), (0, 1), so its edge rows start at row 3; a quadrangle's
/// edge i is (i, i + 1 mod 4) and its edge rows start at row 4. Rows that an
/// element does not use hold `null_id`. With one node per edge and one
/// inside each quadrangle, T3 becomes T6 and Q4 becomes Q9 in the usual
/// order; with none inside, Q4 becomes Q8. A mixed 4-row mesh gives a mixed
/// quadratic array whose triangles have `null_id` in row 6.
///
/// \par Shared edges
/// An edge shared by two elements gets its nodes once. They take
/// consecutive IDs, numbered in the order in which a walk over the
/// elements, column by column and edge by edge, first meets the edge, and
/// they run from the edge's first node as that first element lists it. An
/// element that runs along the edge the other way lists the same nodes in
/// reverse order.
///
/// \par New nodes
/// New nodes go behind the existing columns of `coords`, which keep their
/// IDs and values: first the edge nodes, then the interior nodes element by
/// element. Edge nodes are spaced evenly on the straight segment; interior
/// nodes by the corners' linear (triangle) or bilinear (quadrangle)
/// interpolation, except with one node per edge where some edge of the
/// element was given in `edges`: then the quadratic element's shape
/// functions through its mid nodes, so that a curved given edge bends the
/// interior too.
///
/// \par Known edges
/// `edges` (optional) lists edges whose nodes exist already: one column per
/// edge, `n_edge_nodes + 2` rows, with the two ends in rows 0 and 1 and the
/// first of the edge's nodes in row 2; its other nodes follow with
/// consecutive IDs, running from the end in row 0. An element on such an
/// edge uses those nodes, and no position is computed for them. Only rows 0
/// to 2 are read.
///
/// \par Example
/// \code
///   // Two triangles sharing the edge 1-2, raised to cubic edges and a
///   // centre node each.
///   double xy[] = {0, 0, 1, 0, 0, 1, 1, 1};
///   unsigned tri[] = {0, 1, 2, 2, 1, 3};
///   dense2D<double> coords; // grows, so a copy rather than a view
///   coords.copy(dense2D<double>::view(xy, 2, 4));
///   const auto conn = dense2D<unsigned>::view(tri, 3, 2);
///   const dense2D<unsigned> no_edges;
///   dense2D<unsigned> cubic;
///   const int status = convert_into_high_order(coords, conn, 2, 0, 1, cubic, no_edges);
///   // 0; cubic is 10 x 2, coords has 4 + 5 * 2 + 2 = 16 columns:
///   //   (0, 1, 2,  4, 5,  6, 7,  8, 9, 14)
///   //   (2, 1, 3, 10, 11, 12, 13, 5, 4, 15)
///   // The shared edge's two nodes are (4, 5) in one column and (5, 4) in
///   // the other.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Raises the order of `conn` into `out_conn`, which is rebuilt.
///
/// Give at least one node per edge when asking for interior nodes; with
/// none, the corners are copied and the interior nodes interpolate them.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes. The new nodes are
///   appended; back to its former columns after -199, unchanged after any
///   other refusal.
/// \param[in] conn 3 rows (triangles) or 4 rows (quadrangles, with
///   `null_id` in row 3 for a triangle) by \#elements. Not changed.
/// \param[in] n_edge_nodes New nodes on each edge.
/// \param[in] n_quad_nodes New nodes inside each quadrangle, a perfect
///   square m * m laid out as an m by m grid, rows of constant v (from
///   corner 0's side towards corner 3's) one after the other.
/// \param[in] n_tri_nodes New nodes inside each triangle: 0, 1 (at the
///   centroid) or 3. With 3, positions are computed at the local points
///   (1/4, 1/4), (1/2, 1/4) and (1/4, 1/2) (weights of corners 0 and 1),
///   but only the first two become nodes of the element: its third interior
///   row stays `null_id`, the numbering advances by 2 per triangle, and the
///   third position is overwritten by the next triangle's first. Of the 3T
///   columns appended for T triangles, those past the last one written stay
///   0.0.
/// \param[out] out_conn Rebuilt with one column per element and as many
///   rows as the longest kind needs: n_tri_nodes + 3 (n_edge_nodes + 1) for
///   triangles, n_quad_nodes + 4 (n_edge_nodes + 1) for quadrangles. It is
///   cleared on entry, before any check, so it is empty after every
///   refusal, after -199 and also when all three counts are 0.
/// \param[in] edges Known edges, as described in the file documentation,
///   or empty.
///
/// \retval 0 Done; also when `conn` is empty (rows * cols of 0) or all three
///   counts are 0, with nothing checked and `coords` unchanged.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows, or holds an ID that is not a
///   node (`null_id` is allowed in row 3 of a 4-row array only).
/// \retval -4 `n_quad_nodes` is not a perfect square.
/// \retval -5 `n_tri_nodes` is not 0, 1 or 3.
/// \retval -6 `edges` is not empty and has not `n_edge_nodes + 2` rows, or
///   holds an ID that is not a node, or a run of nodes that passes the last
///   node.
/// \retval -199 Memory ran out; `coords` is back to its former columns.
///
/// \pre `out_conn` does not share its buffer with `conn` or `edges`.
/// \note -3 is never returned; `edges` is -6 in every form.
TESSKIT2D_EXPORT int convert_into_high_order(dense2D<double>& coords, const dense2D<unsigned>& conn,
                                             unsigned n_edge_nodes, unsigned n_quad_nodes, unsigned n_tri_nodes,
                                             dense2D<unsigned>& out_conn, const dense2D<unsigned>& edges);

/// \brief As the form with `out_conn`, in place: `conn` is deep-copied, and
/// the copy is raised into the caller's `conn`.
///
/// \param[in,out] coords As for the form with `out_conn`.
/// \param[in,out] conn 3 or 4 rows by \#elements, as the input of the form
///   with `out_conn`; rebuilt as its `out_conn`. Unchanged after -199 for
///   the copy; empty after any other refusal.
/// \param[in] n_edge_nodes New nodes on each edge.
/// \param[in] n_quad_nodes New nodes inside each quadrangle, a perfect
///   square.
/// \param[in] n_tri_nodes New nodes inside each triangle: 0, 1 or 3.
/// \param[in] edges Known edges, or empty.
///
/// \retval -199 Checked first: the copy of `conn` cannot be made; nothing
///   changed. Later, as for the form with `out_conn`: memory ran out while
///   raising; `coords` is back to its former columns and `conn` is empty.
/// \retval 0 Done; also when `conn` is empty or all three counts are 0.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows, or holds an ID that is not a
///   node.
/// \retval -4 `n_quad_nodes` is not a perfect square.
/// \retval -5 `n_tri_nodes` is not 0, 1 or 3.
/// \retval -6 `edges` is refused.
///
/// \note After any refusal but the failed copy, `conn` is left empty, as
///   the worker's cleared output; so is it when all three counts are 0 and
///   the call returns 0. Keep a copy if you need it afterwards.
TESSKIT2D_EXPORT int convert_into_high_order(dense2D<double>& coords, dense2D<unsigned>& conn, unsigned n_edge_nodes,
                                             unsigned n_quad_nodes, unsigned n_tri_nodes,
                                             const dense2D<unsigned>& edges);

/// \brief Raises `conn` in place to quadratic order: T3 to T6, Q4 to Q9, a
/// mixed 4-row mesh to a 9-row mixed mesh.
///
/// The in-place convert_into_high_order() with counts (1, 1, 0) and no
/// known edges.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; the mid and centre nodes
///   are appended.
/// \param[in,out] conn 3 or 4 rows by \#elements, rebuilt with 6 or 9 rows;
///   unchanged after -199 for the copy, empty after any other refusal.
///
/// \retval -199 Checked first: the copy of `conn` cannot be made; nothing
///   changed. Later: memory ran out while raising; `coords` is back to its
///   former columns and `conn` is empty.
/// \retval 0 Done, also for an empty `conn`.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows, or holds an ID that is not a
///   node.
TESSKIT2D_EXPORT int convert_into_quadratic(dense2D<double>& coords, dense2D<unsigned>& conn);

/// \brief As convert_into_quadratic(dense2D<double>&, dense2D<unsigned>&),
/// with known mid nodes.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; the new nodes are appended.
/// \param[in,out] conn 3 or 4 rows by \#elements, rebuilt with 6 or 9 rows.
/// \param[in] edges 3 rows (the two ends and the existing mid node) by
///   \#known edges, or empty.
///
/// \retval -199 Checked first: the copy of `conn` cannot be made; nothing
///   changed. Later: memory ran out while raising; `coords` is back to its
///   former columns and `conn` is empty.
/// \retval 0 Done, also for an empty `conn`.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows, or holds an ID that is not a
///   node.
/// \retval -6 `edges` is not empty and is not 3 rows of node IDs.
TESSKIT2D_EXPORT int convert_into_quadratic(dense2D<double>& coords, dense2D<unsigned>& conn,
                                            const dense2D<unsigned>& edges);

} // namespace tesskit2d
} // namespace kelm
