// The extras' locality renumbering of the shuffled 2e6-triangle square,
// against one raise to quadratic order of the same mesh timed in the same
// run ("x_convert"): what a caller pays once before a pipeline of calls.

#include "bench_support.h"
#include "tesskit2d/extras.h"
#include "tesskit2d/high_order.h"

namespace {

using namespace kelm::tesskit2d;

void renumber_shuffled_T3(benchmark::State& state) {
  dense2D<double> nodes = bench::grid_nodes(1000, 0.25);
  dense2D<unsigned> elements = bench::grid_triangles(1000);
  bench::renumber(nodes, elements, bench::numbering::shuffled);
  bench::yardstick convert;
  for (auto _ : state) {
    state.PauseTiming();
    dense2D<double> coords;
    coords.copy(nodes);
    dense2D<unsigned> conn;
    conn.copy(elements);
    kelm::dense1D<unsigned> node_order, element_order;
    state.ResumeTiming();
    benchmark::DoNotOptimize(extras::renumber(coords, conn, nullptr, nullptr, node_order, element_order));
    state.PauseTiming();
    coords.copy(nodes);
    conn.copy(elements);
    convert.time([&] { benchmark::DoNotOptimize(convert_into_quadratic(coords, conn)); });
    state.ResumeTiming();
  }
  convert.report(state, "x_convert");
  bench::per_element(state, elements.cols);
}
BENCHMARK(renumber_shuffled_T3)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
