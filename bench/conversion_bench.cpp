#include <utility>

#include "bench_support.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"

namespace {

using namespace kelm::tesskit2d;

// 1000 x 1000 cells of the jittered unit square: 2e6 triangles, 1e6
// quadrangles, or the mixed mesh of both kinds (every other row of cells
// cut in two), in the numbering the argument names.
enum class kind { T3, Q4, mixed };

dense2D<unsigned> mixed_grid(unsigned n) {
  const dense2D<unsigned> t = bench::grid_triangles(n), q = bench::grid_quadrangles(n);
  dense2D<unsigned> m(4, n * n + n * n / 2 + n, kelm::tesskit2d::null_id);
  unsigned e = 0;
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i)
      if (j % 2 == 0) {
        for (unsigned r = 0; r < 4; ++r)
          m(r, e) = q(r, j * n + i);
        ++e;
      } else
        for (unsigned k = 0; k < 2; ++k, ++e)
          for (unsigned r = 0; r < 3; ++r)
            m(r, e) = t(r, 2 * (j * n + i) + k);
  m.resize(4, e);
  return m;
}

struct mesh {
  dense2D<double> nodes;
  dense2D<unsigned> elements;
};

mesh make(kind k, bench::numbering order) {
  mesh m{bench::grid_nodes(1000, 0.25), k == kind::T3   ? bench::grid_triangles(1000)
                                        : k == kind::Q4 ? bench::grid_quadrangles(1000)
                                                        : mixed_grid(1000)};
  bench::renumber(m.nodes, m.elements, order);
  return m;
}

// Each repetition raises a fresh copy: the export works in place and appends
// to `coords`. Between repetitions, with the timing paused, the same call
// is timed on the generated numbering ("x_generated") and the bytes of the
// output are written into fresh and touched storage ("x_fresh",
// "x_touched").
void raise_to_quadratic(benchmark::State& state, kind k) {
  const auto order = static_cast<bench::numbering>(state.range(0));
  const mesh m = make(k, order), generated = order == bench::numbering::generated ? mesh() : make(k, {});
  auto raise = [](const mesh& from) {
    dense2D<double> coords;
    coords.copy(from.nodes);
    dense2D<unsigned> conn;
    conn.copy(from.elements);
    return std::make_pair(coords, conn);
  };
  auto [probe_coords, probe_conn] = raise(m);
  convert_into_quadratic(probe_coords, probe_conn);
  bench::write_baseline baseline(double(probe_coords.rows) * probe_coords.cols * sizeof(double) +
                                 double(probe_conn.rows) * probe_conn.cols * sizeof(unsigned));
  bench::yardstick peer;
  for (auto _ : state) {
    state.PauseTiming();
    {
      auto [coords, conn] = raise(m);
      state.ResumeTiming();
      benchmark::DoNotOptimize(convert_into_quadratic(coords, conn));
      state.PauseTiming();
    }
    if (order != bench::numbering::generated) {
      auto copies = raise(generated);
      peer.time([&] { benchmark::DoNotOptimize(convert_into_quadratic(copies.first, copies.second)); });
    }
    baseline.measure(state);
    state.ResumeTiming();
  }
  if (order != bench::numbering::generated) peer.report(state, "x_generated");
  baseline.report(state);
  bench::per_element(state, m.elements.cols);
}

void convert_into_quadratic_T3(benchmark::State& state) { raise_to_quadratic(state, kind::T3); }
BENCHMARK(convert_into_quadratic_T3)->Apply(bench::numberings);

void convert_into_quadratic_Q4(benchmark::State& state) { raise_to_quadratic(state, kind::Q4); }
BENCHMARK(convert_into_quadratic_Q4)->Apply(bench::numberings);

void convert_into_quadratic_mixed(benchmark::State& state) { raise_to_quadratic(state, kind::mixed); }
BENCHMARK(convert_into_quadratic_mixed)->Apply(bench::numberings);

// 1e6 triangles of a 707 x 707 grid cut in two, into 3e6 quadrangles.
void split_into_Q4_T3(benchmark::State& state) {
  dense2D<double> nodes = bench::grid_nodes(707, 0.25);
  dense2D<unsigned> elements = bench::grid_triangles(707);
  bench::renumber(nodes, elements, static_cast<bench::numbering>(state.range(0)));
  bench::streaming_export(state, nodes, [&](dense2D<double>& coords, dense2D<unsigned>& out) {
    return split_into_Q4(coords, elements, out, dense2D<unsigned>());
  });
}
BENCHMARK(split_into_Q4_T3)->Apply(bench::numberings);

void split_Q4_into_T3_with_coords(benchmark::State& state) {
  dense2D<double> nodes = bench::grid_nodes(1000, 0.25);
  dense2D<unsigned> elements = bench::grid_quadrangles(1000);
  bench::renumber(nodes, elements, static_cast<bench::numbering>(state.range(0)));
  bench::streaming_export(
      state, {}, [&](dense2D<double>&, dense2D<unsigned>& out) { return split_Q4_into_T3(nodes, elements, out); });
}
BENCHMARK(split_Q4_into_T3_with_coords)->Apply(bench::numberings);

} // namespace
