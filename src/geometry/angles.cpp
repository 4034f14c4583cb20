#include <algorithm>

#include "foundation/element_conventions.h"
#include "foundation/prefetch.h"
#include "foundation/status.h"
#include "geometry/primitives.h"
#include "tesskit2d/measures.h"

namespace kelm {
namespace tesskit2d {

int angles(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool normalized, dense1D<double>& min_angles,
           dense1D<double>& max_angles) noexcept {
  min_angles.size = 0;
  max_angles.size = 0;
  const unsigned n = conn.cols;
  if (conn.rows * n == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (conn.rows != 3 && conn.rows != 4) return -2;
  if (!min_angles.resize(n)) return status::out_of_memory;
  if (!max_angles.resize(n)) {
    min_angles.size = 0;
    return status::out_of_memory;
  }
  if (!surface_ids_valid(conn, coords.cols)) {
    std::fill(min_angles.begin(), min_angles.end(), 0.0);
    std::fill(max_angles.begin(), max_angles.end(), 0.0);
    return -2;
  }

  const bool mixed = conn.rows == 4;
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < n; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    double a[4];
    unsigned corners = 3;
    if (mixed && c[3] != null_id) {
      quadrangle_angles(coords, c, normalized, a);
      corners = 4;
    } else {
      triangle_angles(coords, c, normalized, a);
    }
    const auto range = std::minmax_element(a, a + corners);
    min_angles[j] = *range.first;
    max_angles[j] = *range.second;
  }
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
