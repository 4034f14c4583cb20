#include "offset/offset_steps.h"
#include "tesskit2d/normals.h"

namespace kelm {
namespace tesskit2d {

int surface_unit_normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, dense2D<double>& out) {
  const int status = normals(coords, conn, 1.0, true, out);
  return status == -2 ? -3 : status;
}

} // namespace tesskit2d
} // namespace kelm
