// A 1000 x 1000 structured grid inside a loop of 4000 boundary nodes. Bytes
// counted are those of the new columns of `coords` and `conn_out`.

#include <cmath>
#include <memory>

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

// Between repetitions the output's bytes are written into fresh and into
// touched storage, the yardsticks of a streaming export.
template <class Call> void grid(benchmark::State& state, unsigned element_rows, Call call) {
  dense2D<double> boundary;
  dense1D<unsigned, 8> loop;
  square_loop(boundary, loop);
  unsigned elements = 0;
  auto output_bytes = [&] {
    return double(n - 1) * (n - 1) * 2 * sizeof(double) + double(elements) * element_rows * 4;
  };
  std::unique_ptr<bench::write_baseline> baseline;
  for (auto _ : state) {
    state.PauseTiming();
    {
      dense2D<double> c;
      c.copy(boundary);
      dense2D<unsigned> out;
      state.ResumeTiming();
      benchmark::DoNotOptimize(call(c, loop, out));
      state.PauseTiming();
      elements = out.cols;
    }
    if (!baseline) baseline = std::make_unique<bench::write_baseline>(output_bytes());
    baseline->measure(state);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(double(state.iterations()) * output_bytes()));
  baseline->report(state);
  bench::per_element(state, elements);
}

void mesh_struct_Q4_1000x1000(benchmark::State& state) {
  grid(state, 4, [](dense2D<double>& c, const dense1D<unsigned, 8>& loop, dense2D<unsigned>& o) {
    return mesh_struct_Q4(c, loop, n, o);
  });
}
BENCHMARK(mesh_struct_Q4_1000x1000)->UseRealTime()->Unit(benchmark::kMillisecond);

void mesh_struct_T3_1000x1000(benchmark::State& state) {
  grid(state, 3, [](dense2D<double>& c, const dense1D<unsigned, 8>& loop, dense2D<unsigned>& o) {
    return mesh_struct_T3(c, loop, n, 2, o);
  });
}
BENCHMARK(mesh_struct_T3_1000x1000)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
