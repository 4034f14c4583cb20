#include "conversion/edge_numbering.h"

#include <algorithm>
#include <cstddef>

namespace kelm {
namespace tesskit2d {
namespace {

// Elements looked ahead. The slot counts of an element's lower ends are
// requested `ahead` elements before its slots, and its slots `ahead`
// elements before it is numbered: on a mesh whose numbering scatters
// neighbours across memory the misses of many elements are then in flight
// together instead of stalling the walk one after the other.
constexpr unsigned ahead = 16;

// The lower ends of the edges of column c, in the column's edge order.
inline unsigned lower_ends(const dense2D<unsigned>& conn, const unsigned* c, unsigned* lower) noexcept {
  const bool triangle = is_triangle(conn, c);
  const unsigned n_edges = triangle ? 3 : 4;
  for (unsigned e = 0; e < n_edges; ++e)
    lower[e] = std::min(edge_node(c, triangle, e, 0), edge_node(c, triangle, e, 1));
  return n_edges;
}

// Requests base + scale * lower[e] for the k (3 or 4) lower ends of an
// element. Inlined and written out: a function or loop whose only effect is
// a prefetch reads as dead code to the optimiser.
template <class T>
[[gnu::always_inline]] inline void prefetch_ends(const T* base, std::size_t scale, const unsigned* lower,
                                                 unsigned k) noexcept {
  __builtin_prefetch(base + lower[0] * scale, 1);
  __builtin_prefetch(base + lower[1] * scale, 1);
  __builtin_prefetch(base + lower[2] * scale, 1);
  if (k > 3) __builtin_prefetch(base + lower[3] * scale, 1);
}

// The slot of edge (a, b) among those of its lower end: the one that holds
// it, or the first free one, where it is filed with run `id`. Null if the
// node's slots are all taken by other edges, which the sizing rules out.
template <unsigned width>
unsigned* find_or_file(unsigned* first, const unsigned* last, unsigned a, unsigned b, unsigned id,
                       bool& created) noexcept {
  const unsigned upper = std::max(a, b) + 1;
  for (unsigned* s = first; s != last; s += width) {
    if (s[0] == upper) return s;
    if (s[0] == 0) {
      s[0] = upper;
      s[1] = id;
      if (width == 3) s[width - 1] = a > b;
      created = true;
      return s;
    }
  }
  return nullptr;
}

template <unsigned width>
bool number_edges(const dense2D<unsigned>& conn, unsigned ne, const unsigned* start, unsigned* slots,
                  dense2D<unsigned>& out, std::uint64_t& next_id) noexcept {
  const unsigned rows = out.rows, n = conn.cols;
  std::uint64_t id = next_id;
  unsigned lower[4];
  for (unsigned j = 0; j < n; ++j) {
    if (j + 2 * ahead < n) prefetch_ends(start, 1, lower, lower_ends(conn, conn.column(j + 2 * ahead), lower));
    if (j + ahead < n) {
      const unsigned k = lower_ends(conn, conn.column(j + ahead), lower);
      unsigned first[4];
      for (unsigned e = 0; e < k; ++e)
        first[e] = start[lower[e]];
      prefetch_ends(slots, width, first, k);
      // A node's slots may run into the next cache line.
      for (unsigned e = 0; e < k; ++e)
        first[e] = start[lower[e] + 1] - 1;
      prefetch_ends(slots, width, first, k);
    }

    const unsigned* c = conn.column(j);
    const bool triangle = is_triangle(conn, c);
    const unsigned n_edges = triangle ? 3 : 4;
    unsigned* __restrict o = out.column(j);
    // Corner by corner: a copy of a count known only at run time would be a
    // library call per element.
    o[0] = c[0];
    o[1] = c[1];
    o[2] = c[2];
    if (n_edges == 4) o[3] = c[3];
    unsigned* run = o + n_edges;
    for (unsigned e = 0; e < n_edges; ++e, run += ne) {
      const unsigned a = edge_node(c, triangle, e, 0), b = edge_node(c, triangle, e, 1), v = std::min(a, b);
      bool created = false;
      const unsigned* s =
          find_or_file<width>(slots + std::size_t(start[v]) * width, slots + std::size_t(start[v + 1]) * width, a, b,
                              static_cast<unsigned>(id), created);
      if (!s) return false;
      const unsigned first = s[1];
      if (created && (id += ne) > id_limit) return false;
      // The element runs against the edge when its first end is where the
      // edge was first met to end; an edge from a node to itself always
      // does. Only runs of two or more nodes have a direction.
      bool against = false;
      if (width == 3) {
        const bool met_downward = s[width - 1] != 0;
        const unsigned met_from = met_downward ? std::max(a, b) : v, met_to = met_downward ? v : std::max(a, b);
        against = a == met_to && b == met_from;
      }
      if (against)
        for (unsigned k = 0; k < ne; ++k)
          run[k] = first + (ne - 1 - k);
      else
        for (unsigned k = 0; k < ne; ++k)
          run[k] = first + k;
    }
    if (run != o + rows) std::fill(run, o + rows, null_id);
  }
  next_id = id;
  return true;
}

} // namespace

bool edge_table::build(const dense2D<unsigned>& conn, const dense2D<unsigned>& edges, unsigned ne,
                       unsigned n_nodes) noexcept {
  width_ = ne > 1 ? 3 : 2;
  if (std::uint64_t(n_nodes) + 1 > id_limit || !start_.__grow(n_nodes + 1, 0, 1)) return false;
  const bool known = edges.rows * edges.cols != 0;

  // Slot counts by lower end, kept one place up so that the running sum
  // below turns them into starts in place.
  unsigned* count = start_.data + 1;
  std::uint64_t total = 0;
  unsigned lower[4];
  for (unsigned j = 0; j < conn.cols; ++j) {
    if (j + ahead < conn.cols) prefetch_ends(count, 1, lower, lower_ends(conn, conn.column(j + ahead), lower));
    const unsigned k = lower_ends(conn, conn.column(j), lower);
    for (unsigned e = 0; e < k; ++e)
      ++count[lower[e]];
    total += k;
  }
  if (known)
    for (unsigned j = 0; j < edges.cols; ++j) {
      const unsigned* e = edges.column(j);
      ++count[std::min(e[0], e[1])];
      ++total;
    }
  if (total * width_ > id_limit) return false;
  unsigned* s = start_.data;
  for (unsigned v = 0; v < n_nodes; ++v)
    s[v + 1] += s[v];
  if (!slots_.__grow(static_cast<unsigned>(total * width_), 0, 1)) return false;

  if (known)
    for (unsigned j = 0; j < edges.cols; ++j) {
      const unsigned* e = edges.column(j);
      const unsigned v = std::min(e[0], e[1]);
      bool created = false;
      unsigned *first = slots_.data + std::size_t(s[v]) * width_, *last = slots_.data + std::size_t(s[v + 1]) * width_;
      const bool filed = width_ == 3 ? find_or_file<3>(first, last, e[0], e[1], e[2], created) != nullptr
                                     : find_or_file<2>(first, last, e[0], e[1], e[2], created) != nullptr;
      if (!filed) return false;
    }
  return true;
}

bool edge_table::number(const dense2D<unsigned>& conn, unsigned ne, dense2D<unsigned>& out,
                        std::uint64_t& next_id) noexcept {
  return width_ == 3 ? number_edges<3>(conn, ne, start_.data, slots_.data, out, next_id)
                     : number_edges<2>(conn, ne, start_.data, slots_.data, out, next_id);
}

void copy_corners(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept {
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    std::copy_n(c, is_triangle(conn, c) ? 3 : 4, out.column(j));
  }
}

} // namespace tesskit2d
} // namespace kelm
