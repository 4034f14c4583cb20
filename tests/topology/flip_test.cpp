#include <gtest/gtest.h>

#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/orientation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using cols_t = std::vector<std::vector<unsigned>>;

namespace {

// Mid nodes named after the corners they lie between, so that after a flip
// each can be checked against the edge it sits on: 100 + 10 min + max.
unsigned mid(unsigned a, unsigned b) { return 100 + 10 * std::min(a, b) + std::max(a, b); }

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

// Every neighbour listed in slot s holds both nodes of edge s.
bool neighbours_match_edges(const dense2D<unsigned>& conn, const dense2D<unsigned>& nb) {
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < edge_count(conn.column(j), conn.rows); ++s) {
      const unsigned m = nb(s, j);
      if (m >= conn.cols) continue;
      const auto e = edge_of(conn.column(j), conn.rows, s);
      const unsigned* mc = conn.column(m);
      const unsigned* end = mc + edge_count(mc, conn.rows);
      if (std::find(mc, end, e.first) == end || std::find(mc, end, e.second) == end) return false;
    }
  return true;
}

} // namespace

TEST(Flip, PlainFormExchangesRows0And2WhateverTheRows) {
  auto a = strided(conn({{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}));
  ASSERT_EQ(flip(a), 0);
  EXPECT_EQ(as_columns(a), (cols_t{{3, 2, 1, 4, 5}, {8, 7, 6, 9, 10}}));
  ASSERT_EQ(flip(a), 0);
  EXPECT_EQ(as_columns(a), (cols_t{{1, 2, 3, 4, 5}, {6, 7, 8, 9, 10}}));

  auto two = conn({{1, 2}});
  EXPECT_EQ(flip(two), -1);
  EXPECT_EQ(as_columns(two), (cols_t{{1, 2}}));
  dense2D<unsigned> no_cols(2, 0);
  EXPECT_EQ(flip(no_cols), 0);
}

TEST(Flip, QuadraticMidNodesFollowTheirEdges) {
  const auto q = quadratic_mixed();
  for (bool stride : {false, true}) {
    auto mixed = stride ? strided(q) : deep(q);
    ASSERT_EQ(flip(mixed, MIXED), 0);
    EXPECT_TRUE(mid_nodes_on_their_edges(mixed));
    EXPECT_EQ(mixed(0, 0), 3u);
    EXPECT_EQ(mixed(0, 1), 6u);
    ASSERT_EQ(flip(mixed, MIXED), 0);
    EXPECT_EQ(as_columns(mixed), as_columns(q));
  }
  auto t6 = conn({{1, 2, 3, mid(2, 3), mid(3, 1), mid(1, 2)}});
  ASSERT_EQ(flip(t6, T6), 0);
  EXPECT_TRUE(mid_nodes_on_their_edges(t6));
  auto same_t6 = deep(t6);
  ASSERT_EQ(flip(same_t6, MIXED), 0); // 6 rows under MIXED are T6
  EXPECT_EQ(as_columns(same_t6), (cols_t{{1, 2, 3, mid(2, 3), mid(3, 1), mid(1, 2)}}));
}

TEST(Flip, KindFormRefusesRowsThatDoNotFitAndIgnoresKindsWithoutARule) {
  auto mixed4 = conn({{1, 2, 3, null_id}, {4, 5, 6, 7}});
  ASSERT_EQ(flip(mixed4, MIXED), 0);
  EXPECT_EQ(as_columns(mixed4), (cols_t{{3, 2, 1, null_id}, {6, 5, 4, 7}}));

  auto t3 = conn({{1, 2, 3}});
  EXPECT_EQ(flip(t3, Q4), -2);
  auto q9 = quadratic_mixed();
  EXPECT_EQ(flip(q9, Q8), -2);
  auto five = conn({{1, 2, 3, 4, 5}});
  EXPECT_EQ(flip(five, MIXED), -2);
  EXPECT_EQ(as_columns(five), (cols_t{{1, 2, 3, 4, 5}}));
  auto line = conn({{1, 2}});
  EXPECT_EQ(flip(line, E2), 0);
  EXPECT_EQ(as_columns(line), (cols_t{{1, 2}}));
  EXPECT_EQ(flip(line, T3), -2);
  dense2D<unsigned> no_cols(5, 0);
  EXPECT_EQ(flip(no_cols, T3), 0);
}

TEST(FlipWithNeighbours, SlotsStillNameTheElementAcrossEachEdge) {
  for (bool mixed : {false, true}) {
    const auto mesh = strip(6, mixed);
    const auto nb = neighbours_of(mesh);
    auto c = strided(mesh), n = strided(nb);
    // MIXED settles the kind from the rows; naming it gives the same result.
    ASSERT_EQ(flip(c, n, mixed ? Q4 : T3), 0);
    EXPECT_TRUE(neighbours_match_edges(c, n));
    EXPECT_EQ(as_columns(n), as_columns(neighbours_of(c)));
    ASSERT_EQ(flip(c, n, MIXED), 0);
    EXPECT_EQ(as_columns(c), as_columns(mesh));
    EXPECT_EQ(as_columns(n), as_columns(nb));
  }
}

TEST(FlipWithNeighbours, QuadraticMixedPermutesOnlyUnderMixed) {
  const auto q = quadratic_mixed();
  const auto slots = conn({{10, 11, 12, null_id}, {20, 21, 22, 23}});
  auto c = deep(q);
  auto n = deep(slots);
  ASSERT_EQ(flip(c, n, MIXED), 0);
  EXPECT_EQ(as_columns(n), (cols_t{{12, 11, 10, null_id}, {21, 20, 23, 22}}));

  // Named Q9, the neighbours are neither checked nor changed.
  dense2D<unsigned> q9(9, 1), any_rows = conn({{1, 2, 3, 4, 5, 6, 7}});
  for (unsigned r = 0; r < 9; ++r)
    q9(r, 0) = q(r, 1);
  ASSERT_EQ(flip(q9, any_rows, Q9), 0);
  EXPECT_TRUE(mid_nodes_on_their_edges(q9));
  EXPECT_EQ(as_columns(any_rows), (cols_t{{1, 2, 3, 4, 5, 6, 7}}));

  // The T6 marker row 6 does not move, so a flip applied twice restores.
  ASSERT_EQ(flip(c, n, MIXED), 0);
  EXPECT_EQ(as_columns(c), as_columns(q));
  EXPECT_EQ(as_columns(n), as_columns(slots));
}

TEST(FlipWithNeighbours, StatusesInCheckingOrderLeaveBothArraysUnchanged) {
  auto t3 = conn({{1, 2, 3}});
  auto nb3 = conn({{0, 0, 0}});
  auto nb4 = conn({{0, 0, 0, 0}});
  auto two_cols = conn({{0, 0, 0}, {0, 0, 0}});
  dense2D<unsigned> none(3, 0), empty_conn(3, 0);
  EXPECT_EQ(flip(empty_conn, two_cols, T3), 0); // neighbours not looked at
  EXPECT_EQ(flip(t3, none, Q4), -2);            // column count comes before the kind
  EXPECT_EQ(flip(t3, nb3, Q4), -3);
  EXPECT_EQ(flip(t3, nb4, T3), -2);
  auto five = conn({{1, 2, 3, 4, 5}});
  auto nb5 = conn({{0, 0, 0, 0, 0}});
  EXPECT_EQ(flip(five, nb5, MIXED), -2); // the MIXED row test answers -2, not -3
  auto q9 = quadratic_mixed();
  auto nb9 = conn({{0, 0, 0}, {0, 0, 0}});
  EXPECT_EQ(flip(q9, nb9, MIXED), -2); // mixed quadratic takes 4 slots
  EXPECT_EQ(as_columns(t3), (cols_t{{1, 2, 3}}));
  EXPECT_EQ(as_columns(q9), as_columns(quadratic_mixed()));
  EXPECT_EQ(as_columns(nb3), (cols_t{{0, 0, 0}}));
}
