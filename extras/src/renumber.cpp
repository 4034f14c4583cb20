#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

#include "scratch.h"

#include "tesskit2d/extras.h"

namespace kelm {
namespace tesskit2d {
namespace extras {
namespace {

// The position of cell (x, y) on the Hilbert curve of a 2^16 grid.
std::uint64_t hilbert2(std::uint32_t x, std::uint32_t y) {
  std::uint64_t d = 0;
  for (std::uint32_t s = 1u << 15; s > 0; s >>= 1) {
    const std::uint32_t rx = (x & s) ? 1 : 0, ry = (y & s) ? 1 : 0;
    d += std::uint64_t(s) * s * ((3 * rx) ^ ry);
    if (ry == 0) {
      if (rx == 1) {
        x = s - 1 - (x & (s - 1));
        y = s - 1 - (y & (s - 1));
      }
      std::swap(x, y);
    }
  }
  return d;
}

// The position of cell (x, y, z) on a Hilbert curve of a 2^21 grid
// (Skilling's transpose form: axes to the curve's bits, interleaved).
std::uint64_t hilbert3(std::uint32_t x, std::uint32_t y, std::uint32_t z) {
  std::uint32_t a[3] = {x, y, z};
  const std::uint32_t top = 1u << 20;
  for (std::uint32_t q = top; q > 1; q >>= 1) {
    const std::uint32_t p = q - 1;
    for (int i = 0; i < 3; ++i) {
      if (a[i] & q) {
        a[0] ^= p;
      } else {
        const std::uint32_t t = (a[0] ^ a[i]) & p;
        a[0] ^= t;
        a[i] ^= t;
      }
    }
  }
  for (int i = 1; i < 3; ++i)
    a[i] ^= a[i - 1];
  std::uint32_t t = 0;
  for (std::uint32_t q = top; q > 1; q >>= 1)
    if (a[2] & q) t ^= q - 1;
  for (int i = 0; i < 3; ++i)
    a[i] ^= t;
  std::uint64_t d = 0;
  for (int bit = 20; bit >= 0; --bit)
    for (int i = 0; i < 3; ++i)
      d = d << 1 | ((a[i] >> bit) & 1);
  return d;
}

// The indices 0 .. key.size() - 1 in the order of their keys, ties in index
// order: a least-significant-digit radix sort, 16 bits a pass, over as many
// passes as the largest key needs. Linear, where a comparison sort of
// indices would chase keys across memory n log n times.
scratch<unsigned> order_by_key(const scratch<std::uint64_t>& key) {
  const std::size_t n = key.size();
  std::uint64_t largest = 0;
  for (std::uint64_t k : key)
    largest |= k;
  scratch<unsigned> order(n), next(n);
  std::iota(order.begin(), order.end(), 0u);
  scratch<std::size_t> count(1 << 16);
  for (unsigned shift = 0; shift < 64 && (largest >> shift) != 0; shift += 16) {
    std::fill(count.begin(), count.end(), 0);
    for (std::size_t k = 0; k < n; ++k)
      ++count[(key[k] >> shift) & 0xFFFF];
    std::size_t at = 0;
    for (std::size_t& c : count)
      at += std::exchange(c, at);
    for (unsigned i : order)
      next[count[(key[i] >> shift) & 0xFFFF]++] = i;
    order.swap(next);
  }
  return order;
}

// Moves the columns of `a` so that new column k is old column order[k].
template <class T> void permute_columns(dense2D<T>& a, const scratch<unsigned>& order, scratch<T>& room) {
  const unsigned rows = a.rows;
  room.resize(std::size_t(rows) * order.size());
  for (std::size_t k = 0; k < order.size(); ++k)
    std::copy(a.column(order[k]), a.column(order[k]) + rows, room.begin() + k * rows);
  for (std::size_t k = 0; k < order.size(); ++k)
    std::copy(room.begin() + k * rows, room.begin() + (k + 1) * rows, a.column(static_cast<unsigned>(k)));
}

} // namespace

int renumber(dense2D<double>& coords, dense2D<unsigned>& conn, dense2D<double>* field, dense2D<unsigned>* neighbours,
             dense1D<unsigned>& node_order, dense1D<unsigned>& element_order) noexcept {
  const unsigned dim = coords.rows, n = coords.cols, m = conn.cols;
  if (dim != 2 && dim != 3) return -1;
  for (unsigned j = 0; j < m; ++j)
    for (unsigned r = 0; r < conn.rows; ++r)
      if (conn(r, j) != null_id && conn(r, j) >= n) return -2;
  if (field && field->cols != n) return -3;
  if (neighbours) {
    if (neighbours->cols != m) return -4;
    for (unsigned j = 0; j < m; ++j)
      for (unsigned r = 0; r < neighbours->rows; ++r)
        if ((*neighbours)(r, j) != null_id && (*neighbours)(r, j) >= m) return -4;
  }
  try {
    // Keys on a grid over the bounding box; a flat or empty box maps to 0.
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    for (unsigned i = 0; i < dim; ++i) {
      lo[i] = hi[i] = n ? coords(i, 0) : 0.0;
      for (unsigned k = 1; k < n; ++k) {
        lo[i] = std::min(lo[i], coords(i, k));
        hi[i] = std::max(hi[i], coords(i, k));
      }
    }
    const double cells = dim == 2 ? 65535.0 : 2097151.0;
    scratch<std::uint64_t> key(n);
    for (unsigned k = 0; k < n; ++k) {
      std::uint32_t c[3] = {0, 0, 0};
      for (unsigned i = 0; i < dim; ++i) {
        const double span = hi[i] - lo[i];
        const double t = span > 0 ? (coords(i, k) - lo[i]) / span : 0.0;
        c[i] = t >= 0 && t <= 1 ? static_cast<std::uint32_t>(t * cells) : 0; // NaN goes to 0
      }
      key[k] = dim == 2 ? hilbert2(c[0], c[1]) : hilbert3(c[0], c[1], c[2]);
    }
    const scratch<unsigned> nodes = order_by_key(key);
    scratch<unsigned> new_of(n);
    for (unsigned k = 0; k < n; ++k)
      new_of[nodes[k]] = k;

    // Elements by their smallest new node, ties in their old order; an
    // element of null_id only comes last. The keys are node IDs, so one
    // counting pass over them places every element.
    scratch<unsigned> smallest(m, null_id), elements(m), new_element(m);
    scratch<unsigned> first(std::size_t(n) + 2, 0);
    for (unsigned j = 0; j < m; ++j) {
      for (unsigned r = 0; r < conn.rows; ++r)
        if (conn(r, j) != null_id) smallest[j] = std::min(smallest[j], new_of[conn(r, j)]);
      ++first[std::min(smallest[j], n) + 1];
    }
    for (std::size_t v = 1; v < first.size(); ++v)
      first[v] += first[v - 1];
    for (unsigned j = 0; j < m; ++j)
      elements[first[std::min(smallest[j], n)]++] = j;
    for (unsigned k = 0; k < m; ++k)
      new_element[elements[k]] = k;

    if (!node_order.resize(n) || !element_order.resize(m)) {
      node_order.size = element_order.size = 0;
      return -199;
    }
    // Nothing above touched the caller's arrays; from here on nothing fails
    // but the growth of working arrays, which the rooms below reserve first.
    scratch<double> room_d;
    scratch<unsigned> room_u;
    room_d.reserve(std::size_t(std::max(dim, field ? field->rows : 0u)) * n);
    room_u.reserve(std::size_t(std::max(conn.rows, neighbours ? neighbours->rows : 0u)) * m);
    permute_columns(coords, nodes, room_d);
    if (field) permute_columns(*field, nodes, room_d);
    for (unsigned j = 0; j < m; ++j)
      for (unsigned r = 0; r < conn.rows; ++r)
        if (conn(r, j) != null_id) conn(r, j) = new_of[conn(r, j)];
    permute_columns(conn, elements, room_u);
    if (neighbours) {
      for (unsigned j = 0; j < m; ++j)
        for (unsigned r = 0; r < neighbours->rows; ++r)
          if ((*neighbours)(r, j) != null_id) (*neighbours)(r, j) = new_element[(*neighbours)(r, j)];
      permute_columns(*neighbours, elements, room_u);
    }
    std::copy(nodes.begin(), nodes.end(), node_order.begin());
    std::copy(elements.begin(), elements.end(), element_order.begin());
    return 0;
  } catch (const std::bad_alloc&) {
    node_order.size = element_order.size = 0;
    return -199;
  }
}

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
