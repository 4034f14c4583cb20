#pragma once
/// \file
/// \brief Splitting elements with the help of their coordinates: any linear
/// mesh into quadrangles only, and quadrangles into triangles along the
/// better diagonal.
///
/// \par Triangle quality
/// Used to choose a diagonal: 2 sqrt(3) * (twice the area) / (perimeter *
/// longest edge), 1 for an equilateral triangle. In 2D the area is signed
/// (negative for a clockwise triangle), in 3D it is not.
///
/// \par Example
/// \code
///   // The unit square as one quadrangle.
///   double xy[] = {0, 0, 1, 0, 1, 1, 0, 1};
///   unsigned quad[] = {0, 1, 2, 3};
///   dense2D<double> coords; // grows, so a copy rather than a view
///   coords.copy(dense2D<double>::view(xy, 2, 4));
///   const dense2D<unsigned> no_edges;
///   dense2D<unsigned> quads;
///   int status = split_into_Q4(coords, dense2D<unsigned>::view(quad, 4, 1), quads, no_edges);
///   // 0; mid nodes 4 .. 7 of edges 0 .. 3 and the centre 8 are appended to
///   // coords; quads is 4 x 4: (0, 4, 8, 7) (1, 5, 8, 4) (2, 6, 8, 5) (3, 7, 8, 6)
///
///   dense2D<unsigned> triangles;
///   status = split_Q4_into_T3(coords, quads, triangles);
///   // 4, the number of quadrangles cut; triangles is 3 x 8.
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Splits every element of a linear mesh into quadrangles through
/// its mid-edge nodes and a centre node, appending them to `out_conn`.
///
/// Children, as corners a, b, c (d), mid nodes m_ab etc. and centre o: a
/// triangle gives (a, m_ab, o, m_ca), (b, m_bc, o, m_ab), (c, m_ca, o,
/// m_bc); a quadrangle gives (a, m_ab, o, m_da), (b, m_bc, o, m_ab), (c,
/// m_cd, o, m_bc), (d, m_da, o, m_cd). Child i starts at corner i and keeps
/// the parent's orientation, so the total area is unchanged.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes. The new nodes are
///   appended: one per distinct edge (an edge shared by two elements gets
///   one node), then one per element, numbered as convert_into_high_order()
///   with one node per edge and one inside each element numbers them. Back
///   to its former columns after -199, unchanged after any other refusal.
/// \param[in] conn 3 rows (triangles) or 4 rows (with `null_id` in row 3
///   for a triangle) by \#elements. Not changed.
/// \param[in,out] out_conn Appended to: empty (rows * cols of 0) or 4 rows.
///   Existing columns stay first and unchanged; an empty one gets 4 rows.
///   Unchanged but for capacity after a refusal.
/// \param[in] edges 3 rows by \#known edges, or empty: edges whose mid node
///   exists already (ends in rows 0 and 1, mid node in row 2), which is
///   used instead of a new one.
///
/// \retval 0 Success, and when `conn` has no columns (nothing else is
///   looked at).
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows or holds an ID that is not a
///   node.
/// \retval -3 `out_conn` is not empty and has other than 4 rows.
/// \retval -4 `edges` is not empty and is not a 3-row array of node IDs.
/// \retval -199 Memory ran out, with `coords` back to its former columns
///   and `out_conn` unchanged but for capacity.
///
/// \note Any failure of the order-raising step is reported as -199.
TESSKIT2D_EXPORT int split_into_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out_conn,
                                   const dense2D<unsigned>& edges);

/// \brief Cuts each quadrangle into two triangles along the diagonal that
/// gives the better worst triangle, appending them to `out_conn`; triangles
/// are copied.
///
/// A quadrangle's corners are first rotated so that its smallest ID comes
/// first, as a, b, c, d. Cutting along a-c gives (a, b, c), (c, d, a);
/// along b-d, (b, c, d), (d, a, b). The cut along b-d is taken only when
/// the quality of its worse triangle is at least that of the worse of a-c
/// plus 1e-12, so a near-tie goes to the diagonal through the smallest ID,
/// and the choice does not depend on which corner a column starts with. In
/// 2D a non-convex quadrangle is thus cut through its reflex corner. The
/// overload without `coords` (in linear_reduction.h) always cuts along rows
/// 0-2.
///
/// \param[in] coords 2 or 3 rows by \#nodes. Not changed.
/// \param[in] conn 3 rows (triangles, copied as they are) or 4 rows
///   (quadrangles, with `null_id` in row 3 for a triangle) by \#elements.
/// \param[in,out] out_conn Appended to: empty (rows * cols of 0) or 3 rows;
///   its columns on entry stay first. Unchanged but for capacity after a
///   refusal.
///
/// \return The number of quadrangles split, 0 or more (0 for 3-row input
///   and when `conn` has no columns), or a negative status, so test the
///   result for `< 0`:
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows or holds an ID that is not a
///   node.
/// \retval -3 `out_conn` is not empty and has other than 3 rows.
/// \retval -199 Memory ran out; `out_conn` unchanged but for capacity.
TESSKIT2D_EXPORT int split_Q4_into_T3(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                      dense2D<unsigned>& out_conn);

} // namespace tesskit2d
} // namespace kelm
