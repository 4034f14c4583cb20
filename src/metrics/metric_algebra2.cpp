#include <algorithm>
#include <cmath>

#include "foundation/tolerances.h"
#include "metrics/metric_algebra.h"

namespace kelm {
namespace tesskit2d {

bool eigenvalues_sym2(double a, double b, double c, double& l0, double& l1) noexcept {
  const double det = a * c - b * b;
  const double D = std::sqrt(4 * b * b + (a - c) * (a - c));
  l0 = (a + c - D) / 2;
  l1 = l0 + D;
  // When one eigenvalue is tiny beside the other, a + c - D has cancelled;
  // the product l0 l1 = det recovers it to full relative precision.
  if (std::fabs(l0) < std::fabs(l1) * tolerance::eigen_cancellation)
    l0 = det / l1;
  else if (std::fabs(l1) < std::fabs(l0) * tolerance::eigen_cancellation)
    l1 = det / l0;
  return std::isfinite(l0) && std::isfinite(l1);
}

bool eigen_sym2(double a, double b, double c, double& l0, double& l1, double vec0[2], double vec1[2],
                bool normalise) noexcept {
  if (!eigenvalues_sym2(a, b, c, l0, l1)) return false;
  // Both rows of A - l0 I give a vector of its kernel: (b, l0 - a) from the
  // first, (l0 - c, b) from the second. The longer one is the better
  // conditioned.
  const double p = l0 - a, q = l0 - c;
  vec0[0] = b, vec0[1] = p;
  if (p * p < q * q) vec0[0] = q, vec0[1] = b;
  const double n2 = b * b + std::max(p * p, q * q);
  if (n2 > std::max(a * a, c * c) * tolerance::flat_squared) {
    if (normalise) {
      const double f = 1 / std::sqrt(n2);
      vec0[0] *= f, vec0[1] *= f;
    }
    vec1[0] = -vec0[1], vec1[1] = vec0[0];
  } else {
    // A multiple of the identity to working precision: every direction is
    // an eigenvector, and the axes are taken.
    vec0[0] = 1.0, vec0[1] = 0.0;
    vec1[0] = -0.0, vec1[1] = 1.0;
  }
  return true;
}

bool reduce_pair2(const metric2& A, const metric2& B, double eigenvalues[2], double vectors[2][2],
                  bool normalise) noexcept {
  const double a = A[0], b = A[1], c = A[2], p = B[0], q = B[1], r = B[2];
  const double delta = a * c - b * b;
  if (a == 0 || !(delta > 0)) return false;
  // K = [[s, -b], [0, a]] with s = sqrt(det A) makes A a multiple of the
  // identity: K^T A K = a det(A) I. The eigenvectors of K^T B K, mapped by
  // K, are then the common directions, and its eigenvalues divided by
  // a det(A) those of A^-1 B. Only a square root is needed, no inverse.
  const double s = std::sqrt(delta), t1 = q * a, t2 = t1 - p * b;
  if (!eigen_sym2(p * delta, t2 * s, a * a * r - (t2 + t1) * b, eigenvalues[0], eigenvalues[1], vectors[0], vectors[1],
                  false))
    return false;
  const double scale = delta * a;
  for (unsigned k = 0; k < 2; ++k) {
    eigenvalues[k] /= scale;
    double* v = vectors[k];
    const double x = v[0] * s - v[1] * b, y = v[1] * a;
    v[0] = x, v[1] = y;
    if (normalise) {
      const double n2 = x * x + y * y;
      if (n2 != 0 && n2 != 1) {
        const double f = 1 / std::sqrt(n2);
        v[0] *= f, v[1] *= f;
      }
    }
  }
  return true;
}

bool prepare_pair2(const metric2& A, const metric2& B, prepared_pair2& p) noexcept {
  double e[2], x[2][2];
  if (!reduce_pair2(A, B, e, x, true)) return false;
  // The rows w_k of the inverse of [x_0 x_1] rebuild the metric from its
  // eigenvalues d in the common directions: M = sum d_k w_k w_k^T, since
  // w_k . x_i is 1 for k = i and 0 otherwise.
  const double det = x[0][0] * x[1][1] - x[1][0] * x[0][1];
  if (det == 0) return false;
  p.w[0][0] = x[1][1] / det, p.w[0][1] = -x[1][0] / det;
  p.w[1][0] = -x[0][1] / det, p.w[1][1] = x[0][0] / det;
  // Forms of A along the common directions; B's are the same times e.
  double mu[2], lambda[2];
  for (unsigned k = 0; k < 2; ++k) {
    const double u = x[k][0], v = x[k][1];
    mu[k] = A[0] * u * u + 2 * A[1] * u * v + A[2] * v * v;
    lambda[k] = mu[k] * e[k];
  }
  if (!eigenvalues_valid(mu, 2) || !eigenvalues_valid(lambda, 2)) return false;
  sizes_from_eigen2(mu, p.ha);
  sizes_from_eigen2(lambda, p.hb);
  return true;
}

bool interpolate_prepared2(double t, const prepared_pair2& p, metric2& out) noexcept {
  double h[2], d[2];
  for (unsigned k = 0; k < 2; ++k)
    h[k] = p.ha[k] + t * (p.hb[k] - p.ha[k]);
  // Between 0 and 1 h lies between two valid sizes; beyond, an
  // extrapolation can cross zero.
  if ((t < 0 || t > 1) && !eigenvalues_valid(h, 2)) {
    out[0] = out[1] = out[2] = 0.0;
    return false;
  }
  eigen_from_sizes2(h, d);
  const auto& w = p.w;
  out[0] = d[0] * w[0][0] * w[0][0] + d[1] * w[1][0] * w[1][0];
  out[1] = d[0] * w[0][1] * w[0][0] + d[1] * w[1][1] * w[1][0];
  out[2] = d[0] * w[0][1] * w[0][1] + d[1] * w[1][1] * w[1][1];
  return true;
}

bool interpolate_metric2(double t, const metric2& A, const metric2& B, metric2& out) noexcept {
  if (std::fabs(t) < tolerance::end_parameter) {
    out = A;
    return true;
  }
  if (std::fabs(1 - t) < tolerance::end_parameter) {
    out = B;
    return true;
  }
  prepared_pair2 p;
  return prepare_pair2(A, B, p) && interpolate_prepared2(t, p, out);
}

} // namespace tesskit2d
} // namespace kelm
