#include "structured/transfinite.h"

#include <cstddef>

#include "structured/grid_numbering.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The sides' points of one grid line i and the four corners.
struct line_terms {
  double u;
  const double *south, *north, *sw, *se, *ne, *nw;
};

template <unsigned R>
inline void blend(const line_terms& t, double v, const double* west, const double* east, double* out) noexcept {
  const double u = t.u;
  for (unsigned r = 0; r < R; ++r)
    out[r] = (1 - v) * t.south[r] + v * t.north[r] + (1 - u) * west[r] + u * east[r] - (1 - u) * (1 - v) * t.sw[r] -
             u * (1 - v) * t.se[r] - u * v * t.ne[r] - (1 - u) * v * t.nw[r];
}

struct grid_view {
  const double* x;
  std::size_t ld;
  unsigned M, N, n_nodes;
  const unsigned* boundary;
  const double* at(unsigned a, unsigned b) const noexcept {
    return x + std::size_t(grid_node_id(a, b, M, N, n_nodes, boundary)) * ld;
  }
  line_terms line(unsigned i) const noexcept {
    return {double(i) / M, at(i, 0), at(i, N), at(0, 0), at(M, 0), at(M, N), at(0, N)};
  }
};

template <unsigned R> void fill_line(const grid_view& g, unsigned i, double* out) noexcept {
  const line_terms t = g.line(i);
  for (unsigned j = 1; j < g.N; ++j, out += g.ld)
    blend<R>(t, double(j) / g.N, g.at(0, j), g.at(g.M, j), out);
}

} // namespace

void transfinite_point(const double* x, unsigned ld, unsigned rows, unsigned i, unsigned j, unsigned M, unsigned N,
                       unsigned n_nodes, const unsigned* boundary, double* out) noexcept {
  const grid_view g{x, ld, M, N, n_nodes, boundary};
  const double v = double(j) / N;
  if (rows == 3)
    blend<3>(g.line(i), v, g.at(0, j), g.at(M, j), out);
  else
    blend<2>(g.line(i), v, g.at(0, j), g.at(M, j), out);
}

void transfinite_line(const double* x, unsigned ld, unsigned rows, unsigned i, unsigned M, unsigned N, unsigned n_nodes,
                      const unsigned* boundary, double* out) noexcept {
  const grid_view g{x, ld, M, N, n_nodes, boundary};
  if (rows == 3)
    fill_line<3>(g, i, out);
  else
    fill_line<2>(g, i, out);
}

} // namespace tesskit2d
} // namespace kelm
