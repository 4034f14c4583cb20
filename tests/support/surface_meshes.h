#pragma once
// A sphere and a flat triangle grid in space, for the surface tests.

#include <cmath>

#include "support/arrays.h"

namespace tk_test {

struct surface {
  dense2D<double> xyz;
  dense2D<unsigned> conn;
};

/// A sphere of radius `r` about the origin in `k` meridians and `m` bands:
/// nodes 0 and 1 the poles, then k per ring; triangles round the poles and
/// quadrangles between in a 4-row array, counter-clockwise seen from outside.
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

/// The n by n grid of unit cells in the plane z = 0, nodes row by row; cell
/// (i, j) gives the triangles (a, b, c) and (a, c, d) with a = (i, j),
/// b = (i + 1, j), c = (i + 1, j + 1), d = (i, j + 1).
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

} // namespace tk_test
