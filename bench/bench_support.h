#pragma once
// Shared by the benchmark files: meshes of about a million elements and the
// per-element counter.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>

#include "tesskit2d/mesh.h"

namespace bench {

using kelm::dense2D;

/// Reports the time per element as the counter "ns/elem" (shown in seconds
/// with an SI prefix, so 12.3n reads as 12.3 ns).
inline void per_element(benchmark::State& state, double elements_per_iteration) {
  state.counters["ns/elem"] = benchmark::Counter(elements_per_iteration, benchmark::Counter::kIsIterationInvariantRate |
                                                                             benchmark::Counter::kInvert);
}

/// A second timing taken inside a benchmark's own run, between its
/// repetitions with the main timing paused, and reported as the counter
/// `name`: the benchmark's time as a multiple of it. Absolute times on a
/// shared machine drift by tens of per cent from run to run; a ratio to
/// something timed in the same run does not. Benchmarks that use one run
/// on real time, which is what the yardstick measures.
class yardstick {
public:
  template <class Call> void time(Call&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    seconds_ += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  void report(benchmark::State& state, const char* name) const {
    state.counters[name] = benchmark::Counter(seconds_, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  }

private:
  double seconds_ = 0;
};

/// The yardstick of a streaming export: writing as many bytes as its output
/// holds into storage allocated the way outputs are, freshly each time
/// ("x_fresh") and into storage already written ("x_touched").
class write_baseline {
public:
  explicit write_baseline(double bytes);
  /// Times one fresh and one touched write; call with the timing paused.
  void measure(benchmark::State& state);
  void report(benchmark::State& state) const;

private:
  dense2D<double> touched_;
  yardstick fresh_time_, touched_time_;
};

/// Times a streaming export, `call(coords, out)`, on a fresh copy of `nodes`
/// and a fresh `out` each repetition, both released with the timing paused.
/// Reports ns per output element, the bytes per second of its output (the
/// columns appended to `coords` and all of `out`) and the write baselines
/// of those bytes, measured between repetitions.
template <class Call> void streaming_export(benchmark::State& state, const dense2D<double>& nodes, Call call) {
  double bytes = 0, elements = 0;
  std::unique_ptr<write_baseline> baseline;
  for (auto _ : state) {
    state.PauseTiming();
    {
      dense2D<double> coords;
      coords.copy(nodes);
      dense2D<unsigned> out;
      state.ResumeTiming();
      benchmark::DoNotOptimize(call(coords, out));
      state.PauseTiming();
      elements = out.cols;
      bytes = double(coords.cols - nodes.cols) * coords.rows * sizeof(double) +
              double(out.rows) * out.cols * sizeof(unsigned);
    }
    if (!baseline) baseline = std::make_unique<write_baseline>(bytes);
    baseline->measure(state);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(double(state.iterations()) * bytes));
  baseline->report(state);
  per_element(state, elements);
}

/// The three numberings a mesh can come in: as a structured generator
/// numbers it (neighbours in the mesh are neighbours in memory); nodes along
/// a Hilbert curve and elements after their smallest node, as the extras'
/// renumbering leaves it; nodes randomly permuted and elements shuffled
/// (fixed seed), as a mesh assembled from several sources comes.
enum class numbering { generated, curve, shuffled };

/// The same mesh in another numbering, in place.
void renumber(dense2D<double>& nodes, dense2D<unsigned>& elements, numbering order);

/// Registers the numberings as the argument "numbering" (0, 1, 2).
inline void numberings(benchmark::internal::Benchmark* b) {
  b->ArgName("numbering")->Arg(0)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
}

/// A workload built the first time a benchmark asks for it in a numbering
/// and kept for the rest of the run, so that every benchmark of a file and
/// the yardstick on the generated numbering share one copy.
template <class Workload> class by_numbering {
public:
  template <class Make> const Workload& get(numbering order, Make make) {
    auto& slot = built_[static_cast<int>(order)];
    if (!slot) slot = std::make_unique<Workload>(make(order));
    return *slot;
  }

private:
  std::unique_ptr<Workload> built_[3];
};

/// The input of a call that changes nothing: the workload itself.
struct as_is {
  template <class Workload> const Workload& operator()(const Workload& w) const { return w; }
};

/// The loop of a benchmark on the numbering of its first argument: each
/// repetition times `call(input(of(order)))`, and for the curve and the
/// shuffled numberings first times the same call on the generated numbering
/// with the main timing paused ("x_generated"). `input` makes, untimed, what
/// one call consumes (a copy of what it changes in place) and its result is
/// released untimed too. The call on the argument's numbering runs last, so
/// outputs it leaves behind belong to that numbering.
template <class Of, class Input, class Call>
void against_generated(benchmark::State& state, Of of, Input input, Call call) {
  const auto order = static_cast<numbering>(state.range(0));
  const auto& w = of(order);
  const auto* generated = order == numbering::generated ? nullptr : &of(numbering::generated);
  // One untimed call on each first, so that outputs a call keeps between
  // repetitions are allocated before either side is timed.
  for (const auto* warm : {generated, &w})
    if (warm) {
      decltype(auto) in = input(*warm);
      call(in);
    }
  yardstick peer;
  for (auto _ : state) {
    state.PauseTiming();
    if (generated) {
      decltype(auto) in = input(*generated);
      peer.time([&] { call(in); });
    }
    {
      decltype(auto) in = input(w);
      state.ResumeTiming();
      call(in);
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  if (generated) peer.report(state, "x_generated");
}

/// Nodes of an (n + 1) by (n + 1) grid on the unit square, row by row, each
/// moved by up to `jitter` of a cell in x and y (fixed seed).
dense2D<double> grid_nodes(unsigned n, double jitter = 0.0);

/// The n by n quadrangles of that grid in row order, counter-clockwise.
dense2D<unsigned> grid_quadrangles(unsigned n);

/// The grid's quadrangles cut along alternating diagonals: 2 n^2 triangles.
dense2D<unsigned> grid_triangles(unsigned n);

/// The workload of interpolation: the n by n grid's triangles, nodes
/// jittered by `jitter`, in the numbering `order`, with their neighbour
/// table, and as many targets as nodes drawn uniformly in the unit square
/// (fixed seed) and appended behind the nodes in the order drawn. The
/// targets are the same in every numbering.
struct located_mesh {
  dense2D<double> xy;                 ///< nodes, then targets
  dense2D<unsigned> conn, neighbours; ///< T3 and the element across each edge
  kelm::dense1D<unsigned> ancestors;  ///< an element holding each node, `null_id` for targets
  kelm::dense1D<unsigned> targets;    ///< the columns of the targets
  unsigned n_background = 0;          ///< nodes of the mesh
};
located_mesh make_located_mesh(unsigned n, double jitter, numbering order);

} // namespace bench
