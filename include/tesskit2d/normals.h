#pragma once
/// \file
/// \brief Normals of surface meshes in space: one per element, or one per
/// node as a weighted mean of the normals of the elements round it.
///
/// Meshes are T3 (3-row `conn`), Q4, or mixed (4-row `conn`, a column with
/// `null_id` in row 3 is a triangle), on `coords` of exactly 3 rows. There
/// is no plane form: 2-row `coords` are refused.
///
/// \par Direction
/// A triangle's normal is the cross product of two of its edges, pointing
/// to the side from which corners 0, 1, 2 run counter-clockwise; a
/// quadrangle's is the cross product of its diagonals, (P2 - P0) x (P3 -
/// P1), which points the same way for a counter-clockwise quadrangle. Both
/// have a length of twice the element's area (exactly so for a planar
/// quadrangle), and that length is the element's size L.
///
/// \par Normalising
/// A vector is made a unit vector by multiplying it by the reciprocal of its
/// length, and only when its squared length is neither 0 nor exactly 1: a
/// zero vector stays zero and no error is raised. A degenerate element thus
/// has a zero normal and a size of 0.
///
/// \par Output mode
/// Both forms rebuild their output: it is emptied on entry (its content is
/// not read) and then sized to 3 rows. It may share storage with `coords`
/// (be `coords` itself, a shallow copy, or a view over its buffer): the
/// checks then read `coords` before the output is emptied, `coords` is read
/// from a private copy, and the result is that of separate arrays; a copy
/// that finds no memory gives -199. The output is empty after every
/// refusal.
///
/// \par Example
/// \code
///   // Two triangles of the unit square in the plane z = 0, both
///   // counter-clockwise seen from above.
///   double xyz[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
///   unsigned tri[] = {0, 1, 2, 0, 2, 3};
///   const auto coords = dense2D<double>::view(xyz, 3, 4);
///   const auto conn = dense2D<unsigned>::view(tri, 3, 2);
///
///   dense2D<double> per_element, per_node;
///   int status = normals(coords, conn, false, per_element);
///   // 0; both columns (0, 0, 1), twice the area of each triangle.
///   status = normals(coords, conn, 1.0, true, per_node);
///   // 0; 3 x 4, every column (0, 0, 1).
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Node normals: the mean of the unit normals of the elements round
/// each node, weighted by element size.
///
/// Two streaming passes: one over the elements, one over the nodes. Working
/// weights (8 bytes per node) are allocated for the call only where the
/// result needs them: `unit` false, a negative finite `power`, or an
/// extreme mode.
///
/// \param[in] coords 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle) by \#elements. Only the elements listed are
///   looked at.
/// \param[in] power The weight of an element of size L is L to the power
///   `power`:
///   | `power` | weight |
///   |---------|--------|
///   | 0 | every element counts the same |
///   | 1 | each element counts by its size |
///   | other finite | L^power; a negative power favours small elements |
///   | an infinity, NaN | 1 for every element, as for 0 |
///   | max_double (1.7976931348623157e308) | the largest-element mode |
///   | -max_double | the smallest-element mode |
/// \param[in] unit True makes every node normal a unit vector; false leaves
///   the weighted mean of the unit element normals, which is shorter than 1
///   where the surface bends. Not read in the extreme modes.
/// \param[out] node_normals Rebuilt: emptied on entry, then 3 rows by
///   \#nodes (the column count of `coords`). A node that no element uses
///   has the zero vector, and so has a node whose contributions cancel. May
///   share storage with `coords` (see the file documentation).
///
/// \retval 0 Success, also when `coords` or `conn` is empty (rows * cols
///   of 0), whatever the row counts; `node_normals` then stays empty.
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 `conn` has fewer than 3 or more than 4 rows, or a node ID of
///   it is not a column of `coords` (or `null_id` stands where a node must
///   be).
/// \retval -199 No memory for `node_normals`, the working weights, or the
///   private copy of a `coords` that shares storage with `node_normals`.
///
/// \note The two extreme modes are not a pure selection. Elements are
///   visited in column order, their corners in row order. In the
///   largest-element mode an element whose size is strictly above the
///   node's running weight replaces the node's normal by its own unit
///   normal and the weight by its size; any other element adds its unit
///   normal to the node's normal and 1 to the weight. The smallest-element
///   mode is the mirror: an element replaces when its size is strictly
///   below the weight, or when the weight is 0. No final averaging or
///   normalising runs in these modes, whatever `unit` says. So a node that
///   meets elements of rising size ends with the last one's unit normal,
///   but one that meets them in falling size holds the sum of their unit
///   normals, of length above 1, and the result depends on the order of the
///   columns.
/// \note With a negative `power` a zero-area element has an infinite
///   weight, and its zero normal times that weight makes the normals of its
///   nodes NaN.
/// \note A `std::bad_alloc` from the small control block of the working
///   weights passes through.
TESSKIT2D_EXPORT int normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, double power, bool unit,
                             dense2D<double>& node_normals);

/// \brief Element normals: the normal of each element, as it stands or as
/// a unit vector.
///
/// \param[in] coords 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle) by \#elements.
/// \param[in] unit True makes each normal a unit vector; false keeps the
///   raw normal, of length twice the element's area.
/// \param[out] element_normals Rebuilt: emptied on entry, then 3 rows by
///   \#elements; column j is the normal of element j, a zero column for a
///   degenerate element. May share storage with `coords` (see the file
///   documentation).
///
/// \retval 0 Success, also when `coords` or `conn` is empty (rows * cols
///   of 0); `element_normals` then stays empty.
/// \retval -1 `coords` does not have 3 rows.
/// \retval -2 `conn` has fewer than 3 or more than 4 rows, or a node ID of
///   it is not a column of `coords` (or `null_id` stands where a node must
///   be).
/// \retval -199 No memory for `element_normals`, or for the private copy of
///   a `coords` that shares storage with it.
TESSKIT2D_EXPORT int normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool unit,
                             dense2D<double>& element_normals) noexcept;

} // namespace tesskit2d
} // namespace kelm
