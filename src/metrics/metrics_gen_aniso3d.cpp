#include <cmath>
#include <cstdint>

#include "foundation/separate_input.h"
#include "foundation/status.h"
#include "geometry/orthonormal_frame.h"
#include "geometry/primitives.h"
#include "tesskit/minimum_metric.h"
#include "tesskit2d/metric_generation.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The sum of a node's edge lengths and their count side by side; the count
// is exact in a double far beyond any valence.
struct edge_sum {
  double length, count;
};

// The Euclidean length of the edge between two nodes over all `dim`
// coordinates.
inline double edge_length(const double* p, const double* q, unsigned dim) noexcept {
  double s = 0.0;
  for (unsigned i = 0; i < dim; ++i) {
    const double d = q[i] - p[i];
    s += d * d;
  }
  return std::sqrt(s);
}

} // namespace

int metrics_gen_aniso3d(const dense2D<double>& coords, const dense2D<unsigned>& conn, double normal_size,
                        dense2D<double>& metrics) noexcept {
  const unsigned dim = coords.rows, n_nodes = coords.cols;
  if (dim < 3) return -1;
  if (conn.rows != 3) return -2;
  unsigned largest = 0;
  for (unsigned e = 0; e < conn.cols; ++e) {
    const unsigned* c = conn.column(e);
    for (unsigned k = 0; k < 3; ++k)
      largest = c[k] > largest ? c[k] : largest;
  }
  if (largest >= n_nodes) return -2;
  if (metrics.rows * metrics.cols != 0 && metrics.rows != 6) return -4;

  // `metrics` grows and is written element by element while later elements
  // still read `coords`: where the two can meet, `coords` is read from a
  // private copy. It and the mean edge lengths are set up before `metrics`
  // grows, so that a shortage of memory leaves the field as it was.
  const separate_input<dense2D<double>> input(coords, metrics);
  if (!input.ok()) return status::out_of_memory;
  const dense2D<double>& xyz = input.get();
  dense1D<double> sums;
  if (std::uint64_t(n_nodes) * 2 > 0xFFFFFFFFu || !sums.resize(2 * n_nodes, 0.0)) return status::out_of_memory;
  const unsigned wanted = largest + 1 > metrics.cols ? largest + 1 : metrics.cols;
  if (!metrics.resize(6, wanted, 0.0)) return status::out_of_memory;

  // Mean edge length per node. An edge shared by two elements counts once
  // from each, and a zero or non-finite length not at all.
  edge_sum* mean = reinterpret_cast<edge_sum*>(sums.begin());
  for (unsigned e = 0; e < conn.cols; ++e) {
    const unsigned* c = conn.column(e);
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned i = c[k], j = c[(k + 1) % 3];
      const double d = edge_length(xyz.column(i), xyz.column(j), dim);
      if (d == 0.0 || !std::isfinite(d)) continue;
      mean[i].length += d;
      mean[j].length += d;
      mean[i].count += 1;
      mean[j].count += 1;
    }
  }
  for (unsigned v = 0; v < n_nodes; ++v)
    if (mean[v].count != 0) mean[v].length /= mean[v].count;

  // Each element prescribes at its corners the metric with the corner's
  // mean edge h in its plane and the normal size along its normal:
  //   M = (t1 t1^T + t2 t2^T) / h^2 + n n^T / h_n^2.
  // The tangent t1 is carried from element to element only to spare the
  // frame its fallback; M does not depend on it beyond rounding.
  double t1[3] = {0, 0, 0};
  for (unsigned e = 0; e < conn.cols; ++e) {
    const unsigned* c = conn.column(e);
    const vector_fixed<double, 3> raw = triangle_normal(xyz, c);
    double n[3] = {raw[0], raw[1], raw[2]}, t2[3];
    normalise(n);
    // A zero-area element has a zero normal, which the frame turns into the
    // x axis: such an element still prescribes, with x as its normal.
    orthonormal_frame(n, t1, t2);
    double in_plane[6], across[6];
    for (unsigned j = 0, at = 0; j < 3; ++j)
      for (unsigned i = 0; i <= j; ++i, ++at) {
        in_plane[at] = t1[i] * t1[j] + t2[i] * t2[j];
        across[at] = n[i] * n[j];
      }
    for (unsigned k = 0; k < 3; ++k) {
      const unsigned v = c[k];
      const double h = mean[v].length;
      // A corner without a usable mean edge ends this element: the corners
      // after it get nothing from it either.
      if (!(h > 0.0) || !std::isfinite(h)) break;
      const double a = 1.0 / (h * h);
      const double b = normal_size == 0.0  ? a
                       : normal_size > 0.0 ? 1.0 / (normal_size * normal_size)
                                           : a / (normal_size * normal_size);
      symmetric_fixed<double, 3> prescribed, held;
      double* column = metrics.column(v);
      for (unsigned at = 0; at < 6; ++at) {
        prescribed[at] = a * in_plane[at] + b * across[at];
        held[at] = column[at];
      }
      // The node keeps the smaller size along every direction; its first
      // prescription meets a zero column and is stored as it is.
      kelm::tesskit::minimum_metric(prescribed, held, held);
      for (unsigned at = 0; at < 6; ++at)
        column[at] = held[at];
    }
  }
  return status::ok;
}

} // namespace tesskit2d
} // namespace kelm
