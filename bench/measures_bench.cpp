#include <algorithm>
#include <cmath>

#include "bench_support.h"
#include "tesskit2d/measures.h"

namespace {

using namespace kelm::tesskit2d;

// 1000 x 1000 cells cut in two give 2e6 triangles, in the numbering the
// argument names; 1000 x 1000 quadrangles in space for the 3D kernels.
constexpr unsigned cells = 1000;

struct mesh {
  dense2D<double> nodes;
  dense2D<unsigned> elements;
};

mesh triangles(bench::numbering order) {
  mesh m{bench::grid_nodes(cells, 0.3), bench::grid_triangles(cells)};
  bench::renumber(m.nodes, m.elements, order);
  return m;
}

// The yardstick of the measures: a plain loop that gathers the three
// corners of each triangle and sums their cross products, with nothing
// else. What a measure costs beyond it is its own work.
double plain_gather(const dense2D<double>& xy, const dense2D<unsigned>& conn) {
  const double* x = xy.column(0);
  const std::size_t ld = xy.ld;
  double sum = 0;
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    const double *a = x + c[0] * ld, *b = x + c[1] * ld, *d = x + c[2] * ld;
    sum += (b[0] - a[0]) * (d[1] - a[1]) - (b[1] - a[1]) * (d[0] - a[0]);
  }
  return sum;
}

// Runs `measure` on the mesh of the argument's numbering; between
// repetitions times the plain gather on it ("x_gather") and the same
// measure on the generated numbering ("x_generated").
template <class Measure> void measured(benchmark::State& state, Measure measure) {
  const auto order = static_cast<bench::numbering>(state.range(0));
  const mesh m = triangles(order), generated = triangles(bench::numbering::generated);
  bench::yardstick gather, peer;
  for (auto _ : state) {
    measure(m);
    state.PauseTiming();
    gather.time([&] { benchmark::DoNotOptimize(plain_gather(m.nodes, m.elements)); });
    if (order != bench::numbering::generated) peer.time([&] { measure(generated); });
    state.ResumeTiming();
  }
  gather.report(state, "x_gather");
  if (order != bench::numbering::generated) peer.report(state, "x_generated");
  bench::per_element(state, m.elements.cols);
}

void area_T3(benchmark::State& state) {
  measured(state, [](const mesh& m) {
    double a = 0;
    benchmark::DoNotOptimize(area(m.nodes, m.elements, a));
    benchmark::DoNotOptimize(a);
  });
}
BENCHMARK(area_T3)->Apply(bench::numberings);

void angles_T3(benchmark::State& state) {
  measured(state, [](const mesh& m) {
    dense1D<double> lo, hi;
    benchmark::DoNotOptimize(angles(m.nodes, m.elements, true, lo, hi));
  });
}
BENCHMARK(angles_T3)->Apply(bench::numberings);

void circumcenters_T3(benchmark::State& state) {
  measured(state, [](const mesh& m) {
    dense2D<double> centers;
    benchmark::DoNotOptimize(circumcenters(m.nodes, m.elements, centers));
  });
}
BENCHMARK(circumcenters_T3)->Apply(bench::numberings);

// The grid lifted onto the surface z = 0.2 sin(3x) cos(2y): warped
// quadrangles take the larger of their two triangulations.
void area_Q4_space(benchmark::State& state) {
  const dense2D<double> xy = bench::grid_nodes(cells, 0.3);
  dense2D<double> xyz(3, xy.cols);
  for (unsigned j = 0; j < xy.cols; ++j) {
    xyz(0, j) = xy(0, j);
    xyz(1, j) = xy(1, j);
    xyz(2, j) = 0.2 * std::sin(3 * xy(0, j)) * std::cos(2 * xy(1, j));
  }
  const auto conn = bench::grid_quadrangles(cells);
  double a = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(area(xyz, conn, a));
    benchmark::DoNotOptimize(a);
  }
  bench::per_element(state, conn.cols);
}
BENCHMARK(area_Q4_space)->Unit(benchmark::kMillisecond);

} // namespace
