#pragma once
// Intersection of two 3D metrics.

#include "tesskit/export.h"

#include "treisoma/fixed.h"

namespace kelm {
namespace tesskit {

/// The intersection of two metrics: the metric whose unit ball is the
/// largest ellipsoid inside both unit balls, as simultaneous reduction gives
/// it. With P the common eigenvectors of old^-1 * new (each column scaled so
/// that its quadratic form in `old_metric` is 1), the result keeps in each
/// direction of P the larger of the two quadratic forms and is rebuilt from
/// them: result = P^-T diag(max(1, lambda_i)) P^-1, lambda_i being the
/// eigenvalues of old^-1 * new. In sizes: along each common direction the
/// smaller of the two sizes h = 1 / sqrt(form) is kept.
///
/// Metrics are packed as `symmetric_fixed<double, 3>`: m00, m10, m11, m20,
/// m21, m22.
///
/// Outcomes, tested in this order:
/// - `old_metric` is the zero matrix (all six entries compare equal to 0):
///   `result` is `new_metric` exactly, whatever it holds, and true. A column
///   of zeros thus means "no prescription yet".
/// - `new_metric` is the zero matrix: `result` is `old_metric` exactly, and
///   true.
/// - both positive definite and the reduction succeeds with a finite result:
///   the intersection, and true.
/// - any other case (a metric that is indefinite, semi-definite but not
///   zero, holds a NaN or an infinity; the eigen solver failing): `result` is
///   a copy of `old_metric` if that one is positive definite and of
///   `new_metric` otherwise, and false.
///
/// Properties: symmetric in its two arguments up to rounding; idempotent
/// (M with M gives M, up to rounding); for coaxial diagonal metrics the
/// result is diagonal with the larger of each pair of eigenvalues.
///
/// `result` may be the same object as either argument. No allocation, no
/// state; safe to call from several threads on separate objects.
///
/// \code
///   symmetric_fixed<double, 3> wall = {{100, 0, 1, 0, 0, 1}}, field = {};
///   minimum_metric(wall, field, field); // field was zero: it becomes wall
/// \endcode
TESSKIT_EXPORT bool minimum_metric(const symmetric_fixed<double, 3>& new_metric,
                                   const symmetric_fixed<double, 3>& old_metric,
                                   symmetric_fixed<double, 3>& result) noexcept;

} // namespace tesskit
} // namespace kelm
