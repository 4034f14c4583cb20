#include "conversion/node_placement.h"

#include <algorithm>
#include <cstddef>

#include "conversion/edge_numbering.h"
#include "foundation/prefetch.h"

namespace kelm {
namespace tesskit2d {
namespace {

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
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols && placed < end_id; ++j) {
    ahead.at(j);
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
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
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

} // namespace

void place_edge_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<unsigned>& out, unsigned ne,
                      unsigned n_nodes, unsigned end_id) noexcept {
  if (coords.rows == 2)
    place_edge_nodes<2>(coords, conn, out, ne, n_nodes, end_id);
  else
    place_edge_nodes<3>(coords, conn, out, ne, n_nodes, end_id);
}

void place_interior_nodes(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out, unsigned ne,
                          unsigned m, unsigned nt, unsigned n_nodes, unsigned next_id) noexcept {
  if (coords.rows == 2)
    place_interior_nodes<2>(coords, conn, out, ne, m, nt, n_nodes, next_id);
  else
    place_interior_nodes<3>(coords, conn, out, ne, m, nt, n_nodes, next_id);
}

} // namespace tesskit2d
} // namespace kelm
