#include "foundation/element_conventions.h"
#include "tesskit2d/orientation.h"
#include "topology/flip_permutations.h"

namespace kelm {
namespace tesskit2d {
namespace {

template <class Flip> void each_column(dense2D<unsigned>& conn, Flip flip_column) noexcept {
  for (unsigned j = 0; j < conn.cols; ++j)
    flip_column(conn.column(j));
}

bool mixed_rows(unsigned rows) noexcept { return rows == 3 || rows == 4 || rows == 6 || rows == 8 || rows == 9; }

// The flip of a kind whose row count has been checked.
void flip_kind(dense2D<unsigned>& conn, element_type type) noexcept {
  switch (type) {
  case T3:
  case Q4: each_column(conn, flip_corners); return;
  case T6: each_column(conn, flip_T6); return;
  case Q8:
  case Q9: each_column(conn, flip_Q8); return;
  case MIXED:
    if (conn.rows == 6)
      each_column(conn, flip_T6);
    else if (conn.rows < 6)
      each_column(conn, flip_corners); // a triangle's null_id in row 3 stays
    else
      each_column(conn, [](unsigned* c) {
        // In a quadratic mixed array row 6 marks the triangle, since row 3
        // holds one of its mid nodes.
        if (c[6] == null_id)
          flip_T6(c);
        else
          flip_Q8(c);
      });
    return;
  default: return;
  }
}

} // namespace

int flip(dense2D<unsigned>& conn) noexcept {
  if (conn.cols == 0) return 0;
  if (conn.rows < 3) return -1;
  each_column(conn, flip_corners);
  return 0;
}

int flip(dense2D<unsigned>& conn, element_type type) noexcept {
  if (conn.cols == 0) return 0;
  if (type == MIXED ? !mixed_rows(conn.rows) : conn.rows != unsigned(element_node_count(type))) return -2;
  flip_kind(conn, type);
  return 0;
}

int flip(dense2D<unsigned>& conn, dense2D<unsigned>& neighbours, element_type type) noexcept {
  const unsigned n = conn.cols;
  if (n == 0) return 0;
  if (neighbours.cols != n) return -2;
  if (type != MIXED && conn.rows != unsigned(element_node_count(type))) return -3;
  // A mixed array of one kind of column is flipped as that kind; only the
  // quadratic one needs a test per column.
  element_type kind = type;
  if (type == MIXED) {
    switch (conn.rows) {
    case 3: kind = T3; break;
    case 4: kind = Q4; break;
    case 6: kind = T6; break;
    case 8:
    case 9: break;
    default: return -2;
    }
  }
  unsigned slots = 0;
  switch (kind) {
  case T3:
  case T6: slots = 3; break;
  case Q4:
  case MIXED: slots = 4; break;
  default: break; // neighbours of other kinds are left alone
  }
  if (slots && neighbours.rows != slots) return -2;

  flip_kind(conn, kind);
  if (!slots) return 0;
  // The kind of each column is read from the flipped conn: rows 3 and 6 do
  // not move in a linear or a quadratic array.
  const unsigned marker = kind == Q4 ? 3 : 6;
  for (unsigned j = 0; j < n; ++j) {
    unsigned* s = neighbours.column(j);
    if (slots == 3 || conn(marker, j) == null_id)
      flip_triangle_slots(s);
    else
      flip_quadrangle_slots(s);
  }
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
