#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "support/interpolation_meshes.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

bool holds(const dense2D<unsigned>& conn, unsigned element, unsigned node) {
  for (unsigned r = 0; r < conn.rows; ++r)
    if (conn(r, element) == node) return true;
  return false;
}

} // namespace

TEST(EdgePicker, SixteenTwoBitDrawsPerWordLowBitsFirst) {
  std::mt19937 engine(1);
  edge_picker picker;
  for (unsigned word = 0; word < 3; ++word) {
    const unsigned w = static_cast<unsigned>(engine());
    for (unsigned k = 0; k < 16; ++k)
      ASSERT_EQ(picker.draw(), (w >> (2 * k)) & 3u) << "word " << word << " draw " << k;
  }
}

TEST(ExitEdge, FirstEdgeAfterStartBeyondTolerance) {
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}});
  const unsigned tri[3] = {0, 1, 2}, flipped[3] = {0, 2, 1}, quad[4] = {0, 1, 3, 2};
  struct row {
    double x, y;
    unsigned start;
    int edge;
  };
  // Edges of the triangle: 0 opposite corner 0 (the hypotenuse), 1 on x = 0,
  // 2 on y = 0. (-0.1, -0.1) is beyond edges 1 and 2.
  for (const row& r : std::vector<row>{{0.2, 0.2, 0, -1},
                                       {0.8, 0.8, 1, 0},
                                       {-0.1, -0.1, 0, 1},
                                       {-0.1, -0.1, 1, 2},
                                       {-0.1, -0.1, 2, 1},
                                       {0.5, -0.9e-6, 0, -1}, // within 1e-6 of twice the area
                                       {0.5, -1.1e-6, 0, 2}}) {
    const double p[2] = {r.x, r.y};
    EXPECT_EQ(exit_edge(xy, p, tri, 3, 1e-6, r.start), r.edge) << r.x << " " << r.y << " from " << r.start;
  }
  const double p[2] = {0.5, 1.5};
  EXPECT_EQ(exit_edge(xy, p, quad, 4, 1e-6, 0), 2); // edge 2 runs from corner 2 to 3
  EXPECT_EQ(exit_edge(xy, p, flipped, 3, 1e-6, 0), -2);
}

TEST(Walk, StepLimitGivesMinusTwoOnlyOnTheStepNumberedLimit) {
  // Element 1 is element 0 again, and each is the other's neighbour across
  // edge 0, so a point beyond edge 0 sends the walk back and forth.
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}});
  const dense2D<unsigned> twice = conn({{0, 1, 2}, {0, 1, 2}});
  const dense2D<unsigned> looped = conn({{1, null_id, null_id}, {0, null_id, null_id}});
  const double beyond[2] = {1, 1};
  struct row {
    dense2D<unsigned> conn, neighbours;
    int result;
    unsigned steps;
  };
  for (const row& r :
       std::vector<row>{{twice, looped, 0, 3},                                           // stopped by its limit of 2
                        {conn({{0, 1, 2}}), conn({{null_id, null_id, null_id}}), -2, 1}, // left on step 1
                        {twice, conn({{1, null_id, null_id}, {null_id, null_id, null_id}}), -2, 2}}) {
    edge_picker picker;
    unsigned element = 0, steps = 0;
    EXPECT_EQ(walk<T3>(xy, r.conn, r.neighbours, beyond, element, 1e-6, steps, picker), r.result);
    EXPECT_EQ(steps, r.steps);
    EXPECT_EQ(element, null_id);
  }
  // Leaving a two-element mesh on step 1 is a plain 0.
  edge_picker picker;
  unsigned element = 0, steps = 0;
  EXPECT_EQ(walk<T3>(xy, twice, conn({{null_id, null_id, null_id}, {null_id, null_id, null_id}}), beyond, element, 1e-6,
                     steps, picker),
            0);
}

TEST(ElementBall, DepthFirstAcrossTheTwoEdgesAtTheNodeInTheirOrder) {
  // A fan of six triangles round node 0, element i = (0, i + 1, i + 2 mod 6).
  dense2D<unsigned> fan(3, 6);
  for (unsigned i = 0; i < 6; ++i) {
    fan(0, i) = 0;
    fan(1, i) = i + 1;
    fan(2, i) = (i + 1) % 6 + 1;
  }
  const auto nb = neighbours_of(fan);
  ball_space space;
  bool closed = false;
  ASSERT_EQ(element_ball<T3>(0, 0, fan, nb, space, closed), 0);
  EXPECT_EQ(as_vector(space.list), (std::vector<unsigned>{0, 1, 2, 3, 4, 5}));
  EXPECT_TRUE(closed);
  // Rim node 2 with the fan cut open between elements 5 and 0.
  auto open = deep(nb);
  open(2, 0) = open(1, 5) = null_id;
  ASSERT_EQ(element_ball<T3>(2, 1, fan, open, space, closed), 0);
  EXPECT_EQ(as_vector(space.list), (std::vector<unsigned>{1, 0}));
  EXPECT_FALSE(closed);
  EXPECT_EQ(element_ball<T3>(3, 0, fan, nb, space, closed), -1); // element 0 does not hold node 3

  // A quadrangle crosses edge k, then edge k - 1.
  background q = grid_background(2, Q4);
  ASSERT_EQ(element_ball<Q4>(4, 0, q.conn, q.neighbours, space, closed), 0);
  EXPECT_EQ(as_vector(space.list), (std::vector<unsigned>{0, 1, 3, 2}));
  EXPECT_TRUE(closed);
}

TEST(Locate, PointsOnSharedEdgesAndNodesAreFoundInAnElementHoldingThem) {
  for (kelm::element_type kind : {T3, Q4, MIXED}) {
    background b = grid_background(6, kind, 0.2);
    point_locator loc(b.xy, b.conn, b.neighbours, b.ancestors);
    kind == T3   ? loc.tree.fill_from_mesh<T3>(b.conn)
    : kind == Q4 ? loc.tree.fill_from_mesh<Q4>(b.conn)
                 : loc.tree.fill_from_mesh<MIXED>(b.conn);
    edge_picker picker;
    for (unsigned e = 0; e < b.conn.cols; ++e)
      for (unsigned s = 0; s < edge_count(b.conn.column(e), b.conn.rows); ++s) {
        const auto ends = edge_of(b.conn.column(e), b.conn.rows, s);
        for (double t : {0.0, 0.5}) {
          const double p[2] = {b.xy(0, ends.first) + t * (b.xy(0, ends.second) - b.xy(0, ends.first)),
                               b.xy(1, ends.first) + t * (b.xy(1, ends.second) - b.xy(1, ends.first))};
          unsigned found = null_id;
          const bool ok = kind == T3   ? loc.locate<T3>(p, found, 1e-6, true, picker)
                          : kind == Q4 ? loc.locate<Q4>(p, found, 1e-6, true, picker)
                                       : loc.locate<MIXED>(p, found, 1e-6, true, picker);
          ASSERT_TRUE(ok);
          const bool holder = t == 0.0 ? holds(b.conn, found, ends.first) : found == e || found == b.neighbours(s, e);
          EXPECT_TRUE(holder) << "kind " << kind << " element " << e << " edge " << s << " t " << t;
        }
      }
  }
}

TEST(Locate, HolesAndInvertedElementsFailAfterTheBall) {
  background b = grid_background(4, T3);
  // Drop the two triangles of the cell (1, 1)..(2, 2) and rebuild the tables.
  dense2D<unsigned> holed(3, b.conn.cols - 2);
  for (unsigned e = 0, k = 0; e < b.conn.cols; ++e) {
    if (e / 2 == 5) continue;
    for (unsigned r = 0; r < 3; ++r)
      holed(r, k) = b.conn(r, e);
    ++k;
  }
  const auto nb = neighbours_of(holed);
  const auto holders = ancestors_of(holed, b.n_background);
  point_locator loc(b.xy, holed, nb, holders);
  loc.tree.fill_from_mesh<T3>(holed);
  edge_picker picker;
  const double in_hole[2] = {0.3, 0.4}, beside[2] = {0.6, 0.4}, outside[2] = {1.2, 0.5};
  unsigned e = null_id;
  EXPECT_FALSE(loc.locate<T3>(in_hole, e, 1e-6, true, picker));
  EXPECT_EQ(e, null_id);
  EXPECT_TRUE(loc.locate<T3>(beside, e, 1e-6, true, picker));
  e = null_id;
  EXPECT_FALSE(loc.locate<T3>(outside, e, 1e-6, true, picker));

  // One clockwise triangle on the way stops every walk that reaches it.
  auto bad = deep(holed);
  std::swap(bad(1, 0), bad(2, 0));
  point_locator inverted(b.xy, bad, nb, holders);
  inverted.tree.fill_from_mesh<T3>(bad);
  const double corner[2] = {0.05, 0.02};
  e = 1; // starts next to it
  EXPECT_FALSE(inverted.locate<T3>(corner, e, 1e-6, true, picker));
}

TEST(LocalCoordinates, CornersExactAndLinearFieldsReproduced) {
  // A needle triangle, so the system on its short side is the one used.
  const auto xy = coords({{0, 0}, {1e3, 1}, {1e3, 1.001}, {0, 0}, {2, 0}, {2.5, 1.5}, {-0.2, 1}});
  const unsigned tri[3] = {1, 2, 0}, quad[4] = {3, 4, 5, 6};
  double w[2];
  const double c0[2] = {1e3, 1}, c1[2] = {1e3, 1.001};
  barycentric_T3(xy, tri, c0, w);
  EXPECT_EQ(w[0], 1.0);
  EXPECT_EQ(w[1], 0.0);
  barycentric_T3(xy, tri, c1, w);
  EXPECT_EQ(w[0], 0.0);
  EXPECT_EQ(w[1], 1.0);
  auto f = [](const double* p) { return 3 + 2 * p[0] - 5 * p[1]; };
  for (const auto& q : random_points(50, 0, 1)) {
    const double p[2] = {1e3 * q[0], q[0] + 0.001 * q[0] * q[1]};
    barycentric_T3(xy, tri, p, w);
    const double v = (f(c1) - f(xy.column(0))) * w[1] + (f(c0) - f(xy.column(0))) * w[0] + f(xy.column(0));
    EXPECT_NEAR(v, f(p), 1e-12 * 2e3);

    // A quadrangle that is no parallelogram: the map back and forth.
    const double uv[2] = {2 * q[0] - 1, 2 * q[1] - 1};
    double at[2], back[2];
    bilinear_point(xy, quad, uv, at);
    inverse_bilinear_Q4(xy, quad, at, back);
    EXPECT_NEAR(back[0], uv[0], 1e-13);
    EXPECT_NEAR(back[1], uv[1], 1e-13);
  }
  const auto flat = coords({{0, 0}, {1, 0}, {2, 0}});
  const unsigned line[3] = {0, 1, 2};
  const double mid[2] = {0.5, 0};
  EXPECT_EQ(barycentric_T3(flat, line, mid, w), 0.0);
  EXPECT_EQ(w[0], 0.0);
  EXPECT_EQ(w[1], 0.0);

  // A quadrangle folded onto its centre has a zero Jacobian there.
  const auto bow = coords({{0, 0}, {1, 1}, {0, 1}, {1, 0}});
  const unsigned folded[4] = {0, 1, 2, 3};
  double uv[2] = {9, 9};
  inverse_bilinear_Q4(bow, folded, mid, uv);
  EXPECT_EQ(uv[0], 0.0);
  EXPECT_EQ(uv[1], 0.0);
}
