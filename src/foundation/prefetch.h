#pragma once
// Requesting the nodes of elements ahead of the walk that reads them.

#include <cstddef>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Elements looked ahead by walks that gather node coordinates through
/// `conn`. On a mesh whose numbering scatters neighbours across memory each
/// gather misses the cache; requesting the corners of the element this far
/// ahead keeps the misses of many elements in flight together. On a mesh
/// numbered with neighbours together the requests hit and cost little.
constexpr unsigned gather_ahead = 32;

// A function whose only effect is a prefetch reads as free of side effects
// to the optimiser, which then drops its calls as dead code; these are
// inlined before it can decide so, and written out rather than as loops
// for the same reason.

/// Requests the coordinates of the first `n_corners` (3 or 4) nodes of
/// column `c`.
[[gnu::always_inline]] inline void prefetch_nodes(const dense2D<double>& coords, const unsigned* c,
                                                  unsigned n_corners) noexcept {
  const double* x = coords.buffer->data + coords.offset;
  const std::size_t ld = coords.ld;
  __builtin_prefetch(x + c[0] * ld);
  __builtin_prefetch(x + c[1] * ld);
  __builtin_prefetch(x + c[2] * ld);
  if (n_corners > 3) __builtin_prefetch(x + c[3] * ld);
}

/// The same for column j + gather_ahead of `conn`, when there is one; a
/// column whose row 3 is `null_id` (a triangle in a mixed mesh) requests
/// three nodes.
[[gnu::always_inline]] inline void prefetch_ahead(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                                                  unsigned j) noexcept {
  if (j + gather_ahead >= conn.cols) return;
  const unsigned* c = conn.column(j + gather_ahead);
  prefetch_nodes(coords, c, conn.rows == 3 || c[3] == null_id ? 3 : 4);
}

} // namespace tesskit2d
} // namespace kelm
