#pragma once
// Validity checks of ID arrays.

#include "tesskit/export.h"

#include "tesskit/element_type.h"
#include "treisoma/dense2D.h"

namespace kelm {
namespace tesskit {

/// True when `conn` has the shape that `type` requires and every node ID in
/// it is below `n`. `n` of 0xFFFFFFFF means no bound.
///
/// Shapes: E2 2 rows, E3 3, T3 3, Q4 4, T6 6, Q8 8, Q9 9. MIXED accepts
/// 4 rows with 0xFFFFFFFF allowed in row 3 (a triangle), and 8 or 9 rows
/// with 0xFFFFFFFF allowed in rows 6 to 8 when row 6 holds it. Any other
/// kind is refused. An empty array (rows * cols of 0) is accepted whatever
/// its kind, since it holds no ID to check.
TESSKIT_EXPORT bool check_IDs(const dense2D<unsigned>& conn, element_type type, unsigned n) noexcept;

/// True when every entry is below `n` or is 0xFFFFFFFF (none). The row count
/// is not looked at. Used for neighbour arrays, where 0xFFFFFFFF marks a
/// boundary edge.
TESSKIT_EXPORT bool check_IDs(const dense2D<unsigned>& ids, unsigned n) noexcept;

/// True when every entry is below `n`.
TESSKIT_EXPORT bool check_IDs(const dense1D<unsigned, 8>& ids, unsigned n) noexcept;

} // namespace tesskit
} // namespace kelm
