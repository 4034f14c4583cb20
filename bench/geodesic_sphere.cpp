#include "geodesic_sphere.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace bench {
namespace {

using kelm::tesskit2d::null_id;

const double phi = (1 + std::sqrt(5.0)) / 2;
const double corner[12][3] = {{-1, phi, 0},  {1, phi, 0},  {-1, -phi, 0}, {1, -phi, 0}, {0, -1, phi},  {0, 1, phi},
                              {0, -1, -phi}, {0, 1, -phi}, {phi, 0, -1},  {phi, 0, 1},  {-phi, 0, -1}, {-phi, 0, 1}};
const unsigned face[20][3] = {{0, 11, 5},  {0, 5, 1},  {0, 1, 7},  {0, 7, 10}, {0, 10, 11}, {1, 5, 9}, {5, 11, 4},
                              {11, 10, 2}, {10, 7, 6}, {7, 1, 8},  {3, 9, 4},  {3, 4, 2},   {3, 2, 6}, {3, 6, 8},
                              {3, 8, 9},   {4, 9, 5},  {2, 4, 11}, {6, 2, 10}, {8, 6, 7},   {9, 8, 1}};

// Writes w0 P + w1 Q (+ w2 R) projected onto the unit sphere.
void place(double* out, const double* p, double w0, const double* q, double w1, const double* r = nullptr,
           double w2 = 0) {
  double x[3];
  for (unsigned k = 0; k < 3; ++k)
    x[k] = w0 * p[k] + w1 * q[k] + (r ? w2 * r[k] : 0.0);
  const double s = 1 / std::sqrt(x[0] * x[0] + x[1] * x[1] + x[2] * x[2]);
  for (unsigned k = 0; k < 3; ++k)
    out[k] = x[k] * s;
}

} // namespace

geodesic_sphere make_geodesic_sphere(unsigned n) {
  const unsigned per_edge = n - 1, per_face = (n - 1) * (n - 2) / 2, first_inner = 12 + 30 * per_edge;
  geodesic_sphere s{dense2D<double>(3, 10 * n * n + 2), dense2D<unsigned>(3, 20 * n * n)};

  std::map<std::pair<unsigned, unsigned>, unsigned> edge_index;
  for (const auto& f : face)
    for (unsigned k = 0; k < 3; ++k)
      edge_index.insert({std::minmax(f[k], f[(k + 1) % 3]), unsigned(edge_index.size())});
  for (unsigned v = 0; v < 12; ++v)
    place(s.coords.column(v), corner[v], 1, corner[v], 0);
  for (const auto& e : edge_index)
    for (unsigned t = 1; t < n; ++t)
      place(s.coords.column(12 + e.second * per_edge + t - 1), corner[e.first.first], double(n - t) / n,
            corner[e.first.second], double(t) / n);

  unsigned next_element = 0;
  for (unsigned f = 0; f < 20; ++f) {
    const unsigned* v = face[f];
    // The node at weights (n - i - j, i, j) of the face's corners.
    const auto id = [&](unsigned i, unsigned j) -> unsigned {
      const unsigned w[3] = {n - i - j, i, j};
      unsigned nonzero[3], m = 0;
      for (unsigned k = 0; k < 3; ++k)
        if (w[k]) nonzero[m++] = k;
      if (m == 1) return v[nonzero[0]];
      if (m == 2) {
        const unsigned a = v[nonzero[0]], b = v[nonzero[1]];
        const unsigned t = a < b ? w[nonzero[1]] : w[nonzero[0]]; // the weight of the higher corner
        return 12 + edge_index.at(std::minmax(a, b)) * per_edge + t - 1;
      }
      // Row j holds n - 1 - j inner nodes, from i = 1.
      const unsigned before = (j - 1) * (n - 1) - (j - 1) * j / 2;
      return first_inner + f * per_face + before + i - 1;
    };
    for (unsigned j = 1; j < n; ++j)
      for (unsigned i = 1; i + j < n; ++i)
        place(s.coords.column(id(i, j)), corner[v[0]], double(n - i - j) / n, corner[v[1]], double(i) / n, corner[v[2]],
              double(j) / n);
    const auto put = [&](unsigned a, unsigned b, unsigned c) {
      unsigned* e = s.conn.column(next_element++);
      e[0] = a, e[1] = b, e[2] = c;
    };
    for (unsigned j = 0; j < n; ++j)
      for (unsigned i = 0; i + j < n; ++i) {
        put(id(i, j), id(i + 1, j), id(i, j + 1));
        if (i + j + 1 < n) put(id(i + 1, j), id(i + 1, j + 1), id(i, j + 1));
      }
  }
  return s;
}

} // namespace bench
