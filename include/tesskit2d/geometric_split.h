#pragma once
/// \file
/// \brief Splitting elements with the help of their coordinates: any linear
/// mesh into quadrangles only, quadrangles into triangles along the better
/// diagonal, and, in place, only those quadrangles that fail a caller's
/// shape criteria.
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
///
///   // In place, only the quadrangles with a corner above 170 degrees, a
///   // fold above 10 degrees or a scaled Jacobian below 0.1: none here.
///   const double deg = 3.141592653589793 / 180;
///   const dense1D<unsigned, 8> all; // every column
///   dense1D<unsigned, 8> cut;
///   const int n_cut = split_Q4_into_T3(coords, 170 * deg, 10 * deg, 0.1, 0, all, cut, quads);
///   // 0; a quadrangle cut would leave its first triangle in column cut[k]
///   // and its second in column quads.cols - n_cut + k.
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

/// \brief Cuts, in place, only the quadrangles of a mixed mesh that fail
/// the caller's shape criteria, and says which: the quadrangles a solver or
/// mesh checker would reject become two triangles each, the rest of a
/// quad-dominant mesh stays as it is.
///
/// \par Measures
/// At corner i let u run to the next corner and w to the previous one. The
/// quadrangle's orientation is the cross product of its diagonals, (P2 -
/// P0) x (P3 - P1): its sign in the plane, the vector in space; its mean
/// normal in space is that vector normalised.
/// - Corner angle: measured inside the element, in [0, 2 pi). Its size is
///   the true angle between the two edges, atan2(|u x w|, u . w), which in
///   space is the angle the edges really make, not that of their shadow on
///   a plane. The corner is reflex, and its angle 2 pi minus that, when u x
///   w points against the orientation (in space: has a negative component
///   along it). So the test does not depend on the orientation: a clockwise
///   square has four corners of pi / 2, a concave quadrangle one corner
///   above pi.
/// - Warp: the larger of the two fold angles, one per diagonal, each the
///   angle between the normals of the two triangles that the diagonal
///   makes, in [0, pi]. A planar convex quadrangle has warp 0; a planar
///   concave one has warp pi (its outer diagonal folds one triangle onto
///   the other), so it also fails any active warp test.
/// - Scaled Jacobian at a corner: (u x w) divided by |u| |w|. In the plane
///   the z part, signed against the plane itself and not against the
///   element's orientation: a clockwise quadrangle is inverted and has -1
///   at every corner of a rectangle. In space the component along the mean
///   normal. A corner with an edge of zero length has 0, and so has every
///   corner of a quadrangle whose diagonals give no cross product (the mean
///   normal is then the zero vector in space).
///
/// \par Cutting
/// With a, b, c, d the corners rotated so that the smallest ID comes first
/// (the first of two equal ones), under both rules:
/// - 0: exactly as the form of `split_Q4_into_T3` above: the cut whose
///   worse triangle has the better triangle quality, b-d only when it wins
///   by more than 1e-12. Both forms cut a given quadrangle the same way. In
///   the plane an inverted triangle has a negative quality, so a concave
///   quadrangle is cut through its reflex corner. In space the quality has
///   no sign, and a concave quadrangle may be cut along its outer diagonal,
///   leaving two overlapping triangles, one of them turned over, exactly as
///   the form above would cut it.
/// - 1: the shorter diagonal, compared by squared length without margin; an
///   exact tie goes to a-c. In the plane a cut that would leave a triangle
///   of zero or negative signed area is not taken when the other cut leaves
///   two positive ones, so a counter-clockwise concave quadrangle is cut
///   through its reflex corner. A clockwise one has no positive cut and gets
///   the shorter diagonal; in space rule 1 is the shorter diagonal alone.
///
/// Along a-c the column becomes (a, b, c, `null_id`) and (c, d, a,
/// `null_id`) is appended; along b-d the column becomes (b, c, d,
/// `null_id`) and (d, a, b, `null_id`) is appended. Both triangles keep the
/// quadrangle's orientation.
///
/// The work is one pass over the candidates that reads each quadrangle's
/// corners; a quadrangle that clearly passes costs a few dozen products,
/// and only those near a limit or failing take square roots and arc
/// tangents. Sorting the cut columns adds f log f when `candidates` is not
/// ascending.
///
/// \param[in] coords 2 or 3 rows by \#nodes. Not changed.
/// \param[in] max_angle Radians. A quadrangle fails when a corner angle is
///   above it. Active in (0, 2 pi); 0, a negative value, NaN, 2 pi or more
///   switch the test off.
/// \param[in] max_warp Radians, 3 rows only. A quadrangle fails when its
///   warp is above it. Active in (0, pi); switched off otherwise and for
///   2-row `coords`.
/// \param[in] min_jacobian A quadrangle fails when its smallest scaled
///   Jacobian is below it. Active in (-1, 1]; switched off otherwise.
/// \param[in] diagonal How a failing quadrangle is cut, rule 0 or 1 (see
///   Cutting).
/// \param[in] candidates \#IDs: the columns of `conn` to consider, in any
///   order, repeats allowed; empty means every column. Triangles among them
///   are skipped. Read in full before anything is written, so it may share
///   storage with `split` or `conn`.
/// \param[out] split Rebuilt, \#split: the columns that were cut, in
///   ascending order, each once. It may be the same array as `candidates`,
///   but may not share storage with `conn` (-7).
/// \param[in,out] conn In place and appended to, 4 rows by \#elements, a
///   column with `null_id` in row 3 being a triangle. With n its columns on
///   entry, the second triangle of `split[k]` is appended as column n + k.
///
/// \return The number of quadrangles cut, 0 or more, or a negative status,
///   so test the result for `< 0`. Statuses in checking order (numbered by
///   argument position, so not in sequence):
/// \retval 0 `conn` is empty (rows * cols of 0): nothing is checked, `conn`
///   is unchanged and `split` emptied.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -8 `conn` has not 4 rows, or holds an ID that is not a node
///   (`null_id` is allowed in row 3 only), in any column, listed in
///   `candidates` or not.
/// \retval -5 `diagonal` is neither 0 nor 1.
/// \retval -6 `candidates` holds an ID that is not a column of `conn`.
/// \retval -7 `split` shares storage with `conn` (the same buffer, or rooms
///   that overlap): both are written, so they would write over each other.
/// \retval -199 Memory ran out.
/// After every negative status `conn` and `split` are as they were on entry
/// (but for capacity).
///
/// \note Thresholds have no status: a value outside its active range
///   switches its test off, and with every test off no quadrangle is cut.
///   They are strict: an angle or warp equal to its limit passes, and so
///   does a Jacobian equal to its limit. A square passes `max_angle` of
///   pi / 2 and `min_jacobian` of 1.
/// \note A corner with an edge of zero length has an angle of 0, and a fold
///   next to a flat triangle (one without a normal) counts 0: a collapsed
///   quadrangle is left to the Jacobian test, which gives it 0.
/// \note A quadrangle without orientation (parallel diagonals, as in a bow
///   tie) has no reflex corner.
/// \note A NaN coordinate makes the measures it enters NaN, and a NaN
///   compares false with every limit, so it fails nothing; the measures of
///   the same quadrangle that it does not enter still count.
TESSKIT2D_EXPORT int split_Q4_into_T3(const dense2D<double>& coords, double max_angle, double max_warp,
                                      double min_jacobian, int diagonal, const dense1D<unsigned, 8>& candidates,
                                      dense1D<unsigned, 8>& split, dense2D<unsigned>& conn);

} // namespace tesskit2d
} // namespace kelm
