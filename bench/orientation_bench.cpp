#include <algorithm>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "neighbour_table.h"
#include "tesskit2d/orientation.h"

namespace {

using namespace kelm::tesskit2d;

// About a million triangles, half of them chosen at random (fixed seed) and
// flipped, with their neighbour table.
void mesh_reorient_T3(benchmark::State& state) {
  auto conn = bench::grid_triangles(708);
  std::mt19937 random(1);
  std::vector<unsigned> order(conn.cols);
  for (unsigned j = 0; j < conn.cols; ++j)
    order[j] = j;
  std::shuffle(order.begin(), order.end(), random);
  for (unsigned k = 0; k < conn.cols / 2; ++k)
    std::swap(conn(0, order[k]), conn(2, order[k]));
  const auto nb = bench::triangle_neighbours(conn);

  dense2D<unsigned> c, n;
  int flips = 0;
  for (auto _ : state) {
    state.PauseTiming();
    c.copy(conn);
    n.copy(nb);
    state.ResumeTiming();
    flips = mesh_reorient(c, n, 0, 1);
    benchmark::DoNotOptimize(flips);
  }
  state.counters["flips"] = flips;
  bench::per_element(state, conn.cols);
}
BENCHMARK(mesh_reorient_T3)->Unit(benchmark::kMillisecond);

void flip_T3_with_neighbours(benchmark::State& state) {
  auto conn = bench::grid_triangles(708);
  auto nb = bench::triangle_neighbours(conn);
  for (auto _ : state)
    benchmark::DoNotOptimize(flip(conn, nb, T3));
  bench::per_element(state, conn.cols);
}
BENCHMARK(flip_T3_with_neighbours)->Unit(benchmark::kMillisecond);

} // namespace
