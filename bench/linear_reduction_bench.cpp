#include "bench_support.h"
#include "tesskit2d/linear_reduction.h"

namespace {

using namespace kelm::tesskit2d;

// 1000 x 1000 Q9 elements on a 2001 x 2001 grid of nodes.
dense2D<unsigned> q9_grid(unsigned n) {
  const unsigned w = 2 * n + 1;
  dense2D<unsigned> c(9, n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = 2 * j * w + 2 * i, e = j * n + i;
      const unsigned q[9] = {a, a + 2, a + 2 + 2 * w, a + 2 * w, a + 1, a + 2 + w, a + 1 + 2 * w, a + w, a + 1 + w};
      for (unsigned r = 0; r < 9; ++r)
        c(r, e) = q[r];
    }
  return c;
}

void split_into_linear_Q9(benchmark::State& state) {
  const dense2D<unsigned> conn = q9_grid(1000);
  bench::streaming_export(state, {},
                          [&](dense2D<double>&, dense2D<unsigned>& out) { return split_into_linear(conn, out); });
}
BENCHMARK(split_into_linear_Q9)->UseRealTime()->Unit(benchmark::kMillisecond);

void split_Q4_into_T3_connectivity(benchmark::State& state) {
  const dense2D<unsigned> conn = bench::grid_quadrangles(1000);
  bench::streaming_export(state, {},
                          [&](dense2D<double>&, dense2D<unsigned>& out) { return split_Q4_into_T3(conn, out); });
}
BENCHMARK(split_Q4_into_T3_connectivity)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
