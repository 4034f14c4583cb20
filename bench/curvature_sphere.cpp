#include "curvature_sphere.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace bench {
namespace {

const double golden = (1 + std::sqrt(5.0)) / 2;
const double vertices[12][3] = {{-1, golden, 0}, {1, golden, 0}, {-1, -golden, 0}, {1, -golden, 0},
                                {0, -1, golden}, {0, 1, golden}, {0, -1, -golden}, {0, 1, -golden},
                                {golden, 0, -1}, {golden, 0, 1}, {-golden, 0, -1}, {-golden, 0, 1}};
const unsigned faces[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                               {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                               {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};

// Writes a + (b - a) s + (c - a) t, projected on the unit sphere.
void place(double* out, const double* a, const double* b, const double* c, double s, double t) {
  double len = 0;
  for (unsigned k = 0; k < 3; ++k) {
    out[k] = a[k] + (b[k] - a[k]) * s + (c[k] - a[k]) * t;
    len += out[k] * out[k];
  }
  len = std::sqrt(len);
  for (unsigned k = 0; k < 3; ++k)
    out[k] /= len;
}

} // namespace

curvature_sphere make_curvature_sphere(unsigned n) {
  // The 30 edges of the icosahedron, by their end vertices, lower first.
  std::vector<std::pair<unsigned, unsigned>> edges;
  for (const auto& f : faces)
    for (unsigned k = 0; k < 3; ++k)
      edges.push_back(std::minmax(f[k], f[(k + 1) % 3]));
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  const unsigned per_edge = n - 1, per_face = (n - 1) * (n - 2) / 2;
  const unsigned edge_base = 12, face_base = edge_base + 30 * per_edge;

  curvature_sphere s;
  s.coords = dense2D<double>(3, face_base + 20 * per_face);
  for (unsigned v = 0; v < 12; ++v)
    place(s.coords.column(v), vertices[v], vertices[v], vertices[v], 0, 0);
  for (unsigned e = 0; e < 30; ++e)
    for (unsigned k = 1; k < n; ++k) {
      const double* a = vertices[edges[e].first];
      place(s.coords.column(edge_base + e * per_edge + k - 1), a, vertices[edges[e].second], a, double(k) / n, 0);
    }

  // The node at step (i, j) of face f: i steps from corner 0 towards corner
  // 1, j from corner 0 towards corner 2.
  const auto node = [&](unsigned f, unsigned i, unsigned j) -> unsigned {
    const unsigned* c = faces[f];
    unsigned from, to, k;
    if (i + j == 0) return c[0];
    if (i == n) return c[1];
    if (j == n) return c[2];
    if (j == 0)
      from = c[0], to = c[1], k = i;
    else if (i == 0)
      from = c[0], to = c[2], k = j;
    else if (i + j == n)
      from = c[1], to = c[2], k = j;
    else {
      // Interior nodes row by row: rows j = 1 .. n - 2, each i = 1 .. n - 1 - j.
      const unsigned before = (j - 1) * (n - 2) - (j - 1) * (j - 2) / 2;
      return face_base + f * per_face + before + i - 1;
    }
    const std::pair<unsigned, unsigned> key(std::min(from, to), std::max(from, to));
    const unsigned e = static_cast<unsigned>(std::lower_bound(edges.begin(), edges.end(), key) - edges.begin());
    return edge_base + e * per_edge + (from < to ? k : n - k) - 1;
  };
  for (unsigned f = 0; f < 20; ++f)
    for (unsigned j = 1; j + 1 < n; ++j)
      for (unsigned i = 1; i + j < n; ++i) {
        const unsigned* c = faces[f];
        place(s.coords.column(node(f, i, j)), vertices[c[0]], vertices[c[1]], vertices[c[2]], double(i) / n,
              double(j) / n);
      }

  s.conn = dense2D<unsigned>(3, 20 * n * n);
  unsigned t = 0;
  const auto add = [&](unsigned a, unsigned b, unsigned c) {
    s.conn(0, t) = a, s.conn(1, t) = b, s.conn(2, t) = c;
    ++t;
  };
  for (unsigned f = 0; f < 20; ++f)
    for (unsigned j = 0; j < n; ++j)
      for (unsigned i = 0; i + j < n; ++i) {
        add(node(f, i, j), node(f, i + 1, j), node(f, i, j + 1));
        if (i + j + 1 < n) add(node(f, i + 1, j), node(f, i + 1, j + 1), node(f, i, j + 1));
      }

  // Neighbours: the two sides of every edge meet when the half-edges are
  // sorted by their unordered node pair.
  std::vector<std::pair<std::uint64_t, unsigned>> sides;
  sides.reserve(3 * std::size_t(t));
  for (unsigned e = 0; e < t; ++e)
    for (unsigned k = 0; k < 3; ++k) {
      const auto p = std::minmax(s.conn((k + 1) % 3, e), s.conn((k + 2) % 3, e));
      sides.push_back({std::uint64_t(p.first) << 32 | p.second, e * 3 + k});
    }
  std::sort(sides.begin(), sides.end());
  s.neighbours = dense2D<unsigned>(3, t, 0xFFFFFFFFu);
  double total = 0;
  for (std::size_t q = 0; q + 1 < sides.size(); q += 2) {
    const unsigned a = sides[q].second, b = sides[q + 1].second;
    s.neighbours(a % 3, a / 3) = b / 3;
    s.neighbours(b % 3, b / 3) = a / 3;
    const double *p = s.coords.column(unsigned(sides[q].first >> 32)), *r = s.coords.column(unsigned(sides[q].first));
    total += std::sqrt((p[0] - r[0]) * (p[0] - r[0]) + (p[1] - r[1]) * (p[1] - r[1]) + (p[2] - r[2]) * (p[2] - r[2]));
  }
  const std::size_t n_edges = sides.size() / 2; // each edge has two sides
  s.mean_edge = total / static_cast<double>(n_edges);
  return s;
}

} // namespace bench
