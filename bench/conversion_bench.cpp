#include "bench_support.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"

namespace {

using namespace kelm::tesskit2d;

// Each iteration raises a fresh copy: the exports work in place and append
// to `coords`. The copies are made outside the timed region.
void raise_to_quadratic(benchmark::State& state, const dense2D<double>& nodes, const dense2D<unsigned>& elements) {
  for (auto _ : state) {
    state.PauseTiming();
    dense2D<double> coords;
    coords.copy(nodes);
    dense2D<unsigned> conn;
    conn.copy(elements);
    state.ResumeTiming();
    benchmark::DoNotOptimize(convert_into_quadratic(coords, conn));
    state.PauseTiming();
    coords = dense2D<double>();
    conn = dense2D<unsigned>();
    state.ResumeTiming();
  }
  bench::per_element(state, elements.cols);
}

// 1000 x 1000 cells of the jittered unit square, elements in row order.
void convert_into_quadratic_T3(benchmark::State& state) {
  raise_to_quadratic(state, bench::grid_nodes(1000, 0.25), bench::grid_triangles(1000));
}
BENCHMARK(convert_into_quadratic_T3)->Unit(benchmark::kMillisecond);

void convert_into_quadratic_Q4(benchmark::State& state) {
  raise_to_quadratic(state, bench::grid_nodes(1000, 0.25), bench::grid_quadrangles(1000));
}
BENCHMARK(convert_into_quadratic_Q4)->Unit(benchmark::kMillisecond);

} // namespace

namespace {

// 1000 x 1000 cells: 1e6 quadrangles, or 1e6 triangles of a 707 x 707 grid.
void split_into_Q4_T3(benchmark::State& state) {
  const dense2D<double> nodes = bench::grid_nodes(707, 0.25);
  const dense2D<unsigned> elements = bench::grid_triangles(707);
  for (auto _ : state) {
    state.PauseTiming();
    dense2D<double> coords;
    coords.copy(nodes);
    dense2D<unsigned> out;
    state.ResumeTiming();
    benchmark::DoNotOptimize(split_into_Q4(coords, elements, out, dense2D<unsigned>()));
    state.PauseTiming();
    coords = dense2D<double>();
    out = dense2D<unsigned>();
    state.ResumeTiming();
  }
  bench::per_element(state, elements.cols);
}
BENCHMARK(split_into_Q4_T3)->Unit(benchmark::kMillisecond);

void split_Q4_into_T3_with_coords(benchmark::State& state) {
  const dense2D<double> coords = bench::grid_nodes(1000, 0.25);
  const dense2D<unsigned> elements = bench::grid_quadrangles(1000);
  for (auto _ : state) {
    dense2D<unsigned> out;
    benchmark::DoNotOptimize(split_Q4_into_T3(coords, elements, out));
  }
  bench::per_element(state, elements.cols);
}
BENCHMARK(split_Q4_into_T3_with_coords)->Unit(benchmark::kMillisecond);

} // namespace
