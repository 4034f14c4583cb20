#pragma once
/// \file
/// \brief Reversing the orientation of surface elements, and making a
/// mesh's orientation coherent.
///
/// \par Flipping
/// Flipping an element exchanges its corners 0 and 2 (and the mid nodes
/// that go with them), which reverses its sense of rotation and keeps
/// corner 1. Edge slots of `neighbours` then move with the edges:
/// | Element | Slots |
/// |---------|-------|
/// | triangle (edge s opposite corner s) | 0 and 2 exchange |
/// | quadrangle (edge s from corner s to s + 1) | 0 and 1, and 2 and 3, exchange |
///
/// \par Neighbours
/// `neighbours` is always an input, in the shape of `conn`: row s of column
/// j names the element across edge s of element j; an entry at or above the
/// element count (usually `null_id`) means none. Nothing here builds it.
///
/// \par Output mode
/// All four exports rewrite their arrays in place and never change a shape;
/// after a refusal the arrays are unchanged. Applying a flip twice restores
/// the arrays.
///
/// \par Example
/// \code
///   // The unit square as two triangles sharing the edge 0-2, the second
///   // one clockwise. The shared edge is slot 1 of both.
///   unsigned tri[] = {0, 1, 2, 0, 3, 2};
///   unsigned across[] = {null_id, 1, null_id, null_id, 0, null_id};
///   auto conn = dense2D<unsigned>::view(tri, 3, 2);
///   auto neighbours = dense2D<unsigned>::view(across, 3, 2);
///   const int flips = mesh_reorient(conn, neighbours, 0, 0);
///   // 1: column 1 is now (2, 3, 0), its slots 0 and 2 exchanged.
///   const int status = flip(conn, neighbours, T3);
///   // 0; both reversed, so still coherent: (2, 1, 0) and (0, 3, 2).
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Exchanges rows 0 and 2 of every column, whatever the element
/// kind.
///
/// \param[in,out] conn 3 rows or more by \#elements, rewritten in place.
///
/// \retval 0 Done, also when `conn` has no column.
/// \retval -1 `conn` has fewer than 3 rows.
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn) noexcept;

/// \brief Reverses every element of kind `type`, in place.
///
/// Unlike flip(dense2D<unsigned>&), the mid nodes move with the corners.
///
/// \param[in,out] conn The rows of the kind by \#elements, rewritten in
///   place.
/// \param[in] type T3 and Q4 exchange rows 0 and 2; T6 also 3 and 5; Q8
///   and Q9 also 4 and 5, and 6 and 7 (Q9's centre stays). MIXED takes 3 or
///   4 rows (rows 0 and 2; a triangle's `null_id` in row 3 stays), 6 rows
///   (as T6), or 8 or 9 rows, where a column with `null_id` in row 6 is
///   flipped as a T6 and any other as a Q8 or Q9.
///
/// \retval 0 Done, also when `conn` has no column.
/// \retval -2 The row count does not fit `type` (for MIXED: not 3, 4, 6, 8
///   or 9; otherwise not the kind's node count).
///
/// \note Any other kind has no rule: when `conn` has that kind's node count
///   of rows, it is left as it is and the call returns 0.
/// \note A `type` outside the enumeration is read as a kind of no nodes, so
///   any `conn` with rows gives -2; it is never used as an index.
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn, element_type type) noexcept;

/// \brief Reverses every element as flip(dense2D<unsigned>&, element_type)
/// does and keeps `neighbours` in step with the edges.
///
/// In a mixed array each column's kind is read from its row 3 (4 rows) or
/// row 6 (8 or 9 rows).
///
/// \param[in,out] conn As for flip(dense2D<unsigned>&, element_type),
///   rewritten in place.
/// \param[in,out] neighbours One column per element, rewritten in place.
///   Its rows must be 3 for T3 and T6 and 4 for Q4; MIXED settles the kind
///   from the rows of `conn`: 3 rows as T3, 4 rows as Q4 (triangles marked
///   by `null_id` in row 3), 6 rows as T6, 8 or 9 rows stay mixed and need 4
///   rows of `neighbours`.
/// \param[in] type The element kind.
///
/// \retval 0 Done, also when `conn` has no column (`neighbours` unchecked).
/// \retval -2 `neighbours` has another column count than `conn`. Also,
///   after -3: `type` is MIXED and `conn` has not 3, 4, 6, 8 or 9 rows; and
///   last, `neighbours` has the wrong row count for the kind.
/// \retval -3 `type` is not MIXED and the rows of `conn` are not its node
///   count (checked after the column counts, before the other -2 cases).
///
/// \note For Q8 and Q9 named explicitly, and for kinds with no flip rule,
///   the rows of `neighbours` are not looked at and it is not changed; a Q8
///   or Q9 `conn` is flipped all the same. Pass MIXED to have a Q8 or Q9
///   mesh's neighbours permuted.
///   A `type` outside the enumeration is read as a kind of no nodes, so any
///   `conn` with rows gives -3; it is never used as an index.
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, element_type type) noexcept;

/// \brief Makes the orientation of a mesh coherent by flipping elements,
/// and returns the number of flips made.
///
/// The walk is breadth first from `seed` over `neighbours`, slots in rising
/// order. Each neighbour not yet expanded is compared with the element it
/// is reached from: when their shared edge runs the same way in both, it is
/// flipped (conn rows 0 and 2, neighbour slots as for flip()). An edge
/// between two elements already expanded is not compared again, so a
/// non-orientable surface (a Moebius strip) ends with no error and keeps a
/// disagreement on the edges that close the walk. Linear in the mesh size.
///
/// \param[in,out] conn 3 rows (T3) or 4 rows (Q4, or mixed with `null_id`
///   in row 3 for a triangle) by \#elements, rewritten in place. Any other
///   row count that the ID check accepts (8 or 9 rows of MIXED) is walked
///   as a 4-row mixed array would be; only its rows 0 and 2 are exchanged.
/// \param[in,out] neighbours The shape of `conn`, rewritten in place; see
///   the file documentation.
/// \param[in] seed The element whose orientation its part of the mesh
///   adopts; it is never flipped.
/// \param[in] all_parts When non-zero, the other parts of the mesh are
///   treated as well, each adopting the orientation of its lowest element
///   at or above `seed`. Parts with no element at or above `seed` are left
///   as they are.
///
/// \return The flip count, as the note on mismatches tells, when the
///   checks pass; otherwise:
/// \retval 0 `conn` has no column (nothing else is looked at).
/// \retval -1 `conn` is refused by the ID check: not 3, 4, 8 or 9 rows, or
///   `null_id` where a node must be.
/// \retval -2 `neighbours` does not have the shape of `conn`.
/// \retval -3 `seed` is not below the element count.
///
/// \note A neighbour that shares neither node of the edge (or, for a
///   triangle, one listed in slot 3) is a mismatch: it sets the flip count
///   to -2 and ends the current element's slots, but the walk goes on and
///   flips made stay made. Later flips count on from -2 (to -1, 0, 1, ...),
///   and while the count is negative each element tests only its first live
///   neighbour. A result of -2 or -1 therefore tells a mismatch; a result of
///   0 or more does not prove there was none. A neighbour sharing just one
///   node of the edge is taken to agree or disagree as that node's place
///   decides.
/// \note The working bit set and queue are standard containers, so
///   `std::bad_alloc` or `std::length_error` may pass through; flips made
///   before are then kept.
TESSKIT2D_EXPORT int mesh_reorient(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned seed,
                                   int all_parts);

} // namespace tesskit2d
} // namespace kelm
