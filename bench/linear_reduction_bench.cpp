#include <memory>

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

// Fresh outputs each repetition, released with the timing paused; between
// repetitions the output's bytes are written into fresh and into touched
// storage, the yardsticks of a streaming export.
template <class Call> void streaming(benchmark::State& state, const dense2D<unsigned>& conn, Call call) {
  std::unique_ptr<bench::write_baseline> baseline;
  for (auto _ : state) {
    dense2D<unsigned> out;
    benchmark::DoNotOptimize(call(out));
    state.PauseTiming();
    if (!baseline) baseline = std::make_unique<bench::write_baseline>(double(out.rows) * out.cols * sizeof(unsigned));
    out = dense2D<unsigned>();
    baseline->measure(state);
    state.ResumeTiming();
  }
  baseline->report(state);
  bench::per_element(state, conn.cols);
}

void split_into_linear_Q9(benchmark::State& state) {
  const dense2D<unsigned> conn = q9_grid(1000);
  streaming(state, conn, [&](dense2D<unsigned>& out) { return split_into_linear(conn, out); });
}
BENCHMARK(split_into_linear_Q9)->UseRealTime()->Unit(benchmark::kMillisecond);

void split_Q4_into_T3_connectivity(benchmark::State& state) {
  const dense2D<unsigned> conn = bench::grid_quadrangles(1000);
  streaming(state, conn, [&](dense2D<unsigned>& out) { return split_Q4_into_T3(conn, out); });
}
BENCHMARK(split_Q4_into_T3_connectivity)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
