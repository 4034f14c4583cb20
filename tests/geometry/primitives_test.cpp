#include <cmath>

#include <gtest/gtest.h>

#include "geometry/primitives.h"
#include "support/arrays.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

double distance2(const double* a, const double* b, unsigned dim) {
  double s = 0;
  for (unsigned k = 0; k < dim; ++k)
    s += (a[k] - b[k]) * (a[k] - b[k]);
  return s;
}

} // namespace

// Two corners a quarter unit apart, the third some 1e9 away: the products of
// the long edges reach 1e18 and round by about 100, so only the cross
// product with the short edge gives the exact 679012338.
TEST(TriangleArea, ThinTriangleKeepsAllDigitsThroughTheShortEdge) {
  const double a = 1234567891.0, b = 987654321.0;
  const double p2[3] = {0, 0, 0}, p0[3] = {a, b, 0}, p1[3] = {a + 0.25, b + 0.75, 0};
  const double exact = 679012338.0; // 0.75 a - 0.25 b
  EXPECT_EQ(triangle_double_area_2d(p0, p1, p2), exact);
  EXPECT_EQ(triangle_double_area_2d(p1, p0, p2), -exact);
  EXPECT_DOUBLE_EQ(triangle_double_area_3d(p0, p1, p2), exact);
  EXPECT_DOUBLE_EQ(triangle_normal(p0, p1, p2)[2], exact);
  // The same triangle with the short edge elsewhere in the row order.
  EXPECT_EQ(triangle_double_area_2d(p2, p0, p1), exact);
  EXPECT_DOUBLE_EQ(triangle_double_area_3d(p1, p2, p0), exact);
}

TEST(QuadrangleArea, WarpedQuadrangleCountsTheLargerTriangulationAndTinyAnglesKeepTheirDigits) {
  // Across AC the halves have twice-areas 1 and sqrt(3); across BD sqrt(2)
  // each.
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}});
  const unsigned q[4] = {0, 1, 2, 3};
  EXPECT_DOUBLE_EQ(quadrangle_double_area(xyz, q), 2 * std::sqrt(2.0));
  const unsigned shifted[4] = {1, 2, 3, 0};
  EXPECT_DOUBLE_EQ(quadrangle_double_area(xyz, shifted), 2 * std::sqrt(2.0));

  const auto planar = coords({{0, 0, 5}, {3, 0, 5}, {4, 2, 5}, {1, 2, 5}});
  EXPECT_DOUBLE_EQ(quadrangle_double_area(planar, q), 12.0);
  EXPECT_DOUBLE_EQ(quadrangle_normal(planar, q)[2], 12.0);

  // acos of the cosine would round this tiny corner angle to 0.
  const double o[3] = {0, 0, 0}, u[3] = {1, 0, 0}, w[3] = {1, 1e-10, 0};
  EXPECT_NEAR(corner_angle(o, u, w), 1e-10, 1e-24);
}

TEST(Circumcenter, RightAndFlatTrianglesFallBackWhereExpected) {
  double m[3];
  auto centre = [&](unsigned dim) { return std::vector<double>(m, m + dim); };
  // Right angle at (0, 0): the centre is the hypotenuse's midpoint exactly.
  const double a[3] = {0, 0, 0}, b[3] = {4, 0, 0}, c[3] = {0, 2, 0}, mid[3] = {2, 1, 0};
  EXPECT_DOUBLE_EQ(circumcenter_2d(a, b, c, m), 5.0);
  EXPECT_EQ(centre(2), (std::vector<double>{2, 1}));
  EXPECT_DOUBLE_EQ(circumcenter_3d(a, b, c, m), 5.0);
  EXPECT_NEAR(distance2(m, mid, 3), 0.0, 1e-28);
  // Collinear: the plane gives the middle of the longest edge, space the
  // third corner.
  const double p0[3] = {1, 1, 1}, p1[3] = {7, 4, 1}, p2[3] = {3, 2, 1};
  EXPECT_EQ(circumcenter_2d(p0, p1, p2, m), max_double);
  EXPECT_EQ(centre(2), (std::vector<double>{4, 2.5}));
  EXPECT_EQ(circumcenter_3d(p0, p1, p2, m), max_double);
  EXPECT_EQ(centre(3), (std::vector<double>{3, 2, 1}));
  // Two equal corners: the third lies on the circle over the longest edge,
  // so the radius is that edge's half; all equal: edge 0 and its midpoint.
  EXPECT_DOUBLE_EQ(circumcenter_2d(p0, p1, p1, m), 45.0 / 4);
  EXPECT_EQ(centre(2), (std::vector<double>{4, 2.5}));
  EXPECT_EQ(circumcenter_2d(p2, p2, p2, m), 0.0);
  EXPECT_EQ(centre(2), (std::vector<double>{3, 2}));
}
