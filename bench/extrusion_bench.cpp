// A 1000-edge line swept through 1000 layers (1e6 elements) along each path.

#include <cmath>

#include "bench_support.h"
#include "tesskit2d/extrusion.h"

namespace {

using namespace kelm::tesskit2d;
using kelm::dense2D;

constexpr unsigned n_edges = 1000, n_layers = 1000;

// A quarter arc of radius 1 about (2, 0), in `rows` rows, and its chain.
dense2D<double> arc(unsigned rows) {
  dense2D<double> c(rows, n_edges + 1, 0.0);
  for (unsigned i = 0; i <= n_edges; ++i) {
    const double a = 1.5707963267948966 * i / n_edges;
    c(0, i) = 2 + std::cos(a);
    c(1, i) = std::sin(a);
  }
  return c;
}

dense2D<unsigned> chain() {
  dense2D<unsigned> e(2, n_edges);
  for (unsigned i = 0; i < n_edges; ++i) {
    e(0, i) = i;
    e(1, i) = i + 1;
  }
  return e;
}

// A sweep of the arc in `rows` rows.
template <class Call> void sweep(benchmark::State& state, unsigned rows, Call call) {
  const dense2D<unsigned> edges = chain();
  bench::streaming_export(state, arc(rows),
                          [&](dense2D<double>& c, dense2D<unsigned>& o) { return call(c, edges, o); });
}

void extrude_translate_Q4_plane(benchmark::State& state) {
  sweep(state, 2, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_translate_Q4(c, e, kelm::vector_fixed<double, 2>{{0, 1}}, n_layers, o);
  });
}
BENCHMARK(extrude_translate_Q4_plane)->UseRealTime()->Unit(benchmark::kMillisecond);

void extrude_translate_T3_graded(benchmark::State& state) {
  // Graded from 0.001 to 0.002 over 1.4427: 1000 layers.
  sweep(state, 2, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_translate_T3(c, e, kelm::vector_fixed<double, 2>{{0, 1.4426950408889634}}, 0.001, 0.002, 2, false,
                                o);
  });
}
BENCHMARK(extrude_translate_T3_graded)->UseRealTime()->Unit(benchmark::kMillisecond);

void extrude_rotate_Q4_plane(benchmark::State& state) {
  sweep(state, 2, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_rotate_Q4(c, e, kelm::vector_fixed<double, 2>{{0, 0}}, 6.283185307179586, n_layers, o);
  });
}
BENCHMARK(extrude_rotate_Q4_plane)->UseRealTime()->Unit(benchmark::kMillisecond);

void extrude_rotate_Q4_revolution(benchmark::State& state) {
  // The arc turned about the y axis: a surface of revolution.
  sweep(state, 3, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_rotate_Q4(c, e, kelm::vector_fixed<double, 3>{{0, 0, 0}},
                             kelm::vector_fixed<double, 3>{{0, 6.283185307179586, 0}}, n_layers, o);
  });
}
BENCHMARK(extrude_rotate_Q4_revolution)->UseRealTime()->Unit(benchmark::kMillisecond);

void extrude_spiral_Q4_turns(benchmark::State& state) {
  sweep(state, 3, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_spiral_Q4(c, e, kelm::vector_fixed<double, 3>{{0, 0, 0}},
                             kelm::vector_fixed<double, 3>{{0, 0, 12.566370614359172}},
                             kelm::vector_fixed<double, 3>{{0, 0, 3}}, n_layers, o);
  });
}
BENCHMARK(extrude_spiral_Q4_turns)->UseRealTime()->Unit(benchmark::kMillisecond);

void extrude_normal_Q4_arc(benchmark::State& state) {
  sweep(state, 2, [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
    return extrude_normal_Q4(c, e, 0.5, n_layers, o);
  });
}
BENCHMARK(extrude_normal_Q4_arc)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
