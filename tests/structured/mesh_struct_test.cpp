#include <gtest/gtest.h>

#include <cmath>

#include "structured/grid_numbering.h"
#include "structured/transfinite.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/planar_area.h"
#include "tesskit2d/structured.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using cols_t = std::vector<std::vector<unsigned>>;

namespace {

// Boundary nodes of an M by N grid on [0, w] x [0, h], evenly spaced and
// numbered in loop order from the corner (0, 0), counter-clockwise; `loop`
// gets their IDs and the first one again. `rows` 3 adds z = f(x, y).
struct rectangle {
  dense2D<double> coords;
  dense1D<unsigned, 8> loop;
};

rectangle rectangle_loop(unsigned M, unsigned N, double w, double h, unsigned rows = 2,
                         double (*f)(double, double) = nullptr) {
  rectangle r;
  const unsigned B = 2 * (M + N);
  r.coords.resize(rows, B);
  auto put = [&](unsigned id, double x, double y) {
    r.coords(0, id) = x;
    r.coords(1, id) = y;
    if (rows == 3) r.coords(2, id) = f(x, y);
  };
  unsigned id = 0;
  for (unsigned i = 0; i < M; ++i, ++id)
    put(id, w * i / M, 0);
  for (unsigned j = 0; j < N; ++j, ++id)
    put(id, w, h * j / N);
  for (unsigned i = M; i > 0; --i, ++id)
    put(id, w * i / M, h);
  for (unsigned j = N; j > 0; --j, ++id)
    put(id, 0, h * j / N);
  for (unsigned k = 0; k <= B; ++k)
    r.loop.push_back(k % B);
  return r;
}

dense1D<unsigned, 8> ids(std::initializer_list<unsigned> v) {
  dense1D<unsigned, 8> a;
  for (unsigned x : v)
    a.push_back(x);
  return a;
}

} // namespace

TEST(MeshStruct, NineEntryLoopPutsOneInteriorNodeAtTheCentre) {
  auto r = rectangle_loop(2, 2, 1, 1);
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(r.coords, r.loop, 2, quads), 0);
  ASSERT_EQ(r.coords.cols, 9u);
  EXPECT_DOUBLE_EQ(r.coords(0, 8), 0.5);
  EXPECT_DOUBLE_EQ(r.coords(1, 8), 0.5);
  // Loop IDs: (0,0)=0 (1,0)=1 (2,0)=2 (2,1)=3 (2,2)=4 (1,2)=5 (0,2)=6 (0,1)=7.
  EXPECT_EQ(as_columns(quads), (cols_t{{0, 1, 8, 7}, {7, 8, 5, 6}, {1, 2, 3, 8}, {8, 3, 4, 5}}));
}

TEST(MeshStruct, EvenlySampledRectangleGivesTheRegularGridAndItsArea) {
  auto r = rectangle_loop(4, 3, 2.0, 1.5);
  const unsigned n_nodes = r.coords.cols;
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(r.coords, r.loop, 3, quads), 0);
  ASSERT_EQ(r.coords.cols, n_nodes + 3 * 2);
  for (unsigned i = 1; i < 4; ++i)
    for (unsigned j = 1; j < 3; ++j) {
      const unsigned id = grid_node_id(i, j, 4, 3, n_nodes, r.loop);
      EXPECT_EQ(id, n_nodes + (i - 1) * 2 + (j - 1));
      EXPECT_NEAR(r.coords(0, id), 0.5 * i, 1e-14);
      EXPECT_NEAR(r.coords(1, id), 0.5 * j, 1e-14);
    }
  double smallest = 0;
  EXPECT_EQ(quads.cols, 12u);
  EXPECT_NEAR(signed_area(r.coords, quads, &smallest), 3.0, 1e-13);
  EXPECT_NEAR(smallest, 0.25, 1e-14);

  for (int pattern : {0, 1, 2}) {
    auto t = rectangle_loop(4, 3, 2.0, 1.5);
    dense2D<unsigned> tris;
    ASSERT_EQ(mesh_struct_T3(t.coords, t.loop, 3, pattern, tris), 0);
    EXPECT_EQ(tris.cols, 24u);
    EXPECT_NEAR(signed_area(t.coords, tris, &smallest), 3.0, 1e-13);
    EXPECT_NEAR(smallest, 0.125, 1e-14);
  }
}

TEST(MeshStruct, ThinGridsUseOnlyBoundaryNodes) {
  auto one = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(one, ids({2, 3, 0, 1, 2}), 1, quads), 0);
  EXPECT_EQ(as_columns(quads), (cols_t{{2, 3, 0, 1}}));
  EXPECT_EQ(one.cols, 4u);

  auto strip = rectangle_loop(3, 1, 3, 1); // M = 3, N = 1: no interior node
  dense2D<unsigned> tris;
  ASSERT_EQ(mesh_struct_T3(strip.coords, strip.loop, 1, 1, tris), 0);
  EXPECT_EQ(strip.coords.cols, 8u);
  EXPECT_EQ(tris.cols, 6u);
  EXPECT_NEAR(signed_area(strip.coords, tris), 3.0, 1e-14);
}

TEST(MeshStruct, TrianglePatternsChooseTheDiagonalPerCell) {
  auto r = rectangle_loop(2, 2, 1, 1);
  dense2D<unsigned> tris;
  ASSERT_EQ(mesh_struct_T3(r.coords, r.loop, 2, 2, tris), 0);
  // Cells (0,0) and (1,1) are cut along A-C, (0,1) and (1,0) along P-D.
  EXPECT_EQ(as_columns(tris),
            (cols_t{{0, 1, 8}, {0, 8, 7}, {7, 8, 6}, {8, 5, 6}, {1, 2, 8}, {2, 3, 8}, {8, 3, 4}, {8, 4, 5}}));
  auto s = rectangle_loop(1, 1, 1, 1);
  dense2D<unsigned> p0, p1;
  ASSERT_EQ(mesh_struct_T3(s.coords, s.loop, 1, 0, p0), 0);
  ASSERT_EQ(mesh_struct_T3(s.coords, s.loop, 1, 1, p1), 0);
  EXPECT_EQ(as_columns(p0), (cols_t{{0, 1, 3}, {1, 2, 3}}));
  EXPECT_EQ(as_columns(p1), (cols_t{{0, 1, 2}, {0, 2, 3}}));
}

TEST(MeshStruct, StatusesInCheckingOrderLeaveArraysUntouched) {
  auto r = rectangle_loop(2, 2, 1, 1);
  const auto before = as_columns(r.coords);
  dense2D<unsigned> out = conn({{7, 7, 7, 7}});
  dense2D<unsigned> out3 = conn({{7, 7, 7}});
  dense2D<double> flat = coords({{0}, {1}, {2}, {3}, {4}, {5}, {6}, {7}}); // 1 row
  // Nothing to do: N = 0, B = 0, or M = 0 for the quadrangles.
  EXPECT_EQ(mesh_struct_Q4(flat, r.loop, 0, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(flat, dense1D<unsigned, 8>(), 2, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(flat, ids({0, 1, 2, 3, 4, 0}), 2, out3), 0); // B = 2N + 1 gives M = 0
  EXPECT_EQ(mesh_struct_T3(flat, r.loop, 0, 9, out), 0);

  EXPECT_EQ(mesh_struct_Q4(flat, r.loop, 2, out3), -1);
  // A 4-entry loop with one cell across has M = 0 and is nothing to do for
  // the quadrangles; a wrapped M reaches the loop check.
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 0}), 1, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 0}), 3, out3), -2);
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 3, 4, 5, 6, 7, 1}), 2, out3), -2);    // open
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 3, 4, 5, 6, 8, 0}), 2, out3), -2);    // ID 8 absent
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 3, 4, 5, 6, 7, 6, 0}), 2, out3), -3); // even B
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 3, 0}), 3, out3), -3);                // 2N above B
  EXPECT_EQ(mesh_struct_Q4(r.coords, r.loop, 2, out3), -4);
  EXPECT_EQ(mesh_struct_T3(flat, r.loop, 2, 7, out), -1);
  EXPECT_EQ(mesh_struct_T3(r.coords, ids({0, 1, 2, 0}), 1, 7, out), -2);
  EXPECT_EQ(mesh_struct_T3(r.coords, ids({0, 1, 2, 3, 0}), 3, 7, out), -3);
  EXPECT_EQ(mesh_struct_T3(r.coords, r.loop, 2, -1, out), -4);
  EXPECT_EQ(mesh_struct_T3(r.coords, r.loop, 2, 3, out), -4);
  EXPECT_EQ(mesh_struct_T3(r.coords, r.loop, 2, 1, out), -5);
  EXPECT_EQ(as_columns(r.coords), before);
  EXPECT_EQ(as_columns(out), (cols_t{{7, 7, 7, 7}}));
  EXPECT_EQ(as_columns(out3), (cols_t{{7, 7, 7}}));
}

TEST(MeshStruct, TriangleFormWithNoFirstSideDropsColumnsOfCoords) {
  // B = 2 N + 1: M = 0 passes every check of the triangle form, adds no
  // element and wraps the interior count to -(N - 1).
  auto c = coords({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}});
  dense2D<unsigned> tris;
  ASSERT_EQ(mesh_struct_T3(c, ids({0, 1, 2, 3, 4, 5, 0}), 3, 0, tris), 0);
  EXPECT_EQ(c.cols, 4u);
  EXPECT_EQ(tris.cols, 0u);
  auto q = coords({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}});
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(q, ids({0, 1, 2, 3, 4, 5, 0}), 3, quads), 0);
  EXPECT_EQ(q.cols, 6u);
}

TEST(MeshStruct, AppendsBehindExistingColumnsThroughStridedViews) {
  auto packed = rectangle_loop(3, 2, 3, 2);
  dense2D<unsigned> packed_out = conn({{9, 9, 9, 9}});
  ASSERT_EQ(mesh_struct_Q4(packed.coords, packed.loop, 2, packed_out), 0);

  auto r = rectangle_loop(3, 2, 3, 2);
  auto c = strided(r.coords);
  dense1D<unsigned, 8> loop(r.loop.size + 4, 55u); // the loop at an offset, junk before it
  loop.offset = 4;
  loop.size = r.loop.size;
  for (unsigned k = 0; k < loop.size; ++k)
    loop[k] = r.loop[k];
  auto out = strided(conn({{9, 9, 9, 9}}));
  ASSERT_EQ(mesh_struct_Q4(c, loop, 2, out), 0);
  EXPECT_EQ(as_columns(out), as_columns(packed_out));
  EXPECT_EQ(as_columns(c), as_columns(packed.coords));
}

TEST(MeshStruct, CurvedPatchFollowsTheBlendingInAllThreeRows) {
  // The blended interpolation reproduces any f(x) + g(y) from its sides.
  auto saddle = [](double x, double y) { return x * x - 2 * y * y; };
  auto r = rectangle_loop(5, 4, 1, 1, 3, saddle);
  const unsigned n_nodes = r.coords.cols;
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(r.coords, r.loop, 4, quads), 0);
  ASSERT_EQ(r.coords.rows, 3u);
  for (unsigned id = n_nodes; id < r.coords.cols; ++id)
    EXPECT_NEAR(r.coords(2, id), saddle(r.coords(0, id), r.coords(1, id)), 1e-14);
  // The grid is filled line by line; a single point gives the same values.
  double point[3];
  transfinite_point(r.coords.column(0), r.coords.ld, 3, 2, 3, 5, 4, n_nodes, r.loop.begin(), point);
  const unsigned id = grid_node_id(2, 3, 5, 4, n_nodes, r.loop);
  for (unsigned k = 0; k < 3; ++k)
    EXPECT_EQ(point[k], r.coords(k, id));
}

TEST(MeshStruct, CrowdedBoundaryPullsTheInteriorLines) {
  // The inner nodes of the first and third sides crowd towards x = 0.
  auto s = rectangle_loop(4, 2, 1, 1);
  for (unsigned id : {1u, 2u, 3u, 7u, 8u, 9u})
    s.coords(0, id) = s.coords(0, id) * s.coords(0, id);
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(s.coords, s.loop, 2, quads), 0);
  for (unsigned i = 1; i < 4; ++i)
    EXPECT_NEAR(s.coords(0, grid_node_id(i, 1, 4, 2, 12, s.loop)), (i / 4.0) * (i / 4.0), 1e-14);
  EXPECT_NEAR(signed_area(s.coords, quads), 1.0, 1e-14);
}

TEST(MeshStruct, OutOfMemoryRestoresColumnCounts) {
  for (bool triangles : {false, true}) {
    const unsigned long walked = sweep_allocation_failures([&](unsigned long n) {
      auto r = rectangle_loop(3, 2, 1, 1);
      const auto nodes = as_columns(r.coords);
      auto out = triangles ? conn({{9, 9, 9}}) : conn({{9, 9, 9, 9}});
      const auto elements = as_columns(out);
      int status = 1;
      const bool failed = fail_during(n, [&] {
        status = triangles ? mesh_struct_T3(r.coords, r.loop, 2, 2, out) : mesh_struct_Q4(r.coords, r.loop, 2, out);
      });
      if (status == -199) {
        EXPECT_EQ(as_columns(r.coords), nodes);
        EXPECT_EQ(as_columns(out), elements);
      } else {
        EXPECT_EQ(status, 0);
        EXPECT_EQ(r.coords.cols, 10u + 2);
      }
      EXPECT_EQ(status == -199, failed);
      return failed;
    });
    EXPECT_GE(walked, 2u);
  }
}
