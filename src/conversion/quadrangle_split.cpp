#include <algorithm>

#include "conversion/triangle_quality.h"
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
    // Starting from the smallest ID makes the cut a property of the corners,
    // not of the column's first row, so two columns holding the same
    // quadrangle are cut alike.
    const unsigned k = static_cast<unsigned>(std::min_element(c, c + 4) - c);
    const unsigned a = c[k], b = c[(k + 1) % 4], cc = c[(k + 2) % 4], d = c[(k + 3) % 4];
    const double cut_ac = std::min(triangle_quality(coords, a, b, cc), triangle_quality(coords, cc, d, a));
    const double cut_bd = std::min(triangle_quality(coords, b, cc, d), triangle_quality(coords, d, a, b));
    // The margin lets the cut through the smallest ID win near-ties.
    if (cut_ac <= cut_bd - 1e-12) {
      push_column<3>(out_conn, {b, cc, d});
      push_column<3>(out_conn, {d, a, b});
    } else {
      push_column<3>(out_conn, {a, b, cc});
      push_column<3>(out_conn, {cc, d, a});
    }
    ++split;
  }
  return split;
}

} // namespace tesskit2d
} // namespace kelm
