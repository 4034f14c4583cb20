#pragma once
// Strips, a Moebius band and their neighbour tables, for the orientation
// tests. The library never builds neighbour tables, so the tests do.

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "support/arrays.h"

namespace tk_test {

/// The nodes of edge `s` of column `c` in the element's direction: a
/// triangle (3 rows, or `null_id` in row 3) has edge s opposite corner s,
/// a quadrangle edge s from corner s to s + 1.
inline std::pair<unsigned, unsigned> edge_of(const unsigned* c, unsigned rows, unsigned s) {
  if (rows == 3 || c[3] == null_id) return {c[(s + 1) % 3], c[(s + 2) % 3]};
  return {c[s], c[(s + 1) % 4]};
}

inline unsigned edge_count(const unsigned* c, unsigned rows) { return rows == 3 || c[3] == null_id ? 3 : 4; }

/// The neighbour table of a linear mesh, from its edges: `null_id` on
/// boundary edges and on a triangle's slot 3.
inline dense2D<unsigned> neighbours_of(const dense2D<unsigned>& conn) {
  std::map<std::pair<unsigned, unsigned>, std::vector<std::pair<unsigned, unsigned>>> by_edge;
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < edge_count(conn.column(j), conn.rows); ++s) {
      auto e = edge_of(conn.column(j), conn.rows, s);
      by_edge[std::minmax(e.first, e.second)].push_back({j, s});
    }
  dense2D<unsigned> nb(conn.rows, conn.cols, null_id);
  for (const auto& kv : by_edge)
    if (kv.second.size() == 2) {
      nb(kv.second[0].second, kv.second[0].first) = kv.second[1].first;
      nb(kv.second[1].second, kv.second[1].first) = kv.second[0].first;
    }
  return nb;
}

/// Directed edges that two elements run the same way: 0 for a coherently
/// oriented mesh.
inline unsigned disagreeing_edges(const dense2D<unsigned>& conn) {
  std::map<std::pair<unsigned, unsigned>, unsigned> seen;
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < edge_count(conn.column(j), conn.rows); ++s)
      ++seen[edge_of(conn.column(j), conn.rows, s)];
  unsigned n = 0;
  for (const auto& kv : seen)
    n += kv.second > 1;
  return n;
}

/// A strip of m cells between a bottom row of nodes 0..m and a top row
/// m+1..2m+1, counter-clockwise. Cells are cut into two triangles (3 rows);
/// with `mixed`, every other cell stays a quadrangle (4 rows). With
/// `twisted`, the last cell is glued back to the first upside down: a
/// Moebius band on m node pairs.
inline dense2D<unsigned> strip(unsigned m, bool mixed = false, bool twisted = false) {
  const unsigned w = twisted ? m : m + 1;
  std::vector<std::vector<unsigned>> cells;
  for (unsigned i = 0; i < m; ++i) {
    unsigned b0 = i, t0 = i + w, b1 = (i + 1) % w, t1 = (i + 1) % w + w;
    if (twisted && i + 1 == m) std::swap(b1, t1);
    if (mixed && i % 2 == 0) {
      cells.push_back({b0, b1, t1, t0});
    } else {
      cells.push_back({b0, b1, t1, null_id});
      cells.push_back({b0, t1, t0, null_id});
    }
  }
  dense2D<unsigned> c(mixed ? 4 : 3, static_cast<unsigned>(cells.size()));
  for (unsigned j = 0; j < c.cols; ++j)
    for (unsigned i = 0; i < c.rows; ++i)
      c(i, j) = cells[j][i];
  return c;
}

} // namespace tk_test
