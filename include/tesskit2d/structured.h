#pragma once
/// \file
/// \brief Structured grids of quadrangles or triangles inside a four-sided
/// region whose sides are already meshed.
///
/// \par The loop
/// The region is given as one closed loop of B node IDs, `boundary`, that
/// walks the four sides once and repeats its first entry at the end. With
/// N = `n_side` cells along the second side, the first side has
/// M = (B - 2 N - 1) / 2 cells (unsigned, truncated), and a valid loop has
/// B = 2 (M + N) + 1. Grid position (i, j), i = 0 .. M, j = 0 .. N, is:
/// | Position | Node | Where |
/// |----------|------|-------|
/// | (i, 0) | boundary[i] | first side, from the loop's start |
/// | (M, j) | boundary[M + j] | second side |
/// | (i, N) | boundary[2 M + N - i] | third side, walked backwards |
/// | (0, j) | boundary[2 (M + N) - j] | fourth side, walked backwards |
/// | interior | n_nodes + (i - 1)(N - 1) + (j - 1) | j runs fastest |
///
/// n_nodes is the column count of `coords` on entry. So the corners are
/// boundary[0], boundary[M], boundary[M + N] and boundary[2 M + N], and a
/// counter-clockwise loop gives counter-clockwise elements.
///
/// \par Interior nodes
/// They are placed by bilinearly blended transfinite interpolation of the
/// four sides, with the index ratios u = i / M and v = j / N as parameters:
/// the spacing of the boundary nodes alone shapes the grid, and no boundary
/// node moves. A loop that uses a node twice or whose sides cross is not
/// detected and gives a tangled grid.
///
/// \par Cells
/// Cell (i, j) has the corners A = (i, j), P = (i + 1, j),
/// C = (i + 1, j + 1), D = (i, j + 1); cells are written with i outermost
/// and j innermost.
///
/// \par Example
/// \code
///   // The unit square, 3 cells along x and 2 along y: 10 boundary nodes
///   // walked counter-clockwise from (0, 0), the first repeated at the end.
///   const double at[10][2] = {{0, 0},     {1. / 3, 0}, {2. / 3, 0}, {1, 0}, {1, 0.5},
///                             {1, 1},     {2. / 3, 1}, {1. / 3, 1}, {0, 1}, {0, 0.5}};
///   dense2D<double> coords(2, 10);
///   for (unsigned j = 0; j < 10; ++j) {
///     coords(0, j) = at[j][0];
///     coords(1, j) = at[j][1];
///   }
///   dense1D<unsigned, 8> loop;
///   for (unsigned j = 0; j <= 10; ++j)
///     loop.push_back(j % 10); // B = 2 (3 + 2) + 1 = 11 entries
///   dense2D<unsigned> quads;
///   const int status = mesh_struct_Q4(coords, loop, 2, quads);
///   // 0; quads is 4 x 6, coords gains the interior nodes 10 at (1/3, 1/2)
///   // and 11 at (2/3, 1/2); cell (0, 0) is column 0, (0, 1, 10, 9).
/// \endcode

#include "tesskit2d/export.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// \brief Fills the region bounded by `boundary` with M by N quadrangles.
///
/// \param[in,out] coords 2 or 3 rows by \#nodes; the (M - 1)(N - 1)
///   interior nodes are appended, the existing columns stay. With 3 rows
///   the grid is a curved patch blended in all three coordinates.
/// \param[in] boundary The closed loop of B node IDs described in the file
///   documentation.
/// \param[in] n_side N, the number of cells along the second side.
/// \param[in,out] conn_out Appended to: empty (rows * cols of 0) or 4 rows.
///   Cell (i, j) is column old_cols + i N + j, holding (A, P, C, D).
///
/// A refusal changes no array.
/// \retval 0 Done; also when N, B or M is 0, with nothing changed.
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 B below 5, first and last entries of `boundary` differ, or an
///   ID is not a column of `coords`.
/// \retval -3 2 N above B, or B is not 2 (M + N) + 1 (an even B, or
///   `n_side` not fitting the loop).
/// \retval -4 `conn_out` is not empty and has other than 4 rows.
/// \retval -199 No memory; `coords` and `conn_out` are back to their column
///   counts on entry (an empty `conn_out` may come back with 4 rows).
TESSKIT2D_EXPORT int mesh_struct_Q4(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    dense2D<unsigned>& conn_out) noexcept;

/// \brief As mesh_struct_Q4(), with each cell cut into two triangles by
/// `pattern`.
///
/// \param[in,out] coords As for mesh_struct_Q4(): 2 or 3 rows by \#nodes,
///   the interior nodes appended.
/// \param[in] boundary The closed loop of B node IDs.
/// \param[in] n_side N, the number of cells along the second side.
/// \param[in] pattern The diagonal of each cell:
///   - 0: P-D in every cell, (A, P, D) then (P, C, D);
///   - 1: A-C in every cell, (A, P, C) then (A, C, D);
///   - 2: A-C where i + j is even, P-D where it is odd.
/// \param[in,out] conn_out Appended to: empty or 3 rows. The two triangles
///   of cell (i, j) are columns old_cols + 2 (i N + j) and the next one.
///
/// A refusal changes no array.
/// \retval 0 Done; also when B * N is 0 (32-bit product).
/// \retval -1 `coords` has neither 2 nor 3 rows.
/// \retval -2 As for mesh_struct_Q4(): B below 5, an open loop, or an ID
///   that is not a column of `coords`.
/// \retval -3 As for mesh_struct_Q4(): `n_side` does not fit the loop.
/// \retval -4 `pattern` outside 0 .. 2 (compared as unsigned, so negatives
///   too).
/// \retval -5 `conn_out` is not empty and has other than 3 rows.
/// \retval -199 As for mesh_struct_Q4() (an empty `conn_out` may come back
///   with 3 rows).
///
/// \note M is not looked at here: a loop of B = 2 N + 1 (M = 0) passes every
///   check, adds no element, and the interior count (M - 1)(N - 1) wraps to
///   -(N - 1), so `coords` loses its last N - 1 columns. This is kept as the
///   function's behaviour.
TESSKIT2D_EXPORT int mesh_struct_T3(dense2D<double>& coords, const dense1D<unsigned, 8>& boundary, unsigned n_side,
                                    int pattern, dense2D<unsigned>& conn_out) noexcept;

} // namespace tesskit2d
} // namespace kelm
