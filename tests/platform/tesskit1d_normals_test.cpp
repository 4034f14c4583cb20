#include <gtest/gtest.h>

#include <cmath>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit1d/normals.h"

using namespace tk_test;
using kelm::tesskit1d::normals;

TEST(LineNormals, PointLeftOfTheEdgesSoACounterClockwiseLoopGetsInwardNormals) {
  // Unit square walked counter-clockwise: each corner's normal points to the
  // centre along the diagonal.
  const auto square = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  const auto loop = conn({{0, 1}, {1, 2}, {2, 3}, {3, 0}});
  dense2D<double> n;
  ASSERT_EQ(normals(strided(square), strided(loop), 1.0, true, n), 0);
  ASSERT_EQ(n.rows, 2u);
  ASSERT_EQ(n.cols, 4u);
  const double h = std::sqrt(0.5);
  const double expected[4][2] = {{h, h}, {-h, h}, {-h, -h}, {h, -h}};
  for (unsigned i = 0; i < 4; ++i) {
    EXPECT_NEAR(n(0, i), expected[i][0], 1e-15);
    EXPECT_NEAR(n(1, i), expected[i][1], 1e-15);
  }
}

TEST(LineNormals, PowerWeighsEdgesByLengthAndUnitFalseKeepsTheMean) {
  // A corner between a long edge along x and a short one along y.
  const auto pts = coords({{0, 0}, {4, 0}, {4, 1}, {9, 9}}); // node 3 is unused
  const auto edges = conn({{0, 1}, {1, 2}});
  dense2D<double> n;
  ASSERT_EQ(normals(pts, edges, 1.0, false, n), 0);
  // Node 1: (4 (0, 1) + 1 (-1, 0)) / 5.
  EXPECT_NEAR(n(0, 1), -0.2, 1e-15);
  EXPECT_NEAR(n(1, 1), 0.8, 1e-15);
  ASSERT_EQ(normals(pts, edges, 0.0, false, n), 0);
  EXPECT_NEAR(n(0, 1), -0.5, 1e-15); // plain mean, shorter than 1
  EXPECT_NEAR(n(1, 1), 0.5, 1e-15);
  ASSERT_EQ(normals(pts, edges, 1.0, true, n), 0);
  EXPECT_NEAR(n(0, 1), -1 / std::sqrt(17.0), 1e-15);
  EXPECT_NEAR(n(1, 1), 4 / std::sqrt(17.0), 1e-15);
  EXPECT_EQ(n(0, 3), 0.0); // a node of no edge keeps the zero vector
  EXPECT_EQ(n(1, 3), 0.0);
  // End nodes take their single edge's unit normal for any power.
  EXPECT_NEAR(n(1, 0), 1.0, 1e-15);
  ASSERT_EQ(normals(pts, edges, -2.0, false, n), 0);
  EXPECT_NEAR(n(0, 2), -1.0, 1e-15);
}

TEST(LineNormals, StatusesAndAnEmptyResultAfterRefusals) {
  dense2D<double> n = coords({{5, 5}});
  EXPECT_EQ(normals(coords({{0, 0, 0}}), dense2D<unsigned>(2, 0), 1.0, true, n), 0); // empty conn first
  EXPECT_EQ(n.rows * n.cols, 0u);
  EXPECT_EQ(normals(coords({{0, 0, 0}, {1, 0, 0}}), conn({{0, 1}}), 1.0, true, n), -1);
  EXPECT_EQ(normals(coords({{0, 0}, {1, 0}}), conn({{0, 1, 1}}), 1.0, true, n), -2);
  EXPECT_EQ(normals(coords({{0, 0}, {1, 0}}), conn({{0, 2}}), 1.0, true, n), -2);
  EXPECT_EQ(n.rows * n.cols, 0u);
}

TEST(LineNormals, OutOfMemoryIsReported) {
  const auto pts = coords({{0, 0}, {1, 0}, {2, 1}});
  const auto edges = conn({{0, 1}, {1, 2}});
  for (bool unit : {true, false}) {
    sweep_allocation_failures([&](unsigned long k) {
      dense2D<double> n;
      int status = 1;
      const bool failed = fail_during(k, [&] { status = normals(pts, edges, 1.0, unit, n); });
      EXPECT_EQ(status, failed ? -199 : 0);
      if (failed) {
        EXPECT_EQ(n.rows * n.cols, 0u);
      }
      return failed;
    });
  }
}
