#pragma once
// Values at a point of a background element from its corner values, in
// steps of two at a time by the interpolations of the metric algebra.
//
// Every combiner tests, in a fixed order, whether the point lies on an edge
// or a corner of the element, and then uses only that edge's two corners:
// a target on an edge never feels the opposite corner, and one on a corner
// gets that corner's value bit for bit through the end paths of the
// interpolation. A false result means `out` has no meaning; the caller then
// keeps the target's present value.

#include <cmath>

#include "foundation/tolerances.h"
#include "metrics/metric_algebra.h"

namespace kelm {
namespace tesskit2d {

inline bool interpolate_metric(double t, const metric2& A, const metric2& B, metric2& out) noexcept {
  return interpolate_metric2(t, A, B, out);
}
inline bool interpolate_metric(double t, const metric3& A, const metric3& B, metric3& out) noexcept {
  return interpolate_metric3(t, A, B, out);
}

/// A metric in a triangle of corner metrics M0, M1, M2 at the barycentric
/// weights (w0, w1) of corners 0 and 1. On edge (2, 1), edge (2, 0) or edge
/// (0, 1) (tested in that order), the interpolation along that edge;
/// elsewhere, with s = w0 + w1, E = the point at w1 / s from M0 to M1, then
/// the point at s from M2 to E.
template <class M> bool metric_on_T3(double w0, double w1, const M& M0, const M& M1, const M& M2, M& out) noexcept {
  if (std::fabs(w0) < tolerance::end_parameter) return interpolate_metric(w1, M2, M1, out);
  if (std::fabs(w1) < tolerance::end_parameter) return interpolate_metric(w0, M2, M0, out);
  // The edge w0 + w1 = 1 lies at |1 - w0 - w1| / sqrt(2) in the plane of the
  // weights; the bound sqrt(2) 1e-12 makes that a distance of 1e-12, as for
  // the other two edges.
  if (std::fabs(1 - (w0 + w1)) < 1.4142135623730952e-12) return interpolate_metric(w1, M0, M1, out);
  const double s = w0 + w1;
  M E;
  if (!interpolate_metric(w1 / s, M0, M1, E)) return false;
  return interpolate_metric(s, M2, E, out);
}

/// A metric in a quadrangle of corner metrics M0 .. M3 at the local
/// coordinates (u, v) of the reference square from -1 to 1. With
/// s = (u + 1) / 2 and t = (v + 1) / 2: on edge t = 0, s = 0, t = 1 or s = 1
/// (tested in that order) the interpolation along that edge; elsewhere
/// E = s from M0 to M1, F = s from M3 to M2, then t from E to F.
template <class M>
bool metric_on_Q4(double u, double v, const M& M0, const M& M1, const M& M2, const M& M3, M& out) noexcept {
  const double s = (u + 1) / 2, t = (v + 1) / 2;
  if (std::fabs(t) < tolerance::end_parameter) return interpolate_metric(s, M0, M1, out);
  if (std::fabs(s) < tolerance::end_parameter) return interpolate_metric(t, M0, M3, out);
  if (std::fabs(1 - t) < tolerance::end_parameter) return interpolate_metric(s, M3, M2, out);
  if (std::fabs(1 - s) < tolerance::end_parameter) return interpolate_metric(t, M1, M2, out);
  M E, F;
  if (!interpolate_metric(s, M0, M1, E) || !interpolate_metric(s, M3, M2, F)) return false;
  return interpolate_metric(t, E, F, out);
}

/// A size in a triangle: the edge cases of `metric_on_T3` through
/// `interpolate_size`; inside, the linear blend
/// (S1 - S2) w1 + (S0 - S2) w0 + S2 of three strictly positive sizes.
/// True when the value lies strictly between 0 and the largest double.
bool size_on_T3(double w0, double w1, double S0, double S1, double S2, double& out) noexcept;

/// A size in a quadrangle, with s = (u + 1) / 2 and t = (v + 1) / 2: on
/// edge t = 0, s = 0 or t = 1 the interpolation along it; there is no case
/// for s = 1. Elsewhere, from four strictly positive sizes, the bilinear
/// blend taken at s2 = (s + 1) / 2 and t2 = (t + 1) / 2: the coordinates
/// are mapped a second time, so s2 and t2 lie in 0.5 to 1 and the value
/// leans toward corner 2 (the centre of the element gets the value at
/// s2 = t2 = 0.75), and it does not join the values on the edges.
bool size_on_Q4(double u, double v, double S0, double S1, double S2, double S3, double& out) noexcept;

} // namespace tesskit2d
} // namespace kelm
