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
// in the numbering the argument names, with what the calls read besides:
// node normals, the neighbour table and an element holding each node.
struct surface {
  dense2D<double> coords, normals;
  dense2D<unsigned> conn, neighbours;
  dense1D<unsigned> ancestors;
};

const surface& sphere(bench::numbering order) {
  static bench::by_numbering<surface> built;
  return built.get(order, [](bench::numbering o) {
    bench::geodesic_sphere g = bench::make_geodesic_sphere(316);
    bench::renumber(g.coords, g.conn, o);
    surface s{g.coords, {}, g.conn, bench::triangle_neighbours(g.conn), dense1D<unsigned>(g.coords.cols, null_id)};
    normals(s.coords, s.conn, 1.0, true, s.normals);
    for (unsigned j = s.conn.cols; j-- > 0;)
      for (unsigned r = 0; r < 3; ++r)
        s.ancestors[s.conn(r, j)] = j;
    return s;
  });
}

void per(benchmark::State& state, const char* name, double count) {
  state.counters[name] =
      benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Times `call` on the sphere of the argument's numbering against the
// generated one, per element and per node.
template <class Input, class Call> void on_sphere(benchmark::State& state, Input input, Call call) {
  bench::against_generated(state, sphere, input, call);
  const surface& s = sphere(bench::numbering::generated);
  bench::per_element(state, s.conn.cols);
  per(state, "ns/node", s.coords.cols);
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
  dense2D<double> out;
  on_sphere(state, bench::as_is(),
            [&](const surface& s) { benchmark::DoNotOptimize(normals(s.coords, s.conn, 1.0, true, out)); });
  angle_errors(state, out, sphere(static_cast<bench::numbering>(state.range(0))).coords);
}
BENCHMARK(normals_per_node)->Apply(bench::numberings);

// Baselines on the same triangles: one normal per element, and the total
// area, which reads the same nodes and writes nothing.
void normals_per_element(benchmark::State& state) {
  dense2D<double> out;
  on_sphere(state, bench::as_is(),
            [&](const surface& s) { benchmark::DoNotOptimize(normals(s.coords, s.conn, true, out)); });
}
BENCHMARK(normals_per_element)->Apply(bench::numberings);

void area_of_sphere(benchmark::State& state) {
  double total = 0;
  on_sphere(state, bench::as_is(), [&](const surface& s) { benchmark::DoNotOptimize(area(s.coords, s.conn, total)); });
  state.counters["area/4pi"] = total / (4 * std::acos(-1.0));
}
BENCHMARK(area_of_sphere)->Apply(bench::numberings);

// Offsetting a fresh copy of the nodes by a distance, with the normals given
// (the set of used nodes and the moves) and computed by the call.
struct moved {
  const surface& s;
  dense2D<double> xyz;
};
moved fresh_nodes(const surface& s) {
  moved m{s, {}};
  m.xyz.copy(s.coords);
  return m;
}

void offset_given_normals(benchmark::State& state) {
  on_sphere(state, fresh_nodes, [](moved& m) { benchmark::DoNotOptimize(offset(m.xyz, m.s.conn, m.s.normals, 1e-6)); });
}
BENCHMARK(offset_given_normals)->Apply(bench::numberings);

void offset_by_distance(benchmark::State& state) {
  on_sphere(state, fresh_nodes, [](moved& m) { benchmark::DoNotOptimize(offset(m.xyz, m.s.conn, 1e-6)); });
}
BENCHMARK(offset_by_distance)->Apply(bench::numberings);

// The rings of all nodes, each from the first element that holds the node.
void connected_elements(benchmark::State& state) {
  dense1D<unsigned> offsets, elements;
  on_sphere(state, bench::as_is(), [&](const surface& s) {
    benchmark::DoNotOptimize(get_connected_elements(s.conn, s.neighbours, s.ancestors, offsets, elements));
  });
  per(state, "ns/entry", 3.0 * sphere(bench::numbering::generated).conn.cols);
}
BENCHMARK(connected_elements)->Apply(bench::numberings);

} // namespace
