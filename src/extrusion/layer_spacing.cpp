#include "extrusion/layer_spacing.h"

#include <cmath>
#include <cstdint>

namespace kelm {
namespace tesskit2d {

double layer_count(double length, double h0, double h1, bool ratio_when_long) noexcept {
  // Equal sizes and NaN keep h0 as the smaller one.
  const double hmin = h1 < h0 ? h1 : h0;
  const double hmax = h1 < h0 ? h0 : h1;
  const double r = (hmax - hmin) / hmin;
  // g = r / ln(1 + r) turns hmin into the logarithmic mean. Near r = 0 the
  // quotient loses its digits, so its series in x = r / 2 is used there,
  // cut after the fourth power: 1 + x - x^2/3 + x^3/3 - 19/45 x^4.
  double g;
  if (r < 0.1) {
    const double x = r / 2;
    g = 1 + x * (1 - x * (0.3333333333333333 - x * (0.3333333333333333 - 0.42222222222222217 * x)));
  } else {
    g = r / std::log(1 + r);
  }
  const double hbar = hmin * g;
  if (ratio_when_long && length > hbar) return hbar / length;
  if (hbar > 0) return length / hbar;
  return 0;
}

unsigned nearest_multiple(double x, unsigned m) noexcept {
  // The quotient is truncated to 64 bits as the processor does it, where a
  // value out of range (or NaN) reads as the lowest 64-bit integer, whose
  // low 32 bits are 0.
  const double q = x / m;
  const std::int64_t whole = (q > -9.2e18 && q < 9.2e18) ? static_cast<std::int64_t>(q) : INT64_MIN;
  const unsigned k = static_cast<unsigned>(static_cast<std::uint64_t>(whole) * m);
  const unsigned upper = k + m;
  const unsigned p = k * upper;
  return x * x > static_cast<double>(p) ? upper : k;
}

double layer_fraction(double t, double h0, double h1) noexcept {
  if (h1 == h0) return t;
  const double q = h1 / h0;
  double s;
  if (q > 1.001 || q < 0.999) {
    s = (std::pow(q, t) - 1) / (q - 1);
  } else {
    // Binomial series of ((1 + d)^t - 1) / d, which stays accurate as the
    // denominator vanishes.
    const double d = q - 1;
    const double a = t - 1, b = t - 2, c = t - 3;
    s = t * (1 + a * d / 2 + a * b * d * d / 6 + a * b * c * d * d * d / 24);
  }
  if (t >= 0 && t <= 1) {
    if (s < 0) s = 0;
    if (s > 1) s = 1;
  }
  return s;
}

} // namespace tesskit2d
} // namespace kelm
