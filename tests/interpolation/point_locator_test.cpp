#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "support/interpolation_meshes.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

TEST(ExitEdge, FirstEdgeAfterStartBeyondTolerance) {
  const auto xy = coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}});
  const unsigned tri[3] = {0, 1, 2}, flipped[3] = {0, 2, 1}, quad[4] = {0, 1, 3, 2};
  // Edges of the triangle: 0 opposite corner 0 (the hypotenuse), 1 on x = 0,
  // 2 on y = 0. (-0.1, -0.1) is beyond edges 1 and 2; (0.5, -0.9e-6) within
  // 1e-6 of twice the area.
  const struct {
    double x, y;
    unsigned start;
    int edge;
  } rows[] = {{0.2, 0.2, 0, -1},  {0.8, 0.8, 1, 0},      {-0.1, -0.1, 0, 1},  {-0.1, -0.1, 1, 2},
              {-0.1, -0.1, 2, 1}, {0.5, -0.9e-6, 0, -1}, {0.5, -1.1e-6, 0, 2}};
  for (const auto& r : rows) {
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
  const auto none = conn({{null_id, null_id, null_id}, {null_id, null_id, null_id}});
  const auto ahead = conn({{1, null_id, null_id}, {null_id, null_id, null_id}});
  for (const row& r : std::vector<row>{{twice, looped, 0, 3}, // stopped by its limit of 2
                                       {twice, none, 0, 1},   // left the mesh on step 1 of 2
                                       {twice, ahead, -2, 2}, // on step 2 of 2
                                       {conn({{0, 1, 2}}), conn({{null_id, null_id, null_id}}), -2, 1}}) {
    edge_picker picker;
    unsigned element = 0, steps = 0;
    EXPECT_EQ(walk<T3>(xy, r.conn, r.neighbours, beyond, element, 1e-6, steps, picker), r.result);
    EXPECT_EQ(steps, r.steps);
    EXPECT_EQ(element, null_id);
  }
}

// Every node and edge midpoint of a jittered grid is found in an element
// that holds it: for a midpoint, one of the edge's two elements.
template <kelm::element_type Kind> void shared_edges_and_nodes_found() {
  background b = grid_background(6, Kind, 0.2);
  point_locator loc(b.xy, b.conn, b.neighbours, b.ancestors);
  loc.tree.fill_from_mesh<Kind>(b.conn);
  edge_picker picker;
  for (unsigned e = 0; e < b.conn.cols; ++e)
    for (unsigned s = 0; s < edge_count(b.conn.column(e), b.conn.rows); ++s) {
      const auto ends = edge_of(b.conn.column(e), b.conn.rows, s);
      for (double t : {0.0, 0.5}) {
        const double p[2] = {b.xy(0, ends.first) + t * (b.xy(0, ends.second) - b.xy(0, ends.first)),
                             b.xy(1, ends.first) + t * (b.xy(1, ends.second) - b.xy(1, ends.first))};
        unsigned found = null_id;
        ASSERT_TRUE(loc.locate<Kind>(p, found, 1e-6, true, picker));
        const unsigned* c = b.conn.column(found);
        EXPECT_TRUE(t == 0.0 ? std::count(c, c + b.conn.rows, ends.first) == 1
                             : found == e || found == b.neighbours(s, e))
            << "kind " << Kind << " element " << e << " edge " << s << " t " << t;
      }
    }
}

TEST(Locate, PointsOnSharedEdgesAndNodesAreFoundInAnElementHoldingThem) {
  shared_edges_and_nodes_found<T3>();
  shared_edges_and_nodes_found<Q4>();
  shared_edges_and_nodes_found<MIXED>();
}

TEST(Locate, AnInvertedElementOnTheWayFailsTheWalkWithoutTheBall) {
  background b = grid_background(4, T3);
  std::swap(b.conn(1, 0), b.conn(2, 0)); // clockwise
  point_locator loc(b.xy, b.conn, b.neighbours, b.ancestors);
  loc.tree.fill_from_mesh<T3>(b.conn);
  edge_picker picker;
  const double corner[2] = {0.05, 0.02}, beside[2] = {0.2, 0.1};
  unsigned e = 1; // starts next to it
  EXPECT_FALSE(loc.locate<T3>(corner, e, 1e-6, true, picker));
  EXPECT_EQ(e, null_id);
  EXPECT_FALSE(loc.locate<T3>(beside, e, 1e-6, true, picker)); // from the tree, whose start is element 0
}

TEST(LocalCoordinates, CornersExactAndLinearFieldsReproducedOnANeedle) {
  // A needle triangle, so the system on its short side is the one used.
  const auto xy = coords({{0, 0}, {1e3, 1}, {1e3, 1.001}, {0, 0}, {1, 1}, {0, 1}, {1, 0}});
  const unsigned tri[3] = {1, 2, 0}, folded[4] = {3, 4, 5, 6};
  double w[2];
  const double c0[2] = {1e3, 1}, c1[2] = {1e3, 1.001};
  auto pair = [](const double* v) { return std::vector<double>(v, v + 2); };
  barycentric_T3(xy, tri, c0, w);
  EXPECT_EQ(pair(w), (std::vector<double>{1, 0}));
  barycentric_T3(xy, tri, c1, w);
  EXPECT_EQ(pair(w), (std::vector<double>{0, 1}));
  auto f = [](const double* p) { return 3 + 2 * p[0] - 5 * p[1]; };
  for (const auto& q : random_points(50, 0, 1)) {
    const double p[2] = {1e3 * q[0], q[0] + 0.001 * q[0] * q[1]};
    barycentric_T3(xy, tri, p, w);
    const double v = (f(c1) - f(xy.column(0))) * w[1] + (f(c0) - f(xy.column(0))) * w[0] + f(xy.column(0));
    EXPECT_NEAR(v, f(p), 1e-12 * 2e3);
  }
  // A quadrangle folded onto its centre has a zero Jacobian there.
  double uv[2] = {9, 9};
  const double mid[2] = {0.5, 0};
  inverse_bilinear_Q4(xy, folded, mid, uv);
  EXPECT_EQ(pair(uv), (std::vector<double>{0, 0}));
}
