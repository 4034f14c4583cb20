#pragma once
// Shared by the benchmark files: meshes of about a million elements and the
// per-element counter.

#include <benchmark/benchmark.h>

#include "tesskit2d/mesh.h"

namespace bench {

using kelm::dense2D;

/// Reports the time per element as the counter "ns/elem" (shown in seconds
/// with an SI prefix, so 12.3n reads as 12.3 ns).
inline void per_element(benchmark::State& state, double elements_per_iteration) {
  state.counters["ns/elem"] = benchmark::Counter(elements_per_iteration, benchmark::Counter::kIsIterationInvariantRate |
                                                                             benchmark::Counter::kInvert);
}

/// Nodes of an (n + 1) by (n + 1) grid on the unit square, row by row, each
/// moved by up to `jitter` of a cell in x and y (fixed seed).
dense2D<double> grid_nodes(unsigned n, double jitter = 0.0);

/// The n by n quadrangles of that grid in row order, counter-clockwise.
dense2D<unsigned> grid_quadrangles(unsigned n);

/// The grid's quadrangles cut along alternating diagonals: 2 n^2 triangles.
dense2D<unsigned> grid_triangles(unsigned n);

} // namespace bench
