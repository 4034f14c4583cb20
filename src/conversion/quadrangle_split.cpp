#include "conversion/quadrangle_cut.h"
#include "foundation/column_append.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/geometric_split.h"

namespace kelm {
namespace tesskit2d {
namespace {

// A 3-row array holds triangles only, and the mixed check would refuse it.
bool conn_valid(const dense2D<unsigned>& conn, unsigned n_nodes) noexcept {
  if (conn.rows == 3) return tesskit::check_IDs(conn, T3, n_nodes);
  return conn.rows == 4 && tesskit::check_IDs(conn, MIXED, n_nodes);
}

} // namespace

int split_Q4_into_T3(const dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out_conn) {
  const unsigned n = conn.cols;
  if (n == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!conn_valid(conn, coords.cols)) return -2;
  if (out_conn.rows * out_conn.cols != 0 && out_conn.rows != 3) return -3;
  if (conn.rows == 3) return append_columns(out_conn, conn) ? 0 : -199;
  if (!out_conn.reserve(3, out_conn.cols + 2 * n, 1)) return -199;

  int split = 0;
  for (unsigned j = 0; j < n; ++j) {
    const unsigned* c = conn.column(j);
    if (c[3] == null_id) {
      push_column<3>(out_conn, {c[0], c[1], c[2]});
      continue;
    }
    const rotated_quadrangle q = smallest_first(c);
    const triangle_pair pair = cut_along(q, better_cut_is_bd(coords, q));
    push_column<3>(out_conn, pair.first);
    push_column<3>(out_conn, pair.second);
    ++split;
  }
  return split;
}

} // namespace tesskit2d
} // namespace kelm
