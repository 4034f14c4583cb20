#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit {
namespace {

constexpr unsigned none = 0xFFFFFFFFu;

unsigned rows_of(element_type type) noexcept {
  switch (type) {
  case E2: return 2;
  case E3:
  case T3: return 3;
  case Q4: return 4;
  case T6: return 6;
  case Q8: return 8;
  case Q9: return 9;
  default: return 0;
  }
}

// Row from which a MIXED column may hold `none`, keyed on the marker row:
// row 3 of a linear array, row 6 of a quadratic one.
unsigned first_optional_row(unsigned rows) noexcept { return rows == 4 ? 3 : 6; }

unsigned largest(const unsigned* c, unsigned n) noexcept {
  unsigned top = 0;
  for (unsigned i = 0; i < n; ++i)
    top = c[i] > top ? c[i] : top;
  return top;
}

} // namespace

bool check_IDs(const dense2D<unsigned>& conn, element_type type, unsigned n) noexcept {
  if (conn.rows * conn.cols == 0) return true;
  const bool mixed = type == MIXED;
  if (mixed) {
    if (conn.rows != 4 && conn.rows != 8 && conn.rows != 9) return false;
  } else if (conn.rows != rows_of(type)) {
    return false;
  }
  if (!mixed) {
    // Every row holds a node, so the check is a maximum: over the whole
    // array at once when it is packed, which vectorises, else per column.
    if (conn.ld == conn.rows) return largest(conn.column(0), conn.rows * conn.cols) < n;
    for (unsigned j = 0; j < conn.cols; ++j)
      if (largest(conn.column(j), conn.rows) >= n) return false;
    return true;
  }
  const unsigned optional = first_optional_row(conn.rows);
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    // With n of 0xFFFFFFFF this refuses only `none` where a node must be.
    if (largest(c, c[optional] == none ? optional : conn.rows) >= n) return false;
  }
  return true;
}

bool check_IDs(const dense2D<unsigned>& ids, unsigned n) noexcept {
  for (unsigned j = 0; j < ids.cols; ++j) {
    const unsigned* c = ids.column(j);
    for (unsigned i = 0; i < ids.rows; ++i)
      if (c[i] >= n && c[i] != none) return false;
  }
  return true;
}

bool check_IDs(const dense1D<unsigned, 8>& ids, unsigned n) noexcept {
  const unsigned* d = ids.begin();
  for (unsigned i = 0; i < ids.size; ++i)
    if (d[i] >= n) return false;
  return true;
}

} // namespace tesskit
} // namespace kelm
