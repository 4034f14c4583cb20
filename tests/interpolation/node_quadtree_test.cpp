#include <gtest/gtest.h>

#include <cmath>

#include "geometry/primitives.h"
#include "interpolation/node_quadtree.h"
#include "support/fp_traps.h"
#include "support/interpolation_meshes.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

TEST(NodeQuadtree, GridIsAHairLargerSquareEmptyMeshesStoreNothingAndCoincidentNodesStopAtThree) {
  const auto xy = coords({{2, 1}, {6, 3}, {4, 2}});
  node_quadtree t(xy);
  ASSERT_EQ(t.fill_from_mesh<T3>(conn({{0, 1, 2}})), 3u);
  unsigned g[2];
  EXPECT_TRUE(t.to_grid(t.box_max, g)); // inside, as the grid is larger
  const double below[2] = {1.0, 2.0}, nan[2] = {std::nan(""), 2.0};
  EXPECT_FALSE(t.to_grid(below, g));
  {
    const tk_test::no_fp_traps nan_given; // a NaN point is placed on purpose
    EXPECT_FALSE(t.to_grid(nan, g));
  }
  node_quadtree e(xy);
  EXPECT_EQ(e.fill_from_mesh<T3>(dense2D<unsigned>(3, 0)), 0u);
  EXPECT_EQ(e.n_points, 0u);
  EXPECT_EQ(e.fill_from_mesh<MIXED>(conn({{0, 1, 2, null_id}})), 3u); // row 3 read only where a node

  // Five nodes on one point: a box of no extent, a grid 1e-12 wide, and the
  // first three inserted (by first occurrence) kept, sorted.
  const auto same = coords({{1, 1}, {1, 1}, {1, 1}, {1, 1}, {1, 1}});
  node_quadtree s(same);
  EXPECT_EQ(s.fill_from_mesh<Q4>(conn({{4, 2, 0, 3}, {1, 4, 2, 0}})), 3u);
  EXPECT_EQ(s.cells.cols, 4u + 32 * 4); // the fourth node split every level down to 0
  const dense1D<unsigned> everyone(5, 0u);
  double d2 = max_double;
  const double p[2] = {1, 1};
  EXPECT_EQ(s.nearest_node(p, d2, everyone), 0u); // lowest ID of the kept leaf {0, 2, 4}
  EXPECT_EQ(d2, 0.0);
}

TEST(NodeQuadtree, ExactSearchFindsTheNearestNodeWithAnElement) {
  // Clustered and spread nodes, a third of them without an element.
  background b = grid_background(12, T3, 0.3);
  for (unsigned j = 0; j < b.n_background; j += 5) // clusters a hair apart
    b.xy(0, j) = b.xy(0, j / 5) + 1e-9 * (j % 7);
  for (unsigned j = 0; j < b.n_background; j += 3)
    b.ancestors[j] = null_id;
  node_quadtree t(b.xy);
  t.fill_from_mesh<T3>(b.conn);
  for (const auto& q : random_points(2000, -0.01, 1.0)) {
    const double p[2] = {q[0], q[1]};
    double best = max_double;
    for (unsigned j = 0; j < b.n_background; ++j) {
      const double dx = b.xy(0, j) - p[0], dy = b.xy(1, j) - p[1];
      if (b.ancestors[j] != null_id && dx * dx + dy * dy < best) best = dx * dx + dy * dy;
    }
    double d2 = max_double;
    const unsigned n = t.nearest_node(p, d2, b.ancestors);
    if (!t.in_box(p)) {
      EXPECT_EQ(n, null_id);
      continue;
    }
    ASSERT_NE(n, null_id);
    EXPECT_EQ(d2, best) << p[0] << " " << p[1];
    const double dx = b.xy(0, n) - p[0], dy = b.xy(1, n) - p[1];
    EXPECT_EQ(dx * dx + dy * dy, best);
  }
}
