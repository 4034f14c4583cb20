#pragma once
// Background meshes for the interpolation tests: jittered grids of the unit
// square with their neighbour tables and ancestors, and targets appended
// behind their nodes. The library never builds the tables, so the tests do.

#include <array>
#include <random>
#include <vector>

#include "support/orientation_meshes.h"
#include "tesskit/element_type.h"

namespace tk_test {

/// A background mesh and the nodes to interpolate at, in one `xy`.
struct background {
  dense2D<double> xy;
  dense2D<unsigned> conn, neighbours;
  dense1D<unsigned> ancestors;
  unsigned n_background = 0; // nodes of the mesh; targets follow
};

/// Per node, the last element that holds it, `null_id` for the others.
inline dense1D<unsigned> ancestors_of(const dense2D<unsigned>& conn, unsigned n_nodes) {
  dense1D<unsigned> a(n_nodes, null_id);
  for (unsigned e = 0; e < conn.cols; ++e)
    for (unsigned r = 0; r < conn.rows; ++r)
      if (conn(r, e) != null_id) a[conn(r, e)] = e;
  return a;
}

/// The (n + 1)^2 nodes of an n by n grid of the unit square, row by row,
/// interior nodes moved by up to `jitter` cells; the cells as T3 (two
/// triangles, diagonals alternating), Q4, or MIXED (a quadrangle in every
/// other cell, two triangles in the rest).
inline background grid_background(unsigned n, kelm::element_type kind, double jitter = 0.0, unsigned seed = 1) {
  background b;
  b.n_background = (n + 1) * (n + 1);
  b.xy = dense2D<double>(2, b.n_background);
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> shake(-jitter / n, jitter / n);
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      const bool inner = i > 0 && i < n && j > 0 && j < n;
      b.xy(0, j * (n + 1) + i) = double(i) / n + (inner ? shake(random) : 0.0);
      b.xy(1, j * (n + 1) + i) = double(j) / n + (inner ? shake(random) : 0.0);
    }
  std::vector<std::array<unsigned, 4>> cells;
  for (unsigned j = 0; j < n; ++j)
    for (unsigned i = 0; i < n; ++i) {
      const unsigned a = j * (n + 1) + i, c = a + n + 2;
      const bool quad = kind == kelm::Q4 || (kind == kelm::MIXED && (i + j) % 2 == 0);
      if (quad) {
        cells.push_back({a, a + 1, c, c - 1});
      } else if ((i + j) % 2) {
        cells.push_back({a, a + 1, c - 1, null_id});
        cells.push_back({a + 1, c, c - 1, null_id});
      } else {
        cells.push_back({a, a + 1, c, null_id});
        cells.push_back({a, c, c - 1, null_id});
      }
    }
  const unsigned rows = kind == kelm::T3 ? 3 : 4;
  b.conn = dense2D<unsigned>(rows, static_cast<unsigned>(cells.size()));
  for (unsigned e = 0; e < b.conn.cols; ++e)
    for (unsigned r = 0; r < rows; ++r)
      b.conn(r, e) = cells[e][r];
  b.neighbours = neighbours_of(b.conn);
  b.ancestors = ancestors_of(b.conn, b.n_background);
  return b;
}

/// Appends `points` as target nodes (ancestor `null_id`) and returns their
/// IDs in order.
inline dense1D<unsigned> add_targets(background& b, const std::vector<std::array<double, 2>>& points) {
  const unsigned first = b.xy.cols, n = static_cast<unsigned>(points.size());
  b.xy.resize(2, first + n);
  b.ancestors.resize(first + n, null_id);
  dense1D<unsigned> ids(n);
  for (unsigned k = 0; k < n; ++k) {
    b.xy(0, first + k) = points[k][0];
    b.xy(1, first + k) = points[k][1];
    ids[k] = first + k;
  }
  return ids;
}

/// Removes one element, a hole or a notch, and rebuilds the tables.
inline void drop_element(background& b, unsigned element) {
  dense2D<unsigned> kept(b.conn.rows, b.conn.cols - 1);
  for (unsigned e = 0, k = 0; e < b.conn.cols; ++e)
    if (e != element) {
      for (unsigned r = 0; r < b.conn.rows; ++r)
        kept(r, k) = b.conn(r, e);
      ++k;
    }
  b.conn = kept;
  b.neighbours = neighbours_of(kept);
  b.ancestors = ancestors_of(kept, b.xy.cols);
}

/// `count` points drawn uniformly in the box from `lo` to `hi`.
inline std::vector<std::array<double, 2>> random_points(unsigned count, double lo, double hi, unsigned seed = 7) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> in(lo, hi);
  std::vector<std::array<double, 2>> p(count);
  for (auto& q : p) {
    q[0] = in(random);
    q[1] = in(random);
  }
  return p;
}

} // namespace tk_test
