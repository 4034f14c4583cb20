#include "conversion/edge_numbering.h"

#include <algorithm>

namespace kelm {
namespace tesskit2d {
namespace {

// Elements looked ahead when numbering: the bucket heads of the edges of
// element j + elements_ahead are requested while element j inserts its
// own, so that misses of heads spread over a table far larger than the
// cache overlap instead of stalling the walk one after the other.
constexpr unsigned elements_ahead = 8;

// The edges of one element, as its column lists them, with their hashes.
struct element_edges {
  edge2 key[4];
  unsigned hash[4];
  unsigned n_edges;
};

// Hashes the edges of the elements a fixed number of columns ahead of their
// insertion and requests their bucket heads; a ring keeps them until then.
class edge_lookahead {
public:
  edge_lookahead(const dense2D<unsigned>& conn, const edge_map& map) noexcept : conn_(conn), map_(map) {
    for (unsigned j = 0; j < elements_ahead && j < conn.cols; ++j)
      hash_element(j);
  }

  // The edges of element j, which must come in column order; they stay
  // valid until the next call.
  const element_edges& edges_of(unsigned j) noexcept {
    if (j + elements_ahead < conn_.cols) hash_element(j + elements_ahead);
    return ring_[j % size];
  }

private:
  static constexpr unsigned size = 16;
  static_assert(elements_ahead < size, "the ring holds the elements looked ahead");

  void hash_element(unsigned j) noexcept {
    const unsigned* c = conn_.column(j);
    const bool triangle = is_triangle(conn_, c);
    element_edges& edges = ring_[j % size];
    edges.n_edges = triangle ? 3 : 4;
    for (unsigned e = 0; e < edges.n_edges; ++e) {
      edges.key[e] = edge2(edge_node(c, triangle, e, 0), edge_node(c, triangle, e, 1));
      edges.hash[e] = key_hash(edges.key[e]);
    }
    for (unsigned e = 0; e < edges.n_edges; ++e)
      map_.prefetch(edges.hash[e]);
  }

  const dense2D<unsigned>& conn_;
  const edge_map& map_;
  element_edges ring_[size];
};

} // namespace

bool number_edges(const dense2D<unsigned>& conn, unsigned ne, edge_map& map, dense2D<unsigned>& out,
                  std::uint64_t& next_id) noexcept {
  const unsigned rows = out.rows;
  edge_lookahead ahead(conn, map);
  std::uint64_t id = next_id;
  for (unsigned j = 0; j < conn.cols; ++j) {
    const element_edges& edges = ahead.edges_of(j);
    const unsigned n_edges = edges.n_edges;
    unsigned* __restrict o = out.column(j);
    const unsigned* c = conn.column(j);
    // Corner by corner: a copy of a count known only at run time would be a
    // library call per element.
    o[0] = c[0];
    o[1] = c[1];
    o[2] = c[2];
    if (n_edges == 4) o[3] = c[3];
    unsigned* run = o + n_edges;
    for (unsigned e = 0; e < n_edges; ++e, run += ne) {
      const edge2 key = edges.key[e];
      bool created;
      const edge_record* r = map.find_or_insert(edges.hash[e], {{key, static_cast<unsigned>(id)}, 0, 0}, created);
      if (!r) return false;
      const unsigned v = r->first.second;
      if (created && (id += ne) > id_limit) return false;
      if (ne > 1 && reversed(key, r->first.first))
        for (unsigned k = 0; k < ne; ++k)
          run[k] = v + (ne - 1 - k);
      else
        for (unsigned k = 0; k < ne; ++k)
          run[k] = v + k;
    }
    if (run != o + rows) std::fill(run, o + rows, null_id);
  }
  next_id = id;
  return true;
}

void copy_corners(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept {
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    std::copy_n(c, is_triangle(conn, c) ? 3 : 4, out.column(j));
  }
}

} // namespace tesskit2d
} // namespace kelm
