#pragma once
/// \file
/// \brief Rewriting quadrangles with two coinciding adjacent corners as
/// triangles, in place, in the mixed layout.
///
/// A column is degenerate when none of its rows holds `null_id` and two
/// cyclically adjacent corners are one node. The pairs are tested in the
/// order (0, 1), (1, 2), (2, 3), (0, 3), and only the first match applies.
/// A column holding `null_id` anywhere, such as a triangle of a mixed array,
/// is left alone, so a second call changes nothing. Diagonal corners (rows 0
/// and 2, or 1 and 3) are not a degeneracy.
///
/// \par Example
/// \code
///   unsigned quads[] = {0, 1, 1, 2,  // rows 1 and 2 are one node
///                       3, 4, 5, 6}; // a proper quadrangle
///   auto conn = dense2D<unsigned>::view(quads, 4, 2);
///   dense1D<unsigned> converted;
///   const int n = convert_degenerated_Q(conn, converted);
///   // n == 1, converted holds {0}, column 0 is now (0, 1, 2, null_id).
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Rewrites each degenerate quadrangle of a linear mesh as a
/// triangle, in place.
///
/// New rows of a converted column, as old rows by number:
/// | Match      | New column             |
/// |------------|------------------------|
/// | rows 0 = 1 | (0, 2, 3, `null_id`)   |
/// | rows 1 = 2 | (0, 1, 3, `null_id`)   |
/// | rows 2 = 3 | (0, 1, 2, `null_id`)   |
/// | rows 0 = 3 | (0, 1, 2, `null_id`)   |
///
/// \param[in,out] conn 4 rows by \#elements, rewritten in place; unchanged
///   after a refusal.
///
/// \return The number of columns converted, 0 or more (0 also for an empty
///   `conn`, rows * cols of 0), or a negative status:
/// \retval -1 `conn` has other than 4 rows; nothing changed.
///
/// \note Only one collapse is made per column: a column with rows 0 = 1 and
///   2 = 3 becomes a triangle with two equal corners.
/// \pre Node IDs are not checked; they are only copied.
TESSKIT2D_EXPORT int convert_degenerated_Q4(dense2D<unsigned>& conn) noexcept;

/// \brief As convert_degenerated_Q4(), for linear and quadratic meshes, and
/// lists the columns that it converted.
///
/// 4-row columns follow the table of convert_degenerated_Q4(). An 8- or
/// 9-row column that matches becomes a T6 of the quadratic mixed layout:
/// every row is set to `null_id`, then rows 0 to 5 are written, the mid
/// nodes moving with the edges that survive; the mid node of the collapsed
/// edge and a Q9's centre are dropped (old rows by number):
/// | Match      | New rows 0 .. 5    |
/// |------------|--------------------|
/// | rows 0 = 1 | (0, 2, 3, 6, 7, 5) |
/// | rows 1 = 2 | (0, 1, 3, 6, 7, 4) |
/// | rows 2 = 3 | (0, 1, 2, 5, 7, 4) |
/// | rows 0 = 3 | (0, 1, 2, 5, 6, 4) |
///
/// Row 6 of a converted column is then `null_id`, the mark of a triangle in
/// such an array. Only corners decide; mid nodes are not compared.
///
/// \param[in,out] conn 4, 8 or 9 rows by \#elements, rewritten in place;
///   unchanged after a refusal.
/// \param[out] converted Rebuilt: emptied on entry (its content is not
///   read), then given the index of each converted column in ascending
///   order. Empty after a refusal.
///
/// \return The final size of `converted`, 0 or more (0 also for an empty
///   `conn`), or a negative status:
/// \retval -1 `conn` has other than 4, 8 or 9 rows; `conn` unchanged and
///   `converted` empty.
///
/// \pre `converted` does not share its buffer with `conn`.
/// \note If `converted` cannot grow, the column is still converted in
///   `conn` but is missing from `converted` and from the count; this is not
///   reported.
TESSKIT2D_EXPORT int convert_degenerated_Q(dense2D<unsigned>& conn, dense1D<unsigned>& converted) noexcept;

} // namespace tesskit2d
} // namespace kelm
