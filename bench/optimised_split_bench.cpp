// The optimised split on 1000 x 1000 quadrangles of which about 1% fail,
// against the floor it should come close to: one pass that reads every
// quadrangle's four corners and does nothing with them.

#include "bench_support.h"
#include "tesskit2d/geometric_split.h"

namespace {

using namespace kelm::tesskit2d;

constexpr unsigned cells = 1000;
const double deg = 3.141592653589793 / 180;

// The jittered grid with a sparse lattice of nodes spoilt. In the plane a
// node moved by 0.9 of a cell towards its upper right neighbour leaves the
// cell above and right of it concave and flattens a corner of the two cells
// beside it to some 174 degrees: 3 failing cells per node, a node every 17
// cells each way, 1.0% in all. In space a node lifted by half a cell warps
// its 4 cells: a node every 20 cells each way, 1.0% again.
dense2D<double> spoilt_nodes(unsigned dim) {
  const dense2D<double> flat = bench::grid_nodes(cells, 0.1);
  dense2D<double> x(dim, flat.cols, 0.0);
  const unsigned step = dim == 2 ? 17 : 20;
  for (unsigned j = 0; j <= cells; ++j)
    for (unsigned i = 0; i <= cells; ++i) {
      const unsigned v = j * (cells + 1) + i;
      const bool spoilt = i % step == step / 2 && j % step == step / 2;
      x(0, v) = flat(0, v) + (spoilt && dim == 2 ? 0.9 / cells : 0.0);
      x(1, v) = flat(1, v) + (spoilt && dim == 2 ? 0.9 / cells : 0.0);
      if (dim == 3) x(2, v) = spoilt ? 0.5 / cells : 0.0;
    }
  return x;
}

// The spoilt grid with its quadrangles in the numbering the argument names,
// built once per space and numbering.
struct mesh {
  dense2D<double> coords;
  dense2D<unsigned> quadrangles;
};

template <unsigned dim> const mesh& spoilt(bench::numbering order) {
  static bench::by_numbering<mesh> built;
  return built.get(order, [](bench::numbering o) {
    mesh m{spoilt_nodes(dim), bench::grid_quadrangles(cells)};
    bench::renumber(m.coords, m.quadrangles, o);
    return m;
  });
}

// The floor: every corner of every quadrangle read once, as the split's own
// pass reads them, and summed so that nothing is optimised away.
template <unsigned dim> void read_corners(benchmark::State& state) {
  bench::against_generated(state, spoilt<dim>, bench::as_is(), [](const mesh& m) {
    double sum = 0;
    for (unsigned e = 0; e < m.quadrangles.cols; ++e) {
      const unsigned* c = m.quadrangles.column(e);
      for (unsigned k = 0; k < 4; ++k) {
        const double* p = m.coords.column(c[k]);
        for (unsigned r = 0; r < dim; ++r)
          sum += p[r];
      }
    }
    benchmark::DoNotOptimize(sum);
  });
  bench::per_element(state, double(cells) * cells);
}

// Each call cuts a fresh copy of the quadrangles, made outside the timed
// region, since the split works in place. With `room` the copy has room for
// 2% more columns, as a caller who expects a few cuts would reserve; without
// it the call has to move the whole array to append, which on a fresh buffer
// also costs the page faults of 16 MB.
template <unsigned dim>
void split_failing(benchmark::State& state, bool room, double max_angle, double max_warp, double min_jacobian,
                   int diagonal) {
  struct cut {
    const mesh& m;
    dense2D<unsigned> conn;
  };
  const dense1D<unsigned, 8> all;
  dense1D<unsigned, 8> split;
  int n_split = 0;
  bench::against_generated(
      state, spoilt<dim>,
      [room](const mesh& m) {
        cut c{m, {}};
        c.conn.copy(m.quadrangles);
        if (room) c.conn.reserve(4, m.quadrangles.cols + m.quadrangles.cols / 50);
        return c;
      },
      [&](cut& c) {
        n_split = split_Q4_into_T3(c.m.coords, max_angle, max_warp, min_jacobian, diagonal, all, split, c.conn);
        benchmark::DoNotOptimize(n_split);
      });
  state.counters["split"] = n_split;
  bench::per_element(state, double(cells) * cells);
}

void read_corners_2d(benchmark::State& state) { read_corners<2>(state); }
void read_corners_3d(benchmark::State& state) { read_corners<3>(state); }
// Largest angle 160 degrees and scaled Jacobian 0.2 in the plane, with the
// warp at 20 degrees in space.
void optimised_split_2d_quality_cut(benchmark::State& state) { split_failing<2>(state, true, 160 * deg, 0, 0.2, 0); }
void optimised_split_2d_shorter_cut(benchmark::State& state) { split_failing<2>(state, true, 160 * deg, 0, 0.2, 1); }
void optimised_split_2d_no_room(benchmark::State& state) { split_failing<2>(state, false, 160 * deg, 0, 0.2, 0); }
void optimised_split_3d_quality_cut(benchmark::State& state) {
  split_failing<3>(state, true, 160 * deg, 20 * deg, 0.2, 0);
}

BENCHMARK(read_corners_2d)->Apply(bench::numberings);
BENCHMARK(optimised_split_2d_quality_cut)->Apply(bench::numberings);
BENCHMARK(optimised_split_2d_shorter_cut)->Apply(bench::numberings);
BENCHMARK(optimised_split_2d_no_room)->Apply(bench::numberings);
BENCHMARK(read_corners_3d)->Apply(bench::numberings);
BENCHMARK(optimised_split_3d_quality_cut)->Apply(bench::numberings);

} // namespace
