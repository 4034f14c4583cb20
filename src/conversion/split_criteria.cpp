#include "conversion/split_criteria.h"

#include <algorithm>
#include <cmath>

namespace kelm {
namespace tesskit2d {
namespace {

// The doubles nearest pi and 2 pi: a caller who passes either means the
// true value, which is the end of the active range.
constexpr double pi = 3.141592653589793;
constexpr double two_pi = 6.283185307179586;

// How far, relative to the lengths involved, a measure must clear its
// threshold for the fast form to pass it: far above the rounding of the
// products it is made of (some 1e-15), far below any tolerance a mesh checker
// sets.
constexpr double margin = 1e-9;

double length(const double* v, unsigned n) noexcept {
  double s = 0;
  for (unsigned k = 0; k < n; ++k)
    s += v[k] * v[k];
  return std::sqrt(s);
}

} // namespace

split_thresholds make_split_thresholds(double max_angle, double max_warp, double min_jacobian, unsigned dim) noexcept {
  split_thresholds t;
  t.angle = max_angle > 0 && max_angle < two_pi;
  t.warp = dim == 3 && max_warp > 0 && max_warp < pi;
  t.jacobian = min_jacobian > -1 && min_jacobian <= 1;
  t.max_angle = max_angle;
  t.max_warp = max_warp;
  t.min_jacobian = min_jacobian;
  if (t.angle) {
    // An angle theta in [0, pi] is below max_angle when its cosine is above
    // cos(max_angle); from pi on the reflex side, 2 pi - theta, is compared,
    // which turns the bound round.
    const double c = std::cos(max_angle);
    t.angle_below_pi = max_angle < pi;
    t.angle_k = t.angle_below_pi ? c + margin : margin - c;
    t.angle_k2 = t.angle_k * t.angle_k;
  }
  if (t.warp) {
    t.warp_k = std::cos(max_warp) + margin;
    t.warp_k2 = t.warp_k * t.warp_k;
  }
  if (t.jacobian) {
    t.jacobian_k = min_jacobian + margin;
    t.jacobian_k2 = t.jacobian_k * t.jacobian_k;
  }
  return t;
}

template <unsigned D> bool fails_exactly(const split_thresholds& t, const quadrangle_frame<D>& q) noexcept {
  // The Jacobian first, over all four corners: it costs two roots and a
  // division where an angle costs an arc tangent, and most quadrangles that
  // fail at all fail it.
  double mean_normal[3] = {0, 0, 1};
  if constexpr (D == 3) {
    // Normalised as everywhere in the library: multiplied by the reciprocal
    // of its length unless that squared is 0 or 1. A zero vector stays zero,
    // and every corner's Jacobian with it.
    const double n2 = q.along_scale2, r = n2 != 0 && n2 != 1 ? 1 / std::sqrt(n2) : 1.0;
    for (unsigned k = 0; k < 3; ++k)
      mean_normal[k] = q.orientation[k] * r;
  }
  for (unsigned i = 0; i < 4 && t.jacobian; ++i) {
    // A zero-length edge leaves the corner without an area: its Jacobian is
    // 0, however the other edge lies.
    const double lengths = std::sqrt(q.length2[(i + 3) % 4]) * std::sqrt(q.length2[i]);
    const double along = D == 2 ? q.normal[i][2] : primitive_detail::dot3(q.normal[i], mean_normal);
    const double scaled = lengths == 0 ? 0.0 : along / lengths;
    if (scaled < t.min_jacobian) return true;
  }
  for (unsigned i = 0; i < 4 && t.angle; ++i) {
    // Without an edge there is no angle to speak of; 0 keeps such a corner
    // out of this test, where atan2(0, -0) would make it pi.
    const bool edgeless = q.length2[(i + 3) % 4] == 0 || q.length2[i] == 0;
    const double sine = D == 2 ? std::fabs(q.normal[i][2]) : length(q.normal[i], 3);
    const double theta = edgeless ? 0.0 : std::atan2(sine, q.dot[i]);
    if ((q.reflex[i] ? two_pi - theta : theta) > t.max_angle) return true;
  }
  if constexpr (D == 3) {
    if (!t.warp) return false;
    for (unsigned s = 0; s < 2; ++s) {
      const vector_fixed<double, 3> n1 = triangle_normal(q.p[s], q.p[s + 1], q.p[s + 2]);
      const vector_fixed<double, 3> n2 = triangle_normal(q.p[s + 2], q.p[(s + 3) % 4], q.p[s]);
      // A flat triangle has no normal to fold against: its fold is 0.
      using namespace primitive_detail;
      if (dot3(n1.v, n1.v) == 0 || dot3(n2.v, n2.v) == 0) continue;
      if (std::atan2(norm3(cross(n1.v, n2.v)), dot3(n1.v, n2.v)) > t.max_warp) return true;
    }
  }
  return false;
}

template bool fails_exactly<2>(const split_thresholds&, const quadrangle_frame<2>&) noexcept;
template bool fails_exactly<3>(const split_thresholds&, const quadrangle_frame<3>&) noexcept;

} // namespace tesskit2d
} // namespace kelm
