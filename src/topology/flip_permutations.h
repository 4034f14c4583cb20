#pragma once
// How a flip moves the rows of an element and the edge slots of its
// neighbours. Exchanging corners 0 and 2 reverses the element and keeps
// corner 1; the edges, and with them the mid nodes and the neighbour slots,
// follow:
//   triangle, edge s opposite corner s: edges 0 and 2 exchange, edge 1 stays
//   quadrangle, edge s from corner s: new edge 0 is old edge 1 and new edge 2
//   is old edge 3

#include <utility>

namespace kelm {
namespace tesskit2d {

inline void exchange(unsigned* column, unsigned a, unsigned b) noexcept { std::swap(column[a], column[b]); }

inline void flip_corners(unsigned* column) noexcept { exchange(column, 0, 2); }

/// T6: the mid nodes of edges 0 and 2 move with their edges.
inline void flip_T6(unsigned* column) noexcept {
  exchange(column, 0, 2);
  exchange(column, 3, 5);
}

/// Q8 and Q9: mid nodes of edges 0 and 1, and of 2 and 3, exchange; Q9's
/// centre stays.
inline void flip_Q8(unsigned* column) noexcept {
  exchange(column, 0, 2);
  exchange(column, 4, 5);
  exchange(column, 6, 7);
}

inline void flip_triangle_slots(unsigned* slots) noexcept { exchange(slots, 0, 2); }

inline void flip_quadrangle_slots(unsigned* slots) noexcept {
  exchange(slots, 0, 1);
  exchange(slots, 2, 3);
}

} // namespace tesskit2d
} // namespace kelm
