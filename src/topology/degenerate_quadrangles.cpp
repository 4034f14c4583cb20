#include <algorithm>

#include "tesskit2d/degenerate.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The new rows of a collapsed column, as old rows, for each adjacent pair
// of corners in the order the pairs are tested. The T6 rows keep the mid
// nodes of the surviving edges next to the corners they join.
constexpr unsigned collapsed_pairs[4][2] = {{0, 1}, {1, 2}, {2, 3}, {0, 3}};
constexpr unsigned linear_rows[4][3] = {{0, 2, 3}, {0, 1, 3}, {0, 1, 2}, {0, 1, 2}};
constexpr unsigned quadratic_rows[4][6] = {
    {0, 2, 3, 6, 7, 5}, {0, 1, 3, 6, 7, 4}, {0, 1, 2, 5, 7, 4}, {0, 1, 2, 5, 6, 4}};

// The first adjacent pair of equal corners, or 4 when there is none or the
// column holds null_id (a triangle, or an already converted column).
unsigned first_collapse(const unsigned* c, unsigned rows) noexcept {
  if (std::find(c, c + rows, null_id) != c + rows) return 4;
  unsigned k = 0;
  while (k < 4 && c[collapsed_pairs[k][0]] != c[collapsed_pairs[k][1]])
    ++k;
  return k;
}

void collapse_linear(unsigned* c, unsigned k) noexcept {
  const unsigned old[4] = {c[0], c[1], c[2], c[3]};
  for (unsigned i = 0; i < 3; ++i)
    c[i] = old[linear_rows[k][i]];
  c[3] = null_id;
}

void collapse_quadratic(unsigned* c, unsigned rows, unsigned k) noexcept {
  unsigned old[9];
  std::copy_n(c, rows, old);
  std::fill_n(c, rows, null_id);
  for (unsigned i = 0; i < 6; ++i)
    c[i] = old[quadratic_rows[k][i]];
}

} // namespace

int convert_degenerated_Q4(dense2D<unsigned>& conn) noexcept {
  if (conn.rows * conn.cols == 0) return 0;
  if (conn.rows != 4) return -1;
  int n = 0;
  for (unsigned j = 0; j < conn.cols; ++j) {
    unsigned* c = conn.column(j);
    const unsigned k = first_collapse(c, 4);
    if (k == 4) continue;
    collapse_linear(c, k);
    ++n;
  }
  return n;
}

int convert_degenerated_Q(dense2D<unsigned>& conn, dense1D<unsigned>& converted) noexcept {
  converted.size = 0;
  const unsigned rows = conn.rows;
  if (rows * conn.cols == 0) return 0;
  if (rows != 4 && rows != 8 && rows != 9) return -1;
  for (unsigned j = 0; j < conn.cols; ++j) {
    unsigned* c = conn.column(j);
    const unsigned k = first_collapse(c, rows);
    if (k == 4) continue;
    if (rows == 4)
      collapse_linear(c, k);
    else
      collapse_quadratic(c, rows, k);
    converted.push_back(j);
  }
  return static_cast<int>(converted.size);
}

} // namespace tesskit2d
} // namespace kelm
