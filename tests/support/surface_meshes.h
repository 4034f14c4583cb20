#pragma once
// Surfaces in space and a regular triangle grid, for the normals, offsetting
// and connectivity tests.

#include <cmath>

#include "support/arrays.h"

namespace tk_test {

struct surface {
  dense2D<double> xyz;
  dense2D<unsigned> conn;
};

/// A sphere of radius `r` about the origin in `k` meridians and `m` bands:
/// node 0 is the north pole, node 1 the south pole, then the rings from
/// north to south, k nodes each. A 4-row mixed array: triangles round the
/// poles (`null_id` in row 3), quadrangles between, all counter-clockwise
/// seen from outside.
inline surface uv_sphere(unsigned k, unsigned m, double r) {
  const double pi = std::acos(-1.0);
  surface s{dense2D<double>(3, 2 + (m - 1) * k), dense2D<unsigned>(4, m * k)};
  s.xyz(0, 0) = s.xyz(1, 0) = s.xyz(0, 1) = s.xyz(1, 1) = 0;
  s.xyz(2, 0) = r;
  s.xyz(2, 1) = -r;
  const auto ring = [&](unsigned b, unsigned a) { return 2 + (b - 1) * k + a % k; };
  for (unsigned b = 1; b < m; ++b)
    for (unsigned a = 0; a < k; ++a) {
      const double t = pi * b / m, p = 2 * pi * a / k;
      const unsigned id = ring(b, a);
      s.xyz(0, id) = r * std::sin(t) * std::cos(p);
      s.xyz(1, id) = r * std::sin(t) * std::sin(p);
      s.xyz(2, id) = r * std::cos(t);
    }
  unsigned e = 0;
  const auto put = [&](unsigned a, unsigned b, unsigned c, unsigned d) {
    s.conn(0, e) = a, s.conn(1, e) = b, s.conn(2, e) = c, s.conn(3, e) = d;
    ++e;
  };
  for (unsigned a = 0; a < k; ++a)
    put(0, ring(1, a), ring(1, a + 1), null_id);
  for (unsigned b = 1; b + 1 < m; ++b)
    for (unsigned a = 0; a < k; ++a)
      put(ring(b + 1, a), ring(b + 1, a + 1), ring(b, a + 1), ring(b, a));
  for (unsigned a = 0; a < k; ++a)
    put(1, ring(m - 1, a + 1), ring(m - 1, a), null_id);
  return s;
}

/// The n by n grid of unit cells in the plane z = 0, nodes row by row, each
/// cell cut along the same diagonal into two counter-clockwise triangles:
/// cell (i, j) gives (a, b, c) and (a, c, d) with a = (i, j), b = (i + 1, j),
/// c = (i + 1, j + 1), d = (i, j + 1). Every interior node has six.
inline surface triangle_grid(unsigned n) {
  surface s{dense2D<double>(3, (n + 1) * (n + 1), 0.0), dense2D<unsigned>(3, 2 * n * n)};
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      s.xyz(0, j * (n + 1) + i) = i;
      s.xyz(1, j * (n + 1) + i) = j;
    }
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, b = a + 1, c = b + n + 1, d = a + n + 1, e = 2 * (j * n + i);
      s.conn(0, e) = a, s.conn(1, e) = b, s.conn(2, e) = c;
      s.conn(0, e + 1) = a, s.conn(1, e + 1) = c, s.conn(2, e + 1) = d;
    }
  return s;
}

/// The angle in radians between column `j` of `v` and the direction from
/// the origin to column `j` of `xyz`.
inline double angle_to_radial(const dense2D<double>& v, const dense2D<double>& xyz, unsigned j) {
  const double c[3] = {v(1, j) * xyz(2, j) - v(2, j) * xyz(1, j), v(2, j) * xyz(0, j) - v(0, j) * xyz(2, j),
                       v(0, j) * xyz(1, j) - v(1, j) * xyz(0, j)};
  const double d = v(0, j) * xyz(0, j) + v(1, j) * xyz(1, j) + v(2, j) * xyz(2, j);
  return std::atan2(std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]), d);
}

} // namespace tk_test
