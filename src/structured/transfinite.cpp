#include "structured/transfinite.h"

#include <cstddef>

#include "structured/grid_numbering.h"

namespace kelm {
namespace tesskit2d {
namespace {

template <unsigned R>
void blend(const double* x, unsigned ld, unsigned i, unsigned j, unsigned M, unsigned N, unsigned n_nodes,
           const unsigned* boundary, double* out) noexcept {
  const double u = double(i) / M, v = double(j) / N;
  auto at = [&](unsigned a, unsigned b) { return x + std::size_t(grid_node_id(a, b, M, N, n_nodes, boundary)) * ld; };
  const double *south = at(i, 0), *north = at(i, N), *west = at(0, j), *east = at(M, j);
  const double *sw = at(0, 0), *se = at(M, 0), *ne = at(M, N), *nw = at(0, N);
  for (unsigned r = 0; r < R; ++r)
    out[r] = (1 - v) * south[r] + v * north[r] + (1 - u) * west[r] + u * east[r] - (1 - u) * (1 - v) * sw[r] -
             u * (1 - v) * se[r] - u * v * ne[r] - (1 - u) * v * nw[r];
}

} // namespace

void transfinite_point(const double* x, unsigned ld, unsigned rows, unsigned i, unsigned j, unsigned M, unsigned N,
                       unsigned n_nodes, const unsigned* boundary, double* out) noexcept {
  if (rows == 3)
    blend<3>(x, ld, i, j, M, N, n_nodes, boundary, out);
  else
    blend<2>(x, ld, i, j, M, N, n_nodes, boundary, out);
}

} // namespace tesskit2d
} // namespace kelm
