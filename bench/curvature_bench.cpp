// Curvature and metric generation on the geodesic unit sphere of 1,997,120
// triangles (998,562 nodes), one thread. Each family is timed next to two
// baselines of the same run: `area` (one streaming pass over the elements)
// and one LAPACK eigen decomposition per node (the floor of any estimator
// that diagonalises a tensor per node).

#include <algorithm>
#include <cmath>

#include "bench_support.h"
#include "curvature_sphere.h"
#include "tesskit2d/curvature.h"
#include "tesskit2d/measures.h"
#include "tesskit2d/metric_generation.h"
#include "treisoma/lapack.h"

namespace {

using namespace kelm::tesskit2d;

const bench::curvature_sphere& sphere() {
  static const bench::curvature_sphere s = bench::make_curvature_sphere(316);
  return s;
}

const double pi = std::acos(-1.0);

void per_node(benchmark::State& state) {
  state.counters["ns/node"] = benchmark::Counter(
      double(sphere().coords.cols), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Principal curvatures with patches of about two mean edges, as a user would
// set them, and their error against the exact 1 (in magnitude).
void principal_curvatures_sphere(benchmark::State& state) {
  const auto& s = sphere();
  const dense2D<unsigned> no_hard_edges;
  dense2D<double> k;
  for (auto _ : state)
    benchmark::DoNotOptimize(
        principal_curvatures(s.coords, s.conn, s.neighbours, 2 * s.mean_edge, pi / 4, 40, no_hard_edges, k));
  double sum[2] = {0, 0}, worst[2] = {0, 0};
  for (unsigned j = 0; j < k.cols; ++j)
    for (unsigned r = 0; r < 2; ++r) {
      const double e = std::fabs(std::fabs(k(6 + r, j)) - 1);
      sum[r] += e;
      worst[r] = std::max(worst[r], e);
    }
  state.counters["k1_err_mean"] = sum[0] / k.cols;
  state.counters["k1_err_max"] = worst[0];
  state.counters["k2_err_mean"] = sum[1] / k.cols;
  state.counters["k2_err_max"] = worst[1];
  per_node(state);
}
BENCHMARK(principal_curvatures_sphere)->Unit(benchmark::kMillisecond);

// The sphere in longitude and latitude. Elements across the seam are
// folded in (u, v), which changes nothing in the work done per corner.
void parametric_curvatures_sphere(benchmark::State& state) {
  const auto& s = sphere();
  dense2D<double> uv(2, s.coords.cols), tangents(6, s.coords.cols), forms;
  for (unsigned j = 0; j < s.coords.cols; ++j) {
    const double* p = s.coords.column(j);
    const double lon = std::atan2(p[1], p[0]), lat = std::asin(std::max(-1.0, std::min(1.0, p[2])));
    const double cl = std::cos(lat), sl = std::sin(lat), co = std::cos(lon), so = std::sin(lon);
    const double col[8] = {lon, lat, -cl * so, cl * co, 0, -sl * co, -sl * so, cl};
    uv(0, j) = col[0], uv(1, j) = col[1];
    for (unsigned r = 0; r < 6; ++r)
      tangents(r, j) = col[r + 2];
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(parametric_curvatures(uv, s.conn, tangents, forms));
  per_node(state);
}
BENCHMARK(parametric_curvatures_sphere)->Unit(benchmark::kMillisecond);

// A field grown from nothing on each call, a tenth of the mean edge across
// the surface.
void metrics_gen_aniso3d_sphere(benchmark::State& state) {
  const auto& s = sphere();
  for (auto _ : state) {
    dense2D<double> metrics;
    benchmark::DoNotOptimize(metrics_gen_aniso3d(s.coords, s.conn, -0.1, metrics));
  }
  per_node(state);
}
BENCHMARK(metrics_gen_aniso3d_sphere)->Unit(benchmark::kMillisecond);

void baseline_area_sphere(benchmark::State& state) {
  const auto& s = sphere();
  double a = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(area(s.coords, s.conn, a));
    benchmark::DoNotOptimize(a);
  }
  per_node(state);
}
BENCHMARK(baseline_area_sphere)->Unit(benchmark::kMillisecond);

void baseline_dspev_per_node(benchmark::State& state) {
  const auto& s = sphere();
  for (auto _ : state)
    for (unsigned j = 0; j < s.coords.cols; ++j) {
      const double* p = s.coords.column(j);
      double t[6] = {p[0] * p[0], p[0] * p[1], p[1] * p[1], p[0] * p[2], p[1] * p[2], p[2] * p[2]};
      double w[3], z[9], work[10] = {};
      benchmark::DoNotOptimize(kelm::lapack::dspev('V', 'U', 3, t, w, z, 3, work));
      benchmark::DoNotOptimize(z);
    }
  per_node(state);
}
BENCHMARK(baseline_dspev_per_node)->Unit(benchmark::kMillisecond);

} // namespace
