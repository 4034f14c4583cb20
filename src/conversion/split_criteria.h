#pragma once
// The shape tests that tell which quadrangles the optimised split_Q4_into_T3
// cuts: largest corner angle, warp and smallest scaled Jacobian.
//
// Each test has an exact form, which defines the answer, and a fast form that
// can only say "surely passes". The fast form settles nearly every quadrangle
// of a usable mesh with products and comparisons alone, no square root,
// division or arc tangent; what it cannot settle (a measure within a relative
// 1e-9 of its threshold, a failing quadrangle, lengths too large or too small
// to square twice) goes to the exact form. So the result is always the exact
// one, and a mesh of mostly good quadrangles costs little more than reading
// their corners.

#include <cmath>

#include "geometry/primitives.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The thresholds of one call: which tests are on, their limits, and the
/// bounds of the fast form, set by `make_split_thresholds`.
struct split_thresholds {
  bool angle = false, warp = false, jacobian = false;
  double max_angle = 0, max_warp = 0, min_jacobian = 0;
  // Below pi a corner passes when it is not reflex and its cosine is above
  // cos(max_angle); from pi on every corner that is not reflex passes, and a
  // reflex one when its cosine is below cos(max_angle).
  bool angle_below_pi = true;
  // Each fast bound is "x >= k * sqrt(l2)", with k moved by the margin
  // towards failing and k * k kept beside it.
  double angle_k = 0, angle_k2 = 0, warp_k = 0, warp_k2 = 0, jacobian_k = 0, jacobian_k2 = 0;

  bool any() const noexcept { return angle || warp || jacobian; }
};

/// Switches on each test whose threshold is in its active range: `max_angle`
/// in (0, 2 pi), `max_warp` in (0, pi) with `dim` 3, `min_jacobian` in
/// (-1, 1]. Any other value, NaN included, switches the test off.
split_thresholds make_split_thresholds(double max_angle, double max_warp, double min_jacobian, unsigned dim) noexcept;

/// What both forms read of a quadrangle P0..P3, with D coordinates.
///
/// At corner i, u = P(i+1) - P(i) runs to the next corner and w = P(i-1) -
/// P(i) to the previous one. The corner normal is u x w (its z part alone in
/// the plane), the corner's dot product u . w. The quadrangle's orientation is
/// the cross product of its diagonals, (P2 - P0) x (P3 - P1). A corner is
/// reflex when its normal points against the orientation; a quadrangle whose
/// diagonals give no cross product has no reflex corner.
///
/// `along` is the Jacobian's numerator before scaling: the corner normal in
/// the plane, its component along the (not normalised) orientation in space,
/// where `along_scale2` is the squared length of the orientation, so that the
/// scaled Jacobian is along / (|u| |w| sqrt(along_scale2)). The reflex test in
/// space is the sign of `along`, the same number in both forms.
///
/// The corner normal at i + 1 is also the normal of the triangle (P(i),
/// P(i+1), P(i+2)), which is what the fast warp bound uses.
template <unsigned D> struct quadrangle_frame {
  const double* p[4];
  double edge[4][D];   // edge i: P(i+1) - P(i)
  double length2[4];   // squared length of edge i
  double normal[4][3]; // corner normals; in the plane only [i][2] is set
  double dot[4];
  double orientation[3]; // in the plane only [2] is set
  double along[4];
  double along_scale2;
  bool reflex[4];
};

template <unsigned D> inline void measure_quadrangle(const double* const p[4], quadrangle_frame<D>& q) noexcept {
  for (unsigned i = 0; i < 4; ++i) {
    q.p[i] = p[i];
    double l2 = 0;
    for (unsigned k = 0; k < D; ++k) {
      q.edge[i][k] = p[(i + 1) % 4][k] - p[i][k];
      l2 += q.edge[i][k] * q.edge[i][k];
    }
    q.length2[i] = l2;
  }
  for (unsigned i = 0; i < 4; ++i) {
    // u = edge i and w = -edge (i - 1), so u x w = edge (i - 1) x edge i.
    const double* in = q.edge[(i + 3) % 4];
    const double* out = q.edge[i];
    double dot = 0;
    for (unsigned k = 0; k < D; ++k)
      dot += in[k] * out[k];
    q.dot[i] = -dot;
    q.normal[i][2] = in[0] * out[1] - in[1] * out[0];
    if constexpr (D == 3) {
      q.normal[i][0] = in[1] * out[2] - in[2] * out[1];
      q.normal[i][1] = in[2] * out[0] - in[0] * out[2];
    }
  }
  if constexpr (D == 2) {
    const double o = (p[2][0] - p[0][0]) * (p[3][1] - p[1][1]) - (p[2][1] - p[0][1]) * (p[3][0] - p[1][0]);
    q.orientation[2] = o;
    q.along_scale2 = 1;
    for (unsigned i = 0; i < 4; ++i) {
      const double z = q.normal[i][2];
      q.along[i] = z;
      q.reflex[i] = ((o > 0) & (z < 0)) | ((o < 0) & (z > 0));
    }
  } else {
    const vector_fixed<double, 3> o = quadrangle_normal(p[0], p[1], p[2], p[3]);
    for (unsigned k = 0; k < 3; ++k)
      q.orientation[k] = o.v[k];
    q.along_scale2 = primitive_detail::dot3(o.v, o.v);
    for (unsigned i = 0; i < 4; ++i) {
      q.along[i] = primitive_detail::dot3(q.normal[i], o.v);
      q.reflex[i] = q.along[i] < 0;
    }
  }
}

/// x >= k * sqrt(l2), decided without the root; `k2` is k * k. The sign of
/// x near a right angle is a coin toss, so both sides of each test are
/// evaluated and combined bitwise rather than branched on.
inline bool at_least(double x, double k, double k2, double l2) noexcept {
  const double square = x * x, bound = k2 * l2;
  return k <= 0 ? (x >= 0) | (square <= bound) : (x > 0) & (square >= bound);
}

/// Products of squared lengths in this range can be squared again without
/// leaving the normal doubles, so the fast bounds keep their precision.
inline bool squarable(double l2) noexcept { return (l2 >= 1e-200) & (l2 <= 1e200); }

/// The fast form: true only when every active test surely passes. False
/// means "ask `fails_exactly`", not "fails".
template <unsigned D> inline bool surely_passes(const split_thresholds& t, const quadrangle_frame<D>& q) noexcept {
  bool ok = true;
  double corner2[4]; // |u|^2 |w|^2 per corner
  for (unsigned i = 0; i < 4; ++i) {
    const double l2 = corner2[i] = q.length2[(i + 3) % 4] * q.length2[i];
    ok &= squarable(l2);
    if (t.jacobian) {
      const double scaled2 = l2 * q.along_scale2;
      ok &= squarable(scaled2);
      ok &= at_least(q.along[i], t.jacobian_k, t.jacobian_k2, scaled2);
    }
    if (t.angle)
      ok &= t.angle_below_pi ? !q.reflex[i] & at_least(q.dot[i], t.angle_k, t.angle_k2, l2)
                             : !q.reflex[i] | at_least(-q.dot[i], t.angle_k, t.angle_k2, l2);
  }
  if constexpr (D == 3) {
    if (!t.warp) return ok;
    // The triangles along diagonal 0-2 have the normals of corners 1 and 3,
    // those along 1-3 the normals of corners 0 and 2. The exact form takes
    // them from `triangle_normal`, which rounds differently; a normal of at
    // least a thousandth of its corner's |u| |w| keeps that difference some
    // 1e-13 of the fold's cosine, well inside the margin.
    using primitive_detail::dot3;
    double n2[4];
    for (unsigned i = 0; i < 4; ++i) {
      n2[i] = dot3(q.normal[i], q.normal[i]);
      ok &= n2[i] >= 1e-6 * corner2[i];
    }
    for (unsigned s = 0; s < 2; ++s) {
      const double l2 = n2[s] * n2[s + 2];
      ok &= squarable(l2);
      ok &= at_least(dot3(q.normal[s], q.normal[s + 2]), t.warp_k, t.warp_k2, l2);
    }
  }
  return ok;
}

/// The exact form, which defines the answer: true when an active test fails.
/// - Corner angle: atan2(|u x w|, u . w), from 0 to pi, or 2 pi minus that at
///   a reflex corner, 0 at a corner with an edge of zero length; fails above
///   `max_angle`.
/// - Warp: per diagonal, the angle between the `triangle_normal`s of its two
///   triangles, atan2(|n1 x n2|, n1 . n2), 0 when one of them is the zero
///   vector; fails above `max_warp`.
/// - Scaled Jacobian: the corner normal's z part in the plane, its component
///   along the normalised orientation in space, over the product of the two
///   edge lengths; 0 when one of them is 0. Fails below `min_jacobian`.
/// A NaN measure compares false and so fails nothing.
template <unsigned D> bool fails_exactly(const split_thresholds& t, const quadrangle_frame<D>& q) noexcept;

/// Whether the quadrangle of corners `p` (D coordinates each) fails an active
/// test of `t`.
template <unsigned D> inline bool quadrangle_fails(const split_thresholds& t, const double* const p[4]) noexcept {
  quadrangle_frame<D> q;
  measure_quadrangle<D>(p, q);
  return !surely_passes<D>(t, q) && fails_exactly<D>(t, q);
}

} // namespace tesskit2d
} // namespace kelm
