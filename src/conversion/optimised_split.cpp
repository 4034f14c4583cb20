#include <algorithm>
#include <functional>

#include "conversion/quadrangle_cut.h"
#include "conversion/split_criteria.h"
#include "foundation/prefetch.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "geometry/primitives.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/geometric_split.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The shorter diagonal, a tie going to a-c. In the plane a cut that leaves a
// triangle without positive area gives way to one that leaves two positive
// triangles, which is what sends the cut of a concave quadrangle through its
// reflex corner whatever the lengths.
bool shorter_cut_is_bd(const dense2D<double>& coords, const rotated_quadrangle& q) noexcept {
  const double *a = coords.column(q.a), *b = coords.column(q.b), *c = coords.column(q.c), *d = coords.column(q.d);
  double ac = 0, bd = 0;
  for (unsigned k = 0; k < coords.rows; ++k) {
    ac += (c[k] - a[k]) * (c[k] - a[k]);
    bd += (d[k] - b[k]) * (d[k] - b[k]);
  }
  const bool bd_shorter = bd < ac;
  if (coords.rows != 2) return bd_shorter;
  const bool ac_positive = triangle_double_area_2d(a, b, c) > 0 && triangle_double_area_2d(c, d, a) > 0;
  const bool bd_positive = triangle_double_area_2d(b, c, d) > 0 && triangle_double_area_2d(d, a, b) > 0;
  return ac_positive != bd_positive ? bd_positive : bd_shorter;
}

// Appends to `failing` the quadrangles among the columns `column_of(0 ..
// count - 1)` that fail a test of `t`. With `Validate` each column's IDs are
// checked against the node count as it is read, before its coordinates are,
// and a bad one returns -8; memory running out returns -199.
template <unsigned D, bool Validate, class Column>
int collect_failing(const dense2D<double>& coords, const split_thresholds& t, const dense2D<unsigned>& conn,
                    unsigned count, Column column_of, dense1D<unsigned, 8>& failing) noexcept {
  // Failing quadrangles are expected to be few; a guess sized to a small
  // share of the work keeps the doubling steps rare.
  if (!failing.reserve(std::min(count, 1024 + count / 64))) return status::out_of_memory;
  const double* x = coords.buffer->data + coords.offset;
  const unsigned* ids = conn.buffer->data + conn.offset;
  const unsigned long long xld = coords.ld, cld = conn.ld;
  const unsigned n_nodes = coords.cols;
  // Over all columns the walk is in column order and can request the nodes
  // ahead; a caller's list of candidates can be in any order.
  node_prefetcher ahead(coords, conn);
  for (unsigned i = 0; i < count; ++i) {
    if (Validate) ahead.at(i);
    const unsigned j = column_of(i);
    const unsigned* c = ids + j * cld;
    const bool triangle = c[3] == null_id;
    if (Validate && std::max(std::max(c[0], c[1]), std::max(c[2], triangle ? 0u : c[3])) >= n_nodes) return -8;
    if (triangle) continue;
    const double* const p[4] = {x + c[0] * xld, x + c[1] * xld, x + c[2] * xld, x + c[3] * xld};
    if (quadrangle_fails<D>(t, p) && !failing.push_back(j)) return status::out_of_memory;
  }
  return status::ok;
}

// All columns, with their IDs checked on the way, or the listed ones, whose
// IDs have been checked before.
template <unsigned D>
int collect_failing(const dense2D<double>& coords, const split_thresholds& t, const dense2D<unsigned>& conn,
                    const dense1D<unsigned, 8>& candidates, dense1D<unsigned, 8>& failing) noexcept {
  if (candidates.size == 0)
    return collect_failing<D, true>(
        coords, t, conn, conn.cols, [](unsigned i) { return i; }, failing);
  const unsigned* listed = candidates.begin();
  return collect_failing<D, false>(
      coords, t, conn, candidates.size, [listed](unsigned i) { return listed[i]; }, failing);
}

} // namespace

int split_Q4_into_T3(const dense2D<double>& coords, double max_angle, double max_warp, double min_jacobian,
                     int diagonal, const dense1D<unsigned, 8>& candidates, dense1D<unsigned, 8>& split,
                     dense2D<unsigned>& conn) {
  const unsigned n = conn.cols;
  if (conn.rows * n == 0) {
    split.size = 0;
    return status::ok;
  }
  if (coords.rows != 2 && coords.rows != 3) return -1;
  const split_thresholds t = make_split_thresholds(max_angle, max_warp, min_jacobian, coords.rows);
  // When every column is to be read anyway and nothing checked after `conn`
  // can fail, its IDs are checked in the same pass: a second pass over a
  // large mesh would cost as much as the reading itself.
  const bool valid_diagonal = diagonal == 0 || diagonal == 1;
  const bool check_while_reading = t.any() && valid_diagonal && candidates.size == 0;
  if (conn.rows != 4 || (!check_while_reading && !tesskit::check_IDs(conn, MIXED, coords.cols))) return -8;
  if (!valid_diagonal) return -5;
  if (!tesskit::check_IDs(candidates, n)) return -6;
  // Both `split` and `conn` are written: over one storage they would write
  // over each other.
  if (rooms_overlap(split, conn)) return -7;

  // Everything is read from `candidates` before anything is written, so it
  // may share storage with `split` or `conn`.
  dense1D<unsigned, 8> failing;
  if (t.any()) {
    const int collected = coords.rows == 2 ? collect_failing<2>(coords, t, conn, candidates, failing)
                                           : collect_failing<3>(coords, t, conn, candidates, failing);
    // A bad ID outranks exhausted memory, even when memory ran out first.
    if (collected == status::out_of_memory && check_while_reading && !tesskit::check_IDs(conn, MIXED, coords.cols))
      return -8;
    if (collected != status::ok) return collected;
  }
  // A list of candidates in any order, or with repeats, still gives each
  // quadrangle one cut and `split` in ascending order.
  unsigned* first = failing.begin();
  if (std::adjacent_find(first, failing.end(), std::greater_equal<unsigned>()) != failing.end()) {
    std::sort(first, failing.end());
    failing.size = static_cast<unsigned>(std::unique(first, failing.end()) - first);
  }
  const unsigned f = failing.size;

  // Both outputs are grown before either is written, so a refusal leaves
  // them as they were.
  if (!split.reserve(f)) return status::out_of_memory;
  if ((unsigned long long)n + f > 0xFFFFFFFFu || !conn.resize(4, n + f)) return status::out_of_memory;

  const unsigned* cut = failing.begin();
  for (unsigned k = 0; k < f; ++k) {
    unsigned* column = conn.column(cut[k]);
    const rotated_quadrangle q = smallest_first(column);
    const bool along_bd = diagonal == 0 ? better_cut_is_bd(coords, q) : shorter_cut_is_bd(coords, q);
    const triangle_pair pair = cut_along(q, along_bd);
    unsigned* appended = conn.column(n + k);
    for (unsigned r = 0; r < 3; ++r) {
      column[r] = pair.first[r];
      appended[r] = pair.second[r];
    }
    column[3] = null_id;
    appended[3] = null_id;
  }
  split.size = f;
  std::copy(cut, cut + f, split.begin());
  return static_cast<int>(f);
}

} // namespace tesskit2d
} // namespace kelm
