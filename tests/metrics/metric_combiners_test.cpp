#include <gtest/gtest.h>

#include "metrics/metric_combiners.h"
#include "support/metric_fields.h"

using namespace kelm::tesskit2d;
using tk_test::near;
using tk_test::sized2;
using tk_test::sized3;

// Corner metrics share their axes, so each size is the blend of the
// corners' sizes along that axis: barycentric in a triangle, bilinear in
// (s, t) in a quadrangle.
TEST(MetricCombiners, CoaxialCornersBlendTheirSizes) {
  const double h[4][2] = {{1, 4}, {2, 3}, {4, 1}, {3, 0.5}};
  metric2 m[4];
  metric3 m3[4];
  for (unsigned k = 0; k < 4; ++k) {
    m[k] = sized2(h[k][0], h[k][1], 0.3);
    m3[k] = sized3(h[k][0], h[k][1], 1, 0.3);
  }
  for (const auto& w : {std::pair<double, double>{0.2, 0.3}, {0.6, 0.1}, {0.0, 0.4}, {0.5, 0.0}, {0.25, 0.75}}) {
    const double w2 = 1 - w.first - w.second;
    const double a = w.first * h[0][0] + w.second * h[1][0] + w2 * h[2][0];
    const double b = w.first * h[0][1] + w.second * h[1][1] + w2 * h[2][1];
    metric2 out;
    metric3 out3;
    ASSERT_TRUE(metric_on_T3(w.first, w.second, m[0], m[1], m[2], out));
    ASSERT_TRUE(metric_on_T3(w.first, w.second, m3[0], m3[1], m3[2], out3));
    EXPECT_TRUE(near(out, sized2(a, b, 0.3)));
    EXPECT_TRUE(near(out3, sized3(a, b, 1, 0.3)));
  }
  for (const auto& uv : {std::pair<double, double>{0.2, -0.4}, {-1, 0.5}, {1, 0.5}, {0.3, 1}, {0.3, -1}}) {
    const double s = (uv.first + 1) / 2, t = (uv.second + 1) / 2;
    double blend[2];
    for (unsigned r = 0; r < 2; ++r) {
      const double lo = h[0][r] + s * (h[1][r] - h[0][r]), hi = h[3][r] + s * (h[2][r] - h[3][r]);
      blend[r] = lo + t * (hi - lo);
    }
    metric2 out;
    metric3 out3;
    ASSERT_TRUE(metric_on_Q4(uv.first, uv.second, m[0], m[1], m[2], m[3], out));
    ASSERT_TRUE(metric_on_Q4(uv.first, uv.second, m3[0], m3[1], m3[2], m3[3], out3));
    EXPECT_TRUE(near(out, sized2(blend[0], blend[1], 0.3)));
    EXPECT_TRUE(near(out3, sized3(blend[0], blend[1], 1, 0.3)));
  }
}

TEST(MetricCombiners, EdgesUseOnlyTheirCornersAndBadCornersFail) {
  // The corner off the edge holds a zero metric (or size): the edge's value
  // never reads it; inside the element it makes the combiner fail.
  const metric2 bad = {{0, 0, 0}}, a = sized2(1, 2), b = sized2(3, 2);
  metric2 out;
  ASSERT_TRUE(metric_on_T3(0, 0.5, bad, a, b, out)); // edge (2, 1)
  EXPECT_TRUE(near(out, sized2(2, 2)));
  ASSERT_TRUE(metric_on_T3(0.5, 0, a, bad, b, out)); // edge (2, 0)
  EXPECT_TRUE(near(out, sized2(2, 2)));
  ASSERT_TRUE(metric_on_T3(0.5, 0.5, a, b, bad, out)); // edge (0, 1)
  EXPECT_TRUE(near(out, sized2(2, 2)));
  ASSERT_TRUE(metric_on_Q4(1, 0, bad, a, b, bad, out)); // edge s = 1
  EXPECT_TRUE(near(out, sized2(2, 2)));
  EXPECT_FALSE(metric_on_T3(0.3, 0.3, a, b, bad, out));
  EXPECT_FALSE(metric_on_Q4(0, 0, a, b, a, bad, out));
  // A corner: its metric bit for bit.
  ASSERT_TRUE(metric_on_T3(1, 0, b, a, bad, out));
  EXPECT_TRUE(out[0] == b[0] && out[1] == b[1] && out[2] == b[2]);

  double s = 7;
  EXPECT_TRUE(size_on_T3(0, 0.25, -1, 2, 6, s));
  EXPECT_EQ(s, 5);
  EXPECT_TRUE(size_on_T3(0.2, 0.3, 1, 2, 4, s));
  EXPECT_DOUBLE_EQ(s, 0.2 * 1 + 0.3 * 2 + 0.5 * 4);
  EXPECT_FALSE(size_on_T3(0.2, 0.3, 1, 0, 4, s));
  EXPECT_EQ(s, 0);
}

TEST(MetricCombiners, QuadrangleSizesMapTheirCoordinatesTwice) {
  // Sizes 1, 2, 3, 4 at corners 0 .. 3. The centre gets the bilinear value
  // at s2 = t2 = 0.75, not the mean 2.5; on the edge s = 1 there is no edge
  // case, and (1, 0) gets the value at s2 = 1, t2 = 0.75 instead of 2.5.
  double s = 0;
  const struct {
    double u, v, want;
  } cases[] = {{0, 0, 2.875}, {1, 0, 2.75}, {0, -1, 1.5}, {-1, 0, 2.5}, {0, 1, 3.5}, {-1, -1, 1}};
  for (const auto& c : cases) {
    ASSERT_TRUE(size_on_Q4(c.u, c.v, 1, 2, 3, 4, s));
    EXPECT_DOUBLE_EQ(s, c.want) << c.u << " " << c.v;
  }
  EXPECT_FALSE(size_on_Q4(0, 0, 1, 2, 3, -4, s));
  EXPECT_EQ(s, 0);
}
