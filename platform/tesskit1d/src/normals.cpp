#include "tesskit1d/normals.h"

#include <cmath>
#include <cstddef>

#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit1d {
namespace {

/// The status of exhausted memory, shared with the surface library.
constexpr int out_of_memory = -199;

} // namespace

int normals(const dense2D<double>& coords, const dense2D<unsigned>& conn, double power, bool unit,
            dense2D<double>& node_normals) {
  // Rebuilt output: emptied first, keeping its storage.
  node_normals.size = node_normals.rows = node_normals.cols = node_normals.ld = 0;
  if (coords.rows * coords.cols == 0 || conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2) return -1;
  if (conn.rows != 2 || !tesskit::check_IDs(conn, E2, coords.cols)) return -2;

  const unsigned n = coords.cols, E = conn.cols;
  if (!node_normals.resize(2, n, 0.0)) return out_of_memory;
  // Weights are needed only to turn the sum into a mean; unit vectors come
  // from normalising the sum, which the weights do not change in direction.
  dense1D<double, 8> weight;
  if (!unit && !weight.resize(n, 0.0)) {
    node_normals.size = node_normals.rows = node_normals.cols = node_normals.ld = 0;
    return out_of_memory;
  }
  const bool weighted = !std::isinf(power);

  const std::size_t cld = coords.ld, nld = node_normals.ld;
  const double* x = coords.column(0);
  double* out = node_normals.column(0);
  double* w_of = unit ? nullptr : weight.begin();
  for (unsigned e = 0; e < E; ++e) {
    const unsigned* edge = conn.column(e);
    const double *p0 = x + edge[0] * cld, *p1 = x + edge[1] * cld;
    double nx = -(p1[1] - p0[1]), ny = p1[0] - p0[0];
    const double s = nx * nx + ny * ny;
    double length = s;
    if (s != 0 && s != 1) {
      length = std::sqrt(s);
      const double r = 1 / length;
      nx *= r;
      ny *= r;
    }
    const double w = weighted ? std::pow(length, power) : 1.0;
    for (unsigned k = 0; k < 2; ++k) {
      double* o = out + edge[k] * nld;
      o[0] += w * nx;
      o[1] += w * ny;
      if (w_of) w_of[edge[k]] += w;
    }
  }

  for (unsigned i = 0; i < n; ++i) {
    double* o = out + i * nld;
    if (unit) {
      const double s = o[0] * o[0] + o[1] * o[1];
      if (s != 0 && s != 1) {
        const double r = 1 / std::sqrt(s);
        o[0] *= r;
        o[1] *= r;
      }
    } else if (w_of[i] != 0) {
      const double r = 1 / w_of[i];
      o[0] *= r;
      o[1] *= r;
    }
  }
  return 0;
}

} // namespace tesskit1d
} // namespace kelm
