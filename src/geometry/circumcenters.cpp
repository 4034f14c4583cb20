#include "foundation/output_clear.h"
#include "foundation/prefetch.h"
#include "foundation/status.h"
#include "geometry/primitives.h"
#include "tesskit/check_IDs.h"
#include "tesskit2d/measures.h"

namespace kelm {
namespace tesskit2d {

int circumcenters(const dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<double>& centers) noexcept {
  clear_output(centers);
  const unsigned dim = coords.rows, n = conn.cols;
  if (dim != 2 && dim != 3) return -1;
  if (conn.rows != 3 || !kelm::tesskit::check_IDs(conn, T3, coords.cols)) return -2;
  if (!centers.resize(dim, n)) return status::out_of_memory;

  node_prefetcher ahead(coords, conn);
  for (unsigned j = 0; j < n; ++j) {
    ahead.at(j);
    const unsigned* c = conn.column(j);
    const double *p0 = coords.column(c[0]), *p1 = coords.column(c[1]), *p2 = coords.column(c[2]);
    if (dim == 2)
      circumcenter_2d(p0, p1, p2, centers.column(j));
    else
      circumcenter_3d(p0, p1, p2, centers.column(j));
  }
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
