#pragma once
/// \file
/// \brief Reducing quadratic meshes to linear ones, and the plain splits
/// that need no coordinates.
///
/// None of these reads a node ID as an index: IDs are copied, so no bound
/// is checked.
///
/// \par Example
/// \code
///   // One T6: corners 0, 1, 2 and the mid nodes 3, 4, 5 of edges 0, 1, 2.
///   unsigned t6[] = {0, 1, 2, 3, 4, 5};
///   const auto quadratic = dense2D<unsigned>::view(t6, 6, 1);
///
///   dense2D<unsigned> linear; // appended to; empty here
///   int status = split_into_linear(quadratic, linear);
///   // 0; linear is 3 x 4: (0, 5, 4) (1, 3, 5) (2, 4, 3) (3, 4, 5)
///
///   dense2D<unsigned> corners;
///   corners.copy(quadratic);
///   status = convert_into_linear(corners); // 0; corners is 3 x 1: (0, 1, 2)
///
///   unsigned quads[] = {0, 1, 4, 3, 1, 2, 5, 4};
///   dense2D<unsigned> triangles;
///   const int split = split_Q4_into_T3(dense2D<unsigned>::view(quads, 4, 2), triangles);
///   // split == 2; triangles is 3 x 4: (0, 1, 4) (4, 3, 0) (1, 2, 5) (5, 4, 1)
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Drops the mid nodes of a quadratic mesh, in place.
///
/// \param[in,out] conn 6 rows (T6), or 8 or 9 rows (Q8, Q9, or mixed with
///   `null_id` in row 6 for a T6), by \#elements. Rewritten in place:
///   afterwards 3 rows for T6 input, else 4 rows, the corners, with
///   `null_id` in row 3 for a former triangle. Unchanged after a refusal.
///
/// \retval 0 Success, also for an empty array (rows * cols of 0).
/// \retval -1 `conn` has any other row count, linear arrays of 3 or 4 rows
///   included (they are refused, not passed through).
///
/// \note Rows are cut in place without moving data, so `conn` keeps its
///   stride and ends with `ld > rows`.
TESSKIT2D_EXPORT int convert_into_linear(dense2D<unsigned>& conn) noexcept;

/// \brief Cuts each quadratic element into four linear ones on its own
/// nodes, appending them to `out`.
///
/// Children, as rows of the parent, in the order appended; each keeps the
/// parent's sense of rotation and the corner children come in corner order:
/// | Parent | Children |
/// |--------|----------|
/// | T6 | (0, 5, 4), (1, 3, 5), (2, 4, 3), then the central (3, 4, 5) |
/// | Q9 | (0, 4, 8, 7), (1, 5, 8, 4), (2, 6, 8, 5), (3, 7, 8, 6) |
///
/// \param[in] conn 6 rows (T6) or 9 rows (Q9, or mixed with `null_id` in
///   row 6 for a T6) by \#elements. 8 rows are refused: a Q8 has no centre
///   node to cut at.
/// \param[in,out] out Appended to: its columns on entry stay first. With
///   6-row input it keeps its rows: 0 or 3 rows give 3-row triangles, 4 rows
///   give triangles with `null_id` in row 3. With 9-row input `out` becomes
///   a 4-row mixed array; a former 3-row `out` has its old columns widened
///   with `null_id` in row 3 (even when no quadrangle follows). Unchanged
///   but for capacity after a refusal.
///
/// \retval 0 Success, also for an empty `conn` (whose `out` is not looked
///   at).
/// \retval -1 `conn` has neither 6 nor 9 rows.
/// \retval -2 `out` has rows other than 0, 3 or 4 (only its rows are
///   tested).
/// \retval -199 No memory for the output; `out` unchanged but for capacity.
///
/// \note With 6-row input and an `out` of 0 rows, its room cannot be
///   reserved ahead, and the appends grow it as they go; an append that
///   fails for lack of memory there is dropped and the call still returns 0.
TESSKIT2D_EXPORT int split_into_linear(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept;

/// \brief Cuts each quadrangle into two triangles along the diagonal from
/// row 0 to row 2, appending them to `out`; triangles are copied.
///
/// A quadrangle (a, b, c, d) gives (a, b, c) then (c, d, a); a triangle
/// (a, b, c, `null_id`) gives (a, b, c). So p quadrangles and t triangles
/// add 2p + t columns. The overload taking `coords` (in geometric_split.h)
/// chooses the better diagonal instead.
///
/// \param[in] conn 3 rows (triangles, copied as they are) or 4 rows
///   (quadrangles, with `null_id` in row 3 for a triangle) by \#elements.
/// \param[in,out] out Appended to: empty (rows * cols of 0) or 3 rows; its
///   columns on entry stay first. Unchanged but for capacity after a
///   refusal.
///
/// \return The number of quadrangles split, 0 or more (0 for 3-row input
///   and when `conn` has no column, whose rows are then not looked at), or
///   a negative status, so test the result for `< 0`:
/// \retval -1 `conn` has neither 3 nor 4 rows.
/// \retval -2 `out` is not empty and has other than 3 rows.
/// \retval -199 No memory; `out` unchanged but for capacity.
TESSKIT2D_EXPORT int split_Q4_into_T3(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept;

} // namespace tesskit2d
} // namespace kelm
