#include <gtest/gtest.h>

#include "metrics/metric_combiners.h"
#include "support/metric_fields.h"

using namespace kelm::tesskit2d;
using tk_test::near;
using tk_test::sized2;
using tk_test::sized3;

TEST(MetricCombiners, EdgesUseOnlyTheirCornersAndBadCornersFail) {
  // The corner off the edge holds a zero metric (or size): the edge's value
  // never reads it; inside the element it makes the combiner fail.
  const metric2 bad = {{0, 0, 0}}, a = sized2(1, 2), b = sized2(3, 2), mid = sized2(2, 2);
  metric2 out;
  EXPECT_TRUE(metric_on_T3(0, 0.5, bad, a, b, out) && near(out, mid));   // edge (2, 1)
  EXPECT_TRUE(metric_on_T3(0.5, 0.5, a, b, bad, out) && near(out, mid)); // edge (0, 1)
  EXPECT_FALSE(metric_on_T3(0.3, 0.3, a, b, bad, out));
  EXPECT_TRUE(metric_on_T3(1, 0, b, a, bad, out) && near(out, b, 0)); // a corner, bit for bit

  double s = 7;
  EXPECT_TRUE(size_on_T3(0, 0.25, -1, 2, 6, s) && s == 5);
  EXPECT_TRUE(size_on_T3(0.2, 0.3, 1, 2, 4, s) && std::fabs(s - 2.8) < 1e-15);
  EXPECT_FALSE(size_on_T3(0.2, 0.3, 1, 0, 4, s) || s != 0);
  EXPECT_FALSE(size_on_Q4(0, 0, 1, 2, 3, -4, s) || s != 0);
  // Sizes 1, 2, 3, 4 at corners 0 .. 3 of a quadrangle. The centre gets the
  // bilinear value at s2 = t2 = 0.75, not the mean 2.5; there is no case for
  // the edge s = 1, and (1, 0) gets the value at s2 = 1, t2 = 0.75, not 2.5.
  const double cases[][3] = {{1, 0, 2.75}, {0, -1, 1.5}, {-1, 0, 2.5}, {0, 1, 3.5}, {-1, -1, 1}};
  for (const auto& c : cases)
    EXPECT_TRUE(size_on_Q4(c[0], c[1], 1, 2, 3, 4, s) && s == c[2]) << c[0] << " " << c[1];
}
