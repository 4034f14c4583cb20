#include "extrusion/rotation_tensor.h"

#include <cmath>

namespace kelm {
namespace tesskit2d {

void rotation_tensor(const vector_fixed<double, 3>& w, double (&M)[9]) noexcept {
  const double x = w[0] * w[0] + w[1] * w[1] + w[2] * w[2];
  const double theta = std::sqrt(x);
  double a, b;
  if (theta > 0.1) {
    a = std::sin(theta) / theta;
    b = (1 - std::cos(theta)) / x;
  } else {
    a = 1 - x / 6 + x * x / 120 - x * x * x / 5040 + x * x * x * x / 362880 - x * x * x * x * x / 39916800;
    b = 0.5 - x / 24 + x * x / 720 - x * x * x / 40320 + x * x * x * x / 3628800;
  }
  const double S[9] = {0, -w[2], w[1], w[2], 0, -w[0], -w[1], w[0], 0};
  for (unsigned r = 0; r < 3; ++r)
    for (unsigned c = 0; c < 3; ++c) {
      double ss = 0;
      for (unsigned k = 0; k < 3; ++k)
        ss += S[3 * r + k] * S[3 * k + c];
      M[3 * r + c] = (r == c ? 1.0 : 0.0) + a * S[3 * r + c] + b * ss;
    }
}

} // namespace tesskit2d
} // namespace kelm
