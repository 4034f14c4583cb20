#pragma once
/// \file
/// \brief Measures of surface meshes: corner angles, total area and
/// circumcentres.
///
/// Meshes are T3 (3-row `conn`), Q4, or mixed (4-row `conn`, a column with
/// `null_id` in row 3 is a triangle), on `coords` of 2 rows (the plane) or 3
/// rows (a surface in space).
///
/// \par Signs
/// In the plane, areas and angles are signed: a counter-clockwise element
/// gives positive values and a clockwise one negative values, so a mesh
/// whose halves are oppositely oriented has a total area near 0. In space
/// they are magnitudes, angles from 0 to pi. Angles are in radians.
///
/// \par Degenerate elements
/// They are no error: a flat element has its zero area, its angles of 0 and
/// pi and a fallback centre, and the call returns 0.
///
/// \par Accuracy
/// Triangle areas take the cross product of the pair of edge vectors that
/// loses the fewest digits, so a long thin triangle keeps its small area to
/// full relative precision.
///
/// \par Example
/// \code
///   // The unit square as one quadrangle, counter-clockwise.
///   double xy[] = {0, 0, 1, 0, 1, 1, 0, 1};
///   unsigned quad[] = {0, 1, 2, 3};
///   const auto coords = dense2D<double>::view(xy, 2, 4);
///   const auto conn = dense2D<unsigned>::view(quad, 4, 1);
///
///   dense1D<double> smallest, largest;
///   int status = angles(coords, conn, true, smallest, largest); // 0
///   // smallest[0] == largest[0] == 1: a square has the regular angle.
///   double total = 0;
///   if (status == 0) status = area(coords, conn, total); // total == 1
///
///   // Circumcentres are for triangles: cut the square first.
///   dense2D<unsigned> triangles;
///   split_Q4_into_T3(conn, triangles); // (0, 1, 2), (2, 3, 0)
///   dense2D<double> centers;
///   status = circumcenters(coords, triangles, centers);
///   // centers is 2 x 2, both columns (0.5, 0.5).
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief The smallest and the largest corner angle of every element.
///
/// Corner i of a triangle is the angle between the directions to corners
/// i + 1 and i + 2; of a quadrangle, between the directions to corners i + 1
/// and i + 3.
///
/// \param[in] coords 2 or 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle) by \#elements.
/// \param[in] normalized When true each angle is divided by the angle of the
///   regular element of its own kind (pi / 3 for a triangle, pi / 2 for a
///   quadrangle), so an equilateral triangle and a square give 1.
/// \param[out] min_angles Rebuilt: emptied on entry (its content is not
///   read), then sized to \#elements; entry j belongs to element j.
/// \param[out] max_angles Rebuilt as `min_angles`.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0); outputs
///   empty in that case.
/// \retval -1 `coords` has neither 2 nor 3 rows; outputs empty.
/// \retval -2 `conn` has neither 3 nor 4 rows; outputs empty.
///   Also, checked after -199, a node ID of `conn` that is not a column of
///   `coords` (or `null_id` where a node must be); both outputs are then
///   sized to \#elements and filled with 0.
/// \retval -199 No memory for the outputs (checked before the node IDs);
///   outputs empty.
///
/// \pre `min_angles` and `max_angles` are distinct arrays on distinct
///   buffers.
/// \note In the plane all corner angles of a clockwise element are negative,
///   so its "smallest" angle is the one of largest magnitude.
TESSKIT2D_EXPORT int angles(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool normalized,
                            dense1D<double>& min_angles, dense1D<double>& max_angles) noexcept;

/// \brief The total area of a mesh.
///
/// In the plane element areas are signed and summed as such: a clockwise
/// mesh has a negative total. A quadrangle there counts half the cross
/// product of its diagonals, (P2 - P0) x (P3 - P1). In space every element
/// counts its magnitude, and a warped quadrangle the larger of its two
/// triangulations. One streaming pass over `conn` to check it and one to
/// sum.
///
/// \param[in] coords 2 or 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle) by \#elements.
/// \param[out] total_area Set to 0 on entry, then to the total; it stays 0
///   after a refusal.
///
/// \retval 0 Success, also when `conn` is empty (rows * cols of 0).
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 `conn` has neither 3 nor 4 rows, or a node ID of it is not a
///   column of `coords` (or `null_id` stands where a node must be).
TESSKIT2D_EXPORT int area(const dense2D<double>& coords, const dense2D<unsigned>& conn, double& total_area) noexcept;

/// \brief The circumcentre of every triangle.
///
/// A flat triangle has no circumcentre and gets a fallback: in the plane the
/// midpoint of its longest edge (so three collinear points give the middle
/// of the two outer ones), in space its third node, row 2. A right triangle
/// gets the midpoint of its hypotenuse.
///
/// \param[in] coords 2 or 3 rows by \#nodes.
/// \param[in] conn 3 rows (T3) by \#elements. Quadrangles are not accepted.
/// \param[out] centers Rebuilt: emptied on entry, then sized to the rows of
///   `coords` by \#elements; column j is the centre of element j.
///
/// \retval 0 Success.
/// \retval -1 `coords` has neither 2 nor 3 rows; `centers` empty.
/// \retval -2 `conn` does not have 3 rows, or a node ID of it is not a
///   column of `coords`; `centers` empty.
/// \retval -199 No memory for `centers`; `centers` empty.
///
/// \pre `centers` does not share a buffer with `coords`.
/// \note Unlike the other measures there is no early return for an empty
///   `conn`: even an empty `conn` needs valid `coords` and 3 rows.
TESSKIT2D_EXPORT int circumcenters(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                   dense2D<double>& centers) noexcept;

} // namespace tesskit2d
} // namespace kelm
