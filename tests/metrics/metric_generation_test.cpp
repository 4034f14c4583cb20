#include <cmath>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "support/shared_outputs.h"
#include "tesskit2d/metric_generation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// Checks that column j of `m` is diag(d0, d1, d2).
void expect_diagonal(const dense2D<double>& m, unsigned j, double d0, double d1, double d2) {
  const double want[6] = {d0, 0, d1, 0, 0, d2};
  for (unsigned k = 0; k < 6; ++k)
    EXPECT_NEAR(m(k, j), want[k], 1e-12 * (1 + std::fabs(want[k]))) << "column " << j << " entry " << k;
}

} // namespace

TEST(MetricsGenAniso3d, EqualEdgesGiveOneOverHSquaredAndTheNormalSizeAcross) {
  // Two rows of equilateral triangles of side h in the plane z = 2, with a
  // fourth coordinate that all nodes share, so it adds nothing to a length.
  const double h = 0.4, r = std::sqrt(3.0) / 2;
  dense2D<double> xyz(4, 10);
  for (unsigned j = 0; j < 10; ++j) {
    const unsigned row = j / 5;
    const double col[4] = {h * (j % 5 + 0.5 * row), h * r * row, 2, 9};
    for (unsigned i = 0; i < 4; ++i)
      xyz(i, j) = col[i];
  }
  const auto tri = conn({{0, 1, 5}, {1, 6, 5}, {1, 2, 6}, {2, 7, 6}, {2, 3, 7}, {3, 8, 7}, {3, 4, 8}, {4, 9, 8}});
  const struct { double normal_size, across; } cases[] = {{0, 1 / (h * h)}, {-0.1, 100 / (h * h)}, {0.5, 4}};
  for (const auto& c : cases) {
    dense2D<double> m;
    ASSERT_EQ(metrics_gen_aniso3d(strided(xyz), strided(tri), c.normal_size, m), 0);
    ASSERT_EQ(m.rows * m.cols, 60u);
    for (unsigned j = 0; j < 10; ++j)
      expect_diagonal(m, j, 1 / (h * h), 1 / (h * h), c.across);
    // Calling again intersects the field with itself: nothing changes.
    ASSERT_EQ(metrics_gen_aniso3d(xyz, tri, c.normal_size, m), 0);
    expect_diagonal(m, 3, 1 / (h * h), 1 / (h * h), c.across);
  }
}

TEST(MetricsGenAniso3d, AZeroLengthCornerEndsItsElementAndAFlatElementUsesTheXAxis) {
  // Element 1 has its three corners at the origin. Its corner 0 (node 0) has
  // a mean edge of 1 from element 0 and is written with the x axis as
  // normal; corner 1 (node 1) has none, so corner 2 (node 2) gets nothing
  // from element 1 and keeps what element 2 gives it. Node 3 is a corner
  // in the planes z = 0 and x = 1 and meets the normal sizes of both.
  const auto xyz =
      coords({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {1, 0, 1}, {1, 1, 1}});
  const auto tri = conn({{0, 3, 4}, {0, 1, 2}, {2, 5, 6}, {3, 7, 8}});
  dense2D<double> m;
  ASSERT_EQ(metrics_gen_aniso3d(xyz, tri, 0.5, m), 0);
  expect_diagonal(m, 0, 4, 1, 4);
  expect_diagonal(m, 1, 0, 0, 0);
  expect_diagonal(m, 2, 1, 1, 4);
  const double a3 = 1 / std::pow((1 + std::sqrt(2.0) + 1 + std::sqrt(2.0)) / 4, 2);
  expect_diagonal(m, 3, 4, a3, 4);
}

TEST(MetricsGenAniso3d, GrowsToTheLargestUsedIdAndKeepsColumnsNoElementReaches) {
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 5, 5}, {1, 1, 0}, {7, 7, 7}, {8, 8, 8}});
  dense2D<double> m(6, 4, 0.0);
  m(0, 0) = m(2, 0) = m(5, 0) = 0.25; // size 2 at node 0, larger than what comes
  m(5, 1) = -3;                       // no metric: replaced at node 1
  m(0, 3) = 0.5;                      // node 3 is in no element
  ASSERT_EQ(metrics_gen_aniso3d(xyz, conn({{0, 1, 4}, {0, 4, 2}}), 0, m), 0);
  ASSERT_EQ(m.cols, 5u); // nodes 5 and 6 are in no element
  const double a0 = 1 / std::pow((2 + 2 * std::sqrt(2.0)) / 4, 2);
  expect_diagonal(m, 0, a0, a0, a0);
  expect_diagonal(m, 1, 1, 1, 1);
  expect_diagonal(m, 3, 0.5, 0, 0);
  dense2D<double> one;
  ASSERT_EQ(metrics_gen_aniso3d(xyz, dense2D<unsigned>(3, 0), 0, one), 0);
  EXPECT_EQ(as_columns(one), as_columns(dense2D<double>(6, 1, 0.0)));
}

TEST(MetricsGenAniso3d, StatusesInCheckingOrderLeaveMetricsUntouched) {
  const auto xyz = coords({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
  const dense2D<double> xy(2, 3, 0.0), none(3, 0);
  const struct {
    const dense2D<double>& xyz;
    dense2D<unsigned> tri;
    unsigned metric_rows;
    int status;
  } cases[] = {{xy, conn({{0, 1, 2}}), 6, -1},
               {xyz, conn({{0, 1, 2, 0}}), 6, -2},
               {xyz, conn({{0, 1, 3}}), 6, -2},
               {none, dense2D<unsigned>(3, 0), 6, -2},
               {xyz, conn({{0, 1, 2}}), 3, -4}};
  for (const auto& c : cases) {
    dense2D<double> m(c.metric_rows, 1, 0.5);
    EXPECT_EQ(metrics_gen_aniso3d(c.xyz, c.tri, 0, m), c.status);
    EXPECT_EQ(as_columns(m), as_columns(dense2D<double>(c.metric_rows, 1, 0.5)));
  }
  const auto tri = conn({{0, 1, 2}});
  sweep_allocation_failures([&](unsigned long n) {
    dense2D<double> m(6, 1, 0.0);
    int status = 1;
    const bool failed = fail_during(n, [&] { status = metrics_gen_aniso3d(xyz, tri, 0, m); });
    EXPECT_EQ(status, failed ? -199 : 0);
    EXPECT_EQ(m.cols, failed ? 1u : 3u);
    return failed;
  });
}

TEST(MetricsGenAniso3d, AFieldSharingTheStorageOfCoordsGetsTheResultOfSeparateArrays) {
  // Six rows, so that `coords` itself is a field of the right shape; its
  // columns, read as metrics, are mostly not positive definite.
  dense2D<double> xyz(6, 9);
  for (unsigned j = 0; j < 9; ++j) {
    const unsigned row = j / 3;
    const double col[6] = {j % 3 + 0.1 * j, 1.0 * row, 0.2 * (j % 2), 1, 0.5 * j, 2};
    for (unsigned i = 0; i < 6; ++i)
      xyz(i, j) = col[i];
  }
  const auto tri = conn({{0, 1, 4}, {0, 4, 3}, {1, 2, 5}, {1, 5, 4}, {3, 4, 7}, {3, 7, 6}, {4, 5, 8}, {4, 8, 7}});
  for (const sharing how : every_sharing) {
    SCOPED_TRACE(static_cast<int>(how));
    dense2D<double> in = deep(xyz), out = shared_output(in, how);
    dense2D<double> in_apart = deep(in), out_apart = deep(out);
    ASSERT_EQ(metrics_gen_aniso3d(in_apart, tri, -0.1, out_apart), 0);
    EXPECT_EQ(how == sharing::same_array ? metrics_gen_aniso3d(in, tri, -0.1, in)
                                         : metrics_gen_aniso3d(in, tri, -0.1, out),
              0);
    EXPECT_EQ(as_columns(how == sharing::same_array ? in : out), as_columns(out_apart));
  }
}
