#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "conversion/triangle_quality.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "support/planar_area.h"
#include "tesskit2d/geometric_split.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// The triangles of an output as sorted corner triples, sorted.
cols_t triangle_set(const dense2D<unsigned>& c, unsigned from = 0) {
  cols_t t;
  for (unsigned j = from; j < c.cols; ++j) {
    std::vector<unsigned> v{c(0, j), c(1, j), c(2, j)};
    std::sort(v.begin(), v.end());
    t.push_back(v);
  }
  std::sort(t.begin(), t.end());
  return t;
}

} // namespace

TEST(SplitQ4IntoT3WithCoords, ChoosesTheBetterDiagonalWhateverTheStartingCorner) {
  // A unit square: a tie, so the cut runs through the smallest ID, 2.
  const auto sq = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  dense2D<unsigned> out;
  EXPECT_EQ(split_Q4_into_T3(sq, conn({{3, 2, 1, 0}}), out), 1);
  EXPECT_EQ(as_columns(out), (cols_t{{0, 3, 2}, {2, 1, 0}}));

  // A kite flattened along 0-2: the cut 1-3 is far better.
  const auto kite = coords({{0, 0}, {2, -0.3}, {4, 0}, {2, 0.3}, {1, 3}});
  // Non-convex: 3 is a reflex corner, so the cut must run through it.
  const auto dart = coords({{0, 0}, {4, 0}, {2, 4}, {2, 1}});
  for (const auto& x : {kite, dart}) {
    cols_t first;
    for (unsigned r = 0; r < 4; ++r) {
      dense2D<unsigned> o = conn({{7, 7, 7}});
      ASSERT_EQ(split_Q4_into_T3(strided(x), conn({{r, (r + 1) % 4, (r + 2) % 4, (r + 3) % 4}}), o), 1);
      EXPECT_EQ(o(0, 0), 7u);
      const auto t = triangle_set(o, 1);
      if (r == 0) first = t;
      EXPECT_EQ(t, first) << "start " << r;
      EXPECT_EQ(t, (cols_t{{0, 1, 3}, {1, 2, 3}})); // the cut runs 1-3 in both
      for (unsigned j = 1; j < 3; ++j)
        EXPECT_GT(triangle_quality(x, o(0, j), o(1, j), o(2, j)), 0.0); // orientation kept
    }
  }
}

TEST(SplitQ4IntoT3WithCoords, CountsQuadranglesCopiesTrianglesAndChecksInOrder) {
  const auto x = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {2, 0}, {2, 1}});
  dense2D<unsigned> out;
  EXPECT_EQ(split_Q4_into_T3(x, strided(conn({{0, 1, 2, 3}, {1, 4, 5, N}, {1, 4, 5, 2}})), out), 2);
  EXPECT_EQ(out.cols, 5u);
  EXPECT_EQ(as_columns(out)[2], (std::vector<unsigned>{1, 4, 5}));
  dense2D<unsigned> copied = conn({{9, 9, 9}});
  EXPECT_EQ(split_Q4_into_T3(x, conn({{0, 1, 2}, {2, 3, 0}}), copied), 0);
  EXPECT_EQ(as_columns(copied), (cols_t{{9, 9, 9}, {0, 1, 2}, {2, 3, 0}}));

  dense2D<unsigned> bad_out = conn({{1, 2, 3, 4}});
  const dense2D<double> bad_x(4, 6, 0.0);
  EXPECT_EQ(split_Q4_into_T3(bad_x, dense2D<unsigned>(4, 0), bad_out), 0);
  EXPECT_EQ(split_Q4_into_T3(bad_x, conn({{0, 1, 2, 9}}), bad_out), -1);
  EXPECT_EQ(split_Q4_into_T3(x, conn({{0, 1, 2, 9}}), bad_out), -2);
  EXPECT_EQ(split_Q4_into_T3(x, conn({{0, 1, 2, 3, 0}}), bad_out), -2);
  EXPECT_EQ(split_Q4_into_T3(x, conn({{0, 1, 2, 3}}), bad_out), -3);
  EXPECT_EQ(bad_out.cols, 1u);
}

TEST(SplitIntoQ4, SharedEdgeGetsOneNodeChildrenStartAtCornersAndKnownEdgesKeepTheirNode) {
  auto x = coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}});
  dense2D<unsigned> out = conn({{9, 9, 9, 9}});
  ASSERT_EQ(split_into_Q4(x, strided(conn({{0, 1, 2}, {1, 3, 2}})), out, dense2D<unsigned>()), 0);
  // Mid nodes 4 (1-2, shared), 5 (2-0), 6 (0-1), 7 (3-2), 8 (1-3); centres 9, 10.
  EXPECT_EQ(
      as_columns(out),
      (cols_t{{9, 9, 9, 9}, {0, 6, 9, 5}, {1, 4, 9, 6}, {2, 5, 9, 4}, {1, 8, 10, 4}, {3, 7, 10, 8}, {2, 4, 10, 7}}));
  ASSERT_EQ(x.cols, 11u);
  EXPECT_NEAR(x(0, 9), 1 / 3.0, 1e-15);
  EXPECT_NEAR(x(1, 4), 0.5, 1e-15);

  auto k = coords({{0, 0}, {2, 0}, {0, 2}, {0.9, 0.9}});
  dense2D<unsigned> three;
  ASSERT_EQ(split_into_Q4(k, conn({{0, 1, 2}}), three, conn({{2, 1, 3}})), 0);
  EXPECT_EQ(three.cols, 3u);
  EXPECT_EQ(three(1, 1), 3u); // the given mid node of 1-2
  EXPECT_EQ(k.cols, 4u + 2u + 1u);
}

TEST(SplitIntoQ4, RandomMixedMeshesKeepTheirAreaAndOrientation) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    const auto mesh = make_random_mesh(8, seed, seed / 5.0);
    auto x = strided(mesh.coords);
    dense2D<unsigned> quads;
    ASSERT_EQ(split_into_Q4(x, strided(mesh.conn), quads, dense2D<unsigned>()), 0);
    unsigned T = 0;
    for (unsigned j = 0; j < mesh.conn.cols; ++j)
      T += mesh.conn(3, j) == N;
    EXPECT_EQ(quads.cols, 3 * T + 4 * (mesh.conn.cols - T));
    EXPECT_NEAR(signed_area(x, quads), signed_area(mesh.coords, mesh.conn), 1e-12);
    EXPECT_NEAR(signed_area(x, quads), 1.0, 1e-12);
    for (unsigned j = 0; j < quads.cols; ++j) // no child is inverted
      EXPECT_GT(triangle_quality(x, quads(0, j), quads(1, j), quads(2, j)), 0.0);
  }
}

TEST(SplitIntoQ4, StatusesInCheckingOrderAndOutOfMemoryRollBack) {
  dense2D<double> bad_x(4, 3, 0.0);
  auto x3 = coords({{0, 0}, {2, 0}, {0, 2}});
  dense2D<unsigned> bad_out = conn({{1, 2, 3}}), empty;
  EXPECT_EQ(split_into_Q4(x3, dense2D<unsigned>(4, 0), bad_out, conn({{9}})), 0);
  EXPECT_EQ(split_into_Q4(bad_x, conn({{0, 1, 5}}), bad_out, conn({{9}})), -1);
  EXPECT_EQ(split_into_Q4(x3, conn({{0, 1, 5}}), bad_out, conn({{9}})), -2);
  EXPECT_EQ(split_into_Q4(x3, conn({{0, 1, 2}}), bad_out, conn({{9}})), -3);
  EXPECT_EQ(split_into_Q4(x3, conn({{0, 1, 2}}), empty, conn({{0, 1}})), -4);
  EXPECT_EQ(split_into_Q4(x3, conn({{0, 1, 2}}), empty, conn({{0, 1, 7}})), -4);
  EXPECT_EQ(x3.cols + bad_out.cols, 3u + 1u);

  const auto mesh = make_random_mesh(3, 11);
  const dense2D<unsigned> none;
  sweep_allocation_failures([&](unsigned long n) {
    auto xs = deep(mesh.coords);
    auto o = conn({{5, 5, 5, 5}});
    int status = 1;
    const bool failed = fail_during(n, [&] { status = split_into_Q4(xs, mesh.conn, o, none); });
    if (status == -199) {
      EXPECT_EQ(as_columns(xs), as_columns(mesh.coords));
      EXPECT_EQ(as_columns(o), (cols_t{{5, 5, 5, 5}}));
    } else {
      EXPECT_EQ(status, 0);
      EXPECT_NEAR(signed_area(xs, o), 1.0, 1e-12); // the leading column is a point
    }
    EXPECT_TRUE(status != -199 || failed);
    return failed;
  });
}
