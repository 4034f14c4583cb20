#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/curved_meshes.h"
#include "support/shared_outputs.h"
#include "tesskit2d/curvature.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

// The graph z = (a u^2 + 2 b u v + c v^2) / 2 over a jittered k by k grid
// of (u, v) cells round (0.3, -0.2), with its exact tangents; `reverse`
// turns every element clockwise.
struct graph {
  dense2D<double> uv, tangents;
  dense2D<unsigned> tri;
};
graph quadratic(double a, double b, double c, bool reverse = false, unsigned k = 6) {
  graph g{dense2D<double>(2, (k + 1) * (k + 1)), dense2D<double>(6, (k + 1) * (k + 1)),
          dense2D<unsigned>(3, 2 * k * k)};
  for (unsigned id = 0; id < g.uv.cols; ++id) {
    const unsigned i = id % (k + 1), j = id / (k + 1);
    const double u = 0.3 + (i + 0.2 * std::sin(7.0 * id)) / k, v = -0.2 + (j + 0.2 * std::cos(5.0 * id)) / k;
    const double col[8] = {u, v, 1, 0, a * u + b * v, 0, 1, b * u + c * v};
    for (unsigned r = 0; r < 8; ++r)
      (r < 2 ? g.uv(r, id) : g.tangents(r - 2, id)) = col[r];
  }
  for (unsigned q = 0; q < k * k; ++q) {
    const unsigned id = q + q / k, cells[6] = {id, id + 1, id + k + 2, id, id + k + 2, id + k + 1};
    for (unsigned r = 0; r < 6; ++r)
      g.tri(reverse && r % 3 ? 3 - r % 3 : r % 3, 2 * q + r / 3) = cells[r];
  }
  return g;
}

} // namespace

TEST(ParametricCurvatures, QuadraticGraphGivesMinusItsCoefficientsAtEveryInnerNode) {
  const double a = 0.7, b = -0.3, c = 1.9;
  for (double scale : {1.0, 0.0}) // the graph, then a plane
    for (bool reverse : {false, true}) {
      const graph g = quadratic(scale * a, scale * b, scale * c, reverse);
      dense2D<double> forms(3, 1, 5.0);
      ASSERT_EQ(parametric_curvatures(strided(g.uv), strided(g.tri), strided(g.tangents), forms), 0);
      ASSERT_EQ(forms.rows * forms.cols, 3 * g.uv.cols);
      for (unsigned j = 1; j < 6; ++j)
        for (unsigned i = 1; i < 6; ++i) {
          // Exact on any closed ring: -Suu . n with n = (-zu, -zv, 1) / norm.
          const double *t = g.tangents.column(j * 7 + i), *e = forms.column(j * 7 + i);
          const double norm = std::sqrt(1 + t[2] * t[2] + t[5] * t[5]);
          EXPECT_NEAR(e[0], -scale * a / norm, 1e-12);
          EXPECT_NEAR(e[1], -scale * b / norm, 1e-12);
          EXPECT_NEAR(e[2], -scale * c / norm, 1e-12);
        }
    }
}

TEST(ParametricCurvatures, NodesWithoutAnEstimateGetZeros) {
  // Node 49 is used by nobody; node 24 gets parallel tangents; an element
  // whose corners are node 49, placed on node 21, adds nothing anywhere.
  graph g = quadratic(0.7, -0.3, 1.9);
  g.uv.resize(2, 50, 0.0);
  g.tangents.resize(6, 50, 1.0);
  for (unsigned r = 0; r < 3; ++r)
    g.tangents(r + 3, 24) = 2 * g.tangents(r, 24);
  g.uv(0, 49) = g.uv(0, 21), g.uv(1, 49) = g.uv(1, 21);
  dense2D<unsigned> more = deep(g.tri);
  more.resize(3, more.cols + 1, 49u);
  dense2D<double> plain, flat;
  ASSERT_TRUE(parametric_curvatures(g.uv, g.tri, g.tangents, plain) == 0 &&
              parametric_curvatures(g.uv, more, g.tangents, flat) == 0);
  EXPECT_EQ(as_columns(flat), as_columns(plain));
  EXPECT_EQ(as_columns(plain)[49], (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(as_columns(plain)[24], (std::vector<double>{0, 0, 0}));
}

TEST(ParametricCurvatures, StatusesInCheckingOrderLeaveFormsEmpty) {
  const graph g = quadratic(1, 0, 1, false, 2);
  const auto bad_id = conn({{0, 1, 9}});
  const dense2D<double> uv3(3, 9, 0.0), t5(5, 9, 0.0), t6(6, 8, 0.0);
  const struct {
    const dense2D<double>& uv;
    dense2D<unsigned> tri;
    const dense2D<double>& tangents;
    int status;
  } cases[] = {{uv3, dense2D<unsigned>(3, 0), t5, 0},
               {uv3, g.tri, g.tangents, -1},
               {g.uv, strip(2, true), t5, -2},
               {g.uv, bad_id, t5, -2},
               {g.uv, g.tri, t5, -3},
               {g.uv, g.tri, t6, -3}};
  for (const auto& k : cases) {
    dense2D<double> forms(3, 2, 1.0);
    EXPECT_EQ(parametric_curvatures(k.uv, k.tri, k.tangents, forms), k.status);
    EXPECT_EQ(forms.rows * forms.cols, 0u);
  }
  EXPECT_EQ(expect_all_or_nothing<dense2D<double>>(
                [&](dense2D<double>& forms) { return parametric_curvatures(g.uv, g.tri, g.tangents, forms); }),
            2u);
}

TEST(PrincipalCurvatures, SphereCurvaturesShareTheirSignAndFlipWithTheOrientation) {
  const curved_surface s = geodesic_sphere(10);
  curved_surface f{s.xyz, deep(s.tri), {}}; // every element reversed
  for (unsigned j = 0; j < f.tri.cols; ++j)
    std::swap(f.tri(1, j), f.tri(2, j));
  f.nb = neighbours_of(f.tri);
  const double h = 1.107 / 10; // about the mean edge: the icosahedron's edge angle split 10 times
  dense2D<double> k, kf, ks;
  ASSERT_EQ(principal_curvatures(s.xyz, s.tri, s.nb, 2 * h, pi / 4, 40, {}, k), 0);
  ASSERT_EQ(principal_curvatures(f.xyz, f.tri, f.nb, 2 * h, pi / 4, 40, {}, kf), 0);
  ASSERT_EQ(principal_curvatures(strided(s.xyz), strided(s.tri), strided(s.nb), 2 * h, pi / 4, 40,
                                 strided(dense2D<unsigned>(2, 0)), ks),
            0);
  EXPECT_EQ(as_columns(ks), as_columns(k));
  for (unsigned j = 0; j < k.cols; ++j) {
    const double *c = k.column(j), *p = s.xyz.column(j);
    EXPECT_TRUE(c[6] < -0.7 && c[6] <= c[7] && c[7] < -0.6) << j;
    EXPECT_TRUE(std::fabs(kf(6, j) + c[6]) + std::fabs(kf(7, j) + c[7]) < 1e-12) << j;
    // Both directions are unit vectors in the tangent plane.
    for (unsigned d = 0; d < 6; d += 3) {
      EXPECT_NEAR(c[d] * c[d] + c[d + 1] * c[d + 1] + c[d + 2] * c[d + 2], 1.0, 1e-12);
      EXPECT_NEAR(c[d] * p[0] + c[d + 1] * p[1] + c[d + 2] * p[2], 0.0, 0.05);
    }
  }
}

TEST(PrincipalCurvatures, OnATubeCurvatureOneGoesAcrossTheAxisAndDirectionOneAlongIt) {
  const curved_surface t = tube(40, 20, 1.0, 2.0);
  dense2D<double> k;
  ASSERT_EQ(principal_curvatures(t.xyz, t.tri, t.nb, 0.35, pi / 4, 40, {}, k), 0);
  for (unsigned j = 4 * 40; j < 17 * 40; ++j) {
    const double *c = k.column(j), *p = t.xyz.column(j);
    EXPECT_GT(std::fabs(c[2]), 1 - 1e-9);                       // direction_1 is the axis,
    EXPECT_NEAR(c[6], -0.8, 0.2);                               // curvature_1 goes across it
    EXPECT_LT(std::fabs(c[7]), 1e-3 * std::fabs(c[6]));         // and curvature_2 is flat,
    EXPECT_NEAR(std::fabs(c[3] * p[1] - c[4] * p[0]), 1, 0.01); // direction_2 runs round
  }
}

TEST(PrincipalCurvatures, AFoldCountsItsEdgeOnceUnlessTheLimitsKeepItOut) {
  // Two triangles of double area 2 meet along the edge 0-1 (length 2, along
  // y) at a fold of angle f: the curvature is f * 2 * 2 / (2 + 2) = f.
  const double f = 0.3;
  const auto xyz = coords({{0, 0, 0}, {0, 2, 0}, {1, 1, 0}, {-std::cos(f), 1, std::sin(f)}});
  const auto tri = conn({{0, 2, 1}, {0, 1, 3}});
  const struct {
    double radius, angle;
    unsigned most;
    dense2D<unsigned> hard;
    double expected;
  } cases[] = {{5, pi, 40, {}, f}, {-5, 0.31, 2, {}, f}, {5, 0.29, 40, {}, 0},
               {5, pi, 1, {}, 0},  {0, pi, 40, {}, 0},   {5, pi, 40, conn({{3, 1}, {1, 0}}), 0}};
  for (const auto& c : cases) {
    dense2D<double> k;
    ASSERT_EQ(principal_curvatures(xyz, tri, neighbours_of(tri), c.radius, c.angle, c.most, c.hard, k), 0);
    for (unsigned j = 0; j < 4; ++j) {
      EXPECT_TRUE(std::fabs(k(6, j) - c.expected) < 1e-14 && k(7, j) == 0.0);
      if (c.expected == 0) continue;
      EXPECT_NEAR(std::fabs(k(1, j)), 1.0, 1e-14); // the fold's direction
      // direction_2 from the fallback: across the fold in the seed's plane.
      EXPECT_NEAR(std::fabs(k(3, j)), j == 3 ? std::cos(f) : 1.0, 1e-14);
    }
  }
}

TEST(PrincipalCurvatures, ARefusedElementStaysOutAlthoughAnotherSideReachesIt) {
  // A cone of six triangles round apex 0; the edge 0-2 between elements 0
  // and 1 is hard. Element 1, turned away from element 0, must not come in
  // from element 2 either: node 0 sees the cone without element 1.
  auto xyz = coords({{0, 0, 0.5}});
  xyz.resize(3, 7);
  dense2D<unsigned> all(3, 6), five(3, 5);
  for (unsigned i = 0; i < 6; ++i) {
    xyz(0, i + 1) = std::cos(pi * i / 3), xyz(1, i + 1) = std::sin(pi * i / 3), xyz(2, i + 1) = 0;
    const unsigned col[3] = {0, i + 1, (i + 1) % 6 + 1};
    for (unsigned r = 0; r < 3; ++r) {
      all(r, i) = col[r];
      if (i != 1) five(r, i - (i > 1)) = col[r];
    }
  }
  dense2D<double> hard, cut, whole;
  ASSERT_EQ(principal_curvatures(xyz, all, neighbours_of(all), 9, pi, 40, conn({{2, 0}}), hard), 0);
  ASSERT_EQ(principal_curvatures(xyz, five, neighbours_of(five), 9, pi, 40, {}, cut), 0);
  ASSERT_EQ(principal_curvatures(xyz, all, neighbours_of(all), 9, pi, 40, {}, whole), 0);
  EXPECT_TRUE(std::fabs(hard(6, 0) - cut(6, 0)) + std::fabs(hard(7, 0) - cut(7, 0)) < 1e-14);
  EXPECT_GT(std::fabs(hard(7, 0) - whole(7, 0)), 0.03);
}

TEST(PrincipalCurvatures, EachExpansionTakesItsElementsInAscendingIndex) {
  // A strip of six triangles, flat but for the far right end, which rises.
  // The seed (element 0) meets element 2 (right) in slot 0 and element 1
  // (left) in slot 2. With four elements at most, taken by index the patch
  // grows left from element 1 and stays flat; taken in slot order it would
  // grow right into the rise.
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}, {3, 1, 1}});
  const auto tri = conn({{5, 1, 6}, {0, 1, 5}, {1, 2, 6}, {0, 5, 4}, {2, 7, 6}, {2, 3, 7}});
  dense2D<double> k;
  ASSERT_EQ(principal_curvatures(xyz, tri, neighbours_of(tri), 9, pi, 4, {}, k), 0);
  for (unsigned p : {1u, 5u, 6u})
    EXPECT_EQ(k(6, p), 0.0);
  ASSERT_EQ(principal_curvatures(xyz, tri, neighbours_of(tri), 9, pi, 5, {}, k), 0);
  EXPECT_NE(k(6, 5), 0.0);
}

TEST(PrincipalCurvatures, StatusesInCheckingOrderAndTheAllocationSweep) {
  const curved_surface s = geodesic_sphere(1);
  const dense2D<double> xy(2, 12, 0.0);
  const struct {
    const dense2D<double>& xyz;
    dense2D<unsigned> tri, nb, hard;
    int status;
  } cases[] = {{xy, dense2D<unsigned>(3, 0), {}, {}, 0},
               {xy, s.tri, s.nb, {}, -1},
               {s.xyz, strip(10, true), s.nb, {}, -2},
               {s.xyz, conn({{0, 1, 12}}), {}, {}, -2},
               {s.xyz, s.tri, strip(9), {}, -3},
               {s.xyz, s.tri, dense2D<unsigned>(2, 20), {}, -3},
               {s.xyz, s.tri, s.nb, conn({{0, 1, 2}}), -7},
               {s.xyz, s.tri, s.nb, conn({{0, 12}}), -7}};
  for (const auto& c : cases) {
    dense2D<double> k(8, 1, 3.0);
    EXPECT_EQ(principal_curvatures(c.xyz, c.tri, c.nb, 1, 1, 9, c.hard, k), c.status);
    EXPECT_EQ(as_columns(k), as_columns(dense2D<double>(8, 1, 3.0)));
  }
  dense2D<double> expected;
  const auto hard = conn({{0, 11}, {5, 11}});
  ASSERT_EQ(principal_curvatures(s.xyz, s.tri, s.nb, 2, 2, 9, hard, expected), 0);
  sweep_allocation_failures([&](unsigned long n) {
    dense2D<double> k;
    int status = 1;
    const bool failed = fail_during(n, [&] { status = principal_curvatures(s.xyz, s.tri, s.nb, 2, 2, 9, hard, k); });
    EXPECT_TRUE(status == 0 ? as_columns(k) == as_columns(expected) : status == -199 && k.empty()) << status;
    return failed;
  });
}

TEST(Curvatures, AnOutputSharingAnInputsStorageGetsTheResultOfSeparateArrays) {
  const graph g = quadratic(0.7, -0.3, 1.9, false, 3);
  const curved_surface s = geodesic_sphere(2);
  // Each call reads `in` in the place of one of its double inputs and writes
  // `out`; it runs once with `out` sharing `in`'s storage and once on
  // separate arrays holding the same values.
  using call_t = std::function<int(const dense2D<double>&, dense2D<double>&)>;
  const struct {
    dense2D<double> in;
    call_t call;
  } calls[] = {
      {g.uv, [&](const dense2D<double>& in,
                 dense2D<double>& out) { return parametric_curvatures(in, g.tri, g.tangents, out); }},
      {g.tangents,
       [&](const dense2D<double>& in, dense2D<double>& out) { return parametric_curvatures(g.uv, g.tri, in, out); }},
      {s.xyz, [&](const dense2D<double>& in,
                  dense2D<double>& out) { return principal_curvatures(in, s.tri, s.nb, 0.7, pi / 4, 20, {}, out); }},
  };
  for (const auto& c : calls)
    for (const sharing how : every_sharing) {
      SCOPED_TRACE(static_cast<int>(how));
      dense2D<double> in = deep(c.in), out = shared_output(in, how);
      dense2D<double> in_apart = deep(in), out_apart = deep(out);
      const int expected = c.call(in_apart, out_apart);
      ASSERT_EQ(expected, 0);
      EXPECT_EQ(how == sharing::same_array ? c.call(in, in) : c.call(in, out), expected);
      EXPECT_EQ(as_columns(how == sharing::same_array ? in : out), as_columns(out_apart));
    }
}
