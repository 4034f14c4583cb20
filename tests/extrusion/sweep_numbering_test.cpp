#include <gtest/gtest.h>

#include "extrusion/extrusion_core.h"
#include "support/arrays.h"
#include "tesskit2d/extrusion.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using cols_t = std::vector<std::vector<unsigned>>;

namespace {

const kelm::vector_fixed<double, 2> up = {{0, 1}};

dense2D<double> three_points() { return coords({{0, 0}, {1, 0}, {2, 0}}); }

cols_t translated(dense2D<double>& c, const dense2D<unsigned>& edges) {
  dense2D<unsigned> out;
  EXPECT_EQ(extrude_translate_Q4(c, edges, up, 2u, out), 0);
  return as_columns(out);
}

} // namespace

TEST(SweepNumbering, NewNodesFollowFirstAppearanceLayerByLayer) {
  auto c = three_points();
  EXPECT_EQ(translated(c, conn({{0, 1}, {1, 2}})), (cols_t{{0, 1, 4, 3}, {3, 4, 7, 6}, {1, 2, 5, 4}, {4, 5, 8, 7}}));
  ASSERT_EQ(c.cols, 9u);
  EXPECT_DOUBLE_EQ(c(0, 5), 2.0);
  EXPECT_DOUBLE_EQ(c(1, 8), 1.0);

  // Edges stored 1-2 then 0-1: the swept order is 1, 2, 0.
  auto d = three_points();
  EXPECT_EQ(translated(d, conn({{1, 2}, {0, 1}})), (cols_t{{1, 2, 4, 3}, {3, 4, 7, 6}, {0, 1, 3, 5}, {5, 3, 6, 8}}));
  EXPECT_DOUBLE_EQ(d(0, 3), 1.0); // the copy of node 1 in layer 1
  EXPECT_DOUBLE_EQ(d(0, 5), 0.0);
  id_list used;
  ASSERT_EQ(collect_used_nodes(conn({{1, 2}, {0, 1}, {2, 0}}), used), 0);
  EXPECT_EQ(as_vector<unsigned>(used), (std::vector<unsigned>{1, 2, 0}));

  // Only nodes of edges are swept, and a loop closes on its own copies.
  dense2D<double> sparse(2, 10, 0.0);
  EXPECT_EQ(translated(sparse, conn({{7, 8}})), (cols_t{{7, 8, 11, 10}, {10, 11, 13, 12}}));
  EXPECT_EQ(sparse.cols, 14u);
  auto tri = coords({{0, 0}, {1, 0}, {0, 1}});
  EXPECT_EQ(translated(tri, conn({{0, 1}, {1, 2}, {2, 0}}))[5], (std::vector<unsigned>{5, 3, 6, 8}));
  EXPECT_EQ(tri.cols, 9u);
}

TEST(SweepNumbering, TrianglePatternsFollowTheParityOfColumnAndLayer) {
  auto cells = [](int pattern) {
    auto c = three_points();
    dense2D<unsigned> out;
    // The uniform rotation does not check `pattern`, so any value reaches the cells.
    EXPECT_EQ(extrude_rotate_T3(c, conn({{0, 1}, {1, 2}}), {{0, -5}}, 0.1, 2u, pattern, out), 0);
    return as_columns(out);
  };
  // Cell (e, k) = (0, 0): cur 0, 1, top 3, 4.
  EXPECT_EQ(cells(2), (cols_t{{0, 1, 4}, {0, 4, 3}, {3, 4, 6}, {4, 7, 6}, {1, 2, 4}, {2, 5, 4}, {4, 5, 8}, {4, 8, 7}}));
  EXPECT_EQ(cells(0), (cols_t{{0, 1, 3}, {1, 4, 3}, {3, 4, 6}, {4, 7, 6}, {1, 2, 4}, {2, 5, 4}, {4, 5, 7}, {5, 8, 7}}));
  for (int pattern : {1, 3, -1})
    EXPECT_EQ(cells(pattern),
              (cols_t{{0, 1, 4}, {0, 4, 3}, {3, 4, 7}, {3, 7, 6}, {1, 2, 5}, {1, 5, 4}, {4, 5, 8}, {4, 8, 7}}));
}

TEST(SweepNumbering, AppendsBehindExistingColumnsThroughStridedViews) {
  auto packed = three_points();
  dense2D<unsigned> packed_out = conn({{9, 9, 9}});
  ASSERT_EQ(extrude_translate_T3(packed, conn({{0, 1}, {1, 2}}), up, 2u, 2, packed_out), 0);
  ASSERT_EQ(packed_out.cols, 9u);
  EXPECT_EQ(as_columns(packed_out)[0], (std::vector<unsigned>{9, 9, 9}));

  auto c = strided(three_points());
  auto out = strided(conn({{9, 9, 9}}));
  ASSERT_EQ(extrude_translate_T3(c, strided(conn({{0, 1}, {1, 2}})), up, 2u, 2, out), 0);
  EXPECT_EQ(as_columns(out), as_columns(packed_out));
  EXPECT_EQ(as_columns(c), as_columns(packed));
}
