// Nodal interpolation on the workload that point-location libraries are
// compared on: the unit square cut into 1000 x 1000 cells of two triangles
// (2,000,000 T3, 1,002,001 nodes, interior nodes jittered by up to 0.15 of a
// cell), and 1,002,001 targets drawn uniformly, appended behind the nodes
// with `null_id` ancestors. One scalar field. The whole call is timed, the
// tree build included; the parts show where the time goes. The background
// mesh comes in the three numberings; the targets are the same in all.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "interpolation/edge_picker.h"
#include "interpolation/node_quadtree.h"
#include "interpolation/point_locator.h"
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

// The mesh and its targets, built once per numbering: nodes, then the
// targets in the order drawn (`xy`) or along the Hilbert curve (`sorted`).
struct workload : bench::located_mesh {
  dense2D<double> sorted;
  dense1D<double> field;

  explicit workload(bench::numbering order) : bench::located_mesh(bench::make_located_mesh(cells, 0.15, order)) {
    const unsigned n = xy.cols;
    std::vector<std::pair<std::uint64_t, unsigned>> points;
    for (unsigned j = n_background; j < n; ++j)
      points.push_back({hilbert(xy(0, j), xy(1, j)), j});
    std::sort(points.begin(), points.end());
    sorted.copy(xy);
    for (unsigned k = 0; k < points.size(); ++k)
      for (unsigned i = 0; i < 2; ++i)
        sorted(i, n_background + k) = xy(i, points[k].second);
    field = dense1D<double>(n, 0.0);
    for (unsigned j = 0; j < n_background; ++j)
      field[j] = std::sin(3 * xy(0, j)) * std::cos(2 * xy(1, j));
  }

  const dense2D<double>& points(bool ordered) const { return ordered ? sorted : xy; }
};

const workload& mesh(bench::numbering order = bench::numbering::generated) {
  static bench::by_numbering<workload> built;
  return built.get(order, [](bench::numbering o) { return workload(o); });
}

void per_target(benchmark::State& state) {
  state.counters["ns/target"] = benchmark::Counter(mesh().targets.size, benchmark::Counter::kIsIterationInvariantRate |
                                                                            benchmark::Counter::kInvert);
  bench::per_element(state, mesh().conn.cols);
}

// Numbering of the background mesh first, then the benchmark's own
// arguments.
void numberings_by(benchmark::internal::Benchmark* b, std::vector<std::vector<int64_t>> more,
                   std::vector<std::string> names) {
  more.insert(more.begin(), {0, 1, 2});
  names.insert(names.begin(), "numbering");
  b->ArgsProduct(more)->ArgNames(names)->UseRealTime()->Unit(benchmark::kMillisecond);
}

// The whole call, targets in random order (0) or sorted along the curve (1).
void interpolate_T3(benchmark::State& state) {
  const bool ordered = state.range(1);
  bench::against_generated(
      state, mesh,
      [](const workload& w) {
        dense1D<double> f(w.field.size);
        std::copy(w.field.begin(), w.field.end(), f.begin());
        return std::make_pair(&w, f);
      },
      [ordered](std::pair<const workload*, dense1D<double>>& in) {
        const workload& w = *in.first;
        benchmark::DoNotOptimize(
            interpolate(w.points(ordered), w.conn, w.neighbours, w.ancestors, in.second, w.targets, T3));
      });
  per_target(state);
}
BENCHMARK(interpolate_T3)->Apply([](auto* b) { numberings_by(b, {{0, 1}}, {"sorted"}); });

// Parts of the call. The tree alone, from the mesh.
void tree_fill_T3(benchmark::State& state) {
  double cells_per_node = 0;
  bench::against_generated(state, mesh, bench::as_is(), [&](const workload& w) {
    node_quadtree tree(w.sorted);
    benchmark::DoNotOptimize(tree.fill_from_mesh<T3>(w.conn));
    cells_per_node = double(tree.cells.cols) / w.n_background;
  });
  per_target(state);
  state.counters["cells/node"] = cells_per_node;
}
BENCHMARK(tree_fill_T3)->Apply(bench::numberings);

// The same tree from `insert_node`, node by node in mesh order: the
// baseline of the one-pass build.
void tree_insert_T3(benchmark::State& state) {
  bench::against_generated(state, mesh, bench::as_is(), [](const workload& w) {
    node_quadtree tree(w.sorted);
    const double lo[2] = {0, 0}, hi[2] = {1, 1};
    tree.set_box(lo, hi);
    for (unsigned j = 0; j < w.n_background; ++j)
      tree.insert_node(j);
    benchmark::DoNotOptimize(tree.n_points);
  });
  per_target(state);
}
BENCHMARK(tree_insert_T3)->Apply(bench::numberings);

// The quick search of every target on a built tree (walk 0), and the walks
// from the elements it gives (walk 1); the counter "steps" is the mean walk
// length.
void search_and_walk(benchmark::State& state) {
  const bool ordered = state.range(1), walking = state.range(2) != 0;
  struct located {
    const workload& w;
    node_quadtree tree;
  };
  // Each numbering's tree is built once, outside the timing.
  static std::unique_ptr<located> trees[3][2];
  auto of = [ordered](bench::numbering order) -> const located& {
    auto& slot = trees[int(order)][ordered];
    if (!slot) {
      const workload& w = mesh(order);
      slot.reset(new located{w, node_quadtree(w.points(ordered))});
      slot->tree.fill_from_mesh<T3>(w.conn);
    }
    return *slot;
  };
  double steps_total = 0;
  bench::against_generated(state, of, bench::as_is(), [&](const located& l) {
    const workload& w = l.w;
    const dense2D<double>& xy = w.points(ordered);
    edge_picker picker;
    std::uint64_t steps_sum = 0;
    for (unsigned k = 0; k < w.targets.size; ++k) {
      const double* p = xy.column(w.targets[k]);
      unsigned grid[2], lo[2], hi[2], cell, level, quadrant, best;
      bool done;
      double d2 = max_double;
      l.tree.to_grid(p, grid);
      l.tree.nearest_candidate(p, d2, best, grid, lo, hi, cell, level, quadrant, done, w.ancestors);
      if (!walking || best == null_id) {
        benchmark::DoNotOptimize(best);
        continue;
      }
      unsigned e = w.ancestors[best], steps;
      benchmark::DoNotOptimize(walk<T3>(xy, w.conn, w.neighbours, p, e, 1e-6, steps, picker));
      steps_sum += steps;
    }
    steps_total = double(steps_sum) / w.targets.size;
  });
  per_target(state);
  if (walking) state.counters["steps"] = steps_total;
}
BENCHMARK(search_and_walk)->Apply([](auto* b) { numberings_by(b, {{0, 1}, {0, 1}}, {"sorted", "walk"}); });

} // namespace
