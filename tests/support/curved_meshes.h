#pragma once
// Curved surfaces in space with their neighbour tables, for the curvature
// and metric tests: a geodesic sphere and a tube.

#include <array>
#include <cmath>
#include <map>
#include <tuple>
#include <vector>

#include "support/orientation_meshes.h"

namespace tk_test {

struct surface {
  dense2D<double> xyz;
  dense2D<unsigned> tri;
  dense2D<unsigned> nb; // slot s across the edge opposite corner s
};

/// The icosahedron with each face cut into n^2 triangles, nodes projected on
/// the sphere of radius `r` about the origin; counter-clockwise seen from
/// outside, so element normals point outward. Nodes shared by faces are
/// merged by their position before projection.
inline surface geodesic_sphere(unsigned n, double r = 1.0) {
  const double g = (1 + std::sqrt(5.0)) / 2;
  const double v[12][3] = {{-1, g, 0},  {1, g, 0},  {-1, -g, 0}, {1, -g, 0}, {0, -1, g},  {0, 1, g},
                           {0, -1, -g}, {0, 1, -g}, {g, 0, -1},  {g, 0, 1},  {-g, 0, -1}, {-g, 0, 1}};
  const unsigned f[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                             {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                             {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};
  std::map<std::tuple<long, long, long>, unsigned> ids;
  std::vector<std::array<double, 3>> nodes;
  const auto node = [&](const double* a, const double* b, const double* c, unsigned i, unsigned j) {
    double p[3];
    for (unsigned k = 0; k < 3; ++k)
      p[k] = a[k] + (b[k] - a[k]) * i / n + (c[k] - a[k]) * j / n;
    const auto key = std::make_tuple(std::lround(p[0] * 1e9), std::lround(p[1] * 1e9), std::lround(p[2] * 1e9));
    const auto found = ids.find(key);
    if (found != ids.end()) return found->second;
    const double len = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    nodes.push_back({r * p[0] / len, r * p[1] / len, r * p[2] / len});
    return ids[key] = static_cast<unsigned>(nodes.size() - 1);
  };
  std::vector<std::array<unsigned, 3>> tris;
  for (const auto& t : f) {
    const double *a = v[t[0]], *b = v[t[1]], *c = v[t[2]];
    for (unsigned j = 0; j < n; ++j)
      for (unsigned i = 0; i + j < n; ++i) {
        tris.push_back({node(a, b, c, i, j), node(a, b, c, i + 1, j), node(a, b, c, i, j + 1)});
        if (i + j + 1 < n)
          tris.push_back({node(a, b, c, i + 1, j), node(a, b, c, i + 1, j + 1), node(a, b, c, i, j + 1)});
      }
  }
  surface s{dense2D<double>(3, static_cast<unsigned>(nodes.size())),
            dense2D<unsigned>(3, static_cast<unsigned>(tris.size())),
            {}};
  for (unsigned j = 0; j < nodes.size(); ++j)
    for (unsigned k = 0; k < 3; ++k)
      s.xyz(k, j) = nodes[j][k];
  for (unsigned j = 0; j < tris.size(); ++j)
    for (unsigned k = 0; k < 3; ++k)
      s.tri(k, j) = tris[j][k];
  s.nb = neighbours_of(s.tri);
  return s;
}

/// A tube of radius `r` about the z axis, `around` nodes per ring and
/// `along` cells from z = 0 to z = `length`, cells cut into two triangles
/// counter-clockwise seen from outside. Node (ring k, position i) is
/// k * around + i; the ends are open.
inline surface tube(unsigned around, unsigned along, double r, double length) {
  const double pi = std::acos(-1.0);
  surface s{dense2D<double>(3, around * (along + 1)), dense2D<unsigned>(3, 2 * around * along), {}};
  for (unsigned k = 0; k <= along; ++k)
    for (unsigned i = 0; i < around; ++i) {
      const double t = 2 * pi * i / around;
      s.xyz(0, k * around + i) = r * std::cos(t);
      s.xyz(1, k * around + i) = r * std::sin(t);
      s.xyz(2, k * around + i) = length * k / along;
    }
  unsigned e = 0;
  for (unsigned k = 0; k < along; ++k)
    for (unsigned i = 0; i < around; ++i) {
      const unsigned a = k * around + i, b = k * around + (i + 1) % around, c = b + around, d = a + around;
      const unsigned cells[2][3] = {{a, b, c}, {a, c, d}};
      for (const auto& cell : cells) {
        for (unsigned q = 0; q < 3; ++q)
          s.tri(q, e) = cell[q];
        ++e;
      }
    }
  s.nb = neighbours_of(s.tri);
  return s;
}

/// The same surface with every element reversed (rows 1 and 2 swapped) and
/// its neighbour table rebuilt to match.
inline surface flipped(const surface& s) {
  surface f{s.xyz, deep(s.tri), {}};
  for (unsigned j = 0; j < f.tri.cols; ++j)
    std::swap(f.tri(1, j), f.tri(2, j));
  f.nb = neighbours_of(f.tri);
  return f;
}

} // namespace tk_test
