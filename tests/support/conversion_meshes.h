#pragma once
// Meshes for the conversion tests: a jittered grid of quadrangles and
// triangles in random order, with shuffled node IDs, so that nothing can
// rely on a tidy numbering.

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "support/arrays.h"

namespace tk_test {

struct random_mesh {
  kelm::dense2D<double> coords;
  kelm::dense2D<unsigned> conn; // 4 rows, null_id in row 3 for a triangle
};

/// A k by k grid of the unit square, nodes moved by up to a fifth of a cell;
/// each cell is a counter-clockwise quadrangle (probability `quad_share`) or
/// two triangles cut along a random diagonal. Columns are shuffled and each
/// starts at a random corner; node IDs are a random permutation.
inline random_mesh make_random_mesh(unsigned k, unsigned seed, double quad_share = 0.5) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> jitter(-0.2, 0.2), coin(0.0, 1.0);
  const unsigned w = k + 1, n_nodes = w * w;
  std::vector<unsigned> id(n_nodes);
  std::iota(id.begin(), id.end(), 0u);
  std::shuffle(id.begin(), id.end(), rng);

  random_mesh m{kelm::dense2D<double>(2, n_nodes), {}};
  for (unsigned j = 0; j < w; ++j)
    for (unsigned i = 0; i < w; ++i) {
      const bool inner_x = i > 0 && i<k, inner_y = j> 0 && j < k;
      m.coords(0, id[j * w + i]) = (i + (inner_x ? jitter(rng) : 0.0)) / k;
      m.coords(1, id[j * w + i]) = (j + (inner_y ? jitter(rng) : 0.0)) / k;
    }

  std::vector<std::vector<unsigned>> cols;
  for (unsigned j = 0; j < k; ++j)
    for (unsigned i = 0; i < k; ++i) {
      const unsigned a = id[j * w + i], b = id[j * w + i + 1], c = id[(j + 1) * w + i + 1], d = id[(j + 1) * w + i];
      if (coin(rng) < quad_share) {
        cols.push_back({a, b, c, d});
      } else if (coin(rng) < 0.5) {
        cols.push_back({a, b, c});
        cols.push_back({c, d, a});
      } else {
        cols.push_back({a, b, d});
        cols.push_back({b, c, d});
      }
    }
  std::shuffle(cols.begin(), cols.end(), rng);
  m.conn = kelm::dense2D<unsigned>(4, static_cast<unsigned>(cols.size()), kelm::tesskit2d::null_id);
  for (unsigned e = 0; e < cols.size(); ++e) {
    const unsigned n = static_cast<unsigned>(cols[e].size()), r = rng() % n;
    for (unsigned i = 0; i < n; ++i)
      m.conn(i, e) = cols[e][(i + r) % n];
  }
  return m;
}

} // namespace tk_test
