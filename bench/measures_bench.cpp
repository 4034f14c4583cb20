#include <cmath>

#include "bench_support.h"
#include "tesskit2d/measures.h"

namespace {

using namespace kelm::tesskit2d;

// 708 x 708 cells cut in two give about a million triangles; 1000 x 1000
// cells a million quadrangles.
constexpr unsigned tri_cells = 708, quad_cells = 1000;

// The jittered grid, or the same grid lifted onto the surface
// z = 0.2 sin(3x) cos(2y).
dense2D<double> nodes(unsigned n, bool space) {
  const dense2D<double> xy = bench::grid_nodes(n, 0.3);
  if (!space) return xy;
  dense2D<double> xyz(3, xy.cols);
  for (unsigned j = 0; j < xy.cols; ++j) {
    xyz(0, j) = xy(0, j);
    xyz(1, j) = xy(1, j);
    xyz(2, j) = 0.2 * std::sin(3 * xy(0, j)) * std::cos(2 * xy(1, j));
  }
  return xyz;
}

void area_T3(benchmark::State& state) {
  const auto xy = nodes(tri_cells, state.range(0) == 3);
  const auto conn = bench::grid_triangles(tri_cells);
  double a = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(area(xy, conn, a));
    benchmark::DoNotOptimize(a);
  }
  bench::per_element(state, conn.cols);
}
BENCHMARK(area_T3)->Arg(2)->Arg(3)->ArgName("dim")->Unit(benchmark::kMillisecond);

void area_Q4(benchmark::State& state) {
  const auto xy = nodes(quad_cells, state.range(0) == 3);
  const auto conn = bench::grid_quadrangles(quad_cells);
  double a = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(area(xy, conn, a));
    benchmark::DoNotOptimize(a);
  }
  bench::per_element(state, conn.cols);
}
BENCHMARK(area_Q4)->Arg(2)->Arg(3)->ArgName("dim")->Unit(benchmark::kMillisecond);

void angles_T3(benchmark::State& state) {
  const auto xy = nodes(tri_cells, state.range(0) == 3);
  const auto conn = bench::grid_triangles(tri_cells);
  dense1D<double> lo, hi;
  for (auto _ : state)
    benchmark::DoNotOptimize(angles(xy, conn, true, lo, hi));
  bench::per_element(state, conn.cols);
}
BENCHMARK(angles_T3)->Arg(2)->Arg(3)->ArgName("dim")->Unit(benchmark::kMillisecond);

void angles_Q4(benchmark::State& state) {
  const auto xy = nodes(quad_cells, state.range(0) == 3);
  const auto conn = bench::grid_quadrangles(quad_cells);
  dense1D<double> lo, hi;
  for (auto _ : state)
    benchmark::DoNotOptimize(angles(xy, conn, true, lo, hi));
  bench::per_element(state, conn.cols);
}
BENCHMARK(angles_Q4)->Arg(2)->Arg(3)->ArgName("dim")->Unit(benchmark::kMillisecond);

void circumcenters_T3(benchmark::State& state) {
  const auto xy = nodes(tri_cells, state.range(0) == 3);
  const auto conn = bench::grid_triangles(tri_cells);
  dense2D<double> centers;
  for (auto _ : state)
    benchmark::DoNotOptimize(circumcenters(xy, conn, centers));
  bench::per_element(state, conn.cols);
}
BENCHMARK(circumcenters_T3)->Arg(2)->Arg(3)->ArgName("dim")->Unit(benchmark::kMillisecond);

} // namespace
