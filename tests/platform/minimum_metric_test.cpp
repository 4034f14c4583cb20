#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tesskit/minimum_metric.h"

using kelm::symmetric_fixed;
using kelm::tesskit::minimum_metric;
using metric = symmetric_fixed<double, 3>;

namespace {

// m00, m10, m11, m20, m21, m22.
metric packed(double m00, double m10, double m11, double m20, double m21, double m22) {
  return metric{{m00, m10, m11, m20, m21, m22}};
}

void expect_near(const metric& got, const metric& want, double tol) {
  for (unsigned k = 0; k < 6; ++k)
    EXPECT_NEAR(got[k], want[k], tol) << "entry " << k;
}

void expect_same(const metric& got, const metric& want) {
  for (unsigned k = 0; k < 6; ++k)
    EXPECT_EQ(got[k], want[k]) << "entry " << k;
}

// Eigenvalues of a symmetric 2 by 2 block [[a, b], [b, c]].
void eigen2(double a, double b, double c, double& lo, double& hi) {
  const double r = std::sqrt(0.25 * (a - c) * (a - c) + b * b);
  lo = 0.5 * (a + c) - r;
  hi = 0.5 * (a + c) + r;
}

} // namespace

TEST(MinimumMetric, KeepsTheSmallerSizeAlongEachCommonDirection) {
  // Coaxial diagonal metrics: the larger eigenvalue on each axis.
  metric out;
  ASSERT_TRUE(minimum_metric(packed(4, 0, 1, 0, 0, 9), packed(1, 0, 4, 0, 0, 1), out));
  expect_near(out, packed(4, 0, 4, 0, 0, 9), 1e-14);

  // An isotropic size 1 met by sizes 1/2 and 2 along the diagonals of the xy
  // plane, R diag(4, 1/4) R^T with R the 45 degree rotation: the diagonal
  // (1, 1) takes 1/2, the other keeps 1, and R diag(4, 1) R^T comes out.
  const metric unit = packed(1, 0, 1, 0, 0, 1), rotated = packed(2.125, 1.875, 2.125, 0, 0, 1);
  for (int swap = 0; swap < 2; ++swap) {
    ASSERT_TRUE(swap ? minimum_metric(unit, rotated, out) : minimum_metric(rotated, unit, out));
    expect_near(out, packed(2.5, 1.5, 2.5, 0, 0, 1), 1e-14);
  }

  // Idempotent: M with M gives M.
  const metric m = packed(3, 1, 2, 0.5, -0.25, 5);
  ASSERT_TRUE(minimum_metric(m, m, out));
  expect_near(out, m, 1e-14);
}

TEST(MinimumMetric, AxesAt45DegreesGiveTheTightestMetricAboveBoth) {
  // old has sizes 1/2 along x and 1 along y; new has the same sizes turned
  // by 45 degrees. In the xy plane the reduction of old^-1 new has the
  // eigenvalues (25 -+ sqrt(369)) / 16 (trace 25 / 8, determinant 1), so
  // the result is old plus a rank-one term that lifts one direction by the
  // larger eigenvalue: R - old and R - new are both semi-definite and each
  // singular, and z keeps its common size.
  const metric old_m = packed(4, 0, 1, 0, 0, 2), new_m = packed(2.5, 1.5, 2.5, 0, 0, 2);
  metric a, b;
  ASSERT_TRUE(minimum_metric(new_m, old_m, a));
  ASSERT_TRUE(minimum_metric(old_m, new_m, b));
  expect_near(a, b, 1e-13); // symmetric in its arguments
  EXPECT_NEAR(a(2, 2), 2, 1e-14);
  EXPECT_NEAR(a(2, 0), 0, 1e-14);
  EXPECT_NEAR(a(2, 1), 0, 1e-14);
  for (const metric* m : {&old_m, &new_m}) {
    double lo, hi;
    eigen2(a(0, 0) - (*m)(0, 0), a(1, 0) - (*m)(1, 0), a(1, 1) - (*m)(1, 1), lo, hi);
    EXPECT_NEAR(lo, 0, 1e-13);
    EXPECT_GT(hi, 0.1);
  }
  // The determinant of the xy block: det(old) times the larger eigenvalue.
  const double lambda = (25 + std::sqrt(369.0)) / 16;
  EXPECT_NEAR(a(0, 0) * a(1, 1) - a(1, 0) * a(1, 0), 4 * lambda, 1e-13);
}

TEST(MinimumMetric, ZeroAndInvalidMetricsFallBackAsDocumented) {
  const metric zero = packed(0, 0, 0, 0, 0, 0), m = packed(2, 0, 3, 0, 0, 4);
  const metric indefinite = packed(1, 0, -1, 0, 0, 1), bad = packed(-5, 7, -3, 1, 2, -1);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const metric with_nan = packed(1, 0, nan, 0, 0, 1);
  metric out;
  const struct {
    metric new_m, old_m;
    bool ok;
    const metric* want;
  } cases[] = {
      {m, zero, true, &m},                      // first prescription
      {bad, zero, true, &bad},                  // returned as it is, even invalid
      {zero, m, true, &m},                      // nothing new
      {zero, zero, true, &zero},                //
      {indefinite, m, false, &m},               // old is valid: it stays
      {m, indefinite, false, &m},               // old is not: new is taken
      {bad, indefinite, false, &bad},           // neither: still new
      {with_nan, m, false, &m},                 //
      {packed(1, 1, 1, 0, 0, 1), m, false, &m}, // semi-definite
  };
  for (const auto& c : cases) {
    out = packed(9, 9, 9, 9, 9, 9);
    EXPECT_EQ(minimum_metric(c.new_m, c.old_m, out), c.ok);
    expect_same(out, *c.want);
  }

  // The result may be either argument.
  metric x = packed(4, 0, 1, 0, 0, 9), y = packed(1, 0, 4, 0, 0, 1);
  ASSERT_TRUE(minimum_metric(x, y, y));
  expect_near(y, packed(4, 0, 4, 0, 0, 9), 1e-14);
  y = packed(1, 0, 4, 0, 0, 1);
  ASSERT_TRUE(minimum_metric(x, y, x));
  expect_near(x, packed(4, 0, 4, 0, 0, 9), 1e-14);
}
