#include "conversion/raise_order.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/edge2.h"
#include "foundation/element_conventions.h"
#include "foundation/hash_table.h"
#include "foundation/output_clear.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {
namespace {

using edge_record = triad<pair<edge2, unsigned>, unsigned, unsigned>;
using edge_map = hash_table<edge_record>;

constexpr std::uint64_t id_limit = 0xFFFFFFFFu; // null_id is never a node

// Elements looked ahead when numbering: the bucket heads of the edges of
// element j + elements_ahead are requested while element j inserts its
// own, so that misses of heads spread over a table far larger than the
// cache overlap instead of stalling the walk one after the other.
constexpr unsigned elements_ahead = 8;

// The side m of a perfect square m * m, or null_id.
unsigned square_side(unsigned n) noexcept {
  std::uint64_t m = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(n)));
  while (m * m > n)
    --m;
  while ((m + 1) * (m + 1) <= n)
    ++m;
  return m * m == n ? static_cast<unsigned>(m) : null_id;
}

// Beyond the ID check, the ends and the first node of each known edge must
// be real nodes, and its run of consecutive IDs must stay below n_nodes.
bool edges_valid(const dense2D<unsigned>& edges, unsigned ne, unsigned n_nodes) noexcept {
  if (edges.rows * edges.cols == 0) return true;
  if (edges.rows != std::uint64_t(ne) + 2 || !tesskit::check_IDs(edges, n_nodes)) return false;
  if (ne == 0) return true;
  for (unsigned j = 0; j < edges.cols; ++j) {
    const unsigned* e = edges.column(j);
    if (e[0] == null_id || e[1] == null_id || e[2] == null_id || std::uint64_t(e[2]) + ne > n_nodes) return false;
  }
  return true;
}

bool is_triangle(const dense2D<unsigned>& conn, const unsigned* c) noexcept {
  return conn.rows == 3 || c[3] == null_id;
}

unsigned edge_node(const unsigned* c, bool triangle, unsigned e, unsigned end) noexcept {
  return c[triangle ? triangle_edge[e][end] : quadrangle_edge[e][end]];
}

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

// Copies the corners and numbers the edge nodes in one pass over the
// elements: an edge met for the first time takes the next `ne` IDs, and
// every element writes the run of its edges straight away, reversed where it
// runs against the stored key, and null_id in the rows it leaves, so that
// the output needs no fill beforehand. False when a key could not be stored.
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

// The point sum of w[k] times node o[k], the nodes being columns of stride
// ld in x: how every interior node is placed from its shape functions.
template <unsigned dim>
void weighted_sum(const double* x, std::size_t ld, const unsigned* o, const double* w, unsigned n_weights,
                  double* p) noexcept {
  for (unsigned i = 0; i < dim; ++i)
    p[i] = 0.0;
  for (unsigned k = 0; k < n_weights; ++k) {
    const double* q = x + o[k] * ld;
    for (unsigned i = 0; i < dim; ++i)
      p[i] += w[k] * q[i];
  }
}

// Places the new nodes of every edge once, where the element walk first met
// it. That element lists the edge's ends in the stored order, and its run
// starts with the lowest ID not yet placed, since IDs were handed out in
// that same walk; so positions are written in the order of their IDs, one
// after the other, and the corners read lie near each other in a mesh
// whose elements come in spatial order. Node k of an edge stored as (A, B)
// sits at local s = (k + 1) * 2 / (ne + 1) - 1 on the straight segment from
// A (s = -1) to B (s = 1). Edges given by the caller have IDs below
// `n_nodes` and keep the positions they have.
template <unsigned dim>
void place_edge_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<unsigned>& out, unsigned ne,
                      unsigned n_nodes, unsigned end_id) noexcept {
  const std::size_t ld = coords.ld;
  double* x = coords.buffer->data + coords.offset;
  const double spacing = 2.0 / (ne + 1.0);
  unsigned placed = n_nodes;
  for (unsigned j = 0; j < conn.cols && placed < end_id; ++j) {
    const unsigned* o = out.column(j);
    const bool triangle = is_triangle(conn, conn.column(j));
    const unsigned* run = o + (triangle ? 3 : 4);
    for (unsigned e = 0, n_edges = triangle ? 3 : 4; e < n_edges; ++e, run += ne) {
      // An edge from a node to itself is reversed against itself, so its
      // run may end rather than start with the new ID; its nodes all sit
      // on that one node either way.
      if (run[0] != placed && run[ne - 1] != placed) continue;
      const double *a = x + edge_node(o, triangle, e, 0) * ld, *b = x + edge_node(o, triangle, e, 1) * ld;
      double* p = x + placed * ld;
      for (unsigned k = 0; k < ne; ++k, p += ld) {
        const double s = (k + 1) * spacing - 1.0, wa = (1.0 - s) / 2.0, wb = (1.0 + s) / 2.0;
        for (unsigned i = 0; i < dim; ++i)
          p[i] = wa * a[i] + wb * b[i];
      }
      placed += ne;
    }
  }
}

void place_edge_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<unsigned>& out, unsigned ne,
                      unsigned n_nodes, unsigned end_id) noexcept {
  if (coords.rows == 2)
    place_edge_nodes<2>(coords, conn, out, ne, n_nodes, end_id);
  else
    place_edge_nodes<3>(coords, conn, out, ne, n_nodes, end_id);
}

// Where a known edge may be curved, interior nodes follow the quadratic
// element's shape functions through the mid nodes; otherwise the corners'
// linear (triangle) or bilinear (quadrangle) interpolation.
template <unsigned dim>
void quadrangle_point(const double* x, std::size_t ld, const unsigned* o, bool serendipity, double u, double v,
                      double* p) noexcept {
  static constexpr double cu[4] = {-1, 1, 1, -1}, cv[4] = {-1, -1, 1, 1};
  double w[8];
  unsigned n_weights = 4;
  for (unsigned i = 0; i < 4; ++i)
    w[i] = (1 + u * cu[i]) * (1 + v * cv[i]) / 4;
  if (serendipity) {
    for (unsigned i = 0; i < 4; ++i)
      w[i] *= u * cu[i] + v * cv[i] - 1;
    w[4] = (1 - u * u) * (1 - v) / 2;
    w[5] = (1 + u) * (1 - v * v) / 2;
    w[6] = (1 - u * u) * (1 + v) / 2;
    w[7] = (1 - u) * (1 - v * v) / 2;
    n_weights = 8;
  }
  weighted_sum<dim>(x, ld, o, w, n_weights, p);
}

template <unsigned dim>
void triangle_point(const double* x, std::size_t ld, const unsigned* o, bool quadratic, double a, double b,
                    double* p) noexcept {
  const double c = 1.0 - a - b;
  double w[6] = {a, b, c, 0, 0, 0};
  unsigned n_weights = 3;
  if (quadratic) {
    w[0] = a * (2 * a - 1);
    w[1] = b * (2 * b - 1);
    w[2] = c * (2 * c - 1);
    w[3] = 4 * b * c;
    w[4] = 4 * c * a;
    w[5] = 4 * a * b;
    n_weights = 6;
  }
  weighted_sum<dim>(x, ld, o, w, n_weights, p);
}

bool any_below(const unsigned* first, unsigned count, unsigned limit) noexcept {
  return *std::min_element(first, first + count) < limit;
}

// Interior nodes, element by element, numbered on from `next_id`. A
// quadrangle gets an m by m grid at u, v = (i + 1) * 2 / (m + 1) - 1, rows of
// constant v outermost. A triangle of three interior nodes gets positions
// at (1/4, 1/4), (1/2, 1/4) and (1/4, 1/2) but keeps only the first two in
// its column and the numbering, so the third is overwritten by the next
// triangle's first.
template <unsigned dim>
void place_interior_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out, unsigned ne,
                          unsigned m, unsigned nt, unsigned n_nodes, unsigned next_id) noexcept {
  const std::size_t ld = coords.ld;
  double* x = coords.buffer->data + coords.offset;
  const double quad_spacing = 2.0 / (m + 1.0);
  for (unsigned j = 0; j < conn.cols; ++j) {
    unsigned* o = out.column(j);
    if (!is_triangle(conn, conn.column(j))) {
      if (m == 0) continue;
      const bool serendipity = ne == 1 && any_below(o + 4, 4, n_nodes);
      unsigned row = 4 * (ne + 1);
      for (unsigned jj = 0; jj < m; ++jj) {
        const double v = (jj + 1) * quad_spacing - 1.0;
        for (unsigned ii = 0; ii < m; ++ii, ++next_id) {
          const double u = (ii + 1) * quad_spacing - 1.0;
          o[row++] = next_id;
          quadrangle_point<dim>(x, ld, o, serendipity, u, v, x + next_id * ld);
        }
      }
    } else if (nt != 0) {
      const bool quadratic = ne == 1 && any_below(o + 3, 3, n_nodes);
      const unsigned row = 3 * (ne + 1);
      if (nt == 1) {
        o[row] = next_id;
        triangle_point<dim>(x, ld, o, quadratic, 1.0 / 3.0, 1.0 / 3.0, x + next_id * ld);
        ++next_id;
      } else {
        static constexpr double at[3][2] = {{0.25, 0.25}, {0.5, 0.25}, {0.25, 0.5}};
        for (unsigned k = 0; k < 3; ++k)
          triangle_point<dim>(x, ld, o, quadratic, at[k][0], at[k][1], x + (next_id + k) * ld);
        o[row] = next_id;
        o[row + 1] = next_id + 1;
        next_id += 2;
      }
    }
  }
}

void place_interior_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out, unsigned ne,
                          unsigned m, unsigned nt, unsigned n_nodes, unsigned next_id) noexcept {
  if (coords.rows == 2)
    place_interior_nodes<2>(coords, conn, out, ne, m, nt, n_nodes, next_id);
  else
    place_interior_nodes<3>(coords, conn, out, ne, m, nt, n_nodes, next_id);
}

} // namespace

int raise_order(dense2D<double>& coords, const dense2D<unsigned>& conn, unsigned n_edge_nodes, unsigned n_quad_nodes,
                unsigned n_tri_nodes, dense2D<unsigned>& out_conn, const dense2D<unsigned>& edges) {
  const unsigned n_nodes = coords.cols, n = conn.cols;
  const unsigned ne = n_edge_nodes, nq = n_quad_nodes, nt = n_tri_nodes;
  edge_map map(23);
  clear_output(out_conn);
  if (conn.rows * n == 0 || (ne | nq | nt) == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!surface_ids_valid(conn, n_nodes)) return -2;
  const unsigned m = square_side(nq);
  if (m == null_id) return -4;
  if (nt != 0 && nt != 1 && nt != 3) return -5;
  if (!edges_valid(edges, ne, n_nodes)) return -6;

  const unsigned T = triangle_count(conn);
  const unsigned Q = n - T;

  // Triangles need nt + 3 (ne + 1) rows, quadrangles nq + 4 (ne + 1); the
  // unused rows of the shorter kind stay null_id.
  const std::uint64_t tri_rows = nt + 3 * (std::uint64_t(ne) + 1), quad_rows = nq + 4 * (std::uint64_t(ne) + 1);
  const std::uint64_t rows = Q == 0 ? tri_rows : T == 0 ? quad_rows : std::max(tri_rows, quad_rows);
  if (rows * n > id_limit) return -199;

  std::uint64_t next_id = n_nodes;
  if (ne != 0) {
    // Sized once for the known edges and about two buckets per element, so
    // that the numbering loop never rebuilds the map.
    const std::uint64_t wanted = std::max<std::uint64_t>(std::uint64_t(edges.cols) + n, 2 * std::uint64_t(n));
    if (!map.reserve(static_cast<unsigned>(std::min(wanted, id_limit)))) return -199;
    if (edges.rows * edges.cols != 0)
      for (unsigned j = 0; j < edges.cols; ++j) {
        const unsigned* e = edges.column(j);
        const auto got = map.insert_checked({{edge2(e[0], e[1]), e[2]}, 0, 0});
        if (got.position == map.null || map[got.position].stamp != map.stamp) return -199;
      }
  }

  // The numbering writes every row of every column, so the output needs no
  // fill of its own beforehand; without edge nodes only the corners are
  // copied, and the rest must read null_id.
  const bool sized = ne != 0 ? out_conn.resize(static_cast<unsigned>(rows), n)
                             : out_conn.resize(static_cast<unsigned>(rows), n, null_id);
  if (!sized) {
    clear_output(out_conn);
    return -199;
  }
  const bool numbered = ne != 0 ? number_edges(conn, ne, map, out_conn, next_id) : (copy_corners(conn, out_conn), true);
  const std::uint64_t interior = std::uint64_t(Q) * nq + std::uint64_t(T) * nt;
  const std::uint64_t total = next_id + interior;
  // Every new column is written below, edge nodes once each and interior
  // nodes element by element, except the tail that three-node triangles
  // leave behind, which reads 0.0 as the resize with a fill would leave it.
  // Sparing that fill spares a pass over the largest part of `coords`.
  const bool fill = ne == 0;
  if (!numbered || total > id_limit ||
      !(fill ? coords.resize(coords.rows, static_cast<unsigned>(total), 0.0)
             : coords.resize(coords.rows, static_cast<unsigned>(total)))) {
    clear_output(out_conn);
    return -199;
  }
  if (!fill && nt == 3 && T != 0)
    for (unsigned j = static_cast<unsigned>(total - T); j < total; ++j)
      std::fill_n(coords.column(j), coords.rows, 0.0);

  if (ne != 0) place_edge_nodes(coords, conn, out_conn, ne, n_nodes, static_cast<unsigned>(next_id));
  if (std::uint64_t(Q) * m + std::uint64_t(T) * nt != 0)
    place_interior_nodes(coords, conn, out_conn, ne, m, nt, n_nodes, static_cast<unsigned>(next_id));
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
