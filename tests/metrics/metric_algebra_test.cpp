#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "metrics/metric_algebra.h"
#include "support/arrays.h"
#include "support/metric_fields.h"

using namespace kelm::tesskit2d;
using tk_test::near;
using tk_test::sized2;
using tk_test::sized3;

namespace {

constexpr double big = std::numeric_limits<double>::max();

template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

} // namespace

TEST(MetricAlgebra, SizesInterpolateLinearlyAlongSharedAxes) {
  // Coaxial metrics, axis-aligned and turned: only sizes move, linearly in t,
  // also a little beyond the ends while they stay positive.
  for (double angle : {0.0, 0.5, 2.0})
    for (double t : {0.25, 0.5, 0.9, 1.5, -0.2}) {
      metric2 out2;
      ASSERT_TRUE(interpolate_metric2(t, sized2(1, 4, angle), sized2(3, 2.5, angle), out2));
      EXPECT_TRUE(near(out2, sized2(1 + 2 * t, 4 - 1.5 * t, angle)));
      metric3 out3;
      ASSERT_TRUE(interpolate_metric3(t, sized3(1, 4, 0.2, angle), sized3(3, 2.5, 0.3, angle), out3));
      EXPECT_TRUE(near(out3, sized3(1 + 2 * t, 4 - 1.5 * t, 0.2 + 0.1 * t, angle)));
    }
  // Equal metrics come back at every t, an isotropic one through the
  // identity branch of the 2 by 2 decomposition.
  for (double t : {0.1, 0.5, 0.7}) {
    for (const metric2& m : {sized2(2, 2), sized2(0.1, 3, 1.0)}) {
      metric2 out;
      ASSERT_TRUE(interpolate_metric2(t, m, m, out));
      EXPECT_TRUE(near(out, m));
    }
    metric3 out3;
    ASSERT_TRUE(interpolate_metric3(t, sized3(0.5, 2, 7, 1.0), sized3(0.5, 2, 7, 1.0), out3));
    EXPECT_TRUE(near(out3, sized3(0.5, 2, 7, 1.0)));
  }
}

TEST(MetricAlgebra, EndsAreCopiedBitForBitAndInvalidMetricsRefused) {
  const metric2 bad2 = {{-1, 5, std::nan("")}}, good2 = sized2(1, 2, 0.3);
  const metric3 bad3 = {{-1, 5, 0, 0, 1, -0.0}}, good3 = sized3(1, 2, 3, 0.3);
  for (double t : {0.0, 1e-13, -1e-13, 1.0, 1 - 1e-13, 1 + 1e-13}) {
    const bool first = t < 0.5;
    metric2 out2;
    metric3 out3;
    ASSERT_TRUE(interpolate_metric2(t, first ? bad2 : good2, first ? good2 : bad2, out2));
    ASSERT_TRUE(interpolate_metric3(t, first ? bad3 : good3, first ? good3 : bad3, out3));
    EXPECT_TRUE(same_bits(out2, bad2));
    EXPECT_TRUE(same_bits(out3, bad3));
  }
  // Zero, negative definite, or a zero first row (factored, then singular).
  metric2 out2;
  metric3 out3;
  EXPECT_FALSE(interpolate_metric2(0.5, metric2{{0, 0, 0}}, good2, out2));
  EXPECT_FALSE(interpolate_metric2(0.5, good2, metric2{{-1, 0, -1}}, out2));
  EXPECT_FALSE(interpolate_metric3(0.5, metric3{{-1, 0, -1, 0, 0, -1}}, good3, out3));
  double L[3][3], e[3], v[3][3];
  const metric3 flat = {{0, 0, 4, 0, 2, 5}};
  EXPECT_TRUE(cholesky_sym3(flat, L));
  EXPECT_FALSE(reduce_pair3(flat, good3, e, v, true));
  // A size driven below zero beyond the ends gives an all-zero metric.
  out2 = good2;
  out3 = good3;
  EXPECT_FALSE(interpolate_metric2(-2, sized2(1, 1), sized2(2, 2), out2));
  EXPECT_FALSE(interpolate_metric3(3, sized3(2, 1, 1), sized3(1, 1, 1), out3));
  for (unsigned k = 0; k < 6; ++k)
    EXPECT_EQ(out3[k] + (k < 3 ? out2[k] : 0.0), 0.0);
}

TEST(MetricAlgebra, ReductionsKnowTheirEigenpairs) {
  // [[2, 1], [1, 2]]: 1 along (1, -1), 3 along (1, 1).
  double l0, l1, a[2], b[2];
  ASSERT_TRUE(eigen_sym2(2, 1, 2, l0, l1, a, b, true));
  EXPECT_NEAR(l0, 1, 1e-15);
  EXPECT_NEAR(l1, 3, 1e-15);
  EXPECT_NEAR(a[0] + a[1], 0, 1e-15);
  EXPECT_NEAR(std::hypot(a[0], a[1]), 1, 1e-15);
  EXPECT_EQ(b[0], -a[1]);
  EXPECT_EQ(b[1], a[0]);
  // A multiple of the identity takes the axes, with a negative zero.
  ASSERT_TRUE(eigen_sym2(3, 0, 3, l0, l1, a, b, true));
  EXPECT_TRUE(a[0] == 1 && a[1] == 0 && b[0] == 0 && std::signbit(b[0]) && b[1] == 1);
  // Cancellation: det / l1 recovers the small eigenvalue, 1 to 1e-20.
  ASSERT_TRUE(eigenvalues_sym2(1e20, 1e10, 2, l0, l1));
  EXPECT_NEAR(l0, 1, 1e-12);
  EXPECT_FALSE(eigenvalues_sym2(big, -big, big, l0, l1));

  // Sizes 1/2 along x against sizes 1/2 along the first diagonal: A^-1 B has
  // trace 25 / 8 and determinant 1, and B x = lambda A x for both vectors.
  const metric2 A = {{4, 0, 1}}, B = {{2.5, 1.5, 2.5}};
  double e[2], x[2][2];
  ASSERT_TRUE(reduce_pair2(A, B, e, x, true));
  EXPECT_NEAR(e[0], (25 - std::sqrt(369.0)) / 16, 1e-14);
  EXPECT_NEAR(e[1], (25 + std::sqrt(369.0)) / 16, 1e-14);
  for (unsigned k = 0; k < 2; ++k) {
    EXPECT_NEAR(std::hypot(x[k][0], x[k][1]), 1, 1e-15);
    EXPECT_NEAR(B[0] * x[k][0] + B[1] * x[k][1], e[k] * A[0] * x[k][0], 1e-14);
    EXPECT_NEAR(B[1] * x[k][0] + B[2] * x[k][1], e[k] * A[2] * x[k][1], 1e-14);
  }
  EXPECT_FALSE(reduce_pair2(metric2{{0, 0, 1}}, B, e, x, true));

  // diag(1, 4, 9) against 2 I: 2/9 along z, 1/2 along y, 2 along x.
  double e3[3], x3[3][3];
  ASSERT_TRUE(reduce_pair3(metric3{{1, 0, 4, 0, 0, 9}}, metric3{{2, 0, 2, 0, 0, 2}}, e3, x3, true));
  const double want[3] = {2.0 / 9, 0.5, 2};
  for (unsigned k = 0; k < 3; ++k) {
    EXPECT_NEAR(e3[k], want[k], 1e-15);
    EXPECT_NEAR(std::fabs(x3[k][2 - k]), 1, 1e-15);
  }
}

TEST(MetricAlgebra, FactorsAndCongruences) {
  double p = 0, q = 0, r = 4;
  EXPECT_TRUE(cholesky_sym2(p, q, r) && r == 2);
  p = 4, q = 2, r = 5;
  EXPECT_TRUE(cholesky_sym2(p, q, r) && p == 2 && q == 1 && r == 2);
  const double refused[][3] = {{0, 1, 1}, {0, 0, -1}, {-1, 0, 1}, {1, 2, 1}};
  for (const auto& c : refused) {
    p = c[0], q = c[1], r = c[2];
    EXPECT_FALSE(cholesky_sym2(p, q, r));
  }
  // L = [[2, 0, 0], [1, 3, 0], [-1, 2, 1]] and L L^T; then the zero-row
  // forms, each factoring what remains.
  const struct {
    metric3 m;
    double L[3][3];
  } cases[] = {{{{4, 2, 10, -2, 5, 6}}, {{2, 0, 0}, {1, 3, 0}, {-1, 2, 1}}},
               {{{0, 0, 4, 0, 2, 5}}, {{0, 0, 0}, {0, 2, 0}, {0, 1, 2}}},
               {{{4, 0, 0, 2, 0, 5}}, {{2, 0, 0}, {0, 0, 0}, {1, 0, 2}}}};
  for (const auto& c : cases) {
    double L[3][3];
    ASSERT_TRUE(cholesky_sym3(c.m, L));
    for (unsigned i = 0; i < 3; ++i)
      for (unsigned j = 0; j < 3; ++j)
        EXPECT_NEAR(L[i][j], c.L[i][j], 1e-15) << i << j;
  }
  double L[3][3];
  EXPECT_FALSE(cholesky_sym3(metric3{{1, 2, 1, 0, 0, 1}}, L));

  // out += T (2 S) T^T with S = I and T of rows (1, 0, 0), (1, 1, 0),
  // (0, 1, 1): 2 T T^T = [[2, 2, 0], [2, 4, 2], [0, 2, 4]].
  const double T[3][3] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 1}};
  metric3 out = {{1, 1, 1, 1, 1, 1}};
  congruence_sym3(2, metric3{{1, 0, 1, 0, 0, 1}}, T, out);
  EXPECT_TRUE(near(out, metric3{{3, 3, 5, 1, 3, 5}}));
  congruence_sym3(0, metric3{{std::nan(""), 0, 0, 0, 0, 0}}, T, out);
  EXPECT_TRUE(near(out, metric3{{3, 3, 5, 1, 3, 5}}));
}

TEST(MetricAlgebra, SizeSentinelsAndScalarInterpolation) {
  double h[3], e[3];
  const double eig[3] = {0, big, 4};
  sizes_from_eigen3(eig, h);
  EXPECT_TRUE(h[0] == big && h[1] == 0 && h[2] == 0.5);
  const double sizes[3] = {1e-200, 1e200, 0.5};
  eigen_from_sizes3(sizes, e);
  EXPECT_TRUE(e[0] == big && e[1] == 0 && e[2] == 4);
  EXPECT_FALSE(eigenvalues_valid(eig, 3));
  EXPECT_TRUE(eigenvalues_valid(eig + 2, 1));

  const struct {
    double t, a, b;
    bool ok;
    double out;
  } cases[] = {
      {0.25, 2, 4, true, 2.5},      {1e-13, -1, 4, false, -1}, // an end is written, even a bad one
      {1, 2, 0, false, 0},          {0.5, -1, 4, false, 0},    // inside: both must be positive
      {0.5, 2, big, true, big / 2}, {3, 2, 1, false, -1},      // extrapolated below 0
  };
  for (const auto& c : cases) {
    double out = 7;
    EXPECT_EQ(interpolate_size(c.t, c.a, c.b, out), c.ok) << c.t;
    EXPECT_EQ(out, c.out) << c.t;
  }
}

TEST(MetricAlgebra, ColumnsOfAStridedArray) {
  const metric3 a = sized3(1, 2, 3, 0.4), b = sized3(2, 2, 1, 0.4);
  auto m = tk_test::strided(tk_test::coords(
      {{9, 9, 9, 9, 9, 9}, {a[0], a[1], a[2], a[3], a[4], a[5]}, {b[0], b[1], b[2], b[3], b[4], b[5]}}));
  metric3 out;
  ASSERT_TRUE(interpolate_metric3_at_nodes(m, 0.5, 1, 2, out));
  EXPECT_TRUE(near(out, sized3(1.5, 2, 2, 0.4)));
}
