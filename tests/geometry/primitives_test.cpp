#include <cmath>

#include <gtest/gtest.h>

#include "geometry/primitives.h"
#include "support/arrays.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

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

TEST(TriangleArea, SignInThePlaneAndMagnitudeInSpace) {
  const auto xy = coords({{0, 0}, {2, 0}, {0, 3}});
  const unsigned ccw[3] = {0, 1, 2}, cw[3] = {0, 2, 1};
  EXPECT_DOUBLE_EQ(triangle_double_area(xy, ccw), 6.0);
  EXPECT_DOUBLE_EQ(triangle_double_area(xy, cw), -6.0);
  const auto xyz = coords({{0, 0, 1}, {2, 0, 1}, {0, 3, 1}});
  EXPECT_DOUBLE_EQ(triangle_double_area(xyz, cw), 6.0);
  const auto n = triangle_normal(xyz, ccw);
  EXPECT_DOUBLE_EQ(n[0], 0.0);
  EXPECT_DOUBLE_EQ(n[1], 0.0);
  EXPECT_DOUBLE_EQ(n[2], 6.0); // counter-clockwise seen from +z
  const unsigned flat[3] = {0, 0, 1};
  EXPECT_EQ(triangle_double_area(xyz, flat), 0.0);
}

TEST(QuadrangleArea, WarpedQuadrangleCountsTheLargerTriangulation) {
  // Across AC the halves have twice-areas 1 and sqrt(3); across BD sqrt(2)
  // each.
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 1}});
  const unsigned q[4] = {0, 1, 2, 3};
  EXPECT_DOUBLE_EQ(quadrangle_double_area(xyz, q), 2 * std::sqrt(2.0));
  const unsigned shifted[4] = {1, 2, 3, 0};
  EXPECT_DOUBLE_EQ(quadrangle_double_area(xyz, shifted), 2 * std::sqrt(2.0));

  const auto planar = coords({{0, 0, 5}, {3, 0, 5}, {4, 2, 5}, {1, 2, 5}});
  EXPECT_DOUBLE_EQ(quadrangle_double_area(planar, q), 12.0);
  const auto n = quadrangle_normal(planar, q);
  EXPECT_DOUBLE_EQ(n[2], 12.0);
}

TEST(CornerAngles, RegularElementsNormaliseToOneAndClockwiseIsNegativeInThePlane) {
  const double h = std::sqrt(3.0) / 2;
  const auto xy = coords({{0, 0}, {1, 0}, {0.5, h}, {1, 1}, {0, 1}});
  const unsigned tri[3] = {0, 1, 2}, square[4] = {0, 1, 3, 4};
  double a[4];
  triangle_angles(xy, tri, true, a);
  for (unsigned i = 0; i < 3; ++i)
    EXPECT_NEAR(a[i], 1.0, 1e-15);
  quadrangle_angles(xy, square, true, a);
  for (unsigned i = 0; i < 4; ++i)
    EXPECT_NEAR(a[i], 1.0, 1e-15);

  // Corner i of the right triangle (0,0), (0,2), (1,0) as given is clockwise.
  const auto right = coords({{0, 0}, {0, 2}, {1, 0}});
  triangle_angles(right, tri, false, a);
  EXPECT_NEAR(a[0], -pi / 2, 1e-15);
  EXPECT_NEAR(a[0] + a[1] + a[2], -pi, 1e-14);
  EXPECT_NEAR(a[1], -std::atan(0.5), 1e-15);

  const auto right3 = coords({{0, 0, 0}, {0, 2, 0}, {1, 0, 0}});
  triangle_angles(right3, tri, false, a);
  EXPECT_NEAR(a[0], pi / 2, 1e-15);
  EXPECT_NEAR(a[1], std::atan(0.5), 1e-15);
  EXPECT_NEAR(a[0] + a[1] + a[2], pi, 1e-14);

  // A tiny angle, which a formula through acos of the cosine would round to 0.
  const double o[3] = {0, 0, 0}, u[3] = {1, 0, 0}, w[3] = {1, 1e-10, 0};
  EXPECT_NEAR(corner_angle(o, u, w), 1e-10, 1e-24);
}

TEST(Circumcenter, EquidistantFromTheCornersInThePlaneAndInSpace) {
  const double p[3][3] = {{0.3, -1.2, 0.7}, {2.9, 0.4, -0.5}, {-0.8, 1.9, 1.1}};
  double c[3];
  const double r2 = circumcenter_2d(p[0], p[1], p[2], c);
  for (const auto& q : p)
    EXPECT_NEAR(distance2(c, q, 2), r2, 1e-12);

  // Each order of the corners, so that both bases of the space formula run.
  const unsigned orders[3][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}};
  for (const auto& o : orders) {
    const double r2s = circumcenter_3d(p[o[0]], p[o[1]], p[o[2]], c);
    for (const auto& q : p)
      EXPECT_NEAR(distance2(c, q, 3), r2s, 1e-12);
    // and the centre lies in the triangle's plane
    const auto n = triangle_normal(p[0], p[1], p[2]);
    double d[3] = {c[0] - p[0][0], c[1] - p[0][1], c[2] - p[0][2]};
    EXPECT_NEAR(d[0] * n[0] + d[1] * n[1] + d[2] * n[2], 0.0, 1e-12);
  }
}

TEST(Circumcenter, RightAndFlatTrianglesFallBackWhereExpected) {
  // Right angle at (0, 0): the centre is the hypotenuse's midpoint exactly.
  const double a[3] = {0, 0, 0}, b[3] = {4, 0, 0}, c[3] = {0, 2, 0};
  double m[3];
  EXPECT_DOUBLE_EQ(circumcenter_2d(a, b, c, m), 5.0);
  EXPECT_EQ(m[0], 2.0);
  EXPECT_EQ(m[1], 1.0);
  EXPECT_DOUBLE_EQ(circumcenter_3d(a, b, c, m), 5.0);
  EXPECT_DOUBLE_EQ(m[0], 2.0);
  EXPECT_DOUBLE_EQ(m[1], 1.0);
  EXPECT_DOUBLE_EQ(m[2], 0.0);

  // Collinear: the plane gives the middle of the longest edge, space the
  // third corner.
  const double p0[3] = {1, 1, 1}, p1[3] = {7, 4, 1}, p2[3] = {3, 2, 1};
  EXPECT_EQ(circumcenter_2d(p0, p1, p2, m), max_double);
  EXPECT_EQ(m[0], 4.0);
  EXPECT_EQ(m[1], 2.5);
  EXPECT_EQ(circumcenter_3d(p0, p1, p2, m), max_double);
  EXPECT_EQ(m[0], 3.0);
  EXPECT_EQ(m[1], 2.0);
  EXPECT_EQ(m[2], 1.0);
  // Two equal corners: the flat triangle's third corner lies on the circle
  // over the longest edge, so the radius is that edge's half.
  EXPECT_DOUBLE_EQ(circumcenter_2d(p0, p1, p1, m), 45.0 / 4);
  EXPECT_EQ(m[0], 4.0);
  EXPECT_EQ(m[1], 2.5);
  // All corners equal: no edge to prefer, so edge 0 and its midpoint.
  EXPECT_EQ(circumcenter_2d(p2, p2, p2, m), 0.0);
  EXPECT_EQ(m[0], 3.0);
}

TEST(SolveSymmetric2x2, RefinementReachesTheSolutionOfAnIllConditionedSystem) {
  // (1, 1; 1, 1 + 1e-9) with solution (1, 1).
  const double a11 = 1, a12 = 1, a22 = 1 + 1e-9;
  const double b1 = a11 + a12, b2 = a12 + a22;
  double x = 0, y = 0;
  solve_symmetric_2x2(a11, a12, a22, 1 / (a11 * a22 - a12 * a12), b1, b2, 2, x, y);
  EXPECT_NEAR(x, 1.0, 1e-6);
  EXPECT_NEAR(y, 1.0, 1e-6);
  solve_symmetric_2x2(4, 1, 3, 1.0 / 11, 1, 2, 0, x, y);
  EXPECT_DOUBLE_EQ(x, 1.0 / 11);
  EXPECT_DOUBLE_EQ(y, 7.0 / 11);
}
