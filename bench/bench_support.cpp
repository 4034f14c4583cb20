#include "bench_support.h"

#include <random>

namespace bench {

dense2D<double> grid_nodes(unsigned n, double jitter) {
  dense2D<double> xy(2, (n + 1) * (n + 1));
  std::mt19937 random(1);
  std::uniform_real_distribution<double> shake(-jitter / n, jitter / n);
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      const bool inner = i > 0 && i < n && j > 0 && j < n;
      xy(0, j * (n + 1) + i) = double(i) / n + (inner ? shake(random) : 0.0);
      xy(1, j * (n + 1) + i) = double(j) / n + (inner ? shake(random) : 0.0);
    }
  return xy;
}

dense2D<unsigned> grid_quadrangles(unsigned n) {
  dense2D<unsigned> q(4, n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, e = j * n + i;
      q(0, e) = a;
      q(1, e) = a + 1;
      q(2, e) = a + n + 2;
      q(3, e) = a + n + 1;
    }
  return q;
}

dense2D<unsigned> grid_triangles(unsigned n) {
  dense2D<unsigned> t(3, 2 * n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, b = a + 1, c = a + n + 2, d = a + n + 1, e = 2 * (j * n + i);
      const unsigned cell[2][3] = {{a, b, c}, {a, c, d}}, flipped[2][3] = {{a, b, d}, {b, c, d}};
      const auto& pick = (i + j) % 2 ? flipped : cell;
      for (unsigned k = 0; k < 2; ++k)
        for (unsigned r = 0; r < 3; ++r)
          t(r, e + k) = pick[k][r];
    }
  return t;
}

} // namespace bench
