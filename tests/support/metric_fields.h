#pragma once
// Metrics with known sizes along known axes, for tests of metric fields.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tesskit2d/mesh.h"

namespace tk_test {

using metric2 = kelm::symmetric_fixed<double, 2>;
using metric3 = kelm::symmetric_fixed<double, 3>;

/// R diag(1 / h0^2, 1 / h1^2) R^T, R the rotation by `angle`: size h0 along
/// (cos, sin), h1 across it.
inline metric2 sized2(double h0, double h1, double angle = 0) {
  const double c = std::cos(angle), s = std::sin(angle), e0 = 1 / (h0 * h0), e1 = 1 / (h1 * h1);
  return metric2{{e0 * c * c + e1 * s * s, (e0 - e1) * c * s, e0 * s * s + e1 * c * c}};
}

/// The same in 3D: sizes h0, h1, h2 along the axes turned by `angle` about
/// (1, 1, 1) / sqrt(3) (Rodrigues' formula).
inline metric3 sized3(double h0, double h1, double h2, double angle = 0) {
  const double k = 1 / std::sqrt(3.0), c = std::cos(angle), s = std::sin(angle);
  const double K[3][3] = {{0, -k, k}, {k, 0, -k}, {-k, k, 0}};
  double R[3][3];
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j < 3; ++j)
      R[i][j] = (i == j) + s * K[i][j] + (1 - c) * (K[i][0] * K[0][j] + K[i][1] * K[1][j] + K[i][2] * K[2][j]);
  const double e[3] = {1 / (h0 * h0), 1 / (h1 * h1), 1 / (h2 * h2)};
  metric3 m;
  for (unsigned i = 0; i < 3; ++i)
    for (unsigned j = 0; j <= i; ++j)
      m(i, j) = e[0] * R[i][0] * R[j][0] + e[1] * R[i][1] * R[j][1] + e[2] * R[i][2] * R[j][2];
  return m;
}

/// Writes `m` into column `j` of a 3- or 6-row field, or reads it back.
template <class M> void put(kelm::dense2D<double>& field, unsigned j, const M& m) {
  std::copy(m.m, m.m + M::packed_size, field.column(j));
}
template <class M> M column_of(const kelm::dense2D<double>& field, unsigned j) {
  M m;
  std::copy(field.column(j), field.column(j) + M::packed_size, m.m);
  return m;
}

/// Entry by entry within a relative 1e-12.
template <class M>::testing::AssertionResult near(const M& got, const M& want, double tol = 1e-12) {
  for (unsigned k = 0; k < M::packed_size; ++k)
    if (!(std::fabs(got[k] - want[k]) <= tol * (1 + std::fabs(want[k]))))
      return ::testing::AssertionFailure() << "entry " << k << ": " << got[k] << " vs " << want[k];
  return ::testing::AssertionSuccess();
}

} // namespace tk_test
