#include "tesskit2d/geometric_split.h"

#include "conversion/quadrangle_cut.h"
#include "conversion/raise_order.h"
#include "foundation/column_append.h"
#include "foundation/element_conventions.h"
#include "foundation/prefetch.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {

int split_into_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<unsigned>& out_conn,
                  const dense2D<unsigned>& edges) {
  const unsigned n = conn.cols, n_nodes = coords.cols;
  if (n == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!surface_ids_valid(conn, n_nodes)) return -2;
  if (out_conn.rows * out_conn.cols != 0 && out_conn.rows != 4) return -3;
  if (!tesskit::check_IDs(edges, E3, n_nodes)) return -4;

  const unsigned T = triangle_count(conn);
  const unsigned Q = n - T;

  // Mid-edge nodes shared between neighbours and one centre node per element.
  dense2D<unsigned> raised;
  if (raise_order(coords, conn, 1, 1, 1, raised, edges) < 0) return status::out_of_memory;
  const unsigned long long room = (unsigned long long)out_conn.cols + 3ull * T + 4ull * Q;
  if (room > 0xFFFFFFFFu || !out_conn.reserve(4, static_cast<unsigned>(room), 1)) {
    coords.resize(coords.rows, n_nodes);
    return status::out_of_memory;
  }
  out_conn.resize(4, out_conn.cols, null_id);

  // Child i starts at corner i, goes to the mid node of the edge leaving it,
  // the centre, and the mid node of the edge coming into it, so every child
  // keeps the parent's orientation.
  const unsigned raised_rows = raised.rows;
  for (unsigned j = 0; j < n; ++j) {
    unsigned r[9];
    const unsigned* c = raised.column(j);
    for (unsigned i = 0; i < 9; ++i)
      r[i] = i < raised_rows ? c[i] : null_id;
    // Row 6 of a raised triangle holds its centre; row 7 is the first that a
    // triangle leaves empty.
    if (r[7] == null_id) {
      push_column<4>(out_conn, {r[0], r[5], r[6], r[4]});
      push_column<4>(out_conn, {r[1], r[3], r[6], r[5]});
      push_column<4>(out_conn, {r[2], r[4], r[6], r[3]});
    } else {
      push_column<4>(out_conn, {r[0], r[4], r[8], r[7]});
      push_column<4>(out_conn, {r[1], r[5], r[8], r[4]});
      push_column<4>(out_conn, {r[2], r[6], r[8], r[5]});
      push_column<4>(out_conn, {r[3], r[7], r[8], r[6]});
    }
  }
  return 0;
}

int split_Q4_into_T3(const dense2D<double>& coords, const dense2D<unsigned>& given, dense2D<unsigned>& out_conn) {
  const unsigned n = given.cols;
  if (n == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!surface_ids_valid(given, coords.cols)) return -2;
  if (out_conn.rows * out_conn.cols != 0 && out_conn.rows != 3) return -3;
  const separate_input<dense2D<unsigned>> input(given, out_conn);
  if (!input.ok()) return status::out_of_memory;
  const dense2D<unsigned>& conn = input.get();
  if (conn.rows == 3) return append_columns(out_conn, conn) ? status::ok : status::out_of_memory;
  if (!out_conn.reserve(3, out_conn.cols + 2 * n, 1)) return status::out_of_memory;

  int split = 0;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < n; ++j) {
    ahead.at(j);
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
