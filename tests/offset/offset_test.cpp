#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "support/surface_meshes.h"
#include "tesskit2d/offset.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

symmetric_fixed<double, 3> diagonal(double a) { return {{a, 0, a, 0, 0, a}}; }

// Normals along +z for every node of a mesh with `n` nodes.
dense2D<double> up(unsigned n) {
  dense2D<double> u(3, n, 0.0);
  for (unsigned j = 0; j < n; ++j)
    u(2, j) = 1;
  return u;
}

// The eight exports by number: 0 to 3 take normals, 4 to 7 do not; within
// each four, offset by tensor and by distance, then the copy by both.
int call(int form, dense2D<double>& x, const dense2D<unsigned>& c, const dense2D<double>& normals,
         dense2D<unsigned>& out) {
  const auto t = diagonal(1);
  switch (form) {
  case 0: return offset(x, c, normals, t);
  case 1: return offset(x, c, normals, 1.0);
  case 2: return copy_with_offset(x, c, normals, t, out);
  case 3: return copy_with_offset(x, c, normals, 1.0, out);
  case 4: return offset(x, c, t);
  case 5: return offset(x, c, 1.0);
  case 6: return copy_with_offset(x, c, t, out);
  default: return copy_with_offset(x, c, 1.0, out);
  }
}

} // namespace

TEST(Offset, EachUsedNodeMovesOnceAndTheFormsAgree) {
  // Inner nodes of a 3 by 3 grid have six triangles; node 16 has none.
  surface g = triangle_grid(3);
  g.xyz.resize(3, 17, 4.0);
  const auto before = as_columns(g.xyz);
  const symmetric_fixed<double, 3> turn{{0, 1, 0, 0, 0, 0}}; // swaps x and y of the normal
  for (int form : {0, 1, 4, 5}) {
    dense2D<double> xyz = form == 1 ? strided(g.xyz) : deep(g.xyz);
    dense2D<unsigned> none;
    ASSERT_EQ(call(form, xyz, form == 0 ? strided(g.conn) : g.conn, strided(up(17)), none), 0);
    auto want = before;
    for (unsigned j = 0; j < 16; ++j)
      want[j][2] = 1;
    EXPECT_EQ(as_columns(xyz), want) << "form " << form;
  }
  dense2D<double> xyz = deep(g.xyz);
  ASSERT_EQ(offset(xyz, g.conn, up(16), turn), 0);
  EXPECT_EQ(as_columns(xyz), before); // the turned normal lies in the plane z = 0...
  ASSERT_EQ(offset(xyz, g.conn, up(16), diagonal(0.0)), 0);
  EXPECT_EQ(as_columns(xyz), before); // ...and a zero tensor moves nothing
}

TEST(Offset, SphereOfRadiusRMovedByDHasRadiusRPlusD) {
  surface s = uv_sphere(96, 48, 2.0);
  ASSERT_EQ(offset(s.xyz, s.conn, 0.5), 0);
  for (unsigned j = 0; j < s.xyz.cols; ++j)
    EXPECT_NEAR(std::hypot(s.xyz(0, j), s.xyz(1, j), s.xyz(2, j)), 2.5, 1e-4);
}

TEST(CopyWithOffset, CopiesFollowFirstAppearanceAndKeepTriangleMarks) {
  auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {9, 9, 9}, {2, 0, 0}});
  const auto mixed = conn({{5, 3, 1, null_id}, {1, 3, 2, 0}});
  for (int form : {2, 3}) {
    dense2D<double> x = form == 2 ? deep(xyz) : strided(xyz);
    dense2D<unsigned> out(2, 2, 8u);
    ASSERT_EQ(call(form, x, form == 2 ? strided(mixed) : mixed, strided(up(6)), out), 0);
    EXPECT_EQ(as_columns(out), (std::vector<std::vector<unsigned>>{{6, 7, 8, null_id}, {8, 7, 9, 10}}));
    auto want = as_columns(xyz);
    for (unsigned id : {5u, 3u, 1u, 2u, 0u})
      want.push_back({xyz(0, id), xyz(1, id), 1.0});
    EXPECT_EQ(as_columns(x), want);
  }
  // A distance of 0 copies; a 6-row conn lists no node, so no copy is made
  // and every entry becomes n_nodes - 1.
  dense2D<unsigned> out;
  ASSERT_EQ(copy_with_offset(xyz, conn({{1, 2, 3}}), 0.0, out), 0);
  EXPECT_EQ(as_columns(xyz).back(), (std::vector<double>{1, 1, 0}));
  ASSERT_EQ(copy_with_offset(xyz, conn({{0, 1, 2, 3, 4, null_id}}), up(9), 1.0, out), 0);
  EXPECT_EQ(xyz.cols, 9u);
  EXPECT_EQ(as_columns(out), (std::vector<std::vector<unsigned>>{{8, 8, 8, 8, 8, null_id}}));
  ASSERT_EQ(offset(xyz, conn({{0, 1, 2, 3, 4, 5}}), up(9), 1.0), 0);
  EXPECT_EQ(xyz(2, 0), 0.0);
}

TEST(Offsetting, StatusesInCheckingOrderAndWhatConnOutKeeps) {
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
  const dense2D<double> flat(2, 3, 0.0);
  const auto tri = conn({{0, 1, 2}});
  const struct {
    int with_normals, without;
    const dense2D<double>& coords;
    dense2D<unsigned> conn;
    dense2D<double> normals;
  } cases[] = {
      {0, 0, flat, dense2D<unsigned>(3, 0), flat},
      {-1, -1, flat, tri, up(3)},
      {-2, -3, xyz, conn({{0, 1, 3}}), up(4)},          // node 3 is no column of coords
      {-2, 0, xyz, tri, up(2)},                         // nor of the normals
      {-2, -3, xyz, conn({{0, null_id, 1, 2}}), up(3)}, // a corner missing
      {-3, 0, xyz, tri, dense2D<double>(2, 3, 0.0)},
      {0, -3, xyz, conn({{0, 1, 2, 0, 1, 2}}), up(3)}, // 6 rows: nothing listed
  };
  for (const auto& c : cases) {
    for (int form = 0; form < 8; ++form) {
      dense2D<unsigned> out(1, 1, 7u);
      dense2D<double> x = deep(c.coords);
      const int status = call(form, x, c.conn, c.normals, out);
      EXPECT_EQ(status, form < 4 ? c.with_normals : c.without) << "form " << form;
      // Only the distance forms of the copy empty conn_out when refusing.
      EXPECT_TRUE(status == 0 || out.rows * out.cols == (form == 3 || form == 7 ? 0u : 1u)) << "form " << form;
    }
  }
  dense2D<double> x = deep(flat);
  EXPECT_EQ(offset(x, tri, 0.0), 0); // the zero distance comes before every check
  EXPECT_EQ(offset(x, tri, up(3), 0.0), 0);

  const surface g = triangle_grid(2);
  for (int form = 0; form < 8; ++form)
    sweep_allocation_failures([&](unsigned long n) {
      dense2D<double> x = deep(g.xyz);
      dense2D<unsigned> out(1, 1, 7u);
      const dense2D<double> normals = up(9);
      int status = 1;
      const bool failed = fail_during(n, [&] { status = call(form, x, g.conn, normals, out); });
      // A failure that a retry absorbs must leave a complete result.
      const bool copies = form % 4 >= 2;
      EXPECT_EQ(x.cols, status == 0 && copies ? 18u : 9u);
      if (status != 0) {
        EXPECT_TRUE(failed && status == -199) << "form " << form;
        EXPECT_EQ(as_columns(x), as_columns(g.xyz));
        EXPECT_TRUE(form % 2 == 0 || !copies || out.cols == 0) << "form " << form;
      } else {
        EXPECT_EQ(x(2, copies ? 17 : 4), 1.0) << "form " << form;
      }
      return failed;
    });
}
