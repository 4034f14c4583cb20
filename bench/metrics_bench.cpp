// Metric fields on a million nodes: metrics_struct filling the interior of a
// 1000 x 1000 structured grid from its 4000 boundary values, as sizes, 2 by
// 2 and 3 by 3 metrics. Counters are per interior entry.

#include <cmath>

#include "bench_support.h"
#include "tesskit2d/metrics.h"

namespace {

using namespace kelm::tesskit2d;
using kelm::dense1D;
using kelm::dense2D;

constexpr unsigned side = 1000;

// Loop 0 .. 4 side - 1, 0 of a side by side grid, and per boundary node its
// sizes along x and y: fine across the first side, coarse along it, turning
// slowly round the loop.
struct boundary_field {
  dense1D<unsigned, 8> loop;
  double hx[4 * side], hy[4 * side], angle[4 * side];
  boundary_field() {
    for (unsigned k = 0; k < 4 * side; ++k) {
      loop.push_back(k);
      const double a = 6.283185307179586 * k / (4 * side);
      hx[k] = 0.01 + 0.005 * std::sin(a);
      hy[k] = 0.001 + 0.0009 * std::cos(3 * a);
      angle[k] = 0.3 * std::sin(a);
    }
    loop.push_back(0);
  }
};

void put_metric(dense2D<double>& m, unsigned j, double hx, double hy, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), ex = 1 / (hx * hx), ey = 1 / (hy * hy);
  double* col = m.column(j);
  col[0] = ex * c * c + ey * s * s;
  col[1] = (ex - ey) * c * s;
  col[2] = ex * s * s + ey * c * c;
  if (m.rows == 6) col[3] = col[4] = 0, col[5] = ex;
}

const double interior = double(side - 1) * (side - 1);

void metrics_struct_sizes_1000x1000(benchmark::State& state) {
  static const boundary_field b;
  for (auto _ : state) {
    state.PauseTiming();
    dense1D<double, 8> sizes(4 * side);
    for (unsigned k = 0; k < 4 * side; ++k)
      sizes[k] = b.hx[k];
    state.ResumeTiming();
    benchmark::DoNotOptimize(metrics_struct(b.loop, side, sizes));
  }
  bench::per_element(state, interior);
}
BENCHMARK(metrics_struct_sizes_1000x1000)->Unit(benchmark::kMillisecond);

void metrics_struct(benchmark::State& state, unsigned rows) {
  static const boundary_field b;
  for (auto _ : state) {
    state.PauseTiming();
    dense2D<double> m(rows, 4 * side);
    for (unsigned k = 0; k < 4 * side; ++k)
      put_metric(m, k, b.hx[k], b.hy[k], b.angle[k]);
    state.ResumeTiming();
    benchmark::DoNotOptimize(kelm::tesskit2d::metrics_struct(b.loop, side, m));
  }
  bench::per_element(state, interior);
}
void metrics_struct_3_rows_1000x1000(benchmark::State& state) { metrics_struct(state, 3); }
void metrics_struct_6_rows_1000x1000(benchmark::State& state) { metrics_struct(state, 6); }
BENCHMARK(metrics_struct_3_rows_1000x1000)->Unit(benchmark::kMillisecond);
BENCHMARK(metrics_struct_6_rows_1000x1000)->Unit(benchmark::kMillisecond);

} // namespace
