// Nodal interpolation on the workload that point-location libraries are
// compared on: the unit square cut into 1000 x 1000 cells of two triangles
// (2,000,000 T3, 1,002,001 nodes, interior nodes jittered by up to 0.15 of a
// cell), and 1,002,001 targets drawn uniformly, appended behind the nodes
// with `null_id` ancestors. One scalar field. The whole call is timed, the
// tree build included; the parts show where the time goes.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "bench_support.h"
#include "interpolation/edge_picker.h"
#include "interpolation/node_quadtree.h"
#include "interpolation/point_locator.h"
#include "neighbour_table.h"
#include "tesskit2d/interpolation.h"

namespace {

using namespace kelm::tesskit2d;
using kelm::dense1D;

constexpr unsigned cells = 1000;

// The index of a point of the unit square along a Hilbert curve of 2^16
// cells a side.
std::uint64_t hilbert(double x, double y) {
  const unsigned side = 1u << 16;
  unsigned ix = std::min(side - 1, unsigned(x * side)), iy = std::min(side - 1, unsigned(y * side));
  std::uint64_t d = 0;
  for (unsigned s = side / 2; s > 0; s /= 2) {
    const unsigned rx = (ix & s) ? 1 : 0, ry = (iy & s) ? 1 : 0;
    d += std::uint64_t(s) * s * ((3 * rx) ^ ry);
    if (ry == 0) {
      if (rx == 1) {
        ix = side - 1 - ix;
        iy = side - 1 - iy;
      }
      std::swap(ix, iy);
    }
  }
  return d;
}

// The mesh and its targets, built once for all benchmarks: nodes, then the
// targets in random order (`shuffled`) or along the Hilbert curve (`sorted`).
struct workload {
  dense2D<double> shuffled, sorted;
  dense2D<unsigned> conn, neighbours;
  dense1D<unsigned> ancestors, targets;
  dense1D<double> field;
  unsigned n_background;

  workload() {
    const dense2D<double> nodes = bench::grid_nodes(cells, 0.15);
    conn = bench::grid_triangles(cells);
    neighbours = bench::triangle_neighbours(conn);
    n_background = nodes.cols;
    const unsigned n_targets = n_background, n = n_background + n_targets;
    std::mt19937 random(2);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<std::pair<std::uint64_t, std::pair<double, double>>> points(n_targets);
    for (auto& p : points) {
      p.second.first = unit(random);
      p.second.second = unit(random);
      p.first = hilbert(p.second.first, p.second.second);
    }
    shuffled = dense2D<double>(2, n);
    sorted = dense2D<double>(2, n);
    for (unsigned j = 0; j < n_background; ++j)
      for (unsigned i = 0; i < 2; ++i)
        shuffled(i, j) = sorted(i, j) = nodes(i, j);
    for (unsigned k = 0; k < n_targets; ++k) {
      shuffled(0, n_background + k) = points[k].second.first;
      shuffled(1, n_background + k) = points[k].second.second;
    }
    std::sort(points.begin(), points.end());
    for (unsigned k = 0; k < n_targets; ++k) {
      sorted(0, n_background + k) = points[k].second.first;
      sorted(1, n_background + k) = points[k].second.second;
    }
    ancestors = dense1D<unsigned>(n, null_id);
    for (unsigned e = 0; e < conn.cols; ++e)
      for (unsigned r = 0; r < 3; ++r)
        ancestors[conn(r, e)] = e;
    targets = dense1D<unsigned>(n_targets);
    for (unsigned k = 0; k < n_targets; ++k)
      targets[k] = n_background + k;
    field = dense1D<double>(n, 0.0);
    for (unsigned j = 0; j < n_background; ++j)
      field[j] = std::sin(3 * nodes(0, j)) * std::cos(2 * nodes(1, j));
  }

  const dense2D<double>& xy(bool ordered) const { return ordered ? sorted : shuffled; }
};

const workload& mesh() {
  static const workload w;
  return w;
}

void per_target(benchmark::State& state) {
  state.counters["ns/target"] = benchmark::Counter(mesh().targets.size, benchmark::Counter::kIsIterationInvariantRate |
                                                                            benchmark::Counter::kInvert);
}

// The whole call, targets in random order (0) or sorted along the curve (1).
void interpolate_T3(benchmark::State& state) {
  const workload& w = mesh();
  dense1D<double> field = w.field;
  for (auto _ : state)
    benchmark::DoNotOptimize(
        interpolate(w.xy(state.range(0)), w.conn, w.neighbours, w.ancestors, field, w.targets, T3));
  per_target(state);
}
BENCHMARK(interpolate_T3)->Arg(0)->Arg(1)->ArgName("sorted")->Unit(benchmark::kMillisecond);

// Parts of the call. The tree alone, from the mesh.
void tree_fill_T3(benchmark::State& state) {
  const workload& w = mesh();
  double cells_per_node = 0;
  for (auto _ : state) {
    node_quadtree tree(w.sorted);
    benchmark::DoNotOptimize(tree.fill_from_mesh<T3>(w.conn));
    cells_per_node = double(tree.cells.cols) / w.n_background;
  }
  per_target(state);
  state.counters["cells/node"] = cells_per_node;
}
BENCHMARK(tree_fill_T3)->Unit(benchmark::kMillisecond);

// The same tree from `insert_node`, node by node in mesh order: the
// baseline of the one-pass build.
void tree_insert_T3(benchmark::State& state) {
  const workload& w = mesh();
  for (auto _ : state) {
    node_quadtree tree(w.sorted);
    const double lo[2] = {0, 0}, hi[2] = {1, 1};
    tree.set_box(lo, hi);
    for (unsigned j = 0; j < w.n_background; ++j)
      tree.insert_node(j);
    benchmark::DoNotOptimize(tree.n_points);
  }
  per_target(state);
}
BENCHMARK(tree_insert_T3)->Unit(benchmark::kMillisecond);

// The quick search of every target on a built tree (walk 0), and the walks
// from the elements it gives (walk 1); the counter "steps" is the mean walk
// length.
void search_and_walk(benchmark::State& state) {
  const workload& w = mesh();
  const dense2D<double>& xy = w.xy(state.range(0));
  node_quadtree tree(xy);
  tree.fill_from_mesh<T3>(w.conn);
  const bool walking = state.range(1) != 0;
  double steps_total = 0;
  for (auto _ : state) {
    edge_picker picker;
    std::uint64_t steps_sum = 0;
    for (unsigned k = 0; k < w.targets.size; ++k) {
      const double* p = xy.column(w.targets[k]);
      unsigned grid[2], lo[2], hi[2], cell, level, quadrant, best;
      bool done;
      double d2 = max_double;
      tree.to_grid(p, grid);
      tree.nearest_candidate(p, d2, best, grid, lo, hi, cell, level, quadrant, done, w.ancestors);
      if (!walking || best == null_id) {
        benchmark::DoNotOptimize(best);
        continue;
      }
      unsigned e = w.ancestors[best], steps;
      benchmark::DoNotOptimize(walk<T3>(xy, w.conn, w.neighbours, p, e, 1e-6, steps, picker));
      steps_sum += steps;
    }
    steps_total = double(steps_sum) / w.targets.size;
  }
  per_target(state);
  if (walking) state.counters["steps"] = steps_total;
}
BENCHMARK(search_and_walk)->ArgsProduct({{0, 1}, {0, 1}})->ArgNames({"sorted", "walk"})->Unit(benchmark::kMillisecond);

} // namespace
