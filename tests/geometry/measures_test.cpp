#include <cmath>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit2d/measures.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0), h = std::sqrt(3.0) / 2;

// A disk of radius r as a fan of k triangles round node 0 at (1.5, 0),
// counter-clockwise in the plane or, with `space`, tilted about the x axis by
// 0.6 rad and lowered to z = -2.
struct fan {
  dense2D<double> xyz;
  dense2D<unsigned> tri;
};

fan disk(unsigned k, double r, bool space) {
  fan f{dense2D<double>(space ? 3 : 2, k + 1, 0.0), dense2D<unsigned>(3, k)};
  f.xyz(0, 0) = 1.5;
  if (space) f.xyz(2, 0) = -2;
  for (unsigned i = 1; i <= k; ++i) {
    const double t = 2 * pi * (i - 1) / k, y = r * std::sin(t);
    f.xyz(0, i) = 1.5 + r * std::cos(t);
    f.xyz(1, i) = space ? std::cos(0.6) * y : y;
    if (space) f.xyz(2, i) = std::sin(0.6) * y - 2;
    f.tri(0, i - 1) = 0, f.tri(1, i - 1) = i, f.tri(2, i - 1) = 1 + i % k;
  }
  return f;
}

// An equilateral triangle, a unit square beside it and a clockwise right
// triangle, in one 4-row array; `lift` puts the nodes in the plane z = 4.
dense2D<double> mixed_nodes(bool lift = false) {
  auto xyz = coords({{0, 0, 4}, {1, 0, 4}, {0.5, h, 4}, {2, 0, 4}, {3, 0, 4}, {3, 1, 4}, {2, 1, 4}});
  xyz.rows = lift ? 3 : 2; // flat: a 2-row view with a stride of 3
  xyz.size = xyz.rows * xyz.cols;
  return xyz;
}
dense2D<unsigned> mixed_conn() { return conn({{0, 1, 2, null_id}, {3, 4, 5, 6}, {3, 6, 4, null_id}}); }

} // namespace

TEST(Area, DiskFanApproachesPiRSquaredAndMixedMeshesAreSignedOnlyInThePlane) {
  const unsigned k = 720;
  const double r = 2.5, polygon = k / 2.0 * r * r * std::sin(2 * pi / k);
  double a = 0;
  for (bool space : {false, true}) {
    const fan f = disk(k, r, space);
    ASSERT_EQ(area(strided(f.xyz), strided(f.tri), a), 0);
    EXPECT_NEAR(a, polygon, 1e-12 * polygon);
  }
  ASSERT_EQ(area(mixed_nodes(), mixed_conn(), a), 0);
  EXPECT_DOUBLE_EQ(a, h / 2 + 1 - 0.5); // the clockwise triangle subtracts in the plane
  ASSERT_EQ(area(mixed_nodes(true), strided(mixed_conn()), a), 0);
  EXPECT_DOUBLE_EQ(a, h / 2 + 1 + 0.5);
  ASSERT_EQ(area(mixed_nodes(), conn({{3, 6, 5, 4}}), a), 0);
  EXPECT_DOUBLE_EQ(a, -1.0);
}

TEST(Area, StatusesInCheckingOrderLeaveTheTotalAtZero) {
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}});
  const dense2D<double> bad_coords(4, 3, 0.0);
  const struct {
    int status;
    const dense2D<double>& coords;
    dense2D<unsigned> conn;
  } cases[] = {
      {0, bad_coords, dense2D<unsigned>(3, 0)}, // empty conn: nothing checked
      {-1, bad_coords, conn({{0, 1, 2}})},
      {-2, xy, conn({{0, 1, 2, 0, 1}})},
      {-2, xy, conn({{0, 1, 3}})},                // node 3 does not exist
      {-2, xy, conn({{0, null_id, 2, null_id}})}, // a triangle's corner missing
  };
  for (const auto& c : cases) {
    double a = 7;
    EXPECT_EQ(area(c.coords, c.conn, a), c.status);
    EXPECT_EQ(a, 0.0);
  }
}

TEST(Angles, NormalisationFollowsEachColumnsKindAndSignFollowsOrientation) {
  dense1D<double> lo, hi;
  ASSERT_EQ(angles(mixed_nodes(), mixed_conn(), true, lo, hi), 0);
  const double want_lo[3] = {1, 1, -1.5}, want_hi[3] = {1, 1, -0.75}; // clockwise: -90 and -45 degrees
  for (unsigned j = 0; j < 3; ++j)
    EXPECT_TRUE(std::fabs(lo[j] - want_lo[j]) + std::fabs(hi[j] - want_hi[j]) < 1e-15) << j;

  ASSERT_EQ(angles(mixed_nodes(true), strided(mixed_conn()), false, lo, hi), 0);
  EXPECT_NEAR(lo[2], pi / 4, 1e-15);
  EXPECT_NEAR(hi[2], pi / 2, 1e-15);
  EXPECT_NEAR(lo[1], pi / 2, 1e-15);

  // Outputs are rebuilt, whatever they held and wherever their view began.
  dense1D<double> a(10, 9.0), b(10, 9.0);
  a.offset = 4;
  a.size = 6;
  ASSERT_EQ(angles(strided(mixed_nodes()), conn({{0, 1, 2}}), false, a, b), 0);
  ASSERT_EQ(a.size, 1u);
  EXPECT_NEAR(a[0], pi / 3, 1e-15);
  EXPECT_NEAR(b[0], pi / 3, 1e-15);
}

TEST(Angles, StatusesInCheckingOrderAndOutOfMemory) {
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}});
  const dense2D<double> bad_coords(1, 3, 0.0);
  dense1D<double> lo(2, 5.0), hi(2, 5.0);
  EXPECT_EQ(angles(bad_coords, dense2D<unsigned>(0, 4), false, lo, hi), 0);
  EXPECT_EQ(lo.size + hi.size, 0u);
  EXPECT_EQ(angles(bad_coords, conn({{0, 1, 2}}), false, lo, hi), -1);
  EXPECT_EQ(angles(xy, conn({{0, 1}}), false, lo, hi), -2);
  EXPECT_EQ(lo.size + hi.size, 0u);
  // An ID check fails after the outputs were sized: they hold zeros.
  EXPECT_EQ(angles(xy, conn({{0, 1, 2}, {0, 1, 9}}), false, lo, hi), -2);
  EXPECT_EQ(as_vector(lo), (std::vector<double>{0, 0}));
  EXPECT_EQ(as_vector(hi), (std::vector<double>{0, 0}));

  const auto xs = mixed_nodes();
  const auto mesh = mixed_conn(); // built outside the failing window
  EXPECT_EQ(expect_all_or_nothing<dense1D<double>>([&](dense1D<double>& lo) {
              dense1D<double> hi;
              return angles(xs, mesh, false, lo, hi);
            }),
            2u);
}

TEST(Circumcenters, CentresOfADiskFanLieOnTheirTriangleBisectors) {
  for (bool space : {false, true}) {
    const fan f = disk(12, 1.5, space);
    dense2D<double> centers;
    ASSERT_EQ(circumcenters(strided(f.xyz), strided(f.tri), centers), 0);
    ASSERT_EQ(centers.rows * centers.cols, f.xyz.rows * 12);
    for (unsigned j = 0; j < 12; ++j) {
      double d[3] = {0, 0, 0};
      for (unsigned i = 0; i < 3; ++i)
        for (unsigned k = 0; k < f.xyz.rows; ++k)
          d[i] += std::pow(centers(k, j) - f.xyz(k, f.tri(i, j)), 2);
      EXPECT_NEAR(d[0], d[1], 1e-12);
      EXPECT_NEAR(d[0], d[2], 1e-12);
    }
  }
}

TEST(Circumcenters, StatusesInCheckingOrderLeaveCentersEmpty) {
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}});
  dense2D<double> centers(2, 4, 1.0);
  // No early return: an empty conn still needs good coords and 3 rows.
  EXPECT_EQ(circumcenters(dense2D<double>(4, 3, 0.0), dense2D<unsigned>(3, 0), centers), -1);
  EXPECT_EQ(centers.rows * centers.cols, 0u);
  EXPECT_EQ(circumcenters(xy, dense2D<unsigned>(3, 0), centers), 0);
  EXPECT_EQ(centers.rows, 2u);
  EXPECT_EQ(circumcenters(xy, conn({{0, 1, 2, null_id}}), centers), -2);
  EXPECT_EQ(circumcenters(xy, conn({{0, 1, 3}}), centers), -2);
  EXPECT_EQ(centers.rows * centers.cols, 0u);
  const auto tri = conn({{0, 1, 2}});
  expect_all_or_nothing<dense2D<double>>([&](dense2D<double>& out) { return circumcenters(xy, tri, out); });
}
