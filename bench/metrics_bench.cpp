// Metric fields on a million nodes.
//
// interpolate_metrics on the unit square cut into 1000 x 1000 cells of two
// triangles (2,000,000 T3, 1,002,001 nodes, interior nodes jittered by up to
// 0.15 of a cell) with 1,002,001 targets drawn uniformly and appended behind
// the nodes, in random order: sizes, 2 by 2 and 3 by 3 metrics of a boundary
// layer along y = 0. The peers, on the same targets: `interpolate` of one
// scalar field (whose search runs targets in blocks with prefetching), and
// the plain search that interpolate_metrics makes (tree, walk, local
// coordinates and a linear blend of one value, target by target), so that
// the difference is what the metric algebra adds. Counters are per target
// and per element; the background mesh comes in the three numberings, the
// targets are the same in all.
//
// metrics_struct filling the interior of a 1000 x 1000 structured grid from
// its 4000 boundary values, as sizes, 2 by 2 and 3 by 3 metrics. Counters
// are per interior entry.

#include <algorithm>
#include <cmath>

#include "bench_support.h"
#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "tesskit2d/interpolation.h"
#include "tesskit2d/metrics.h"

namespace {

using namespace kelm::tesskit2d;
using kelm::dense1D;
using kelm::dense2D;

constexpr unsigned side = 1000;

void put_metric(dense2D<double>& m, unsigned j, double hx, double hy, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), ex = 1 / (hx * hx), ey = 1 / (hy * hy);
  double* col = m.column(j);
  col[0] = ex * c * c + ey * s * s;
  col[1] = (ex - ey) * c * s;
  col[2] = ex * s * s + ey * c * c;
  if (m.rows == 6) col[3] = col[4] = 0, col[5] = ex;
}

// Sizes of a boundary layer along y = 0: 1e-3 across the wall growing to
// 0.05 away from it, 0.02 along it, axes turning slowly with x.
void layer_sizes(double x, double y, double& along, double& across, double& angle) {
  along = 0.02;
  across = 0.001 + 0.049 * y * y;
  angle = 0.2 * x;
}

struct workload : bench::located_mesh {
  dense1D<double> sizes;
  dense2D<double> metrics2, metrics3;
  explicit workload(bench::numbering order) : bench::located_mesh(bench::make_located_mesh(side, 0.15, order)) {
    const unsigned n = xy.cols;
    sizes = dense1D<double>(n, 0.0);
    metrics2 = dense2D<double>(3, n, 0.0);
    metrics3 = dense2D<double>(6, n, 0.0);
    for (unsigned j = 0; j < n_background; ++j) {
      double along, across, angle;
      layer_sizes(xy(0, j), xy(1, j), along, across, angle);
      sizes[j] = across;
      put_metric(metrics2, j, along, across, angle);
      put_metric(metrics3, j, along, across, angle);
    }
  }
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

// What every target pays before any metric is touched: the tree, the walk,
// the barycentric weights and one linear blend.
void search_alone_W1(benchmark::State& state) {
  bench::against_generated(state, mesh, bench::as_is(), [](const workload& w) {
    point_locator locator(w.xy, w.conn, w.neighbours, w.ancestors);
    edge_picker picker;
    locator.tree.fill_from_mesh<T3>(w.conn);
    double sum = 0;
    for (unsigned k = 0; k < w.targets.size; ++k) {
      const unsigned n = w.targets[k];
      const double point[2] = {w.xy(0, n), w.xy(1, n)};
      unsigned e = null_id;
      if (!locator.locate<T3>(point, e, 1e-6, true, picker)) continue;
      const unsigned* c = w.conn.column(e);
      double wt[2];
      barycentric_T3(w.xy, c, point, wt);
      sum += (w.sizes[c[1]] - w.sizes[c[2]]) * wt[1] + (w.sizes[c[0]] - w.sizes[c[2]]) * wt[0] + w.sizes[c[2]];
    }
    benchmark::DoNotOptimize(sum);
  });
  per_target(state);
}
BENCHMARK(search_alone_W1)->Apply(bench::numberings);

// A deep copy, so that each run starts from the same field.
void fresh(dense1D<double>& to, const dense1D<double>& from) {
  to = dense1D<double>(from.size);
  std::copy(from.begin(), from.end(), to.begin());
}
void fresh(dense2D<double>& to, const dense2D<double>& from) { to.copy(from); }

// Interpolates a fresh copy of the field that `field` picks from the
// workload, with `scalar` or with the metric transfer.
template <class Field> void transfer(benchmark::State& state, Field workload::*field, bool scalar) {
  bench::against_generated(
      state, mesh,
      [field](const workload& w) {
        std::pair<const workload*, Field> in{&w, Field()};
        fresh(in.second, w.*field);
        return in;
      },
      [scalar](std::pair<const workload*, Field>& in) {
        const workload& w = *in.first;
        benchmark::DoNotOptimize(
            scalar ? interpolate(w.xy, w.conn, w.neighbours, w.ancestors, in.second, w.targets, T3)
                   : interpolate_metrics(w.xy, w.conn, w.neighbours, w.ancestors, in.second, w.targets, false, T3));
      });
  per_target(state);
}
void interpolate_scalar_W1(benchmark::State& state) { transfer(state, &workload::sizes, true); }
void interpolate_metrics_sizes_W1(benchmark::State& state) { transfer(state, &workload::sizes, false); }
void interpolate_metrics_3_rows_W1(benchmark::State& state) { transfer(state, &workload::metrics2, false); }
void interpolate_metrics_6_rows_W1(benchmark::State& state) { transfer(state, &workload::metrics3, false); }
BENCHMARK(interpolate_scalar_W1)->Apply(bench::numberings);
BENCHMARK(interpolate_metrics_sizes_W1)->Apply(bench::numberings);
BENCHMARK(interpolate_metrics_3_rows_W1)->Apply(bench::numberings);
BENCHMARK(interpolate_metrics_6_rows_W1)->Apply(bench::numberings);

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
