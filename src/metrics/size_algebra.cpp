#include <cmath>
#include <limits>

#include "foundation/tolerances.h"
#include "metrics/metric_algebra.h"

namespace kelm {
namespace tesskit2d {
namespace {

constexpr double largest_double = std::numeric_limits<double>::max();

// The common case is one square root per entry; the sentinels of infinite
// and zero size are sorted out only when some eigenvalue is out of range.
template <unsigned n> void sizes_from_eigen(const double* e, double* h) noexcept {
  if (eigenvalues_valid(e, n)) {
    for (unsigned i = 0; i < n; ++i)
      h[i] = 1 / std::sqrt(e[i]);
    return;
  }
  for (unsigned i = 0; i < n; ++i)
    h[i] = e[i] == 0 ? largest_double : e[i] == largest_double ? 0.0 : 1 / std::sqrt(e[i]);
}

// Sizes beyond the square roots of the extreme normal doubles would
// overflow or underflow in 1 / h^2; they map to the sentinels instead.
// A size inside the range is the common case and takes the first test only.
template <unsigned n> void eigen_from_sizes(const double* h, double* e) noexcept {
  for (unsigned i = 0; i < n; ++i) {
    if (h[i] < smallest_size)
      e[i] = largest_double;
    else if (h[i] <= largest_size)
      e[i] = 1 / (h[i] * h[i]);
    else
      e[i] = 0.0; // above the range, or not a number
  }
}

} // namespace

bool eigenvalues_valid(const double* e, unsigned n) noexcept {
  for (unsigned i = 0; i < n; ++i)
    if (!(e[i] > 0 && e[i] < largest_double)) return false;
  return true;
}

void sizes_from_eigen2(const double e[2], double h[2]) noexcept { sizes_from_eigen<2>(e, h); }
void sizes_from_eigen3(const double e[3], double h[3]) noexcept { sizes_from_eigen<3>(e, h); }
void eigen_from_sizes2(const double h[2], double e[2]) noexcept { eigen_from_sizes<2>(h, e); }
void eigen_from_sizes3(const double h[3], double e[3]) noexcept { eigen_from_sizes<3>(h, e); }

bool interpolate_size(double t, const double& a, const double& b, double& out) noexcept {
  out = 0.0;
  double v;
  if (std::fabs(t) < tolerance::end_parameter)
    v = a;
  else if (std::fabs(1 - t) < tolerance::end_parameter)
    v = b;
  else {
    if (!(a > 0 && b > 0)) return false;
    v = (b - a) * t + a;
  }
  out = v;
  return v > 0 && v < largest_double;
}

} // namespace tesskit2d
} // namespace kelm
