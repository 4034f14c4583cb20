#pragma once
// Signed areas of planar meshes, for checks by invariant.

#include "tesskit2d/mesh.h"

namespace tk_test {

/// Sum of the signed areas (shoelace, rows 0 and 1 of `coords`) of the
/// elements of `conn`: 3 rows, or 4 rows with `null_id` in row 3 for a
/// triangle. Counter-clockwise elements count positive. When `min_area` is
/// given it receives the smallest element area.
inline double signed_area(const kelm::dense2D<double>& coords, const kelm::dense2D<unsigned>& conn,
                          double* min_area = nullptr) {
  double total = 0, smallest = 1e300;
  for (unsigned e = 0; e < conn.cols; ++e) {
    const unsigned n = conn.rows == 4 && conn(3, e) != kelm::tesskit2d::null_id ? 4 : 3;
    double a = 0;
    for (unsigned k = 0; k < n; ++k) {
      const unsigned p = conn(k, e), q = conn((k + 1) % n, e);
      a += coords(0, p) * coords(1, q) - coords(0, q) * coords(1, p);
    }
    total += a / 2;
    smallest = a / 2 < smallest ? a / 2 : smallest;
  }
  if (min_area) *min_area = smallest;
  return total;
}

} // namespace tk_test
