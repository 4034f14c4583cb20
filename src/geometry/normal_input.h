#pragma once
// The argument checks and the element normal that both normals forms share.

#include <cmath>
#include <optional>

#include "foundation/element_conventions.h"
#include "foundation/output_clear.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "geometry/primitives.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {

/// The refusals of the normals forms, in their order, once the input is
/// known to be non-empty: -1 for `coords`, -2 for `conn`. The ID check runs
/// only on 3 or 4 rows, since any other row count is refused with the same
/// status anyway.
inline int check_normal_input(const dense2D<double>& coords, const dense2D<unsigned>& conn) noexcept {
  if (coords.rows != 3) return -1;
  if (conn.rows < 3 || conn.rows > 4) return -2;
  if (!kelm::tesskit::check_IDs(conn, surface_kind(conn.rows), coords.cols)) return -2;
  return 0;
}

/// The start of both forms: the checks, then the output emptied. Returns
/// the refusal, or 0 with `points` engaged when the call goes on (its
/// `get()` is the `coords` to read), or 0 with `points` empty for an empty
/// input. The checks run before the output is emptied, and `coords` is
/// copied first where the output can meet it: the output may be the very
/// array `coords`, and emptying it would empty the input too.
inline int start_normals(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                         std::optional<separate_input<dense2D<double>>>& points, dense2D<double>& out) noexcept {
  const bool empty = coords.rows * coords.cols == 0 || conn.rows * conn.cols == 0;
  const int refused = empty ? 0 : check_normal_input(coords, conn);
  if (!empty && refused == 0) points.emplace(coords, out);
  clear_output(out);
  if (empty || refused != 0) return refused;
  return points->ok() ? 0 : status::out_of_memory;
}

/// The raw normal of the element in column `c`: a quadrangle's when `mixed`
/// and row 3 holds a node, else a triangle's.
template <bool Mixed>
inline vector_fixed<double, 3> raw_normal(const dense2D<double>& coords, const unsigned* c) noexcept {
  if (Mixed && c[3] != null_id) return quadrangle_normal(coords, c);
  return triangle_normal(coords, c);
}

/// Makes `n` a unit vector unless its squared length `s` is 0 or exactly 1,
/// and returns its length, taken as `s` itself in those two cases.
inline double normalise(vector_fixed<double, 3>& n, double s) noexcept {
  if (s == 0.0 || s == 1.0) return s;
  const double length = std::sqrt(s), inverse = 1.0 / length;
  n.v[0] *= inverse;
  n.v[1] *= inverse;
  n.v[2] *= inverse;
  return length;
}

inline double squared_length(const vector_fixed<double, 3>& n) noexcept {
  return n.v[0] * n.v[0] + n.v[1] * n.v[1] + n.v[2] * n.v[2];
}

} // namespace tesskit2d
} // namespace kelm
