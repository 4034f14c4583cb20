#pragma once
// Reversing the orientation of surface elements, and making a mesh's
// orientation coherent.
//
// Flipping an element exchanges its corners 0 and 2 (and the mid nodes that
// go with them), which reverses its sense of rotation and keeps corner 1.
// Edge slots of `neighbours` then move with the edges:
//   triangle (edge s opposite corner s)      slots 0 and 2 exchange
//   quadrangle (edge s from corner s to s+1) slots 0 and 1, and 2 and 3
//
// `neighbours` is always an input, in the shape of `conn`: row s of column j
// names the element across edge s of element j; an entry at or above the
// element count (usually `null_id`) means none. Nothing here builds it.
//
// All four exports rewrite their arrays in place and never change a shape;
// after a refusal the arrays are unchanged. Applying a flip twice restores
// the arrays.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Exchanges rows 0 and 2 of every column, whatever the element kind.
///
/// - `conn`: in place, 3 rows or more by #elements.
///
/// Statuses in checking order: 0, also when `conn` has no column; -1 `conn`
/// has fewer than 3 rows.
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn) noexcept;

/// Reverses every element of kind `type`, in place.
///
/// - `conn`: in place, by #elements, with the rows of the kind.
/// - `type`: T3 and Q4 exchange rows 0 and 2; T6 also 3 and 5; Q8 and Q9
///   also 4 and 5, and 6 and 7 (Q9's centre stays). MIXED takes 3 or 4 rows
///   (rows 0 and 2; a triangle's `null_id` in row 3 stays), 6 rows (as T6),
///   or 8 or 9 rows, where a column with `null_id` in row 6 is flipped as a
///   T6 and any other as a Q8 or Q9. Any other kind has no rule: its array is
///   left as it is and the call returns 0.
///
/// Statuses in checking order: 0, also when `conn` has no column; -2 the
/// row count does not fit `type` (for MIXED: not 3, 4, 6, 8 or 9; otherwise
/// not the kind's node count).
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn, element_type type) noexcept;

/// Reverses every element as `flip(conn, type)` does and keeps
/// `neighbours` in step with the edges.
///
/// - `conn`: in place, as for `flip(conn, type)`.
/// - `neighbours`: in place, one column per element. Its rows must be 3 for
///   T3 and T6 and 4 for Q4; MIXED settles the kind from the rows of `conn`:
///   3 rows as T3, 4 rows as Q4 (triangles marked by `null_id` in row 3),
///   6 rows as T6, 8 or 9 rows stay mixed and need 4 rows of `neighbours`.
///   For kinds other than these (Q8 and Q9 named explicitly among them) the
///   rows of `neighbours` are not looked at and it is not changed, though
///   `conn` is flipped: pass MIXED to have a Q8 or Q9 mesh's neighbours
///   permuted.
/// - `type`: the element kind.
///
/// Slots of a triangle exchange 0 and 2; of a quadrangle 0 and 1, and 2 and
/// 3. In a mixed array each column's kind is read from its row 3 (4 rows) or
/// row 6 (8 or 9 rows).
///
/// Statuses in checking order:
/// -  0 success, also when `conn` has no column (`neighbours` unchecked).
/// - -2 `neighbours` has another column count than `conn`.
/// - -3 `type` is not MIXED and the rows of `conn` are not its node count.
/// - -2 `type` is MIXED and `conn` has not 3, 4, 6, 8 or 9 rows.
/// - -2 `neighbours` has the wrong row count for the kind.
TESSKIT2D_EXPORT int flip(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, element_type type) noexcept;

/// Makes the orientation of a mesh coherent by flipping elements, and
/// returns the number of flips made.
///
/// - `conn`: in place, 3 rows (T3) or 4 rows (Q4, or mixed with `null_id` in
///   row 3 for a triangle), by #elements. Any other row count that the ID
///   check accepts (8 or 9 rows of MIXED) is walked as a 4-row mixed array
///   would be; only its rows 0 and 2 are exchanged.
/// - `neighbours`: in place, the shape of `conn`; see the header notes.
/// - `seed`: the element whose orientation its part of the mesh adopts; it
///   is never flipped.
/// - `all_parts`: when non-zero, the other parts of the mesh are treated as
///   well, each adopting the orientation of its lowest element at or above
///   `seed`. Parts with no element at or above `seed` are left as they are.
///
/// The walk is breadth first from `seed` over `neighbours`, slots in rising
/// order. Each neighbour not yet expanded is compared with the element it is
/// reached from: when their shared edge runs the same way in both, it is
/// flipped (conn rows 0 and 2, neighbour slots as for `flip`). An edge
/// between two elements already expanded is not compared again, so a
/// non-orientable surface (a Moebius strip) ends with no error and keeps a
/// disagreement on the edges that close the walk.
///
/// A neighbour that shares neither node of the edge (or, for a triangle,
/// one listed in slot 3) is a mismatch: it sets the flip count to -2 and ends
/// the current element's slots, but the walk goes on and flips made stay
/// made. Later flips count on from -2 (to -1, 0, 1, ...), and while the count
/// is negative each element tests only its first live neighbour. A result of
/// -2 or -1 therefore tells a mismatch; a result of 0 or more does not prove
/// there was none. A neighbour sharing just one node of the edge is taken to
/// agree or disagree as that node's place decides.
///
/// Statuses in checking order:
/// -  0 when `conn` has no column (nothing else is looked at).
/// - -1 `conn` is refused by the ID check: not 3, 4, 8 or 9 rows, or
///   `null_id` where a node must be.
/// - -2 `neighbours` does not have the shape of `conn`.
/// - -3 `seed` is not below the element count.
/// Otherwise the flip count, as above.
///
/// Linear in the mesh size. The working bit set and queue are standard
/// containers, so `std::bad_alloc` or `std::length_error` may pass through;
/// flips made before are then kept.
TESSKIT2D_EXPORT int mesh_reorient(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, unsigned seed,
                                   int all_parts);

} // namespace tesskit2d
} // namespace kelm
