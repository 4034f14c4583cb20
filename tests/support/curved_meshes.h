#pragma once
// Curved surfaces in space with their neighbour tables, for the curvature
// and metric tests: a geodesic sphere and a tube.

#include <cmath>
#include <map>
#include <tuple>

#include "support/orientation_meshes.h"

namespace tk_test {

// Not `surface`: surface_meshes.h has one of another layout, and two classes
// of one name in one test program share one inline destructor.
struct curved_surface {
  dense2D<double> xyz;
  dense2D<unsigned> tri;
  dense2D<unsigned> nb; // slot s across the edge opposite corner s
};

/// The icosahedron with each face cut into n^2 triangles, nodes projected on
/// the sphere of radius `r` about the origin; counter-clockwise seen from
/// outside, so element normals point outward. Nodes shared by faces are
/// merged by their position before projection.
inline curved_surface geodesic_sphere(unsigned n, double r = 1.0) {
  const double g = (1 + std::sqrt(5.0)) / 2;
  const double v[12][3] = {{-1, g, 0},  {1, g, 0},  {-1, -g, 0}, {1, -g, 0}, {0, -1, g},  {0, 1, g},
                           {0, -1, -g}, {0, 1, -g}, {g, 0, -1},  {g, 0, 1},  {-g, 0, -1}, {-g, 0, 1}};
  const unsigned f[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                             {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                             {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
  curved_surface s{dense2D<double>(3, 10 * n * n + 2), dense2D<unsigned>(3, 20 * n * n), {}};
  std::map<std::tuple<long, long, long>, unsigned> ids;
  const auto node = [&](const double* a, const double* b, const double* c, unsigned i, unsigned j) {
    double p[3];
    for (unsigned k = 0; k < 3; ++k)
      p[k] = a[k] + (b[k] - a[k]) * i / n + (c[k] - a[k]) * j / n;
    const auto key = std::make_tuple(std::lround(p[0] * 1e9), std::lround(p[1] * 1e9), std::lround(p[2] * 1e9));
    const auto found = ids.insert({key, static_cast<unsigned>(ids.size())});
    for (unsigned k = 0; found.second && k < 3; ++k)
      s.xyz(k, found.first->second) = r * p[k] / std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    return found.first->second;
  };
  unsigned e = 0;
  const auto add = [&](unsigned p, unsigned q, unsigned w) { s.tri(0, e) = p, s.tri(1, e) = q, s.tri(2, e++) = w; };
  for (const auto& t : f)
    for (unsigned j = 0; j < n; ++j)
      for (unsigned i = 0; i + j < n; ++i) {
        const double *a = v[t[0]], *b = v[t[1]], *c = v[t[2]];
        add(node(a, b, c, i, j), node(a, b, c, i + 1, j), node(a, b, c, i, j + 1));
        if (i + j + 1 < n) add(node(a, b, c, i + 1, j), node(a, b, c, i + 1, j + 1), node(a, b, c, i, j + 1));
      }
  s.nb = neighbours_of(s.tri);
  return s;
}

/// A tube of radius `r` about the z axis, `around` nodes per ring and
/// `along` cells from z = 0 to z = `length`, cells cut into two triangles
/// counter-clockwise seen from outside. Node (ring k, position i) is
/// k * around + i; the ends are open.
inline curved_surface tube(unsigned around, unsigned along, double r, double length) {
  curved_surface s{dense2D<double>(3, around * (along + 1)), dense2D<unsigned>(3, 2 * around * along), {}};
  for (unsigned q = 0; q < s.xyz.cols; ++q) {
    const double t = 2 * std::acos(-1.0) * (q % around) / around;
    s.xyz(0, q) = r * std::cos(t), s.xyz(1, q) = r * std::sin(t), s.xyz(2, q) = length * (q / around) / along;
  }
  for (unsigned q = 0; q < around * along; ++q) {
    const unsigned a = q, b = q - q % around + (q + 1) % around, c = b + around, d = a + around;
    const unsigned cells[6] = {a, b, c, a, c, d};
    for (unsigned k = 0; k < 6; ++k)
      s.tri(k % 3, 2 * q + k / 3) = cells[k];
  }
  s.nb = neighbours_of(s.tri);
  return s;
}

} // namespace tk_test
