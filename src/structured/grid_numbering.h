#pragma once
// Node IDs of a structured grid bounded by a closed loop of boundary nodes.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Node ID of grid position (i, j), i = 0 .. M along the first side and
/// j = 0 .. N along the second, for a grid whose boundary loop `boundary`
/// walks the four sides once (2 * (M + N) + 1 entries, the last repeating the
/// first) and whose interior nodes were appended to `coords` from column
/// `n_nodes` on with j running fastest.
///
/// The loop goes round the grid: corners are boundary[0], boundary[M],
/// boundary[M + N] and boundary[2 * M + N]. The sides are tried in loop
/// order, so a corner takes the entry of the side that reaches it first.
inline unsigned grid_node_id(unsigned i, unsigned j, unsigned M, unsigned N, unsigned n_nodes,
                             const unsigned* boundary) noexcept {
  if (j == 0) return boundary[i];
  if (i == M) return boundary[M + j];
  if (j == N) return boundary[2 * M + N - i];
  if (i == 0) return boundary[2 * (M + N) - j];
  return n_nodes + (i - 1) * (N - 1) + (j - 1);
}

inline unsigned grid_node_id(unsigned i, unsigned j, unsigned M, unsigned N, unsigned n_nodes,
                             const dense1D<unsigned, 8>& boundary) noexcept {
  return grid_node_id(i, j, M, N, n_nodes, boundary.begin());
}

} // namespace tesskit2d
} // namespace kelm
