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

/// Requests, for a walk over the columns of `conn` in order, the nodes of
/// the column `gather_ahead` places ahead of the current one. Every 64
/// columns it probes the numbering: where the first nodes of columns 64
/// apart lie within a few thousand IDs of each other the nodes ahead are in
/// the cache already and the requests would only cost instructions, so it
/// makes none until a later probe finds the numbering scattered.
class node_prefetcher {
public:
  node_prefetcher(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept
      : coords_(coords), conn_(conn) {}

  [[gnu::always_inline]] void at(unsigned j) noexcept {
    if (j % probe_every == 0) scattered_ = scattered(j);
    if (!scattered_ || j + gather_ahead >= conn_.cols) return;
    const unsigned* c = conn_.column(j + gather_ahead);
    prefetch_nodes(coords_, c, conn_.rows == 3 || c[3] == null_id ? 3 : 4);
  }

private:
  static constexpr unsigned probe_every = 64;
  static constexpr unsigned local_span = 4096;

  bool scattered(unsigned j) const noexcept {
    if (j + probe_every >= conn_.cols) return false;
    const unsigned a = conn_.column(j)[0], b = conn_.column(j + probe_every)[0];
    return (a > b ? a - b : b - a) > local_span;
  }

  const dense2D<double>& coords_;
  const dense2D<unsigned>& conn_;
  bool scattered_ = false;
};

} // namespace tesskit2d
} // namespace kelm
