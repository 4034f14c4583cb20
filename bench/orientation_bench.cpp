#include <algorithm>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "tesskit2d/orientation.h"

namespace {

using namespace kelm::tesskit2d;

// The neighbour table of a triangle mesh, by sorting its edges: the library
// reads one but never builds it.
dense2D<unsigned> triangle_neighbours(const dense2D<unsigned>& conn) {
  std::vector<std::pair<std::uint64_t, unsigned>> edges;
  edges.reserve(3 * std::size_t(conn.cols));
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned a = conn((s + 1) % 3, j), b = conn((s + 2) % 3, j);
      edges.push_back({std::uint64_t(std::min(a, b)) << 32 | std::max(a, b), 3 * j + s});
    }
  std::sort(edges.begin(), edges.end());
  dense2D<unsigned> nb(3, conn.cols, null_id);
  for (std::size_t k = 0; k + 1 < edges.size(); ++k)
    if (edges[k].first == edges[k + 1].first) {
      const unsigned p = edges[k].second, q = edges[k + 1].second;
      nb(p % 3, p / 3) = q / 3;
      nb(q % 3, q / 3) = p / 3;
      ++k;
    }
  return nb;
}

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
  const auto nb = triangle_neighbours(conn);

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
  auto nb = triangle_neighbours(conn);
  for (auto _ : state)
    benchmark::DoNotOptimize(flip(conn, nb, T3));
  bench::per_element(state, conn.cols);
}
BENCHMARK(flip_T3_with_neighbours)->Unit(benchmark::kMillisecond);

} // namespace
