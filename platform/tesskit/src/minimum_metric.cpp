#include "tesskit/minimum_metric.h"

#include <cmath>
#include <cstddef>

#include "treisoma/lapack.h"

namespace kelm {
namespace tesskit {
namespace {

using metric = symmetric_fixed<double, 3>;
using matrix = double[3][3];

bool is_zero(const metric& m) noexcept {
  for (unsigned k = 0; k < metric::packed_size; ++k)
    if (m[k] != 0.0) return false;
  return true;
}

// Lower triangular L with L L^T = m. Every pivot must compare strictly above
// 0, so a NaN or a semi-definite matrix is refused.
bool cholesky(const metric& m, matrix& L) noexcept {
  const double a00 = m(0, 0);
  if (!(a00 > 0)) return false;
  L[0][0] = std::sqrt(a00);
  L[1][0] = m(1, 0) / L[0][0];
  L[2][0] = m(2, 0) / L[0][0];
  const double d1 = m(1, 1) - L[1][0] * L[1][0];
  if (!(d1 > 0)) return false;
  L[1][1] = std::sqrt(d1);
  L[2][1] = (m(2, 1) - L[2][0] * L[1][0]) / L[1][1];
  const double d2 = m(2, 2) - L[2][0] * L[2][0] - L[2][1] * L[2][1];
  if (!(d2 > 0) || !std::isfinite(d2)) return false;
  L[2][2] = std::sqrt(d2);
  L[0][1] = L[0][2] = L[1][2] = 0.0;
  return true;
}

// Inverse of a lower triangular matrix with a positive diagonal.
void invert_lower(const matrix& L, matrix& I) noexcept {
  I[0][0] = 1 / L[0][0];
  I[1][1] = 1 / L[1][1];
  I[2][2] = 1 / L[2][2];
  I[1][0] = -L[1][0] * I[0][0] * I[1][1];
  I[2][1] = -L[2][1] * I[1][1] * I[2][2];
  I[2][0] = -(L[2][0] * I[0][0] + L[2][1] * I[1][0]) * I[2][2];
  I[0][1] = I[0][2] = I[1][2] = 0.0;
}

// Simultaneous reduction. With old = L L^T, the matrix C = L^-1 new L^-T has
// the eigenvalues lambda of old^-1 new and orthonormal vectors Q; the common
// directions are P = L^-T Q, in which old has the form 1 and new the form
// lambda. Keeping max(1, lambda) in each and going back,
//   result = P^-T D P^-1 = (L Q) D (L Q)^T,
// so no inverse of P is ever formed.
bool intersect(const metric& a, const metric& b, metric& out) noexcept {
  matrix L, I;
  if (!cholesky(a, L)) return false;
  invert_lower(L, I);
  // I_new = I * new, then C = I_new * I^T in the packed upper storage of dspev.
  matrix I_new;
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j < 3; ++j)
      I_new[i][j] = I[i][0] * b(0, j) + I[i][1] * b(1, j) + I[i][2] * b(2, j);
  double c[6];
  for (unsigned j = 0; j < 3; ++j)
    for (unsigned i = 0; i <= j; ++i)
      c[j * (j + 1) / 2 + i] = I_new[i][0] * I[j][0] + I_new[i][1] * I[j][1] + I_new[i][2] * I[j][2];
  double w[3] = {0, 0, 0}, z[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0}, work[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
  if (lapack::dspev('V', 'U', 3, c, w, z, 3, work) != 0) return false;
  // G = L Q, column k for eigenvalue k.
  matrix G;
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned k = 0; k < 3; ++k) {
      const double* q = z + std::size_t(3) * k;
      G[i][k] = L[i][0] * q[0] + L[i][1] * q[1] + L[i][2] * q[2];
    }
  double d[3];
  for (unsigned k = 0; k < 3; ++k) {
    if (!(w[k] > 0) || !std::isfinite(w[k])) return false;
    d[k] = w[k] > 1 ? w[k] : 1.0;
  }
  metric r;
  for (unsigned j = 0; j < 3; ++j)
    for (unsigned i = 0; i <= j; ++i) {
      const double v = d[0] * G[i][0] * G[j][0] + d[1] * G[i][1] * G[j][1] + d[2] * G[i][2] * G[j][2];
      if (!std::isfinite(v)) return false;
      r(i, j) = v;
    }
  out = r;
  return true;
}

} // namespace

bool minimum_metric(const metric& new_metric, const metric& old_metric, metric& result) noexcept {
  if (is_zero(old_metric)) {
    result = new_metric;
    return true;
  }
  if (is_zero(new_metric)) {
    result = old_metric;
    return true;
  }
  // The inputs are read before `result` is written, so it may alias either.
  matrix unused;
  const bool new_definite = cholesky(new_metric, unused);
  metric r;
  if (new_definite && intersect(old_metric, new_metric, r)) {
    result = r;
    return true;
  }
  result = cholesky(old_metric, unused) ? old_metric : new_metric;
  return false;
}

} // namespace tesskit
} // namespace kelm
