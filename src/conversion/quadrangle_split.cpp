#include "conversion/quadrangle_cut.h"
#include "foundation/column_append.h"
#include "foundation/element_conventions.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "tesskit2d/geometric_split.h"

namespace kelm {
namespace tesskit2d {
int split_Q4_into_T3(const dense2D<double>& coords, const dense2D<unsigned>& given, dense2D<unsigned>& out_conn) {
  const unsigned n = given.cols;
  if (n == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!surface_ids_valid(given, coords.cols)) return -2;
  if (out_conn.rows * out_conn.cols != 0 && out_conn.rows != 3) return -3;
  const separate_input<dense2D<unsigned>> input(given, out_conn);
  if (!input.ok()) return status::out_of_memory;
  const dense2D<unsigned>& conn = input.get();
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
