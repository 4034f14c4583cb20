// A 1000 x 1000 structured grid inside a loop of 4000 boundary nodes.

#include <cmath>

#include "bench_support.h"
#include "tesskit2d/structured.h"

namespace {

using namespace kelm::tesskit2d;
using kelm::dense1D;
using kelm::dense2D;

constexpr unsigned n = 1000;

// The unit square with a bulging top side, sampled evenly, and its loop.
void square_loop(dense2D<double>& coords, dense1D<unsigned, 8>& loop) {
  coords.resize(2, 4 * n);
  unsigned id = 0;
  auto put = [&](double x, double y) {
    coords(0, id) = x;
    coords(1, id) = y;
    loop.push_back(id++);
  };
  for (unsigned i = 0; i < n; ++i)
    put(double(i) / n, 0);
  for (unsigned j = 0; j < n; ++j)
    put(1, double(j) / n);
  for (unsigned i = n; i > 0; --i)
    put(double(i) / n, 1 + 0.2 * std::sin(3.141592653589793 * i / n));
  for (unsigned j = n; j > 0; --j)
    put(0, double(j) / n);
  loop.push_back(0);
}

template <class Call> void grid(benchmark::State& state, Call call) {
  dense2D<double> boundary;
  dense1D<unsigned, 8> loop;
  square_loop(boundary, loop);
  bench::streaming_export(state, boundary, [&](dense2D<double>& c, dense2D<unsigned>& o) { return call(c, loop, o); });
}

void mesh_struct_Q4_1000x1000(benchmark::State& state) {
  grid(state, [](dense2D<double>& c, const dense1D<unsigned, 8>& loop, dense2D<unsigned>& o) {
    return mesh_struct_Q4(c, loop, n, o);
  });
}
BENCHMARK(mesh_struct_Q4_1000x1000)->UseRealTime()->Unit(benchmark::kMillisecond);

void mesh_struct_T3_1000x1000(benchmark::State& state) {
  grid(state, [](dense2D<double>& c, const dense1D<unsigned, 8>& loop, dense2D<unsigned>& o) {
    return mesh_struct_T3(c, loop, n, 2, o);
  });
}
BENCHMARK(mesh_struct_T3_1000x1000)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
