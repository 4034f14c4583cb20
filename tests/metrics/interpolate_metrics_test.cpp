#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/interpolation_meshes.h"
#include "support/metric_fields.h"
#include "tesskit2d/metrics.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// Sizes linear in x and y along fixed axes: the triangle combiners give
// them back exactly at any point, since they blend sizes barycentrically.
double hx(double x, double y) { return 1 + x + 0.5 * y; }
double hy(double x, double y) { return 0.2 + 0.3 * x + y; }

dense2D<double> linear_field(const background& b, unsigned rows) {
  dense2D<double> m(rows, b.xy.cols, 0.0);
  for (unsigned n = 0; n < b.n_background; ++n)
    rows == 3 ? put(m, n, sized2(hx(b.xy(0, n), b.xy(1, n)), hy(b.xy(0, n), b.xy(1, n)), 0.4))
              : put(m, n, sized3(hx(b.xy(0, n), b.xy(1, n)), hy(b.xy(0, n), b.xy(1, n)), 1.5, 0.4));
  return m;
}

} // namespace

TEST(InterpolateMetrics, LinearSizesComeBackAtTargetsInsideAndOutsideStaysPut) {
  auto b = grid_background(6, T3, 0.3);
  auto points = random_points(40, 0.0, 1.0);
  points.push_back({1.5, 0.5}); // outside the box
  const auto targets = add_targets(b, points);
  const unsigned outside = b.xy.cols - 1;
  for (unsigned rows : {3u, 6u}) {
    auto m = strided(linear_field(b, rows));
    put(m, outside, sized3(7, 7, 7)); // 3 rows take the first three entries
    ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, m, targets, false, T3), 0);
    for (unsigned k = 0; k < 40; ++k) {
      const unsigned n = targets[k];
      const double x = b.xy(0, n), y = b.xy(1, n);
      EXPECT_TRUE(rows == 3 ? near(column_of<metric2>(m, n), sized2(hx(x, y), hy(x, y), 0.4), 1e-11)
                            : near(column_of<metric3>(m, n), sized3(hx(x, y), hy(x, y), 1.5, 0.4), 1e-11));
    }
    EXPECT_TRUE(near(column_of<metric2>(m, outside), sized2(7, 7), 0));
  }
  // The size form, on all nodes: background nodes are not written (their
  // sizes are doubled, so a rewrite would show).
  dense1D<double> sizes(b.xy.cols, -1.0);
  for (unsigned n = 0; n < b.xy.cols; ++n)
    sizes[n] = n < b.n_background ? 2 * hx(b.xy(0, n), b.xy(1, n)) : -1.0;
  ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, sizes, true, T3), 0);
  for (unsigned n = 0; n < b.xy.cols; ++n)
    EXPECT_NEAR(sizes[n], n == outside ? -1.0 : 2 * hx(b.xy(0, n), b.xy(1, n)), 1e-12);
}

TEST(InterpolateMetrics, CombinersKeepWhatTheyCannotComputeAndEdgesIgnoreTheOppositeCorner) {
  // Unit grid of 2 x 2 cells; node (i, j) is 3 j + i. Cell (0, 0) is cut
  // along 0-4, so the midpoint of edge 0-4 sees only corners 0 and 4;
  // corners 1 and 3, opposite it, hold zero metrics. The next two targets
  // lie inside triangles with corner 1 or 3.
  auto b = grid_background(2, T3);
  const auto targets = add_targets(b, {{0.25, 0.25}, {0.4, 0.1}, {0.1, 0.6}, {0.6, 0.6}});
  auto m = linear_field(b, 3);
  const metric2 present = sized2(5, 5), blank = {{0, 0, 0}};
  put(m, 1, blank), put(m, 3, blank);
  put(m, targets[3], present);
  ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, m, targets, true, T3), 0);
  const metric2 want[4] = {sized2(hx(0.25, 0.25), hy(0.25, 0.25), 0.4), blank, blank, present}; // last: kept
  for (unsigned k = 0; k < 4; ++k)
    EXPECT_TRUE(near(column_of<metric2>(m, targets[k]), want[k])) << k;
  ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, m, targets, false, T3), 0);
  EXPECT_TRUE(near(column_of<metric2>(m, targets[3]), sized2(hx(0.6, 0.6), hy(0.6, 0.6), 0.4)));
}

TEST(InterpolateMetrics, SizeFormServesEveryKindAndMetricFormOnlyTriangles) {
  // Unit grid of 2 x 2 cells; MIXED has quadrangles in cells (0, 0) and
  // (1, 1). Corner sizes 1, 2, 3, 4 round cell (0, 0): its centre gets the
  // quadrangle's value at s2 = t2 = 0.75, 2.875, not the mean 2.5.
  for (kelm::element_type kind : {Q4, MIXED}) {
    auto b = grid_background(2, kind);
    const auto targets = add_targets(b, {{0.25, 0.25}, {0.75, 0.25}});
    dense1D<double> sizes(b.xy.cols, 9.0);
    sizes[0] = 1, sizes[1] = 2, sizes[4] = 3, sizes[3] = 4;
    ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, sizes, targets, false, kind), 0);
    EXPECT_DOUBLE_EQ(sizes[targets[0]], 2.875);
    // Cell (1, 0), corners 1, 2, 5, 4 with sizes 2, 9, 9, 3: its centre.
    EXPECT_DOUBLE_EQ(sizes[targets[1]], kind == Q4 ? 7.4375 : 6.0); // MIXED: on the edge 2-4 of two triangles
    dense2D<double> m(3, b.xy.cols, 1.0);
    EXPECT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, m, targets, false, kind), -2);
  }
}

TEST(InterpolateMetrics, StatusesInCheckingOrder) {
  // Each row breaks one argument and every later one: its status must win.
  struct args {
    background b = grid_background(2, T3);
    dense2D<double> m = dense2D<double>(3, 9, 1.0);
    dense1D<unsigned> targets = dense1D<unsigned>(1, 4u);
  };
  using breaker = void (*)(args&);
  const breaker breaks[] = {
      [](args& a) { a.b.xy.resize(3, 9, 0.0); }, [](args& a) { a.b.conn(2, 0) = 9; },
      [](args& a) { a.b.neighbours(0, 0) = 8; }, [](args& a) { a.b.ancestors[0] = 8; },
      [](args& a) { a.m.resize(3, 8); },         [](args& a) { a.targets[0] = 9; },
  };
  for (unsigned first = 0; first < 6; ++first) {
    args a;
    for (unsigned k = first; k < 6; ++k)
      breaks[k](a);
    dense1D<double> sizes(a.m.cols, 1.0);
    EXPECT_EQ(interpolate_metrics(a.b.xy, a.b.conn, a.b.neighbours, a.b.ancestors, a.m, a.targets, false, T3),
              -1 - int(first));
    EXPECT_EQ(interpolate_metrics(a.b.xy, a.b.conn, a.b.neighbours, a.b.ancestors, sizes, a.targets, false, T3),
              -1 - int(first));
  }
  args a; // no targets: 0 before any check
  a.b.xy.resize(3, 9, 0.0);
  EXPECT_EQ(interpolate_metrics(a.b.xy, a.b.conn, a.b.neighbours, a.b.ancestors, a.m, dense1D<unsigned>(), 0, T3), 0);
  dense2D<double> four(4, 9, 1.0);
  auto g = grid_background(2, T3);
  EXPECT_EQ(interpolate_metrics(g.xy, g.conn, g.neighbours, g.ancestors, four, false, T3), -5);
}

TEST(InterpolateMetrics, ExhaustedMemoryIsReported) {
  // A growth that fails and is retried may still succeed; a call either
  // gives the full result or -199 with each target old or new.
  auto b = grid_background(8, T3, 0.3);
  add_targets(b, random_points(20, -0.1, 1.0));
  auto reference = linear_field(b, 6);
  const auto before = as_columns(reference);
  ASSERT_EQ(interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, reference, false, T3), 0);
  const auto after = as_columns(reference);
  unsigned refused = 0;
  sweep_allocation_failures([&](unsigned long n) {
    auto m = linear_field(b, 6);
    int status = 1;
    const bool failed =
        fail_during(n, [&] { status = interpolate_metrics(b.xy, b.conn, b.neighbours, b.ancestors, m, false, T3); });
    const auto got = as_columns(m);
    EXPECT_TRUE(status == 0 ? got == after : status == -199);
    for (unsigned j = 0; j < m.cols; ++j)
      EXPECT_TRUE(got[j] == before[j] || got[j] == after[j]);
    refused += status == -199;
    return failed;
  });
  EXPECT_GE(refused, 1u);
}
