#include "tesskit2d/linear_reduction.h"

namespace kelm {
namespace tesskit2d {

int convert_into_linear(dense2D<unsigned>& conn) noexcept {
  const unsigned cols = conn.cols;
  if (conn.rows * cols == 0) return 0;
  if (conn.rows == 6) {
    conn.resize(3, cols);
    return 0;
  }
  if (conn.rows != 8 && conn.rows != 9) return -1;
  // In a quadratic array a triangle is marked in row 6; in a linear one the
  // mark moves to row 3, over the mid node that stood there.
  for (unsigned j = 0; j < cols; ++j) {
    unsigned* c = conn.column(j);
    if (c[6] == null_id) c[3] = null_id;
  }
  conn.resize(4, cols); // a shrink keeps the stride and cannot fail
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
