#pragma once
// Structured grids of quadrangles or triangles inside a four-sided region
// whose sides are already meshed.
//
// The region is given as one closed loop of B node IDs, `boundary`, that
// walks the four sides once and repeats its first entry at the end. With
// N = `n_side` cells along the second side, the first side has
// M = (B - 2 N - 1) / 2 cells (unsigned, truncated), and a valid loop has
// B = 2 (M + N) + 1. Grid position (i, j), i = 0 .. M, j = 0 .. N, is:
//   (i, 0)  boundary[i]                 first side, from the loop's start
//   (M, j)  boundary[M + j]             second side
//   (i, N)  boundary[2 M + N - i]       third side, walked backwards
//   (0, j)  boundary[2 (M + N) - j]     fourth side, walked backwards
//   interior nodes: n_nodes + (i - 1)(N - 1) + (j - 1), n_nodes being the
//   column count of `coords` on entry (j runs fastest).
// So the corners are boundary[0], boundary[M], boundary[M + N] and
// boundary[2 M + N], and a counter-clockwise loop gives counter-clockwise
// elements.
//
// Interior nodes are placed by bilinearly blended transfinite interpolation of
// the four sides, with the index ratios u = i / M and v = j / N as
// parameters: the spacing of the boundary nodes alone shapes the grid, and no
// boundary node moves. A loop that uses a node twice or whose sides cross is
// not detected and gives a tangled grid.
//
// Cell (i, j) has the corners A = (i, j), P = (i + 1, j), C = (i + 1, j + 1),
// D = (i, j + 1); cells are written with i outermost and j innermost.

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Fills the region bounded by `boundary` with M by N quadrangles.
///
/// - `coords`: in-out, 2 or 3 rows by #nodes; the (M - 1)(N - 1) interior
///   nodes are appended, the existing columns stay. With 3 rows the grid is a
///   curved patch blended in all three coordinates.
/// - `boundary`: the closed loop of node IDs described at the top.
/// - `n_side`: N, the number of cells along the second side.
/// - `conn_out`: appended to; empty (rows * cols of 0) or 4 rows. Cell (i, j)
///   is column old_cols + i N + j, holding (A, P, C, D).
///
/// Statuses in checking order, with no array changed by a refusal:
/// - 0: done; also when N, B or M is 0, with nothing changed.
/// - -1: `coords` has neither 2 nor 3 rows.
/// - -2: B below 5, first and last entries of `boundary` differ, or an ID
///   is not a column of `coords`.
/// - -3: 2 N above B, or B is not 2 (M + N) + 1 (an even B, or `n_side` not
///   fitting the loop).
/// - -4: `conn_out` is not empty and has other than 4 rows.
/// - -199: no memory; `coords` and `conn_out` are back to their column counts
///   on entry (an empty `conn_out` may come back with 4 rows).
///
/// \code
///   // 3 x 2 cells on a loop of 2 * (3 + 2) + 1 = 11 IDs, starting at a corner
///   int status = mesh_struct_Q4(coords, loop, 2, quads);
/// \endcode
TESSKIT2D_EXPORT int mesh_struct_Q4(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense2D<unsigned>& conn_out) noexcept;

/// As `mesh_struct_Q4`, with each cell cut into two triangles by `pattern`:
///   0  diagonal P-D in every cell: (A, P, D) then (P, C, D)
///   1  diagonal A-C in every cell: (A, P, C) then (A, C, D)
///   2  A-C where i + j is even, P-D where it is odd
/// The two triangles of cell (i, j) are columns old_cols + 2 (i N + j) and
/// the next one; `conn_out` is empty or has 3 rows.
///
/// Statuses in checking order:
/// - 0: done; also when B * N is 0 (32-bit product). M is not looked at here:
///   a loop of B = 2 N + 1 (M = 0) passes every check, adds no element, and
///   the interior count (M - 1)(N - 1) wraps to -(N - 1), so `coords` loses
///   its last N - 1 columns. This is kept as the function's behaviour.
/// - -1, -2, -3: as for `mesh_struct_Q4`.
/// - -4: `pattern` outside 0 .. 2 (compared as unsigned, so negatives too).
/// - -5: `conn_out` is not empty and has other than 3 rows.
/// - -199: as for `mesh_struct_Q4` (an empty `conn_out` may come back with
///   3 rows).
TESSKIT2D_EXPORT int mesh_struct_T3(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    int pattern, dense2D<unsigned>& conn_out) noexcept;

} // namespace tesskit2d
} // namespace kelm
