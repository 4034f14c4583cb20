#include "foundation/prefetch.h"
#include "geometry/normal_input.h"
#include "tesskit2d/normals.h"

namespace kelm {
namespace tesskit2d {
namespace {

template <bool Mixed>
void element_normals_of(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool unit,
                        dense2D<double>& out) noexcept {
  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < conn.cols; ++j) {
    ahead.at(j);
    vector_fixed<double, 3> n = raw_normal<Mixed>(coords, conn.column(j));
    if (unit) normalise(n, squared_length(n));
    double* o = out.column(j);
    o[0] = n.v[0];
    o[1] = n.v[1];
    o[2] = n.v[2];
  }
}

} // namespace

int normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, bool unit,
            dense2D<double>& element_normals) noexcept {
  std::optional<separate_input<dense2D<double>>> points;
  const int started = start_normals(coords, conn, points, element_normals);
  if (started != 0 || !points) return started;
  if (!element_normals.resize(3, conn.cols)) return status::out_of_memory;
  if (conn.rows == 3)
    element_normals_of<false>(points->get(), conn, unit, element_normals);
  else
    element_normals_of<true>(points->get(), conn, unit, element_normals);
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
