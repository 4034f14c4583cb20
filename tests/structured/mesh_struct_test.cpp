#include <gtest/gtest.h>

#include <cmath>

#include "structured/grid_numbering.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/planar_area.h"
#include "tesskit2d/structured.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

dense1D<unsigned, 8> ids(std::initializer_list<unsigned> v) {
  dense1D<unsigned, 8> a;
  for (unsigned x : v)
    a.push_back(x);
  return a;
}

// Boundary nodes of an M by N grid on [0, w] x [0, h], evenly spaced and
// numbered in loop order from the corner (0, 0), counter-clockwise; `loop`
// gets their IDs and the first one again. `f` adds a third row z = f(x, y).
struct rectangle {
  dense2D<double> coords;
  dense1D<unsigned, 8> loop;
};

rectangle rectangle_loop(unsigned M, unsigned N, double w, double h, double (*f)(double, double) = nullptr) {
  rectangle r;
  const unsigned B = 2 * (M + N);
  r.coords.resize(f ? 3 : 2, B);
  for (unsigned id = 0; id < B; ++id) {
    const double x = id < M ? w * id / M : id < M + N ? w : id < 2 * M + N ? w * (2 * M + N - id) / M : 0;
    const double y = id < M ? 0 : id < M + N ? h * (id - M) / N : id < 2 * M + N ? h : h * (B - id) / N;
    r.coords(0, id) = x;
    r.coords(1, id) = y;
    if (f) r.coords(2, id) = f(x, y);
  }
  for (unsigned k = 0; k <= B; ++k)
    r.loop.push_back(k % B);
  return r;
}

} // namespace

TEST(MeshStruct, CellsRunAlongTheSecondSideAndPatternsChooseTheirDiagonals) {
  // Loop IDs: (0,0)=0 (1,0)=1 (2,0)=2 (2,1)=3 (2,2)=4 (1,2)=5 (0,2)=6 (0,1)=7; centre 8.
  auto r = rectangle_loop(2, 2, 1, 1);
  dense2D<unsigned> quads, tris;
  ASSERT_EQ(mesh_struct_Q4(r.coords, r.loop, 2, quads), 0);
  ASSERT_EQ(r.coords.cols, 9u);
  EXPECT_DOUBLE_EQ(r.coords(0, 8), 0.5);
  EXPECT_DOUBLE_EQ(r.coords(1, 8), 0.5);
  EXPECT_EQ(as_columns(quads), (cols_t{{0, 1, 8, 7}, {7, 8, 5, 6}, {1, 2, 3, 8}, {8, 3, 4, 5}}));
  // Pattern 2: cells (0,0) and (1,1) are cut along A-C, (0,1) and (1,0) along P-D.
  auto t = rectangle_loop(2, 2, 1, 1);
  ASSERT_EQ(mesh_struct_T3(t.coords, t.loop, 2, 2, tris), 0);
  EXPECT_EQ(as_columns(tris),
            (cols_t{{0, 1, 8}, {0, 8, 7}, {7, 8, 6}, {8, 5, 6}, {1, 2, 8}, {2, 3, 8}, {8, 3, 4}, {8, 4, 5}}));
  auto s = rectangle_loop(1, 1, 1, 1);
  dense2D<unsigned> p0, p1;
  ASSERT_EQ(mesh_struct_T3(s.coords, s.loop, 1, 0, p0), 0);
  ASSERT_EQ(mesh_struct_T3(s.coords, s.loop, 1, 1, p1), 0);
  EXPECT_EQ(as_columns(p0), (cols_t{{0, 1, 3}, {1, 2, 3}}));
  EXPECT_EQ(as_columns(p1), (cols_t{{0, 1, 2}, {0, 2, 3}}));
  // A loop may start at any node: the grid starts there.
  dense2D<unsigned> one;
  ASSERT_EQ(mesh_struct_Q4(s.coords, ids({2, 3, 0, 1, 2}), 1, one), 0);
  EXPECT_EQ(as_columns(one), (cols_t{{2, 3, 0, 1}}));
}

TEST(MeshStruct, EvenlySampledRectangleGivesTheRegularGridAndItsArea) {
  for (int pattern : {-1, 0, 1, 2}) { // -1: quadrangles
    auto r = rectangle_loop(4, 3, 2.0, 1.5);
    dense2D<unsigned> out;
    ASSERT_EQ(
        pattern < 0 ? mesh_struct_Q4(r.coords, r.loop, 3, out) : mesh_struct_T3(r.coords, r.loop, 3, pattern, out), 0);
    ASSERT_EQ(r.coords.cols, 14u + 3 * 2);
    for (unsigned i = 1; i < 4; ++i)
      for (unsigned j = 1; j < 3; ++j) {
        const unsigned id = grid_node_id(i, j, 4, 3, 14, r.loop);
        EXPECT_EQ(id, 14 + (i - 1) * 2 + (j - 1));
        EXPECT_NEAR(r.coords(0, id), 0.5 * i, 1e-14);
        EXPECT_NEAR(r.coords(1, id), 0.5 * j, 1e-14);
      }
    double smallest = 0;
    EXPECT_EQ(out.cols, pattern < 0 ? 12u : 24u);
    EXPECT_NEAR(signed_area(r.coords, out, &smallest), 3.0, 1e-13);
    EXPECT_NEAR(smallest, pattern < 0 ? 0.25 : 0.125, 1e-14);
  }
  auto strip = rectangle_loop(3, 1, 3, 1); // N = 1: no interior node
  dense2D<unsigned> tris;
  ASSERT_EQ(mesh_struct_T3(strip.coords, strip.loop, 1, 1, tris), 0);
  EXPECT_EQ(strip.coords.cols, 8u);
  EXPECT_NEAR(signed_area(strip.coords, tris), 3.0, 1e-14);
}

TEST(MeshStruct, BlendingFollowsCurvedAndCrowdedSides) {
  // The blended interpolation reproduces any f(x) + g(y) from its sides.
  auto saddle = [](double x, double y) { return x * x - 2 * y * y; };
  auto r = rectangle_loop(5, 4, 1, 1, saddle);
  dense2D<unsigned> quads;
  ASSERT_EQ(mesh_struct_Q4(r.coords, r.loop, 4, quads), 0);
  for (unsigned id = 18; id < r.coords.cols; ++id)
    EXPECT_NEAR(r.coords(2, id), saddle(r.coords(0, id), r.coords(1, id)), 1e-14);
  // Inner nodes of the first and third sides crowded towards x = 0 pull the
  // interior lines with them.
  auto s = rectangle_loop(4, 2, 1, 1);
  for (unsigned id : {1u, 2u, 3u, 7u, 8u, 9u})
    s.coords(0, id) = s.coords(0, id) * s.coords(0, id);
  ASSERT_EQ(mesh_struct_Q4(s.coords, s.loop, 2, quads), 0);
  for (unsigned i = 1; i < 4; ++i)
    EXPECT_NEAR(s.coords(0, grid_node_id(i, 1, 4, 2, 12, s.loop)), (i / 4.0) * (i / 4.0), 1e-14);
}

TEST(MeshStruct, StatusesInCheckingOrderLeaveArraysUntouchedAndCountsAreNotWrapped) {
  auto r = rectangle_loop(2, 2, 1, 1);
  const auto before = as_columns(r.coords);
  dense2D<unsigned> out = conn({{7, 7, 7, 7}}), out3 = conn({{7, 7, 7}});
  dense2D<double> flat(1, 8, 0.0);
  // Nothing to do: N = 0, B = 0, or M = 0 for the quadrangles (B = 2N + 1,
  // or a 4-entry loop one cell across).
  EXPECT_EQ(mesh_struct_Q4(flat, r.loop, 0, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(flat, dense1D<unsigned, 8>(), 2, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(flat, ids({0, 1, 2, 3, 4, 0}), 2, out3), 0);
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 0}), 1, out3), 0);
  EXPECT_EQ(mesh_struct_T3(flat, r.loop, 0, 9, out), 0);

  EXPECT_EQ(mesh_struct_Q4(flat, r.loop, 2, out3), -1);
  EXPECT_EQ(mesh_struct_Q4(r.coords, ids({0, 1, 2, 0}), 3, out3), -2);                   // a wrapped M
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
  EXPECT_EQ(flat.cols, 8u);
  EXPECT_EQ(as_columns(out), (cols_t{{7, 7, 7, 7}}));
  EXPECT_EQ(as_columns(out3), (cols_t{{7, 7, 7}}));

  // B = 2 N + 1: M = 0 passes every check of the triangle form, adds no
  // element and wraps the interior count to -(N - 1), dropping columns.
  auto c = coords({{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}});
  dense2D<unsigned> tris;
  ASSERT_EQ(mesh_struct_T3(c, ids({0, 1, 2, 3, 4, 5, 0}), 3, 0, tris), 0);
  EXPECT_EQ(c.cols, 4u);
  EXPECT_EQ(tris.cols, 0u);

  // A 65536 by 65536 grid on a loop of one repeated node is 2^32 cells: no
  // memory, nothing grown. 2 N wraps to 0 in 32 bits; taken wide it is far
  // above B.
  dense2D<double> one(2, 1, 0.0);
  const dense1D<unsigned, 8> big_loop(2 * (65536 + 65536) + 1, 0u);
  EXPECT_EQ(mesh_struct_Q4(one, big_loop, 65536, tris), -199);
  EXPECT_EQ(mesh_struct_T3(one, big_loop, 65536, 0, tris), -199);
  EXPECT_EQ(one.cols + tris.cols, 1u);
  auto wide = rectangle_loop(3, 2, 1, 1);
  EXPECT_EQ(mesh_struct_T3(wide.coords, wide.loop, 0x80000000u, 0, tris), -3);
  EXPECT_EQ(mesh_struct_Q4(wide.coords, wide.loop, 0x80000000u, tris), -3);
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
      EXPECT_EQ(status, failed ? -199 : 0);
      if (failed) {
        EXPECT_EQ(as_columns(r.coords), nodes);
        EXPECT_EQ(as_columns(out), elements);
      }
      return failed;
    });
    EXPECT_GE(walked, 2u);
  }
}
