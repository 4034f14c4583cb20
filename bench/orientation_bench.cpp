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

// 2e6 triangles in the numbering the argument names, a third of them chosen
// at random (fixed seed) and flipped, with their neighbour table.
struct flipped_mesh {
  dense2D<unsigned> conn, neighbours;
};

flipped_mesh make(bench::numbering order) {
  dense2D<double> nodes = bench::grid_nodes(1000);
  flipped_mesh m{bench::grid_triangles(1000), {}};
  bench::renumber(nodes, m.conn, order);
  std::mt19937 random(1);
  std::vector<unsigned> chosen(m.conn.cols);
  for (unsigned j = 0; j < m.conn.cols; ++j)
    chosen[j] = j;
  std::shuffle(chosen.begin(), chosen.end(), random);
  for (unsigned k = 0; k < m.conn.cols / 3; ++k)
    std::swap(m.conn(0, chosen[k]), m.conn(2, chosen[k]));
  m.neighbours = bench::triangle_neighbours(m.conn);
  return m;
}

// Between repetitions the walk on the generated numbering is timed too
// ("x_generated").
void mesh_reorient_T3(benchmark::State& state) {
  const auto order = static_cast<bench::numbering>(state.range(0));
  const flipped_mesh m = make(order), generated = make(bench::numbering::generated);
  bench::yardstick peer;
  dense2D<unsigned> c, n;
  int flips = 0;
  for (auto _ : state) {
    state.PauseTiming();
    c.copy(m.conn);
    n.copy(m.neighbours);
    state.ResumeTiming();
    flips = mesh_reorient(c, n, 0, 1);
    benchmark::DoNotOptimize(flips);
    if (order == bench::numbering::generated) continue;
    state.PauseTiming();
    c.copy(generated.conn);
    n.copy(generated.neighbours);
    peer.time([&] { benchmark::DoNotOptimize(mesh_reorient(c, n, 0, 1)); });
    state.ResumeTiming();
  }
  state.counters["flips"] = flips;
  if (order != bench::numbering::generated) peer.report(state, "x_generated");
  bench::per_element(state, m.conn.cols);
}
BENCHMARK(mesh_reorient_T3)->Apply(bench::numberings);

void flip_T3_with_neighbours(benchmark::State& state) {
  auto conn = bench::grid_triangles(708);
  auto nb = bench::triangle_neighbours(conn);
  for (auto _ : state)
    benchmark::DoNotOptimize(flip(conn, nb, T3));
  bench::per_element(state, conn.cols);
}
BENCHMARK(flip_T3_with_neighbours)->Unit(benchmark::kMillisecond);

} // namespace
