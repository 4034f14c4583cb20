#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "conversion/split_criteria.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "support/fp_traps.h"
#include "tesskit2d/geometric_split.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using ids_t = std::vector<unsigned>;

namespace {

const double pi = std::acos(-1.0), deg = pi / 180, off = 0.0, no_jacobian = -1.0;
const double not_a_number = std::numeric_limits<double>::quiet_NaN();

dense1D<unsigned, 8> ids(std::initializer_list<unsigned> v) {
  dense1D<unsigned, 8> a(static_cast<unsigned>(v.size()));
  std::copy(v.begin(), v.end(), a.begin());
  return a;
}

// The columns that one call cuts, on a copy of `conn`.
ids_t cut_by(const dense2D<double>& x, double angle, double warp, double jacobian, const dense2D<unsigned>& conn) {
  dense2D<unsigned> c = deep(conn);
  dense1D<unsigned, 8> split;
  const int n = split_Q4_into_T3(x, angle, warp, jacobian, 0, dense1D<unsigned, 8>(), split, c);
  EXPECT_EQ(n, static_cast<int>(split.size));
  return as_vector(split);
}

} // namespace

TEST(OptimisedSplit, ConcaveQuadrangleIsCutThroughItsReflexCornerUnderEitherRule) {
  // A chevron whose notch 3 is reflex; its outer diagonal 0-2 is the shorter
  // one, so rule 1 has to give way to the positive cut 1-3. Column 0 is a
  // square, column 2 a triangle.
  const auto x = coords({{0.2, 0}, {0, 3}, {-0.2, 0}, {0, 2.5}, {2, 0}, {3, 0}, {3, 1}, {2, 1}});
  for (int rule = 0; rule < 2; ++rule)
    for (unsigned r = 0; r < 4; ++r) {
      auto c = strided(conn({{4, 5, 6, 7}, {r, (r + 1) % 4, (r + 2) % 4, (r + 3) % 4}, {4, 5, 6, N}}));
      dense1D<unsigned, 8> split = ids({9, 9, 9, 9, 9});
      ASSERT_EQ(split_Q4_into_T3(strided(x), 170 * deg, off, no_jacobian, rule, dense1D<unsigned, 8>(), split, c), 1);
      EXPECT_EQ(as_vector(split), ids_t{1});
      EXPECT_EQ(as_columns(c), (cols_t{{4, 5, 6, 7}, {1, 2, 3, N}, {4, 5, 6, N}, {3, 0, 1, N}}));
    }
  // On this convex quadrangle the shorter diagonal, 1-3 (rule 1), gives the
  // worse worst triangle (rule 0); a tie of lengths goes to the smallest ID.
  const auto kite = coords({{0, 0}, {2, -0.5}, {3, 3}, {-0.5, 2.5}});
  const auto square = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  for (const auto& [xy, rule, first] :
       {std::make_tuple(kite, 1, ids_t{1, 2, 3}), std::make_tuple(kite, 0, ids_t{0, 1, 2}),
        std::make_tuple(square, 1, ids_t{0, 1, 2})}) {
    auto c = conn({{2, 3, 0, 1}});
    dense1D<unsigned, 8> split;
    ASSERT_EQ(split_Q4_into_T3(xy, 80 * deg, off, no_jacobian, rule, split, split, c), 1);
    EXPECT_EQ((ids_t{c(0, 0), c(1, 0), c(2, 0)}), first) << rule;
  }
}

TEST(OptimisedSplit, RuleZeroCutsAsTheGeometricForm) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    const auto mesh = make_random_mesh(9, seed, 0.7);
    dense2D<unsigned> whole;
    ASSERT_GE(split_Q4_into_T3(mesh.coords, mesh.conn, whole), 0);
    // With min_jacobian 1 every jittered quadrangle fails.
    auto c = deep(mesh.conn);
    dense1D<unsigned, 8> split;
    const int n = split_Q4_into_T3(strided(mesh.coords), off, off, 1.0, 0, dense1D<unsigned, 8>(), split, c);
    ASSERT_GT(n, 0);
    unsigned out = 0; // column of `whole` for column j of `conn`
    for (unsigned j = 0, k = 0; j < mesh.conn.cols; ++j) {
      const bool quad = mesh.conn(3, j) != N;
      ASSERT_EQ(quad, k < split.size && split[k] == j);
      for (unsigned i = 0; i < 3; ++i)
        EXPECT_EQ(c(i, j), whole(i, out));
      if (quad) {
        for (unsigned i = 0; i < 3; ++i)
          EXPECT_EQ(c(i, mesh.conn.cols + k), whole(i, out + 1));
        ++k;
      }
      out += quad ? 2 : 1;
    }
  }
}

TEST(OptimisedSplit, EachTestCatchesItsQuadrangleAndPassesTheGoodOne) {
  // Columns: a unit square, a nearly degenerate quadrangle (corner 3 at
  // 177.7 degrees), one collapsed onto a triangle (nodes 8 and 9 coincide), a
  // clockwise square, and a square with corner 2 lifted out of the plane.
  const auto x = coords({{0, 0, 0},
                         {1, 0, 0},
                         {1, 1, 0},
                         {0, 1, 0},
                         {2, 0, 0},
                         {3, 0, 0},
                         {3, 1, 0},
                         {2.48, 0.5, 0},
                         {5, 0, 0},
                         {5, 0, 0},
                         {6, 0, 0},
                         {6, 1, 0},
                         {1, 1, 0.4}});
  const auto c = conn({{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 10, 11, 9}, {3, 2, 1, 0}, {0, 1, 12, 3}});
  dense2D<double> xy = x; // the same in the plane, where column 4 is a square: rows 0 and 1 of x
  xy.rows = 2, xy.size = 2 * x.cols;
  struct row {
    double angle, warp, jacobian;
    ids_t space, plane;
  };
  const row table[] = {
      {pi / 2, off, no_jacobian, {1}, {1}}, // limits are strict: right angles pass
      {off, 5 * deg, no_jacobian, {4}, {}}, // warp, ignored in the plane
      // In the plane the Jacobian is signed against the plane, so the
      // clockwise square is inverted; in space it is just seen from below.
      {off, off, 0.5, {1, 2}, {1, 2, 3}},
      {off, off, 1.0, {1, 2, 4}, {1, 2, 3}},
      {off, off, 0.0, {}, {3}},                           // the collapsed corners have 0, not below 0
      {off, off, 0.01, {2}, {2, 3}},                      // but are caught just above
      {not_a_number, not_a_number, not_a_number, {}, {}}, // NaN switches every test off
      {2 * pi, pi, -1.0, {}, {}},                         // so do the ends of the ranges
      {-1.0, -1.0, 1.5, {}, {}},
      {1.5 * pi, off, no_jacobian, {}, {}}, // no reflex corner anywhere
  };
  for (const row& r : table) {
    const no_fp_traps nan_row(std::isnan(r.angle)); // NaN limits compared on purpose
    EXPECT_EQ(cut_by(x, r.angle, r.warp, r.jacobian, c), r.space) << r.angle << " " << r.warp << " " << r.jacobian;
    EXPECT_EQ(cut_by(xy, r.angle, r.warp, r.jacobian, c), r.plane) << r.angle << " " << r.warp << " " << r.jacobian;
  }
  // A NaN coordinate fails only the measures it enters: the square's corner
  // 2 keeps its right angle.
  auto bad = deep(x);
  bad(0, 0) = not_a_number;
  const no_fp_traps nan_coordinate;
  EXPECT_EQ(cut_by(bad, 100 * deg, 5 * deg, 0.5, conn({{0, 1, 2, 3}})), ids_t{});
  EXPECT_EQ(cut_by(bad, 80 * deg, off, no_jacobian, conn({{0, 1, 2, 3}})), ids_t{0});
}

TEST(OptimisedSplit, CandidatesRestrictTheWorkAndSplitMayAliasThem) {
  const auto mesh = make_random_mesh(6, 3, 1.0);
  const unsigned n = mesh.conn.cols;
  auto c = deep(mesh.conn);
  // Unsorted, repeated, with a triangle added to the mesh; split is candidates.
  c.resize(4, n + 1, N);
  for (unsigned i = 0; i < 3; ++i)
    c(i, n) = mesh.conn(i, 0);
  dense1D<unsigned, 8> list = ids({30, 4, n, 30, 17, 2});
  ASSERT_EQ(split_Q4_into_T3(mesh.coords, off, off, 1.0, 1, list, list, c), 4);
  EXPECT_EQ(as_vector(list), (ids_t{2, 4, 17, 30}));
  for (unsigned k = 0; k < 4; ++k) { // the pair covers the quadrangle: together they hold its four corners
    const unsigned j = list[k];
    EXPECT_TRUE(c(3, j) == N && c(3, n + 1 + k) == N);
    ids_t corners{c(0, j), c(1, j), c(2, j), c(0, n + 1 + k), c(1, n + 1 + k), c(2, n + 1 + k)};
    for (unsigned i = 0; i < 4; ++i)
      EXPECT_NE(std::find(corners.begin(), corners.end(), mesh.conn(i, j)), corners.end());
  }
}

TEST(OptimisedSplit, StatusesInOrderLeaveEverythingAsItWas) {
  const auto x = coords({{0, 0}, {1, 0}, {1.2, 1}, {0, 1}}); // fails min_jacobian 1
  const dense2D<double> bad_x(4, 4, 0.0);
  const auto good = conn({{0, 1, 2, 3}});
  const dense1D<unsigned, 8> all;
  auto split = ids({7});
  dense2D<unsigned> empty(4, 0);
  EXPECT_EQ(split_Q4_into_T3(bad_x, off, off, 1.0, 9, ids({5}), split, empty), 0);
  EXPECT_EQ(split.size, 0u);
  split = ids({7});
  struct row {
    const dense2D<double>& coords;
    dense2D<unsigned> conn;
    int diagonal;
    dense1D<unsigned, 8> candidates;
    int status;
  };
  const row table[] = {{bad_x, conn({{0, 1, 2, 9}}), 9, ids({5}), -1},
                       {x, conn({{0, 1, 2, 4}}), 9, ids({5}), -8},
                       {x, conn({{0, 1, 2}}), 9, ids({5}), -8},
                       {x, conn({{0, 1, N, 3}}), 9, ids({5}), -8},
                       // Checked while reading, after a failing quadrangle.
                       {x, conn({{0, 1, 2, 3}, {0, 1, 2, 4}}), 0, all, -8},
                       {x, conn({{0, 1, 2, 3}, {0, 4, 2, N}}), 1, all, -8},
                       {x, good, 9, ids({5}), -5},
                       {x, good, 1, ids({0, 1}), -6}};
  for (const row& r : table) {
    auto c = deep(r.conn);
    EXPECT_EQ(split_Q4_into_T3(r.coords, off, off, 1.0, r.diagonal, r.candidates, split, c), r.status);
    EXPECT_EQ(as_columns(c), as_columns(r.conn));
    EXPECT_EQ(as_vector(split), ids_t{7});
    // Exhausted memory does not hide a bad argument.
    fail_during(
        0, [&] { EXPECT_EQ(split_Q4_into_T3(r.coords, off, off, 1.0, r.diagonal, r.candidates, split, c), r.status); });
  }

  const auto mesh = make_random_mesh(4, 5, 0.6);
  const auto list = ids({9, 3, 0, 12, 5, 7, 1});
  sweep_allocation_failures([&](unsigned long k) {
    auto c = deep(mesh.conn);
    auto s = ids({7, 7});
    int status = 0;
    const bool failed = fail_during(k, [&] { status = split_Q4_into_T3(mesh.coords, off, off, 1, 0, list, s, c); });
    if (status == -199)
      EXPECT_TRUE(failed && as_columns(c) == as_columns(mesh.conn) && as_vector(s) == (ids_t{7, 7}));
    else
      EXPECT_TRUE(status > 0 && c.cols == mesh.conn.cols + status);
    return failed;
  });
}

TEST(OptimisedSplit, FastFormNeverPassesWhatTheExactFormFails) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> u(-1, 1), unit(0, 1);
  auto check = [&](auto dim) {
    constexpr unsigned D = decltype(dim)::value;
    unsigned disagreements = 0, exact_failures = 0, fast_passes = 0;
    auto probe = [&](const quadrangle_frame<D>& q, const split_thresholds& t) {
      const bool fails = fails_exactly<D>(t, q), passes = surely_passes<D>(t, q);
      exact_failures += fails;
      fast_passes += passes;
      disagreements += fails && passes;
      return fails;
    };
    for (unsigned trial = 0; trial < 6000; ++trial) {
      // A square moved by up to 0.6 of its side, often into concave or
      // inverted shapes, and now and then a corner dropped onto another.
      double pts[4][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
      for (auto& p : pts)
        for (unsigned k = 0; k < D; ++k)
          p[k] += 0.6 * u(rng);
      if (trial % 50 == 0) std::copy(pts[1], pts[1] + 3, pts[2]);
      const double* const p[4] = {pts[0], pts[1], pts[2], pts[3]};
      quadrangle_frame<D> q;
      measure_quadrangle<D>(p, q);
      probe(q, make_split_thresholds(2 * pi * unit(rng), pi * unit(rng), 2 * unit(rng) - 1, D));
      // One test alone, at the limit where the exact form flips (found by
      // bisection) and a hair either side of it.
      const unsigned which = trial % (D == 3 ? 3 : 2);
      auto alone = [&](double v) {
        return make_split_thresholds(which == 0 ? v : 0, which == 2 ? v : 0, which == 1 ? v : -1, D);
      };
      double lo = which == 1 ? -1 : 0, hi = which == 0 ? 2 * pi : which == 1 ? 1 : pi;
      for (unsigned step = 0; step < 64; ++step) {
        const double mid = (lo + hi) / 2;
        ((which == 1) == probe(q, alone(mid)) ? hi : lo) = mid;
      }
      for (double d : {-1e-9, -1e-12, 0.0, 1e-12, 1e-9})
        probe(q, alone(lo + d));
    }
    EXPECT_EQ(disagreements, 0u);
    EXPECT_GT(exact_failures, 1000u);
    EXPECT_GT(fast_passes, 1000u);
  };
  check(std::integral_constant<unsigned, 2>());
  check(std::integral_constant<unsigned, 3>());
}
