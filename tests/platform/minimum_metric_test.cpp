#include <gtest/gtest.h>

#include "support/fp_traps.h"

#include <cmath>
#include <limits>

#include "support/metric_fields.h"
#include "tesskit/minimum_metric.h"

using kelm::tesskit::minimum_metric;
using tk_test::near;
using metric = kelm::symmetric_fixed<double, 3>;

static metric packed(double m00, double m10, double m11, double m20, double m21, double m22) {
  return metric{{m00, m10, m11, m20, m21, m22}};
}

TEST(MinimumMetric, KeepsTheSmallerSizeAlongEachCommonDirection) {
  // Coaxial diagonal metrics: the larger eigenvalue on each axis.
  metric out;
  EXPECT_TRUE(minimum_metric(packed(4, 0, 1, 0, 0, 9), packed(1, 0, 4, 0, 0, 1), out) &&
              near(out, packed(4, 0, 4, 0, 0, 9), 1e-14));
  // An isotropic size 1 met by sizes 1/2 and 2 along the diagonals of the xy
  // plane, R diag(4, 1/4) R^T with R the 45 degree rotation: the diagonal
  // (1, 1) takes 1/2, the other keeps 1, and R diag(4, 1) R^T comes out.
  const metric unit = packed(1, 0, 1, 0, 0, 1), rotated = packed(2.125, 1.875, 2.125, 0, 0, 1);
  EXPECT_TRUE(minimum_metric(rotated, unit, out) && near(out, packed(2.5, 1.5, 2.5, 0, 0, 1), 1e-14));
  EXPECT_TRUE(minimum_metric(unit, rotated, out) && near(out, packed(2.5, 1.5, 2.5, 0, 0, 1), 1e-14));
  // Idempotent: M with M gives M.
  const metric m = packed(3, 1, 2, 0.5, -0.25, 5);
  EXPECT_TRUE(minimum_metric(m, m, out) && near(out, m, 1e-14));

  // Axes 45 degrees apart: old has sizes 1/2 along x and 1 along y, new the
  // same sizes turned by 45 degrees. In the xy plane old^-1 new has trace
  // 25 / 8 and determinant 1, so eigenvalues (25 -+ sqrt(369)) / 16, and the
  // result is old lifted by the larger one along one direction: R - old and
  // R - new are semi-definite and singular, and z keeps its common size.
  const metric old_m = packed(4, 0, 1, 0, 0, 2), new_m = packed(2.5, 1.5, 2.5, 0, 0, 2);
  metric a, b;
  ASSERT_TRUE(minimum_metric(new_m, old_m, a) && minimum_metric(old_m, new_m, b));
  EXPECT_TRUE(near(a, b, 1e-13)); // symmetric in its arguments
  EXPECT_TRUE(std::fabs(a(2, 2) - 2) + std::fabs(a(2, 0)) + std::fabs(a(2, 1)) < 1e-14);
  for (const metric* m : {&old_m, &new_m}) {
    const double d00 = a(0, 0) - (*m)(0, 0), d10 = a(1, 0) - (*m)(1, 0), d11 = a(1, 1) - (*m)(1, 1);
    EXPECT_TRUE(std::fabs(d00 * d11 - d10 * d10) < 1e-13 && d00 + d11 > 0.1);
  }
  EXPECT_NEAR(a(0, 0) * a(1, 1) - a(1, 0) * a(1, 0), 4 * (25 + std::sqrt(369.0)) / 16, 1e-13);
}

TEST(MinimumMetric, ZeroAndInvalidMetricsFallBackAsDocumented) {
  const metric zero = packed(0, 0, 0, 0, 0, 0), m = packed(2, 0, 3, 0, 0, 4);
  const metric indefinite = packed(1, 0, -1, 0, 0, 1), bad = packed(-5, 7, -3, 1, 2, -1);
  const metric with_nan = packed(1, 0, std::numeric_limits<double>::quiet_NaN(), 0, 0, 1);
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
  const tk_test::no_fp_traps nan_and_overflow_on_purpose;
  for (const auto& c : cases) {
    metric out = packed(9, 9, 9, 9, 9, 9);
    EXPECT_EQ(minimum_metric(c.new_m, c.old_m, out), c.ok);
    EXPECT_TRUE(near(out, *c.want, 0));
  }
  // The result may be either argument.
  metric x = packed(4, 0, 1, 0, 0, 9), y = packed(1, 0, 4, 0, 0, 1);
  EXPECT_TRUE(minimum_metric(x, y, y) && minimum_metric(y, x, x) && near(x, packed(4, 0, 4, 0, 0, 9), 1e-14));
}
