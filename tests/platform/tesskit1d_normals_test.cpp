#include <gtest/gtest.h>

#include <cmath>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit1d/normals.h"

using namespace tk_test;
using kelm::tesskit1d::normals;

TEST(LineNormals, PowerWeighsEdgesByLengthAndUnitFalseKeepsTheMean) {
  // A corner between a long edge along x and a short one along y.
  const auto pts = coords({{0, 0}, {4, 0}, {4, 1}, {9, 9}}); // node 3 is unused
  const auto edges = conn({{0, 1}, {1, 2}});
  const struct {
    double power;
    bool unit;
    double x, y; // at node 1
  } cases[] = {
      {1.0, false, -0.2, 0.8}, // (4 (0, 1) + 1 (-1, 0)) / 5
      {0.0, false, -0.5, 0.5}, // the plain mean, shorter than 1
      {1.0, true, -1 / std::sqrt(17.0), 4 / std::sqrt(17.0)},
      {-2.0, false, -16 / 17.0, 1 / 17.0},
  };
  for (const auto& k : cases) {
    dense2D<double> n;
    ASSERT_EQ(normals(strided(pts), strided(edges), k.power, k.unit, n), 0);
    EXPECT_NEAR(n(0, 1), k.x, 1e-15);
    EXPECT_NEAR(n(1, 1), k.y, 1e-15);
    // End nodes take their single edge's unit normal, to its left; a node of
    // no edge keeps 0.
    EXPECT_EQ(as_columns(n)[0], (std::vector<double>{0, 1}));
    EXPECT_EQ(as_columns(n)[2], (std::vector<double>{-1, 0}));
    EXPECT_EQ(as_columns(n)[3], (std::vector<double>{0, 0}));
  }
}

TEST(LineNormals, StatusesLeaveAnEmptyResultAndOutOfMemoryIsReported) {
  dense2D<double> n = coords({{5, 5}});
  EXPECT_EQ(normals(coords({{0, 0, 0}}), dense2D<unsigned>(2, 0), 1.0, true, n), 0); // empty conn first
  EXPECT_EQ(n.rows * n.cols, 0u);
  EXPECT_EQ(normals(coords({{0, 0, 0}, {1, 0, 0}}), conn({{0, 1}}), 1.0, true, n), -1);
  EXPECT_EQ(normals(coords({{0, 0}, {1, 0}}), conn({{0, 1, 1}}), 1.0, true, n), -2);
  EXPECT_EQ(normals(coords({{0, 0}, {1, 0}}), conn({{0, 2}}), 1.0, true, n), -2);
  EXPECT_EQ(n.rows * n.cols, 0u);

  const auto pts = coords({{0, 0}, {1, 0}, {2, 1}});
  const auto edges = conn({{0, 1}, {1, 2}});
  for (bool unit : {true, false})
    expect_all_or_nothing<dense2D<double>>([&](dense2D<double>& out) { return normals(pts, edges, 1.0, unit, out); });
}
