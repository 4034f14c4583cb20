#pragma once
// Intersection of two 3D metrics.

#include "tesskit/export.h"

#include "treisoma/fixed.h"

namespace kelm {
namespace tesskit {

/// The intersection of two 3D metrics: the metric whose unit ball is the
/// largest ellipsoid inside both unit balls, as simultaneous reduction gives
/// it. With P the common eigenvectors of old^-1 * new (each column scaled so
/// that its quadratic form in `old_metric` is 1), the result keeps in each
/// direction of P the larger of the two quadratic forms and is rebuilt from
/// them: result = P^-T diag(max(1, lambda_i)) P^-1, lambda_i being the
/// eigenvalues of old^-1 * new. In sizes: along each common direction the
/// smaller of the two sizes h = 1 / sqrt(form) is kept.
///
/// Arguments (note the order: the new metric comes first):
/// - `new_metric`: in, packed as `symmetric_fixed<double, 3>`: m00, m10,
///   m11, m20, m21, m22.
/// - `old_metric`: in, packed the same way; typically the value already in
///   a field, where a zero column means "no prescription yet".
/// - `result`: out, always written (whatever the return value). It may be
///   the same object as either argument: both are read before it is
///   written.
///
/// "Positive definite" below means that the Cholesky factorisation of the
/// metric succeeds with every pivot strictly above 0 and finite; a NaN
/// anywhere on the way makes a metric not positive definite. A metric is
/// "zero" when all six entries compare equal to 0 (-0.0 included).
///
/// Outcomes, tested in this order:
/// - `old_metric` is zero: `result` is `new_metric` exactly, whatever it
///   holds (NaN included), and true.
/// - `new_metric` is zero: `result` is `old_metric` exactly, and true.
/// - both positive definite, the eigen solver succeeds, every eigenvalue of
///   old^-1 * new is finite and above 0, and every entry of the result is
///   finite: the intersection, and true.
/// - any other case (a metric that is indefinite, semi-definite but not
///   zero, holds a NaN or an infinity; the eigen solver failing; an
///   overflow in the result): `result` is a copy of `old_metric` if that
///   one is positive definite and of `new_metric` otherwise, and false.
///
/// Properties: symmetric in its two arguments up to rounding; idempotent
/// (M with M gives M, up to rounding); for coaxial diagonal metrics the
/// result is diagonal with the larger of each pair of eigenvalues.
///
/// No allocation, no state, no exception; safe to call from several threads
/// on separate objects.
///
/// \code
///   symmetric_fixed<double, 3> wall = {{100, 0, 1, 0, 0, 1}}, field = {};
///   minimum_metric(wall, field, field); // field was zero: it becomes wall
///   // Sizes 0.1 along x from the wall, 0.5 everywhere from the field:
///   symmetric_fixed<double, 3> coarse = {{4, 0, 4, 0, 0, 4}}, both;
///   minimum_metric(coarse, wall, both); // true; both == {100, 0, 4, 0, 0, 4}
/// \endcode
TESSKIT_EXPORT bool minimum_metric(const symmetric_fixed<double, 3>& new_metric,
                                   const symmetric_fixed<double, 3>& old_metric,
                                   symmetric_fixed<double, 3>& result) noexcept;

} // namespace tesskit
} // namespace kelm
