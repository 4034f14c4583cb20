#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "interpolation/local_coordinates.h"
#include "interpolation/point_locator.h"
#include "support/allocation_failure.h"
#include "support/interpolation_meshes.h"
#include "tesskit2d/interpolation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

using field_fn = std::function<double(double, double)>;

// The field sampled at the background nodes; targets start at `untouched`.
dense1D<double> sampled(const background& b, const field_fn& f, double untouched = -99.0) {
  dense1D<double> v(b.xy.cols, untouched);
  for (unsigned j = 0; j < b.n_background; ++j)
    v[j] = f(b.xy(0, j), b.xy(1, j));
  return v;
}

// Targets: random points of the square, the midpoints of a few edges and a
// few nodes of the mesh.
dense1D<unsigned> inner_targets(background& b, unsigned count) {
  auto points = random_points(count, 0.0, 1.0);
  for (unsigned j = 0; j < b.n_background; j += 7) {
    points.push_back({b.xy(0, j), b.xy(1, j)});
    const unsigned k = (j + 1) % b.n_background;
    points.push_back({0.5 * (b.xy(0, j) + b.xy(0, k)), 0.5 * (b.xy(1, j) + b.xy(1, k))});
  }
  return add_targets(b, points);
}

} // namespace

TEST(Interpolate, EachCheckWinsOverAllLaterOnes) {
  // Faults in checking order; the call with faults k..6 must report -k.
  background b = grid_background(3, T3);
  const dense1D<unsigned> targets = add_targets(b, {{0.5, 0.5}});
  const unsigned n = b.xy.cols;
  for (bool scalar : {true, false})
    for (unsigned k = 1; k <= 7; ++k) {
      dense2D<double> xy = b.xy;
      dense2D<unsigned> c = deep(b.conn), nb = deep(b.neighbours);
      dense1D<unsigned> holders(n), ids(targets.size);
      std::copy(b.ancestors.begin(), b.ancestors.end(), holders.begin());
      std::copy(targets.begin(), targets.end(), ids.begin());
      dense1D<double> f1(n, 0.0);
      dense2D<double> f2(2, n, 0.0);
      if (k <= 6) ids[0] = n;
      if (k <= 5) f1.resize(n - 1), f2.resize(2, n + 1);
      if (k <= 4) holders.resize(n + 1, null_id);
      if (k <= 3) nb(2, 4) = c.cols;
      if (k <= 2) c(1, 3) = n;
      if (k <= 1) xy = dense2D<double>(3, n, 0.0);
      const int expected = k == 7 ? 0 : -int(k);
      EXPECT_EQ(scalar ? interpolate(xy, c, nb, holders, f1, ids, T3) : interpolate(xy, c, nb, holders, f2, ids, T3),
                expected)
          << "faults from " << k << (scalar ? " scalar" : " columns");
      // An empty target list ends the call before any check.
      EXPECT_EQ(interpolate(xy, c, nb, holders, f1, dense1D<unsigned>(), T3), 0);
    }

  // Shape faults the ladder does not show, and the guard on the elements the
  // walks start from, which only the scalar overload reads.
  dense1D<double> f(b.xy.cols, 0.0);
  dense2D<double> cols(1, b.xy.cols, 0.0);
  EXPECT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, f, targets, MIXED), -2);
  dense1D<unsigned> stray(b.xy.cols);
  std::copy(b.ancestors.begin(), b.ancestors.end(), stray.begin());
  stray[5] = b.conn.cols;
  EXPECT_EQ(interpolate(b.xy, b.conn, b.neighbours, stray, f, targets, T3), -4);
  EXPECT_EQ(interpolate(b.xy, b.conn, b.neighbours, stray, cols, targets, T3), 0);
  EXPECT_EQ(f[targets[0]], 0.0);
}

TEST(Interpolate, LinearFieldsReproducedOnEveryKindAndBilinearOnRectangles) {
  const field_fn linear = [](double x, double y) { return 1.5 - 2 * x + 3.25 * y; };
  const field_fn bilinear = [](double x, double y) { return 0.5 + x - 2 * y + 4 * x * y; };
  struct row {
    kelm::element_type kind;
    double jitter;
    field_fn f;
  };
  for (const row& r :
       std::vector<row>{{T3, 0.3, linear}, {Q4, 0.25, linear}, {MIXED, 0.25, linear}, {Q4, 0, bilinear}}) {
    background b = grid_background(9, r.kind, r.jitter);
    const dense1D<unsigned> targets = inner_targets(b, 300);
    if (r.jitter == 0)
      for (unsigned j = 0; j < b.xy.cols; ++j)
        b.xy(1, j) *= 0.4; // rectangles
    dense1D<double> v = sampled(b, r.f);
    ASSERT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, v, targets, r.kind), 0);
    for (unsigned t : as_vector(targets))
      EXPECT_NEAR(v[t], r.f(b.xy(0, t), b.xy(1, t)), 1e-13) << "kind " << r.kind << " target " << t;

    // Strided arrays and a second run give the same values, bit for bit.
    dense1D<double> again = sampled(b, r.f);
    ASSERT_EQ(interpolate(strided(b.xy), strided(b.conn), strided(b.neighbours), b.ancestors, again, targets, r.kind),
              0);
    EXPECT_EQ(as_vector(again), as_vector(v));
  }
}

TEST(Interpolate, HolesTakeTheNearestNodeAndPointsOutsideStayUntouched) {
  background b = grid_background(4, MIXED);
  drop_element(b, 8); // the quadrangle of the cell (0.25, 0.25)..(0.5, 0.5)
  const dense1D<unsigned> targets = add_targets(b, {{0.3, 0.27}, {0.4, 0.46}, {0.5, -1e-9}, {0.5, 0.0}});
  const field_fn f = [](double x, double y) { return x + 10 * y; };
  dense1D<double> v = sampled(b, f);
  ASSERT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, v, targets, MIXED), 0);
  EXPECT_EQ(v[targets[0]], v[6]);  // node 6 at (0.25, 0.25) is nearest
  EXPECT_EQ(v[targets[1]], v[12]); // node 12 at (0.5, 0.5)
  EXPECT_EQ(v[targets[2]], -99.0); // outside the box
  EXPECT_NEAR(v[targets[3]], f(0.5, 0.0), 1e-15);

  // The columns overload validates the same input and writes nothing.
  dense2D<double> cols(2, b.xy.cols, -99.0);
  for (unsigned j = 0; j < b.n_background; ++j)
    cols(0, j) = cols(1, j) = v[j];
  EXPECT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, cols, targets, MIXED), 0);
  EXPECT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, cols, targets, Q4), -2);
  for (unsigned t : as_vector(targets))
    EXPECT_EQ(cols(0, t), -99.0);
}

TEST(Interpolate, RunningOutOfMemoryEndsWithMinusOneNinetyNineAndWrittenTargetsExact) {
  // A target in a hole makes the fallback round the nearest node run.
  background b = grid_background(20, MIXED, 0.2);
  auto points = random_points(40, 0.0, 1.0);
  std::array<double, 2> centre{0, 0};
  for (unsigned r = 0; r < 3; ++r)
    for (unsigned a = 0; a < 2; ++a)
      centre[a] += b.xy(a, b.conn(r, 200)) / 3;
  points.insert(points.begin() + 20, centre);
  const dense1D<unsigned> targets = add_targets(b, points);
  drop_element(b, 200);
  const field_fn f = [](double x, double y) { return 2 * x - y; };
  dense1D<double> reference = sampled(b, f);
  ASSERT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, reference, targets, MIXED), 0);
  unsigned refused = 0;
  sweep_allocation_failures([&](unsigned long n) {
    dense1D<double> v = sampled(b, f);
    int status = 0;
    const bool fired =
        fail_during(n, [&] { status = interpolate(b.xy, b.conn, b.neighbours, b.ancestors, v, targets, MIXED); });
    EXPECT_TRUE(status == 0 || status == -199) << status;
    refused += status == -199;
    for (unsigned t : as_vector(targets))
      EXPECT_TRUE(v[t] == reference[t] || (status != 0 && v[t] == -99.0));
    return fired;
  });
  EXPECT_GT(refused, 0u); // others were retried and recovered
}

TEST(Interpolate, BlockedSearchesGiveTheValuesOfOneLocatePerTargetInOrder) {
  // The call searches targets in blocks ahead of their walks; a plain loop of
  // `locate` from `null_id` must give the same values bit for bit, on-edge
  // points included.
  background b = grid_background(12, T3, 0.25);
  const dense1D<unsigned> targets = inner_targets(b, 500);
  const field_fn f = [](double x, double y) { return std::sin(5 * x) * std::exp(y); };
  dense1D<double> v = sampled(b, f), ref = sampled(b, f);
  ASSERT_EQ(interpolate(b.xy, b.conn, b.neighbours, b.ancestors, v, targets, T3), 0);
  point_locator loc(b.xy, b.conn, b.neighbours, b.ancestors);
  loc.tree.fill_from_mesh<T3>(b.conn);
  edge_picker picker;
  for (unsigned t : as_vector(targets)) {
    const double p[2] = {b.xy(0, t), b.xy(1, t)};
    unsigned e = null_id;
    ASSERT_TRUE(loc.locate<T3>(p, e, 1e-6, true, picker));
    const unsigned* c = b.conn.column(e);
    double w[2];
    barycentric_T3(b.xy, c, p, w);
    ref[t] = (ref[c[1]] - ref[c[2]]) * w[1] + (ref[c[0]] - ref[c[2]]) * w[0] + ref[c[2]];
  }
  EXPECT_EQ(as_vector(v), as_vector(ref));
}

TEST(Interpolate, FieldSharingTheStorageOfCoordsGivesTheResultOfSeparateArrays) {
  // One buffer holds `coords` and `field` at the offsets of each row; the
  // field's initial values are whatever coordinates lie under it. The result
  // must be that of separate arrays holding the same values, bit for bit.
  background b = grid_background(5, MIXED, 0.2);
  const dense1D<unsigned> targets = add_targets(b, random_points(40, -0.1, 1.1));
  const unsigned n = b.xy.cols, size = 2 * n;
  struct row {
    unsigned coords_at, field_at;
    bool raw; // the field a view of the raw storage, on a buffer of its own
  };
  for (const row& r : std::vector<row>{{0, n, false},     // the field over the last nodes, the targets
                                       {n, n / 2, false}, // straddling the start of `coords`
                                       {0, size, false},  // just behind `coords`, on its buffer
                                       {0, n / 3, true}}) {
    dense1D<double> room(3 * n);
    for (unsigned k = 0; k < room.size; ++k)
      room[k] = 0.25 * (k % 7); // a field of its own where no coordinate lies
    dense2D<double> xy;
    xy.buffer = room.buffer;
    xy.offset = r.coords_at;
    xy.rows = xy.ld = 2;
    xy.cols = n;
    xy.size = size;
    for (unsigned j = 0; j < n; ++j)
      xy(0, j) = b.xy(0, j), xy(1, j) = b.xy(1, j);
    dense1D<double> field = r.raw ? dense1D<double>::view(room.begin() + r.field_at, n) : room;
    field.offset = r.raw ? 0 : r.field_at;
    field.size = n;
    const std::vector<double> initial(field.begin(), field.end());
    dense2D<double> alone_xy = deep(xy);
    dense1D<double> alone(n);
    std::copy(initial.begin(), initial.end(), alone.begin());
    ASSERT_EQ(interpolate(alone_xy, b.conn, b.neighbours, b.ancestors, alone, targets, MIXED), 0);

    // The private copy is the call's first allocation; without it the call
    // ends before any target is written.
    int status = 0;
    EXPECT_TRUE(
        fail_during(0, [&] { status = interpolate(xy, b.conn, b.neighbours, b.ancestors, field, targets, MIXED); }));
    EXPECT_EQ(status, -199);
    EXPECT_EQ(std::vector<double>(field.begin(), field.end()), initial);

    EXPECT_EQ(interpolate(xy, b.conn, b.neighbours, b.ancestors, field, targets, MIXED), 0) << r.field_at;
    EXPECT_EQ(std::vector<double>(field.begin(), field.end()), as_vector(alone)) << r.field_at;
    EXPECT_NE(as_vector(alone), initial);
  }
}
