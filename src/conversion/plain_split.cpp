#include <algorithm>

#include "foundation/column_append.h"
#include "tesskit2d/linear_reduction.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Children of a quadratic element as rows of the parent column. The corner
// children come first, in corner order; the T6's fourth child is the central
// triangle of its three mid nodes.
constexpr unsigned T6_children[4][3] = {{0, 5, 4}, {1, 3, 5}, {2, 4, 3}, {3, 4, 5}};
constexpr unsigned Q9_children[4][4] = {{0, 4, 8, 7}, {1, 5, 8, 4}, {2, 6, 8, 5}, {3, 7, 8, 6}};

void append_T6_children_3(const unsigned* c, dense2D<unsigned>& out) noexcept {
  for (const auto& k : T6_children)
    push_column<3>(out, {c[k[0]], c[k[1]], c[k[2]]});
}

void append_T6_children_4(const unsigned* c, dense2D<unsigned>& out) noexcept {
  for (const auto& k : T6_children)
    push_column<4>(out, {c[k[0]], c[k[1]], c[k[2]], null_id});
}

void append_Q9_children(const unsigned* c, dense2D<unsigned>& out) noexcept {
  for (const auto& k : Q9_children)
    push_column<4>(out, {c[k[0]], c[k[1]], c[k[2]], c[k[3]]});
}

} // namespace

int split_into_linear(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept {
  const unsigned n = conn.cols;
  if (conn.rows * n == 0) return 0;
  if (conn.rows != 6 && conn.rows != 9) return -1;
  const unsigned out_rows = out.rows, out_cols = out.cols;
  if (out_rows != 0 && out_rows != 3 && out_rows != 4) return -2;

  if (conn.rows == 6) {
    if (!out.reserve(out_rows, out_cols + 4 * n, 1)) return -199;
    for (unsigned j = 0; j < n; ++j) {
      // The parent is copied out first: `conn` may share its buffer with
      // `out`, whose growth would move it.
      unsigned c[6];
      std::copy_n(conn.column(j), 6, c);
      if (out_rows == 4)
        append_T6_children_4(c, out);
      else
        append_T6_children_3(c, out);
    }
    return 0;
  }

  if (!out.reserve(4, out_cols + 4 * n, 1)) return -199;
  // Existing triangles of a 3-row output become mixed columns with null_id
  // in row 3.
  out.resize(4, out_cols, null_id);
  for (unsigned j = 0; j < n; ++j) {
    unsigned c[9];
    std::copy_n(conn.column(j), 9, c);
    if (c[6] == null_id)
      append_T6_children_4(c, out);
    else
      append_Q9_children(c, out);
  }
  return 0;
}

int split_Q4_into_T3(const dense2D<unsigned>& conn, dense2D<unsigned>& out) noexcept {
  const unsigned n = conn.cols;
  if (n == 0) return 0;
  if (conn.rows != 3 && conn.rows != 4) return -1;
  if (out.rows * out.cols != 0 && out.rows != 3) return -2;
  if (conn.rows == 3) return append_columns(out, conn) ? 0 : -199;

  if (!out.reserve(3, out.cols + 2 * n, 1)) return -199;
  int split = 0;
  for (unsigned j = 0; j < n; ++j) {
    const unsigned* c = conn.column(j);
    const unsigned a = c[0], b = c[1], cc = c[2], d = c[3];
    push_column<3>(out, {a, b, cc});
    if (d != null_id) {
      push_column<3>(out, {cc, d, a});
      ++split;
    }
  }
  return split;
}

} // namespace tesskit2d
} // namespace kelm
