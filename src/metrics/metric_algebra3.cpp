#include <cmath>

#include "foundation/tolerances.h"
#include "metrics/metric_algebra.h"
#include "treisoma/lapack.h"

namespace kelm {
namespace tesskit2d {
namespace {

void scale_to_unit(double* v) noexcept {
  const double n2 = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
  if (n2 == 0 || n2 == 1) return;
  const double f = 1 / std::sqrt(n2);
  v[0] *= f, v[1] *= f, v[2] *= f;
}

void cross(const double* a, const double* b, double* out) noexcept {
  out[0] = a[1] * b[2] - a[2] * b[1];
  out[1] = a[2] * b[0] - a[0] * b[2];
  out[2] = a[0] * b[1] - a[1] * b[0];
}

} // namespace

bool cholesky_sym2(double& p, double& q, double& r) noexcept {
  if (p == 0) {
    if (q != 0 || !(r >= 0)) return false;
    r = std::sqrt(r);
    return true;
  }
  if (!(p > 0)) return false;
  const double f = p * r - q * q;
  if (f < 0) return false;
  p = std::sqrt(p);
  q = q / p;
  r = std::sqrt(f) / p;
  return true;
}

bool cholesky_sym3(const metric3& M, double L[3][3]) noexcept {
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j < 3; ++j)
      L[i][j] = j <= i ? M(i, j) : 0.0;
  // A metric that prescribes nothing along the first or the second axis
  // still has a factor: that of the 2 by 2 matrix that remains.
  if (M(0, 0) == 0 && M(1, 0) == 0 && M(2, 0) == 0) return cholesky_sym2(L[1][1], L[2][1], L[2][2]);
  if (M(1, 0) == 0 && M(1, 1) == 0 && M(2, 1) == 0) return cholesky_sym2(L[0][0], L[2][0], L[2][2]);
  const double m00 = M(0, 0);
  if (!(m00 > 0)) return false;
  const double d = M(1, 1) * m00 - M(1, 0) * M(1, 0);
  if (!(d > 0)) return false;
  const double e = M(2, 1) * m00 - M(2, 0) * M(1, 0);
  const double sd = std::sqrt(d);
  L[0][0] = std::sqrt(m00);
  L[1][0] = M(1, 0) / L[0][0];
  L[1][1] = sd / L[0][0];
  L[2][0] = M(2, 0) / L[0][0];
  L[2][1] = e / (sd * L[0][0]);
  const double f = M(2, 2) - (L[2][1] * L[2][1] + L[2][0] * L[2][0]);
  if (!(f >= 0)) return false;
  L[2][2] = std::sqrt(f);
  return true;
}

void congruence_sym3(double c, const metric3& S, const double T[3][3], metric3& out) noexcept {
  if (c == 0) return;
  double T_times_s[3][3];
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j < 3; ++j)
      T_times_s[i][j] = c * (T[i][0] * S(0, j) + T[i][1] * S(1, j) + T[i][2] * S(2, j));
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j <= i; ++j)
      out(i, j) += T_times_s[i][0] * T[j][0] + T_times_s[i][1] * T[j][1] + T_times_s[i][2] * T[j][2];
}

bool reduce_pair3(const metric3& A, const metric3& B, double eigenvalues[3], double vectors[3][3],
                  bool normalise) noexcept {
  double L[3][3];
  if (!cholesky_sym3(A, L)) return false;
  const double det = L[0][0] * L[1][1] * L[2][2];
  if (det == 0) return false;
  // T = det(L) L^-1, the adjugate of L: lower triangular and free of
  // divisions. C = T B T^T has the eigenvalues of A^-1 B times det^2, and
  // T^T maps its eigenvectors to the common directions.
  const double T[3][3] = {{L[1][1] * L[2][2], 0, 0},
                          {-L[1][0] * L[2][2], L[0][0] * L[2][2], 0},
                          {L[1][0] * L[2][1] - L[1][1] * L[2][0], -L[0][0] * L[2][1], L[0][0] * L[1][1]}};
  metric3 C = {{0, 0, 0, 0, 0, 0}};
  congruence_sym3(1.0, B, T, C);
  double z[3][3] = {}, work[10] = {};
  eigenvalues[0] = eigenvalues[1] = eigenvalues[2] = 0.0;
  if (lapack::dspev('V', 'U', 3, C.m, eigenvalues, z[0], 3, work) != 0) return false;
  if (normalise) cross(z[0], z[1], z[2]); // an exactly right-handed basis
  const double det2 = det * det;
  for (unsigned k = 0; k < 3; ++k) {
    eigenvalues[k] /= det2;
    double* v = vectors[k];
    for (unsigned i = 0; i < 3; ++i)
      v[i] = T[0][i] * z[k][0] + T[1][i] * z[k][1] + T[2][i] * z[k][2];
    if (normalise) scale_to_unit(v);
  }
  return true;
}

bool prepare_pair3(const metric3& A, const metric3& B, prepared_pair3& p) noexcept {
  double e[3], x[3][3];
  if (!reduce_pair3(A, B, e, x, true)) return false;
  // Dual basis: the rows of the inverse of [x_0 x_1 x_2] are the cross
  // products of the other two columns over the determinant. A singular
  // basis keeps the cofactors as they are.
  auto& w = p.w;
  cross(x[1], x[2], w[0]);
  cross(x[2], x[0], w[1]);
  cross(x[0], x[1], w[2]);
  const double det = x[0][0] * w[0][0] + x[0][1] * w[0][1] + x[0][2] * w[0][2];
  if (det != 0)
    for (auto& row : w)
      for (double& v : row)
        v /= det;
  double mu[3], lambda[3];
  for (unsigned k = 0; k < 3; ++k) {
    const double* v = x[k];
    mu[k] = A(0, 0) * v[0] * v[0] + A(1, 1) * v[1] * v[1] + A(2, 2) * v[2] * v[2] +
            2 * (A(1, 0) * v[0] * v[1] + A(2, 0) * v[0] * v[2] + A(2, 1) * v[1] * v[2]);
    lambda[k] = mu[k] * e[k];
  }
  if (!eigenvalues_valid(mu, 3) || !eigenvalues_valid(lambda, 3)) return false;
  sizes_from_eigen3(mu, p.ha);
  sizes_from_eigen3(lambda, p.hb);
  return true;
}

bool interpolate_prepared3(double t, const prepared_pair3& p, metric3& out) noexcept {
  double h[3], d[3];
  for (unsigned k = 0; k < 3; ++k)
    h[k] = p.ha[k] + t * (p.hb[k] - p.ha[k]);
  if ((t < 0 || t > 1) && !eigenvalues_valid(h, 3)) {
    for (unsigned k = 0; k < 6; ++k)
      out[k] = 0.0;
    return false;
  }
  eigen_from_sizes3(h, d);
  const auto& w = p.w;
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j <= i; ++j)
      out(i, j) = d[0] * w[0][i] * w[0][j] + d[1] * w[1][i] * w[1][j] + d[2] * w[2][i] * w[2][j];
  return true;
}

bool interpolate_metric3(double t, const metric3& A, const metric3& B, metric3& out) noexcept {
  if (std::fabs(t) < tolerance::end_parameter) {
    out = A;
    return true;
  }
  if (std::fabs(1 - t) < tolerance::end_parameter) {
    out = B;
    return true;
  }
  prepared_pair3 p;
  return prepare_pair3(A, B, p) && interpolate_prepared3(t, p, out);
}

bool interpolate_metric3_at_nodes(const dense2D<double>& metrics, double t, unsigned a, unsigned b,
                                  metric3& out) noexcept {
  metric3 A, B;
  const double *pa = metrics.column(a), *pb = metrics.column(b);
  for (unsigned k = 0; k < 6; ++k)
    A[k] = pa[k], B[k] = pb[k];
  return interpolate_metric3(t, A, B, out);
}

} // namespace tesskit2d
} // namespace kelm
