#pragma once
// Measures of surface meshes: corner angles, total area and circumcentres.
//
// Meshes are T3 (3-row `conn`), Q4, or mixed (4-row `conn`, a column with
// `null_id` in row 3 is a triangle), on `coords` of 2 rows (the plane) or 3
// rows (a surface in space).
//
// Signs. In the plane, areas and angles are signed: a counter-clockwise
// element gives positive values and a clockwise one negative values, so a
// mesh whose halves are oppositely oriented has a total area near 0. In
// space they are magnitudes, angles from 0 to pi. Angles are in radians.
//
// Degenerate elements are no error: a flat element has its zero area, its
// angles of 0 and pi and a fallback centre, and the call returns 0.
//
// Accuracy. Triangle areas take the cross product of the pair of edge
// vectors that loses the fewest digits, so a long thin triangle keeps its
// small area to full relative precision.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The smallest and the largest corner angle of every element.
///
/// - `coords`: 2 or 3 rows by #nodes.
/// - `conn`: 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in row 3 for
///   a triangle) by #elements.
/// - `normalized`: when true each angle is divided by the angle of the
///   regular element of its own kind (pi / 3 for a triangle, pi / 2 for a
///   quadrangle), so an equilateral triangle and a square give 1.
/// - `min_angles`, `max_angles`: rebuilt. Both are emptied on entry, then
///   sized to #elements; entry j belongs to element j. Their earlier content
///   is not read. They must be distinct arrays on distinct buffers.
///
/// Corner i of a triangle is the angle between the directions to corners
/// i + 1 and i + 2; of a quadrangle, between the directions to corners i + 1
/// and i + 3. In the plane all corner angles of a clockwise element are
/// negative, so its "smallest" angle is the one of largest magnitude.
///
/// Statuses in checking order:
/// -  0 success, also when `conn` is empty (rows * cols of 0); outputs empty.
/// - -1 `coords` has neither 2 nor 3 rows; outputs empty.
/// - -2 `conn` has neither 3 nor 4 rows; outputs empty.
/// - -199 no memory for the outputs; outputs empty.
/// - -2 a node ID of `conn` is not a column of `coords` (or `null_id` stands
///   where a node must be); both outputs are then sized to #elements and
///   filled with 0.
TESSKIT2D_EXPORT int angles(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool normalized,
                            dense1D<double>& min_angles, dense1D<double>& max_angles) noexcept;

/// The total area of a mesh.
///
/// - `coords`: 2 or 3 rows by #nodes.
/// - `conn`: 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in row 3 for
///   a triangle) by #elements.
/// - `total_area`: set to 0 on entry, then to the total; it stays 0 after a
///   refusal.
///
/// In the plane element areas are signed and summed as such: a clockwise
/// mesh has a negative total. A quadrangle there counts half the cross
/// product of its diagonals, (P2 - P0) x (P3 - P1). In space every element
/// counts its magnitude, and a warped quadrangle the larger of its two
/// triangulations.
///
/// Statuses in checking order:
/// -  0 success, also when `conn` is empty (rows * cols of 0).
/// - -1 `coords` has neither 2 nor 3 rows.
/// - -2 `conn` has neither 3 nor 4 rows, or a node ID of it is not a column
///   of `coords` (or `null_id` stands where a node must be).
///
/// One streaming pass over `conn` to check it and one to sum.
TESSKIT2D_EXPORT int area(const dense2D<double>& coords, const dense2D<unsigned>& conn, double& total_area) noexcept;

/// The circumcentre of every triangle.
///
/// - `coords`: 2 or 3 rows by #nodes.
/// - `conn`: 3 rows (T3) by #elements. Quadrangles are not accepted.
/// - `centers`: rebuilt, emptied on entry, then sized to the rows of
///   `coords` by #elements; column j is the centre of element j. It must not
///   share a buffer with `coords`.
///
/// A flat triangle has no circumcentre and gets a fallback: in the plane the
/// midpoint of its longest edge (so three collinear points give the middle
/// of the two outer ones), in space its third node, row 2. A right triangle
/// gets the midpoint of its hypotenuse.
///
/// Statuses in checking order (there is no early return for an empty
/// `conn`, so even an empty `conn` needs valid `coords` and 3 rows):
/// -  0 success.
/// - -1 `coords` has neither 2 nor 3 rows; `centers` empty.
/// - -2 `conn` does not have 3 rows, or a node ID of it is not a column of
///   `coords`; `centers` empty.
/// - -199 no memory for `centers`; `centers` empty.
TESSKIT2D_EXPORT int circumcenters(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                   dense2D<double>& centers) noexcept;

} // namespace tesskit2d
} // namespace kelm
