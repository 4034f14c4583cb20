#include <gtest/gtest.h>

#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/orientation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// Mid nodes named after the corners they lie between, so that after a flip
// each can be checked against the edge it sits on: 100 + 10 min + max.
unsigned mid(unsigned a, unsigned b) { return 100 + 10 * std::min(a, b) + std::max(a, b); }

dense2D<unsigned> t6() { return conn({{1, 2, 3, mid(2, 3), mid(3, 1), mid(1, 2)}}); }
dense2D<unsigned> quadratic_mixed() {
  return conn({{1, 2, 3, mid(2, 3), mid(3, 1), mid(1, 2), null_id, null_id, null_id},
               {4, 5, 6, 7, mid(4, 5), mid(5, 6), mid(6, 7), mid(7, 4), 99}});
}

// True when every mid node of every column still lies on its edge.
bool mid_nodes_on_their_edges(const dense2D<unsigned>& a) {
  for (unsigned j = 0; j < a.cols; ++j) {
    const unsigned* c = a.column(j);
    const bool triangle = a.rows == 6 || c[6] == null_id;
    for (unsigned e = 0; e < (triangle ? 3u : 4u); ++e) {
      const unsigned got = triangle ? c[3 + e] : c[4 + e];
      const unsigned want = triangle ? mid(c[(e + 1) % 3], c[(e + 2) % 3]) : mid(c[e], c[(e + 1) % 4]);
      if (got != want) return false;
    }
    if (!triangle && a.rows == 9 && c[8] != 99) return false;
  }
  return true;
}

} // namespace

TEST(Flip, ReversesEachKindKeepsMidNodesOnTheirEdgesAndTwiceRestores) {
  const struct {
    dense2D<unsigned> mesh;
    bool plain; // the form without a kind
    element_type type;
    cols_t once; // the columns after one flip, where not checked by their mid nodes
  } cases[] = {
      {conn({{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}), true, MIXED, {{3, 2, 1, 4, 5}, {8, 7, 6, 9, 10}}},
      {conn({{1, 2, 3, null_id}, {4, 5, 6, 7}}), false, MIXED, {{3, 2, 1, null_id}, {6, 5, 4, 7}}},
      {quadratic_mixed(), false, MIXED, {}},
      {t6(), false, T6, {}},
      {t6(), false, MIXED, {}}, // 6 rows under MIXED are T6
  };
  for (const auto& k : cases)
    for (bool stride : {false, true}) {
      auto a = stride ? strided(k.mesh) : deep(k.mesh);
      ASSERT_EQ(k.plain ? flip(a) : flip(a, k.type), 0);
      EXPECT_TRUE(k.once.empty() || as_columns(a) == k.once);
      for (unsigned j = 0; j < a.cols; ++j)
        EXPECT_EQ(a(0, j), k.mesh(2, j));
      EXPECT_TRUE(k.mesh.rows < 6 || mid_nodes_on_their_edges(a));
      ASSERT_EQ(k.plain ? flip(a) : flip(a, k.type), 0);
      EXPECT_EQ(as_columns(a), as_columns(k.mesh));
    }
  // A kind without a rule leaves the array as it is.
  auto line = conn({{1, 2}});
  EXPECT_EQ(flip(line, E2), 0);
  EXPECT_EQ(as_columns(line), (cols_t{{1, 2}}));
}

TEST(Flip, StatusesInCheckingOrderLeaveTheArraysUnchanged) {
  dense2D<unsigned> no_cols(2, 0), no_cols5(5, 0), none(3, 0), empty_conn(3, 0);
  auto two = conn({{1, 2}}), t3 = conn({{1, 2, 3}}), five = conn({{1, 2, 3, 4, 5}}), q9 = quadratic_mixed();
  EXPECT_EQ(flip(no_cols), 0);
  EXPECT_EQ(flip(two), -1);
  EXPECT_EQ(flip(no_cols5, T3), 0);
  EXPECT_EQ(flip(t3, Q4), -2);
  EXPECT_EQ(flip(q9, Q8), -2);
  EXPECT_EQ(flip(five, MIXED), -2);
  EXPECT_EQ(flip(two, T3), -2);
  EXPECT_EQ(flip(t3, static_cast<element_type>(99)), -2); // an unknown kind, never an index

  auto nb3 = conn({{0, 0, 0}}), nb4 = conn({{0, 0, 0, 0}}), nb5 = conn({{0, 0, 0, 0, 0}});
  auto two_cols = conn({{0, 0, 0}, {0, 0, 0}});
  EXPECT_EQ(flip(empty_conn, two_cols, T3), 0); // neighbours not looked at
  EXPECT_EQ(flip(t3, none, Q4), -2);            // column count comes before the kind
  EXPECT_EQ(flip(t3, nb3, Q4), -3);
  EXPECT_EQ(flip(t3, nb3, static_cast<element_type>(-7)), -3);
  EXPECT_EQ(flip(t3, nb4, T3), -2);
  EXPECT_EQ(flip(five, nb5, MIXED), -2);    // the MIXED row test answers -2, not -3
  EXPECT_EQ(flip(q9, two_cols, MIXED), -2); // mixed quadratic takes 4 slots
  EXPECT_EQ(as_columns(t3), (cols_t{{1, 2, 3}}));
  EXPECT_EQ(as_columns(q9), as_columns(quadratic_mixed()));
  EXPECT_EQ(as_columns(two_cols), (cols_t{{0, 0, 0}, {0, 0, 0}}));
}

TEST(FlipWithNeighbours, SlotsStillNameTheElementAcrossEachEdge) {
  for (bool mixed : {false, true}) {
    const auto mesh = strip(6, mixed);
    const auto nb = neighbours_of(mesh);
    auto c = strided(mesh), n = strided(nb);
    // MIXED settles the kind from the rows; naming it gives the same result.
    ASSERT_EQ(flip(c, n, mixed ? Q4 : T3), 0);
    EXPECT_EQ(as_columns(n), as_columns(neighbours_of(c)));
    ASSERT_EQ(flip(c, n, MIXED), 0);
    EXPECT_EQ(as_columns(c), as_columns(mesh));
    EXPECT_EQ(as_columns(n), as_columns(nb));
  }
  // Quadratic mixed columns permute their slots under MIXED and flip back.
  const auto q = quadratic_mixed();
  const auto slots = conn({{10, 11, 12, null_id}, {20, 21, 22, 23}});
  auto c = deep(q), n = deep(slots);
  ASSERT_EQ(flip(c, n, MIXED), 0);
  EXPECT_EQ(as_columns(n), (cols_t{{12, 11, 10, null_id}, {21, 20, 23, 22}}));
  ASSERT_EQ(flip(c, n, MIXED), 0);
  EXPECT_EQ(as_columns(c), as_columns(q));
  EXPECT_EQ(as_columns(n), as_columns(slots));

  // Named Q9, the neighbours are neither checked nor changed.
  dense2D<unsigned> q9(9, 1), any_rows = conn({{1, 2, 3, 4, 5, 6, 7}});
  for (unsigned r = 0; r < 9; ++r)
    q9(r, 0) = q(r, 1);
  ASSERT_EQ(flip(q9, any_rows, Q9), 0);
  EXPECT_TRUE(mid_nodes_on_their_edges(q9));
  EXPECT_EQ(as_columns(any_rows), (cols_t{{1, 2, 3, 4, 5, 6, 7}}));
}
