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

// The sphere in the numbering the argument names; the baselines that read no
// element run on the generated one.
const bench::curvature_sphere& sphere(bench::numbering order = bench::numbering::generated) {
  static bench::by_numbering<bench::curvature_sphere> built;
  return built.get(order, [](bench::numbering o) { return bench::make_curvature_sphere(316, o); });
}

const double pi = std::acos(-1.0);

void per_node(benchmark::State& state) {
  state.counters["ns/node"] = benchmark::Counter(
      double(sphere().coords.cols), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Times `call` on the sphere of the argument's numbering against the
// generated one, per node and per element.
template <class Call> void on_sphere(benchmark::State& state, Call call) {
  bench::against_generated(state, sphere, bench::as_is(), call);
  per_node(state);
  bench::per_element(state, sphere().conn.cols);
}

// Principal curvatures with patches of about two mean edges, as a user would
// set them, and their error against the exact 1 (in magnitude).
void principal_curvatures_sphere(benchmark::State& state) {
  const dense2D<unsigned> no_hard_edges;
  dense2D<double> k;
  on_sphere(state, [&](const bench::curvature_sphere& s) {
    benchmark::DoNotOptimize(
        principal_curvatures(s.coords, s.conn, s.neighbours, 2 * s.mean_edge, pi / 4, 40, no_hard_edges, k));
  });
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
}
BENCHMARK(principal_curvatures_sphere)->Apply(bench::numberings);

// The sphere in longitude and latitude. Elements across the seam are
// folded in (u, v), which changes nothing in the work done per corner.
struct parametric {
  dense2D<unsigned> conn;
  dense2D<double> uv, tangents;
};

const parametric& chart(bench::numbering order) {
  static bench::by_numbering<parametric> built;
  return built.get(order, [](bench::numbering o) {
    const auto& s = sphere(o);
    parametric c{s.conn, dense2D<double>(2, s.coords.cols), dense2D<double>(6, s.coords.cols)};
    for (unsigned j = 0; j < s.coords.cols; ++j) {
      const double* p = s.coords.column(j);
      const double lon = std::atan2(p[1], p[0]), lat = std::asin(std::max(-1.0, std::min(1.0, p[2])));
      const double cl = std::cos(lat), sl = std::sin(lat), co = std::cos(lon), so = std::sin(lon);
      const double col[8] = {lon, lat, -cl * so, cl * co, 0, -sl * co, -sl * so, cl};
      c.uv(0, j) = col[0], c.uv(1, j) = col[1];
      for (unsigned r = 0; r < 6; ++r)
        c.tangents(r, j) = col[r + 2];
    }
    return c;
  });
}

void parametric_curvatures_sphere(benchmark::State& state) {
  dense2D<double> forms;
  bench::against_generated(state, chart, bench::as_is(), [&](const parametric& c) {
    benchmark::DoNotOptimize(parametric_curvatures(c.uv, c.conn, c.tangents, forms));
  });
  per_node(state);
  bench::per_element(state, sphere().conn.cols);
}
BENCHMARK(parametric_curvatures_sphere)->Apply(bench::numberings);

// A field grown from nothing on each call, a tenth of the mean edge across
// the surface.
void metrics_gen_aniso3d_sphere(benchmark::State& state) {
  on_sphere(state, [](const bench::curvature_sphere& s) {
    dense2D<double> metrics;
    benchmark::DoNotOptimize(metrics_gen_aniso3d(s.coords, s.conn, -0.1, metrics));
  });
}
BENCHMARK(metrics_gen_aniso3d_sphere)->Apply(bench::numberings);

void baseline_area_sphere(benchmark::State& state) {
  double a = 0;
  on_sphere(state, [&](const bench::curvature_sphere& s) {
    benchmark::DoNotOptimize(area(s.coords, s.conn, a));
    benchmark::DoNotOptimize(a);
  });
}
BENCHMARK(baseline_area_sphere)->Apply(bench::numberings);

// Per node on its coordinates alone: the same in every numbering.
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
