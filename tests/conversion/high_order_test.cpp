#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <utility>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "tesskit2d/high_order.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// Unit square 0 (0,0), 1 (1,0), 2 (0,1), 3 (1,1): two triangles on the
// diagonal 1-2, which the second element runs the other way.
dense2D<double> square() { return coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}}); }
dense2D<unsigned> two_triangles() { return conn({{0, 1, 2}, {1, 3, 2}}); }

void expect_node(const dense2D<double>& x, unsigned id, double px, double py) {
  EXPECT_NEAR(x(0, id), px, 1e-14) << "node " << id;
  EXPECT_NEAR(x(1, id), py, 1e-14) << "node " << id;
}

// One call of the raise and what it must give: the output columns, the
// node count after, and some new nodes by ID, x and y.
struct raise_case {
  raise_case(const char* what, const dense2D<double>& x, const dense2D<unsigned>& mesh, unsigned ne, unsigned nq,
             unsigned nt, const dense2D<unsigned>& edges, cols_t want, unsigned n_nodes,
             std::vector<std::array<double, 3>> nodes)
      : what(what), x(x), mesh(mesh), ne(ne), nq(nq), nt(nt), edges(edges), want(std::move(want)), n_nodes(n_nodes),
        nodes(std::move(nodes)) {}
  const char* what;
  dense2D<double> x;
  dense2D<unsigned> mesh;
  unsigned ne, nq, nt;
  dense2D<unsigned> edges;
  cols_t want;
  unsigned n_nodes;
  std::vector<std::array<double, 3>> nodes;
};

} // namespace

TEST(RaiseOrder, NumberingAndPlacementInEveryFormAndLayout) {
  const double t = 1 / 3.0;
  const auto sq4 = coords({{0, 0}, {4, 0}, {0, 4}, {4, 4}});
  const auto strip = coords({{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}});
  const raise_case cases[] = {
      // Element 0 meets (1,2), (2,0), (0,1); element 1 meets (3,2), then the
      // shared (2,1), then (1,3).
      raise_case("shared edge", square(), two_triangles(), 1, 1, 0, {}, {{0, 1, 2, 4, 5, 6}, {1, 3, 2, 7, 4, 8}}, 9,
                 {{1, 1, 0}, {4, 0.5, 0.5}, {5, 0, 0.5}, {6, 0.5, 0}, {7, 0.5, 1}, {8, 1, 0.5}}),
      // Edge (1,2) is stored as met in element 0: nodes 4, 5 run from 1 to 2.
      raise_case("reversed runs", square(), two_triangles(), 2, 0, 1, {},
                 {{0, 1, 2, 4, 5, 6, 7, 8, 9, 14}, {1, 3, 2, 10, 11, 5, 4, 12, 13, 15}}, 16,
                 {{4, 2 * t, t}, {5, t, 2 * t}, {14, t, t}, {15, 2 * t, 2 * t}}),
      // Element 1's edge 0 runs from 3 to itself, which reads as reversed
      // against its own key even where first met; its nodes lie on node 3.
      raise_case("edge to itself", square(), conn({{0, 1, 2}, {1, 3, 3}}), 2, 0, 0, {},
                 {{0, 1, 2, 4, 5, 6, 7, 8, 9}, {1, 3, 3, 11, 10, 12, 13, 13, 12}}, 14,
                 {{10, 1, 1}, {11, 1, 1}, {12, 1, 2 * t}, {13, 1, t}}),
      // A unit quadrangle 0 1 4 3 and a triangle 1 2 4 on its right.
      raise_case("mixed", strip, conn({{0, 1, 4, 3}, {1, 2, 4, N}}), 1, 1, 0, {},
                 {{0, 1, 4, 3, 5, 6, 7, 8, 11}, {1, 2, 4, 9, 6, 10, N, N, N}}, 12, {{11, 0.5, 0.5}}),
      raise_case("T6 from 4 rows", strip, conn({{1, 2, 4, N}, {0, 1, 3, N}}), 1, 1, 0, {},
                 {{1, 2, 4, 5, 6, 7}, {0, 1, 3, 8, 9, 10}}, 11, {}),
      raise_case("Q8", strip, conn({{0, 1, 4, 3}}), 1, 0, 0, {}, {{0, 1, 4, 3, 5, 6, 7, 8}}, 9, {}),
      raise_case("interior grid rows of constant v, u fastest", coords({{0, 0}, {3, 0}, {3, 3}, {0, 3}}),
                 conn({{0, 1, 2, 3}}), 1, 4, 0, {}, {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}}, 12,
                 {{8, 1, 1}, {9, 2, 1}, {10, 1, 2}, {11, 2, 2}}),
      // Three interior nodes per triangle: two are kept, the numbering moves
      // by two, and the trailing columns stay zero.
      raise_case("partial three-node triangle", sq4, two_triangles(), 1, 0, 3, {},
                 {{0, 1, 2, 4, 5, 6, 9, 10, N}, {1, 3, 2, 7, 4, 8, 11, 12, N}}, 15,
                 {{9, 1, 2}, {10, 1, 1}, {11, 2, 3}, {13, 3, 3}, {14, 0, 0}}),
      // Node 4 is an existing, off-centre mid node of edge 2-1; T6 shape
      // functions at the centroid: -1/9 per corner, 4/9 per mid node.
      raise_case("known mid node", coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0.6, 0.6}}), two_triangles(), 1, 0, 1,
                 conn({{2, 1, 4}}), {{0, 1, 2, 4, 5, 6, 9}, {1, 3, 2, 7, 4, 8, 10}}, 11,
                 {{4, 0.6, 0.6}, {9, -1.0 / 9 + 4.0 / 9 * 1.1, -1.0 / 9 + 4.0 / 9 * 1.1}}),
      // The run 4, 5 given from node 2 towards node 1, against element 0.
      raise_case("known run", coords({{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0.3, 0.7}, {0.7, 0.3}}), two_triangles(), 2, 0,
                 0, conn({{2, 1, 4, 0}}), {{0, 1, 2, 5, 4, 6, 7, 8, 9}, {1, 3, 2, 10, 11, 4, 5, 12, 13}}, 14,
                 {{5, 0.7, 0.3}}),
  };
  for (const auto& k : cases)
    for (int form = 0; form < 3; ++form) { // out of place, in place, in place through strided views
      SCOPED_TRACE(std::string(k.what) + " form " + std::to_string(form));
      auto x = form == 2 ? strided(k.x) : deep(k.x);
      auto c = form == 2 ? strided(k.mesh) : deep(k.mesh);
      dense2D<unsigned> out = conn({{7}});
      ASSERT_EQ(form == 0 ? convert_into_high_order(x, strided(k.mesh), k.ne, k.nq, k.nt, out, k.edges)
                          : convert_into_high_order(x, c, k.ne, k.nq, k.nt, k.edges),
                0);
      EXPECT_EQ(as_columns(form == 0 ? out : c), k.want);
      ASSERT_EQ(x.cols, k.n_nodes);
      for (unsigned id = 0; id < k.x.cols; ++id) // old nodes stay
        EXPECT_EQ(x(0, id), k.x(0, id));
      for (const auto& n : k.nodes)
        expect_node(x, static_cast<unsigned>(n[0]), n[1], n[2]);
    }
}

TEST(RaiseOrder, KnownEdgesNoElementMeetsTakeNoSlotFromTheElements) {
  // Eleven separate unit quadrangles (nodes 4j to 4j + 3) give 44 distinct
  // edges, and three known edges between nodes no element uses are filed
  // under their own lower ends: every element edge still finds its slot
  // and the numbering runs on unbroken.
  dense2D<double> x(2, 53);
  dense2D<unsigned> quads(4, 11);
  for (unsigned j = 0; j < 11; ++j)
    for (unsigned k = 0; k < 4; ++k) {
      x(0, 4 * j + k) = 2.0 * j + (k == 1 || k == 2);
      x(1, 4 * j + k) = k >= 2;
      quads(k, j) = 4 * j + k;
    }
  const auto known = conn({{44, 45, 46}, {47, 48, 49}, {50, 51, 52}});
  dense2D<unsigned> out;
  ASSERT_EQ(convert_into_high_order(x, quads, 1, 1, 0, out, known), 0);
  ASSERT_EQ(x.cols, 53u + 44u + 11u);
  for (unsigned j = 0; j < 11; ++j) {
    for (unsigned e = 0; e < 4; ++e)
      ASSERT_EQ(out(4 + e, j), 53 + 4 * j + e) << "quadrangle " << j;
    ASSERT_EQ(out(8, j), 97 + j);
    expect_node(x, 53 + 4 * j, 2.0 * j + 0.5, 0); // edge 0-1
    expect_node(x, 97 + j, 2.0 * j + 0.5, 0.5);
  }
}

TEST(RaiseOrder, SurfacesInSpaceGetAllThreeCoordinates) {
  // A bent quadrangle 0 1 2 3 and a triangle 1 4 2 beside it, with z set.
  const auto x0 = coords({{0, 0, 0}, {1, 0, 1}, {1, 1, 2}, {0, 1, 3}, {2, 0, 4}});
  auto x = strided(x0);
  dense2D<unsigned> out;
  ASSERT_EQ(convert_into_high_order(x, conn({{0, 1, 2, 3}, {1, 4, 2, N}}), 1, 1, 1, out, dense2D<unsigned>()), 0);
  ASSERT_EQ(x.cols, 5u + 6u + 2u);
  for (unsigned j = 0; j < 2; ++j) {
    const bool tri = j == 1;
    for (unsigned e = 0; e < (tri ? 3u : 4u); ++e) {
      const unsigned a = out(tri ? (e + 1) % 3 : e, j), b = out(tri ? (e + 2) % 3 : (e + 1) % 4, j);
      for (unsigned i = 0; i < 3; ++i)
        EXPECT_DOUBLE_EQ(x(i, out((tri ? 3 : 4) + e, j)), (x0(i, a) + x0(i, b)) / 2) << j << " " << e;
    }
  }
  for (unsigned i = 0; i < 3; ++i) {
    EXPECT_DOUBLE_EQ(x(i, out(8, 0)), (x0(i, 0) + x0(i, 1) + x0(i, 2) + x0(i, 3)) / 4);
    EXPECT_NEAR(x(i, out(6, 1)), (x0(i, 1) + x0(i, 4) + x0(i, 2)) / 3, 1e-15);
  }
}

TEST(RaiseOrder, StatusesInCheckingOrderAndTheEmptiedConn) {
  const dense2D<unsigned> none;
  auto bad_x = dense2D<double>(4, 4, 0.0);
  auto c = two_triangles();
  EXPECT_EQ(convert_into_high_order(bad_x, dense2D<unsigned>(3, 0), 9, 2, 2, c, conn({{0}})), 0);
  EXPECT_EQ(c.cols, 0u); // the output is cleared before anything else

  auto x = square();
  const auto check = [&](const dense2D<unsigned>& mesh, unsigned ne, unsigned nq, unsigned nt,
                         const dense2D<unsigned>& edges, dense2D<double>& xs) {
    auto in_place = deep(mesh);
    const int status = convert_into_high_order(xs, in_place, ne, nq, nt, edges);
    EXPECT_EQ(in_place.rows * in_place.cols, 0u) << status; // the caller's conn is left empty
    dense2D<unsigned> out = conn({{7}});
    EXPECT_EQ(convert_into_high_order(xs, mesh, ne, nq, nt, out, edges), status);
    EXPECT_EQ(out.cols, 0u);
    EXPECT_EQ(xs.cols, 4u);
    return status;
  };
  EXPECT_EQ(check(two_triangles(), 0, 0, 0, conn({{9, 9}}), x), 0); // nothing asked: conn emptied
  EXPECT_EQ(check(two_triangles(), 1, 2, 2, conn({{9}}), bad_x), -1);
  EXPECT_EQ(check(conn({{0, 1, 4}}), 1, 2, 2, conn({{9}}), x), -2);
  EXPECT_EQ(check(conn({{0, 1, 2, 3, 0}}), 1, 0, 0, none, x), -2);
  EXPECT_EQ(check(conn({{0, 1, N}}), 1, 0, 0, none, x), -2);
  EXPECT_EQ(check(two_triangles(), 1, 2, 2, conn({{9}}), x), -4);
  EXPECT_EQ(check(two_triangles(), 1, 4, 2, conn({{9}}), x), -5);
  EXPECT_EQ(check(two_triangles(), 1, 4, 3, conn({{1, 2}}), x), -6);
  EXPECT_EQ(check(two_triangles(), 1, 4, 3, conn({{1, 2, 4}}), x), -6);
  EXPECT_EQ(check(two_triangles(), 2, 4, 3, conn({{1, 2, 3, 0}}), x), -6); // the run 3, 4 passes the last node

  auto q = two_triangles();
  EXPECT_EQ(convert_into_quadratic(bad_x, q), -1);
  EXPECT_EQ(q.cols, 0u);
  q = two_triangles();
  EXPECT_EQ(convert_into_quadratic(x, q, conn({{1, 2}})), -6);
}

TEST(RaiseOrder, OutOfMemoryRollsBackCoordsInEveryForm) {
  const auto mesh = make_random_mesh(4, 7);
  const unsigned a = mesh.conn(0, 0), b = mesh.conn(1, 0);
  const auto cubic_edges = conn({{a, b, 0, 0}}), quartic_edges = conn({{a, b, 0, 0, 0}});
  for (int form = 0; form < 3; ++form) {
    auto ref_x = deep(mesh.coords);
    auto ref_c = deep(mesh.conn);
    dense2D<unsigned> ref_out;
    const auto run = [&](dense2D<double>& x, dense2D<unsigned>& c, dense2D<unsigned>& out) {
      switch (form) {
      case 0: return convert_into_high_order(x, mesh.conn, 2, 4, 1, out, cubic_edges);
      case 1: return convert_into_high_order(x, c, 3, 1, 3, quartic_edges);
      default: return convert_into_quadratic(x, c);
      }
    };
    ASSERT_EQ(run(ref_x, ref_c, ref_out), 0);
    unsigned refusals = 0;
    const unsigned long walked = sweep_allocation_failures([&](unsigned long n) {
      auto x = deep(mesh.coords);
      auto c = deep(mesh.conn);
      dense2D<unsigned> out = conn({{5, 5}});
      int status = 1;
      const bool failed = fail_during(n, [&] { status = run(x, c, out); });
      const auto& result = form == 0 ? out : c;
      if (status == -199) {
        ++refusals;
        EXPECT_EQ(as_columns(x), as_columns(mesh.coords));
        // In place, a failed copy at entry changes nothing; later failures
        // leave the emptied output.
        const bool untouched = form != 0 && as_columns(c) == as_columns(mesh.conn);
        EXPECT_TRUE(untouched || result.rows * result.cols == 0);
      } else {
        EXPECT_EQ(status, 0);
        EXPECT_EQ(as_columns(x), as_columns(ref_x));
        EXPECT_EQ(as_columns(result), as_columns(form == 0 ? ref_out : ref_c));
      }
      // The working map's first sizing may fail unnoticed: it is sized again
      // before use, and the call then succeeds.
      EXPECT_TRUE(status != -199 || failed) << "form " << form << " allocation " << n;
      return failed;
    });
    EXPECT_GE(walked, 3u);
    EXPECT_GE(refusals, 3u);
  }
}

TEST(RaiseOrder, RandomMeshesHaveMidNodesAtMidpointsAndSharedEdgesAgree) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    const auto mesh = make_random_mesh(9, seed, seed / 6.0);
    auto x = strided(mesh.coords);
    auto c = strided(mesh.conn);
    ASSERT_EQ(convert_into_high_order(x, c, 3, 0, 0, dense2D<unsigned>()), 0);
    std::map<std::pair<unsigned, unsigned>, std::vector<unsigned>> runs;
    for (unsigned j = 0; j < c.cols; ++j) {
      const bool tri = mesh.conn(3, j) == N;
      for (unsigned e = 0; e < (tri ? 3u : 4u); ++e) {
        const unsigned a = c(tri ? (e + 1) % 3 : e, j), b = c(tri ? (e + 2) % 3 : (e + 1) % 4, j);
        const std::vector<unsigned> run{c((tri ? 3 : 4) + 3 * e, j), c((tri ? 4 : 5) + 3 * e, j),
                                        c((tri ? 5 : 6) + 3 * e, j)};
        for (unsigned k = 0; k < 3; ++k) // evenly spaced from a to b
          for (unsigned i = 0; i < 2; ++i)
            EXPECT_NEAR(x(i, run[k]), x(i, a) + (k + 1) * (x(i, b) - x(i, a)) / 4, 1e-14);
        const auto other = runs.find({b, a});
        if (other != runs.end())
          EXPECT_EQ(other->second, (std::vector<unsigned>{run[2], run[1], run[0]}));
        else
          runs[{a, b}] = run;
      }
    }
    EXPECT_EQ(x.cols, mesh.coords.cols + 3 * runs.size()); // one run per distinct edge
  }
}
