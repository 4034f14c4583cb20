#include "tesskit2d/linear_reduction.h"

#include <algorithm>

#include "foundation/column_append.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"

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

namespace {

// Children of a quadratic element as rows of the parent column. The corner
// children come first, in corner order; the T6's fourth child is the central
// triangle of its three mid nodes.
constexpr unsigned T6_children[4][3] = {{0, 5, 4}, {1, 3, 5}, {2, 4, 3}, {3, 4, 5}};
constexpr unsigned Q9_children[4][4] = {{0, 4, 8, 7}, {1, 5, 8, 4}, {2, 6, 8, 5}, {3, 7, 8, 6}};

// Appends to an output whose room could not be reserved ahead (one that
// starts with no rows): each column may grow it, and one that finds no
// memory is dropped.
template <unsigned R> struct growing_columns {
  dense2D<unsigned>& out;
  void push(const unsigned (&values)[R]) noexcept { push_column<R>(out, values); }
};

template <class Sink> void append_T6_children_3(const unsigned* c, Sink& sink) noexcept {
  for (const auto& k : T6_children)
    sink.push({c[k[0]], c[k[1]], c[k[2]]});
}

template <class Sink> void append_T6_children_4(const unsigned* c, Sink& sink) noexcept {
  for (const auto& k : T6_children)
    sink.push({c[k[0]], c[k[1]], c[k[2]], null_id});
}

template <class Sink> void append_Q9_children(const unsigned* c, Sink& sink) noexcept {
  for (const auto& k : Q9_children)
    sink.push({c[k[0]], c[k[1]], c[k[2]], c[k[3]]});
}

// The parent is copied out first, so that its children can be written
// from a local column.
template <unsigned R, class Sink>
void split_T6_columns(const dense2D<unsigned>& conn, unsigned n, Sink&& sink) noexcept {
  for (unsigned j = 0; j < n; ++j) {
    unsigned c[6];
    std::copy_n(conn.column(j), 6, c);
    if constexpr (R == 3)
      append_T6_children_3(c, sink);
    else
      append_T6_children_4(c, sink);
  }
}

} // namespace

int split_into_linear(const dense2D<unsigned>& given, dense2D<unsigned>& out) noexcept {
  const unsigned n = given.cols;
  if (given.rows * n == 0) return 0;
  if (given.rows != 6 && given.rows != 9) return -1;
  const unsigned out_rows = out.rows, out_cols = out.cols;
  if (out_rows != 0 && out_rows != 3 && out_rows != 4) return -2;
  const separate_input<dense2D<unsigned>> input(given, out);
  if (!input.ok()) return status::out_of_memory;
  const dense2D<unsigned>& conn = input.get();

  if (conn.rows == 6) {
    // An output without rows reserves nothing here and grows as it goes.
    if (!out.reserve(out_rows, out_cols + 4 * n, 1)) return status::out_of_memory;
    if (out_rows == 0)
      split_T6_columns<3>(conn, n, growing_columns<3>{out});
    else if (out_rows == 3)
      split_T6_columns<3>(conn, n, reserved_columns<3>(out));
    else
      split_T6_columns<4>(conn, n, reserved_columns<4>(out));
    return 0;
  }

  if (!out.reserve(4, out_cols + 4 * n, 1)) return status::out_of_memory;
  // Existing triangles of a 3-row output become mixed columns with null_id
  // in row 3.
  out.resize(4, out_cols, null_id);
  reserved_columns<4> sink(out);
  for (unsigned j = 0; j < n; ++j) {
    unsigned c[9];
    std::copy_n(conn.column(j), 9, c);
    if (c[6] == null_id)
      append_T6_children_4(c, sink);
    else
      append_Q9_children(c, sink);
  }
  return 0;
}

int split_Q4_into_T3(const dense2D<unsigned>& given, dense2D<unsigned>& out) noexcept {
  const unsigned n = given.cols;
  if (n == 0) return 0;
  if (given.rows != 3 && given.rows != 4) return -1;
  if (out.rows * out.cols != 0 && out.rows != 3) return -2;
  const separate_input<dense2D<unsigned>> input(given, out);
  if (!input.ok()) return status::out_of_memory;
  const dense2D<unsigned>& conn = input.get();
  if (conn.rows == 3) return append_columns(out, conn) ? status::ok : status::out_of_memory;

  // The reservation also gives an empty output its 3 rows.
  if (!out.reserve(3, out.cols + 2 * n, 1)) return status::out_of_memory;
  reserved_columns<3> sink(out);
  int split = 0;
  for (unsigned j = 0; j < n; ++j) {
    const unsigned* c = conn.column(j);
    const unsigned a = c[0], b = c[1], cc = c[2], d = c[3];
    sink.push({a, b, cc});
    if (d != null_id) {
      sink.push({cc, d, a});
      ++split;
    }
  }
  return split;
}

} // namespace tesskit2d
} // namespace kelm
