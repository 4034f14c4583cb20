#include "meshes.h"

namespace demo {

using kelm::tesskit2d::null_id;

dense2D<double> grid_nodes(unsigned n) {
  dense2D<double> xy(2, (n + 1) * (n + 1));
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      xy(0, j * (n + 1) + i) = double(i) / n;
      xy(1, j * (n + 1) + i) = double(j) / n;
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

dense2D<unsigned> mixed_quadratic_grid(unsigned n) {
  const unsigned w = 2 * n + 1; // nodes per grid row
  auto id = [w](unsigned i, unsigned j) { return j * w + i; };
  dense2D<unsigned> c(9, 0);
  c.reserve(9, n * n + n * n);
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned x = 2 * i, y = 2 * j;
      if (i < n / 2) {
        const unsigned q[9] = {id(x, y),         id(x + 2, y),     id(x + 2, y + 2), id(x, y + 2),    id(x + 1, y),
                               id(x + 2, y + 1), id(x + 1, y + 2), id(x, y + 1),     id(x + 1, y + 1)};
        c.resize(9, c.cols + 1);
        for (unsigned r = 0; r < 9; ++r)
          c(r, c.cols - 1) = q[r];
      } else {
        // Two T6 across the diagonal from (x, y) to (x + 2, y + 2); mid
        // nodes on edges opposite corners 0, 1, 2.
        const unsigned t[2][6] = {
            {id(x, y), id(x + 2, y), id(x + 2, y + 2), id(x + 2, y + 1), id(x + 1, y + 1), id(x + 1, y)},
            {id(x, y), id(x + 2, y + 2), id(x, y + 2), id(x + 1, y + 2), id(x, y + 1), id(x + 1, y + 1)}};
        for (const auto& tri : t) {
          c.resize(9, c.cols + 1);
          for (unsigned r = 0; r < 6; ++r)
            c(r, c.cols - 1) = tri[r];
          for (unsigned r = 6; r < 9; ++r)
            c(r, c.cols - 1) = null_id;
        }
      }
    }
  return c;
}

} // namespace demo
