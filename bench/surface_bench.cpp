#include <algorithm>
#include <cmath>

#include "bench_support.h"
#include "geodesic_sphere.h"
#include "neighbour_table.h"
#include "tesskit2d/connectivity.h"
#include "tesskit2d/measures.h"
#include "tesskit2d/normals.h"
#include "tesskit2d/offset.h"

namespace {

using namespace kelm::tesskit2d;

// 316 splits per icosahedron edge: 1,997,120 triangles on 998,562 nodes,
// built once for all the benchmarks of this file.
const bench::geodesic_sphere& sphere() {
  static const bench::geodesic_sphere s = bench::make_geodesic_sphere(316);
  return s;
}

void per(benchmark::State& state, const char* name, double count) {
  state.counters[name] =
      benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The mean and the largest angle, in degrees, between the node normals and
// the exact normal of the unit sphere, which is the node's position.
void angle_errors(benchmark::State& state, const dense2D<double>& n, const dense2D<double>& xyz) {
  const double degrees = 180 / std::acos(-1.0);
  double sum = 0, worst = 0;
  for (unsigned j = 0; j < n.cols; ++j) {
    const double *a = n.column(j), *p = xyz.column(j);
    const double c[3] = {a[1] * p[2] - a[2] * p[1], a[2] * p[0] - a[0] * p[2], a[0] * p[1] - a[1] * p[0]};
    const double e =
        std::atan2(std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]), a[0] * p[0] + a[1] * p[1] + a[2] * p[2]);
    sum += e;
    worst = std::max(worst, e);
  }
  state.counters["deg_mean"] = sum / n.cols * degrees;
  state.counters["deg_max"] = worst * degrees;
}

// Node normals weighted by element size, as unit vectors: the form that
// offsetting calls.
void normals_per_node(benchmark::State& state) {
  const auto& s = sphere();
  dense2D<double> out;
  for (auto _ : state)
    benchmark::DoNotOptimize(normals(s.coords, s.conn, 1.0, true, out));
  per(state, "ns/node", s.coords.cols);
  angle_errors(state, out, s.coords);
}
BENCHMARK(normals_per_node)->Unit(benchmark::kMillisecond);

// Baselines on the same triangles: one normal per element, and the total
// area, which reads the same nodes and writes nothing.
void normals_per_element(benchmark::State& state) {
  const auto& s = sphere();
  dense2D<double> out;
  for (auto _ : state)
    benchmark::DoNotOptimize(normals(s.coords, s.conn, true, out));
  per(state, "ns/node", s.coords.cols);
}
BENCHMARK(normals_per_element)->Unit(benchmark::kMillisecond);

void area_of_sphere(benchmark::State& state) {
  const auto& s = sphere();
  double total = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(area(s.coords, s.conn, total));
  per(state, "ns/node", s.coords.cols);
  state.counters["area/4pi"] = total / (4 * std::acos(-1.0));
}
BENCHMARK(area_of_sphere)->Unit(benchmark::kMillisecond);

// Offsetting by a distance, with the normals given (the set of used nodes
// and the moves) and computed by the call.
void offset_given_normals(benchmark::State& state) {
  const auto& s = sphere();
  dense2D<double> xyz;
  xyz.copy(s.coords);
  dense2D<double> n;
  normals(s.coords, s.conn, 1.0, true, n);
  for (auto _ : state)
    benchmark::DoNotOptimize(offset(xyz, s.conn, n, 1e-6));
  per(state, "ns/node", s.coords.cols);
}
BENCHMARK(offset_given_normals)->Unit(benchmark::kMillisecond);

void offset_by_distance(benchmark::State& state) {
  const auto& s = sphere();
  dense2D<double> xyz;
  xyz.copy(s.coords);
  for (auto _ : state)
    benchmark::DoNotOptimize(offset(xyz, s.conn, 1e-6));
  per(state, "ns/node", s.coords.cols);
}
BENCHMARK(offset_by_distance)->Unit(benchmark::kMillisecond);

// The rings of all nodes, each from the first element that holds the node.
void connected_elements(benchmark::State& state) {
  const auto& s = sphere();
  const dense2D<unsigned> nb = bench::triangle_neighbours(s.conn);
  dense1D<unsigned> ancestors(s.coords.cols, null_id), offsets, elements;
  for (unsigned j = s.conn.cols; j-- > 0;)
    for (unsigned r = 0; r < 3; ++r)
      ancestors[s.conn(r, j)] = j;
  for (auto _ : state)
    benchmark::DoNotOptimize(get_connected_elements(s.conn, nb, ancestors, offsets, elements));
  per(state, "ns/entry", 3.0 * s.conn.cols);
  per(state, "ns/node", s.coords.cols);
}
BENCHMARK(connected_elements)->Unit(benchmark::kMillisecond);

} // namespace
