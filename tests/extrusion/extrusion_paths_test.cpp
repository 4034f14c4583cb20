#include <gtest/gtest.h>

#include <cmath>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/planar_area.h"
#include "tesskit2d/extrusion.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using v2 = kelm::vector_fixed<double, 2>;
using v3 = kelm::vector_fixed<double, 3>;

namespace {

const double pi = 3.14159265358979323846;

// Three nodes on the x axis and the chain of two edges through them.
dense2D<double> line2() { return coords({{0, 0}, {1, 0}, {3, 0}}); }
dense2D<double> line3() { return coords({{0, 0, 0}, {1, 0, 0}, {3, 0, 0}}); }
dense2D<unsigned> chain() { return conn({{0, 1}, {1, 2}}); }

double distance(const double* a, const double* b, unsigned rows) {
  double s = 0;
  for (unsigned r = 0; r < rows; ++r)
    s += (a[r] - b[r]) * (a[r] - b[r]);
  return std::sqrt(s);
}

} // namespace

TEST(ExtrusionStatuses, TranslateChecksInOrder) {
  auto c1 = coords({{0}, {1}, {2}}), c2 = line2(), c4 = coords({{0, 0, 0, 0}, {1, 0, 0, 0}, {3, 0, 0, 0}});
  const auto edges = chain(), bad = conn({{0, 3}});
  auto q = conn({{9, 9, 9, 9}}), t = conn({{9, 9, 9}});
  const v2 d2 = {{0, 1}}, zero2 = {{0, 0}};
  const v3 d3 = {{0, 1, 0}};
  EXPECT_EQ(extrude_translate_Q4(c1, dense2D<unsigned>(2, 0), d2, 1.0, 1.0, false, t), 0);
  EXPECT_EQ(extrude_translate_Q4(c1, edges, d2, 0u, t), 0);
  EXPECT_EQ(extrude_translate_Q4(c1, edges, d2, 1.0, 1.0, false, t), -1);
  EXPECT_EQ(extrude_translate_Q4(c2, bad, d2, 1.0, 1.0, false, t), -2);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d2, 0.0, 1.0, false, t), -4);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d2, 1.0, -1.0, false, t), -5);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d2, 1.0, 1.0, false, t), -7);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, zero2, 3u, q), -4); // h = 0 from a zero vector
  EXPECT_EQ(extrude_translate_Q4(c4, edges, d3, 1.0, 1.0, false, q), -1);
  EXPECT_EQ(extrude_translate_Q4(c2, bad, d3, 1.0, 1.0, false, q), -2);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d3, -1.0, 1.0, false, q), -4);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d3, 1.0, 0.0, false, q), -5);
  EXPECT_EQ(extrude_translate_Q4(c2, edges, d3, 1.0, 1.0, false, t), -7);
  EXPECT_EQ(extrude_translate_T3(c1, edges, d2, 1.0, 1.0, 0, false, q), -1);
  EXPECT_EQ(extrude_translate_T3(c2, bad, d2, 1.0, 1.0, 0, false, q), -2);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 0.0, 1.0, 0, false, q), -4);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 1.0, 0.0, 0, false, q), -5);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 1.0, 1.0, 3, false, q), -6);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 1.0, 1.0, -1, false, q), -6);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 1.0, 1.0, 2, false, q), -8);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d2, 2u, 5, q), -6); // the wrapper hands `pattern` on
  EXPECT_EQ(extrude_translate_T3(c4, edges, d3, 1.0, 1.0, 0, false, q), -1);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d3, 1.0, 1.0, 9, false, q), -6);
  EXPECT_EQ(extrude_translate_T3(c2, edges, d3, 1.0, 1.0, 1, false, q), -8);
  EXPECT_EQ(as_columns(c2), as_columns(line2()));
  EXPECT_EQ(c2.rows, 2u); // no promotion before a refusal
  EXPECT_EQ(q.cols + t.cols, 2u);
}

TEST(ExtrusionStatuses, RotateChecksInOrderWithItsOddNumbers) {
  auto c1 = coords({{0}, {1}, {2}}), c2 = line2(), c3 = line3();
  const auto edges = chain(), bad = conn({{0, 3}});
  auto q = conn({{9, 9, 9, 9}}), t = conn({{9, 9, 9}});
  const v2 o2 = {{0, -1}};
  const v3 o3 = {{0, -1, 0}}, w = {{0, 0, 1}};
  EXPECT_EQ(extrude_rotate_Q4(c1, edges, o2, 1.0, 0u, t), 0);
  EXPECT_EQ(extrude_rotate_Q4(c1, edges, o2, 1.0, 2u, t), -1);
  EXPECT_EQ(extrude_rotate_Q4(c2, bad, o2, 1.0, 2u, t), -2);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o2, 1.0, 2u, t), -6);
  EXPECT_EQ(extrude_rotate_Q4(c3, edges, o2, 1.0, 1.0, 1.0, false, q), -1);
  EXPECT_EQ(extrude_rotate_Q4(c2, bad, o2, 1.0, 1.0, 1.0, false, q), -2);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o2, 1.0, 0.0, 1.0, false, q), -5);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o2, 1.0, 1.0, 0.0, false, q), -6);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o2, 1.0, 1.0, 1.0, false, t), -8);
  EXPECT_EQ(extrude_rotate_Q4(c1, edges, o3, w, 0u, q), 0);
  EXPECT_EQ(extrude_rotate_Q4(c1, edges, o3, w, 2u, q), -1);
  EXPECT_EQ(extrude_rotate_Q4(c2, bad, o3, w, 2u, q), -2);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o3, w, 2u, q), -3); // a 4-row output is refused here
  EXPECT_EQ(extrude_rotate_Q4(c1, edges, o3, w, 1.0, 1.0, false, q), -1);
  EXPECT_EQ(extrude_rotate_Q4(c2, bad, o3, w, 1.0, 1.0, false, q), -2);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o3, w, 0.0, 1.0, false, q), -5);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o3, w, 1.0, 0.0, false, q), -6);
  EXPECT_EQ(extrude_rotate_Q4(c2, edges, o3, w, 1.0, 1.0, false, q), -8);
  EXPECT_EQ(extrude_rotate_T3(c1, edges, o2, 1.0, 0u, 0, q), 0);
  EXPECT_EQ(extrude_rotate_T3(c1, edges, o2, 1.0, 2u, 0, q), -1);
  EXPECT_EQ(extrude_rotate_T3(c2, bad, o2, 1.0, 2u, 0, q), -2);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o2, 1.0, 2u, 0, q), -7);
  EXPECT_EQ(extrude_rotate_T3(c3, edges, o2, 1.0, 1.0, 1.0, 0, false, q), -1);
  EXPECT_EQ(extrude_rotate_T3(c2, bad, o2, 1.0, 1.0, 1.0, 0, false, q), -2);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o2, 1.0, 0.0, 1.0, 0, false, q), -5);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o2, 1.0, 1.0, 0.0, 0, false, q), -6);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o2, 1.0, 1.0, 1.0, 3, false, q), -7);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o2, 1.0, 1.0, 1.0, 0, false, q), -9);
  EXPECT_EQ(extrude_rotate_T3(c1, edges, o3, w, 0u, 0, q), 0);
  EXPECT_EQ(extrude_rotate_T3(c1, edges, o3, w, 2u, 0, q), -1);
  EXPECT_EQ(extrude_rotate_T3(c2, bad, o3, w, 2u, 0, q), -2);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o3, w, 2u, 0, q), -7);
  EXPECT_EQ(extrude_rotate_T3(c1, edges, o3, w, 1.0, 1.0, 0, false, q), -1);
  EXPECT_EQ(extrude_rotate_T3(c2, bad, o3, w, 1.0, 1.0, 0, false, q), -1); // bad IDs report -1 here
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o3, w, 0.0, 1.0, 0, false, q), -5);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o3, w, 1.0, 0.0, 0, false, q), -6);
  EXPECT_EQ(extrude_rotate_T3(c2, edges, o3, w, 1.0, 1.0, 0, false, q), -9);
  EXPECT_EQ(as_columns(c2), as_columns(line2()));
  EXPECT_EQ(c2.rows, 2u);
  EXPECT_EQ(as_columns(c3), as_columns(line3()));
}

TEST(ExtrusionStatuses, SpiralAndNormalChecksInOrder) {
  auto c1 = coords({{0}, {1}, {2}}), c2 = line2(), c3 = line3();
  const auto edges = chain(), bad = conn({{0, 3}});
  auto q = conn({{9, 9, 9, 9}}), t = conn({{9, 9, 9}});
  const v3 o = {{0, -1, 0}}, w = {{0, 0, 1}}, up = {{0, 0, 2}}, still = {{0, 0, 0}};
  EXPECT_EQ(extrude_spiral_Q4(c2, edges, o, w, up, 0u, t), 0);
  EXPECT_EQ(extrude_spiral_Q4(c3, edges, o, w, still, 2u, q), -6);
  EXPECT_EQ(extrude_spiral_Q4(c2, edges, o, w, up, 1.0, 1.0, false, q), -1);
  EXPECT_EQ(extrude_spiral_Q4(c3, bad, o, w, up, 1.0, 1.0, false, q), -2);
  EXPECT_EQ(extrude_spiral_Q4(c3, edges, o, w, up, 0.0, 1.0, false, q), -6);
  EXPECT_EQ(extrude_spiral_Q4(c3, edges, o, w, up, 1.0, 0.0, false, q), -7);
  EXPECT_EQ(extrude_spiral_Q4(c3, edges, o, w, up, 1.0, 1.0, false, t), -9);
  EXPECT_EQ(extrude_spiral_T3(c2, edges, o, w, up, 0u, 0, q), 0);
  EXPECT_EQ(extrude_spiral_T3(c3, edges, o, w, still, 2u, 0, q), -6);
  EXPECT_EQ(extrude_spiral_T3(c2, edges, o, w, up, 1.0, 1.0, 0, false, q), -1);
  EXPECT_EQ(extrude_spiral_T3(c3, bad, o, w, up, 1.0, 1.0, 0, false, q), -2);
  EXPECT_EQ(extrude_spiral_T3(c3, edges, o, w, up, 0.0, 1.0, 0, false, q), -6);
  EXPECT_EQ(extrude_spiral_T3(c3, edges, o, w, up, 1.0, 0.0, 0, false, q), -4);
  EXPECT_EQ(extrude_spiral_T3(c3, edges, o, w, up, 1.0, 1.0, 0, false, q), -10);

  const auto vectors = coords({{0, 1}, {0, 1}, {0, 1}}), vectors3 = line3();
  EXPECT_EQ(extrude_normal_Q4(c1, edges, vectors, 0u, q), -1); // checks run even with no layer
  EXPECT_EQ(extrude_normal_Q4(c2, bad, vectors, 2u, q), -2);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, vectors3, 2u, q), -3);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, vectors, 2u, t), -5);
  EXPECT_EQ(extrude_normal_Q4(c1, edges, 1.0, 0u, t), 0);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, 0.0, 3u, t), -3);
  EXPECT_EQ(extrude_normal_Q4(c1, edges, 1.0, 1.0, 1.0, false, t), -1);
  EXPECT_EQ(extrude_normal_Q4(c2, bad, 1.0, 1.0, 1.0, false, t), -2);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, -1.0, 1.0, 1.0, false, t), -3);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, 1.0, 0.0, 1.0, false, t), -4);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, 1.0, 1.0, 0.0, false, t), -5);
  EXPECT_EQ(extrude_normal_Q4(c2, edges, 1.0, 1.0, 1.0, false, t), -7);
  EXPECT_EQ(extrude_normal_T3(c1, edges, vectors, 0u, 0, t), -1);
  EXPECT_EQ(extrude_normal_T3(c2, bad, vectors, 2u, 0, t), -2);
  EXPECT_EQ(extrude_normal_T3(c2, edges, vectors3, 2u, 0, t), -3);
  EXPECT_EQ(extrude_normal_T3(c2, edges, vectors, 2u, 0, q), -6);
  EXPECT_EQ(extrude_normal_T3(c1, edges, 1.0, 0u, 0, q), 0);
  EXPECT_EQ(extrude_normal_T3(c2, edges, -2.0, 3u, 0, q), -3);
  EXPECT_EQ(extrude_normal_T3(c1, edges, 1.0, 1.0, 1.0, false, 0, q), -1);
  EXPECT_EQ(extrude_normal_T3(c2, bad, 1.0, 1.0, 1.0, false, 0, q), -2);
  EXPECT_EQ(extrude_normal_T3(c2, edges, 0.0, 1.0, 1.0, false, 0, q), -3);
  EXPECT_EQ(extrude_normal_T3(c2, edges, 1.0, 0.0, 1.0, false, 0, q), -4);
  EXPECT_EQ(extrude_normal_T3(c2, edges, 1.0, 1.0, 0.0, false, 0, q), -5);
  EXPECT_EQ(extrude_normal_T3(c2, edges, 1.0, 1.0, 1.0, false, 0, q), -8);
  EXPECT_EQ(as_columns(c2), as_columns(line2()));
  EXPECT_EQ(as_columns(c3), as_columns(line3()));
  EXPECT_EQ(q.cols + t.cols, 2u);
}

TEST(ExtrusionLayers, GradedTranslationRoundsTheLayerCountAndGrowsGeometrically) {
  for (bool even : {false, true}) {
    auto c = coords({{0, 0}, {1, 0}});
    dense2D<unsigned> out;
    const v2 d = {{0, 10}};
    ASSERT_EQ(extrude_translate_Q4(c, conn({{0, 1}}), d, 1.0, 2.0, even, out), 0);
    const unsigned n = even ? 8 : 7; // 6.93 layers: 7, and 8 (not 6) when even
    ASSERT_EQ(out.cols, n);
    ASSERT_EQ(c.cols, 2 + 2 * n);
    EXPECT_NEAR(c(1, 2 + 2 * (n - 1)), 10.0, 1e-12); // the whole path is honoured
    if (!even) {
      EXPECT_NEAR(c(1, 2), 1.0409, 1e-4);
      EXPECT_NEAR(10.0 - c(1, 2 + 2 * 5), 1.8855, 1e-4);
    }
    double previous = 0;
    for (unsigned j = 1; j <= n; ++j) { // thicknesses grow by one ratio
      const double y = c(1, 2 * j), ratio = std::pow(2.0, 1.0 / n);
      if (j > 1) {
        EXPECT_NEAR((y - c(1, 2 * (j - 1))) / previous, ratio, 1e-12);
      }
      previous = y - (j > 1 ? c(1, 2 * (j - 1)) : 0.0);
    }
  }
  // A path of zero length still makes one layer in a translation, even with
  // `even`, but none in a spiral.
  auto c = line2();
  dense2D<unsigned> out;
  ASSERT_EQ(extrude_translate_Q4(c, chain(), v2{{0, 0}}, 1.0, 1.0, true, out), 0);
  EXPECT_EQ(out.cols, 2u);
  auto s = line3();
  dense2D<unsigned> none;
  ASSERT_EQ(extrude_spiral_Q4(s, chain(), v3{{0, 0, 0}}, v3{{0, 0, 1}}, v3{{0, 0, 0}}, 1.0, 1.0, false, none), 0);
  EXPECT_EQ(none.cols, 0u);
  EXPECT_EQ(none.rows, 4u);
  EXPECT_EQ(s.cols, 3u);
}

TEST(ExtrusionGeometry, TranslationAreaIsLineLengthTimesHeight) {
  for (int pattern : {-1, 0, 1, 2}) {
    auto c = line2();
    dense2D<unsigned> out;
    const v2 d = {{0, 2}};
    const int status = pattern < 0 ? extrude_translate_Q4(c, chain(), d, 4u, out)
                                   : extrude_translate_T3(c, chain(), d, 4u, pattern, out);
    ASSERT_EQ(status, 0);
    double smallest = 0;
    EXPECT_NEAR(signed_area(c, out, &smallest), 3.0 * 2.0, 1e-13);
    EXPECT_GT(smallest, 0.0); // a line walked along +x swept along +y is counter-clockwise
  }
  // A translation in space lifts 2-row coordinates to 3 rows.
  auto c = line2();
  dense2D<unsigned> out;
  ASSERT_EQ(extrude_translate_Q4(c, chain(), v3{{0, 2, 6}}, 3u, out), 0);
  ASSERT_EQ(c.rows, 3u);
  for (unsigned id = 0; id < c.cols; ++id)
    EXPECT_NEAR(c(2, id), 2.0 * (id / 3), 1e-13);
}

TEST(ExtrusionGeometry, RotationKeepsDistancesFromTheAxisAndAFullTurnClosesInSpace) {
  auto c = line2();
  dense2D<unsigned> out;
  const v2 o = {{0.5, -1}};
  ASSERT_EQ(extrude_rotate_Q4(c, chain(), o, 1.3, 5u, out), 0);
  for (unsigned id = 3; id < c.cols; ++id)
    EXPECT_NEAR(distance(c.column(id), o.v, 2), distance(c.column(id % 3), o.v, 2), 1e-13);

  // In space: the distance from the axis and the position along it stay.
  auto s = line3();
  const v3 centre = {{1, 2, 3}}, w = {{0.3, -0.2, 0.9}};
  dense2D<unsigned> out3;
  ASSERT_EQ(extrude_rotate_Q4(s, chain(), centre, w, 4u, out3), 0);
  const double len = std::sqrt(0.94), axis[3] = {0.3 / len, -0.2 / len, 0.9 / len};
  auto along = [&](const double* x) { return (x[0] - 1) * axis[0] + (x[1] - 2) * axis[1] + (x[2] - 3) * axis[2]; };
  for (unsigned id = 3; id < s.cols; ++id) {
    EXPECT_NEAR(along(s.column(id)), along(s.column(id % 3)), 1e-13);
    EXPECT_NEAR(distance(s.column(id), centre.v, 3), distance(s.column(id % 3), centre.v, 3), 1e-13);
  }

  // A full turn ends on the input nodes, as new IDs; small steps use the
  // series of the rotation and stay exact to rounding.
  for (unsigned layers : {8u, 100000u}) {
    auto r = line2();
    dense2D<unsigned> ring;
    ASSERT_EQ(extrude_rotate_T3(r, chain(), o, 2 * pi, layers, 1, ring), 0);
    ASSERT_EQ(r.cols, 3 + 3 * layers);
    for (unsigned p = 0; p < 3; ++p)
      EXPECT_NEAR(distance(r.column(3 * layers + p), r.column(p), 2), 0.0, 1e-9);
    auto r3 = line3();
    dense2D<unsigned> ring3;
    ASSERT_EQ(extrude_rotate_Q4(r3, chain(), centre, v3{{0, 0, 2 * pi}}, layers, ring3), 0);
    for (unsigned p = 0; p < 3; ++p)
      EXPECT_NEAR(distance(r3.column(3 * layers + p), r3.column(p), 3), 0.0, 1e-9);
  }
}

TEST(ExtrusionGeometry, RotationLengthComesFromTheFirstNodeOnly) {
  auto c = coords({{0, 0}, {5, 0}});
  dense2D<unsigned> out;
  // x0 on the centre: no length, one layer, although node 1 sweeps far.
  ASSERT_EQ(extrude_rotate_Q4(c, conn({{0, 1}}), v2{{0, 0}}, 1.0, 0.1, 0.1, false, out), 0);
  EXPECT_EQ(out.cols, 1u);
  auto d = coords({{0, 0}, {5, 0}});
  ASSERT_EQ(extrude_rotate_Q4(d, conn({{1, 0}}), v2{{0, 0}}, 1.0, 0.5, 0.5, false, out), 0);
  EXPECT_EQ(out.cols, 1u + 10); // arc 5 of node 1, now first

  // The plane rotation drops a third row; the spatial one keeps or adds it.
  auto c3 = line3();
  dense2D<unsigned> q;
  ASSERT_EQ(extrude_rotate_Q4(c3, chain(), v2{{0, -1}}, 1.0, 2u, q), 0);
  EXPECT_EQ(c3.rows, 2u);
  EXPECT_EQ(c3.cols, 9u);
}

TEST(ExtrusionGeometry, SpiralTurnsAndAdvancesTogether) {
  auto c = line3();
  dense2D<unsigned> out;
  const v3 o = {{0, 0, 0}}, w = {{0, 0, pi}}, up = {{0, 0, 4}};
  ASSERT_EQ(extrude_spiral_T3(c, chain(), o, w, up, 4u, 2, out), 0);
  ASSERT_EQ(out.cols, 16u);
  for (unsigned j = 1; j <= 4; ++j)
    for (unsigned p = 0; p < 3; ++p) {
      const double *x = c.column(3 * j + p), *x0 = c.column(p);
      EXPECT_NEAR(x[2], j * 1.0, 1e-13);
      EXPECT_NEAR(std::hypot(x[0], x[1]), std::hypot(x0[0], x0[1]), 1e-13);
      if (p > 0) {
        EXPECT_NEAR(std::atan2(x[1], x[0]), j * pi / 4, 1e-13);
      }
    }
}

TEST(ExtrusionGeometry, NormalSweepTurnsACounterClockwiseLoopIntoCounterClockwiseQuadrangles) {
  auto c = coords({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
  const auto loop = conn({{0, 1}, {1, 2}, {2, 3}, {3, 0}});
  dense2D<unsigned> out;
  ASSERT_EQ(extrude_normal_Q4(c, loop, 1.0, 2u, out), 0);
  ASSERT_EQ(out.cols, 8u);
  double smallest = 0;
  signed_area(c, out, &smallest);
  EXPECT_GT(smallest, 0.0);
  const double step = std::sqrt(0.5) / 2; // corners move inwards along the diagonal
  EXPECT_NEAR(c(0, 4 + 4), 2 * step, 1e-14);
  EXPECT_NEAR(c(1, 4 + 4), 2 * step, 1e-14);

  // Given vectors are the whole displacement, whatever their length.
  auto v = line2();
  const auto vectors = coords({{0, 1}, {0, 2}, {1, 3}});
  dense2D<unsigned> t;
  ASSERT_EQ(extrude_normal_T3(v, chain(), vectors, 2u, 1, t), 0);
  for (unsigned p = 0; p < 3; ++p) {
    EXPECT_NEAR(v(0, 6 + p), v(0, p) + vectors(0, p), 1e-14);
    EXPECT_NEAR(v(1, 6 + p), v(1, p) + vectors(1, p), 1e-14);
  }
  auto n0 = line2();
  dense2D<unsigned> none;
  ASSERT_EQ(extrude_normal_Q4(n0, chain(), vectors, 0u, none), 0);
  EXPECT_EQ(none.rows, 4u);
  EXPECT_EQ(n0.cols, 3u);
}

TEST(ExtrusionGeometry, MixedOutputOfTheSpatialRotation) {
  // A 3-row mesh passes the check of the spatial rotation into quadrangles and
  // comes out as a mixed 4-row mesh.
  auto c = line2();
  auto out = conn({{7, 8, 9}});
  ASSERT_EQ(extrude_rotate_Q4(c, chain(), v3{{0, -1, 0}}, v3{{0, 0, 1}}, 1u, out), 0);
  ASSERT_EQ(out.rows, 4u);
  ASSERT_EQ(out.cols, 3u);
  EXPECT_EQ(as_columns(out)[0], (std::vector<unsigned>{7, 8, 9, null_id}));
  EXPECT_EQ(c.rows, 3u);
}

TEST(ExtrusionRollback, OutOfMemoryRestoresColumnCountsAndTheStatedRows) {
  struct case_t {
    const char* name;
    unsigned rows_in, rows_after; // rows of `coords` on entry and after -199
    unsigned out_rows;
    int (*call)(dense2D<double>&, const dense2D<unsigned>&, dense2D<unsigned>&);
  };
  const case_t cases[] = {
      {"translate plane", 2, 2, 4,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_translate_Q4(c, e, v2{{0, 1}}, 3u, o);
       }},
      {"translate space", 2, 3, 3,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_translate_T3(c, e, v3{{0, 1, 1}}, 1.0, 1.5, 2, false, o);
       }},
      {"rotate plane from 3 rows", 3, 2, 4,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_rotate_Q4(c, e, v2{{0, -1}}, 1.0, 3u, o);
       }},
      {"rotate space uniform", 2, 2, 3,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_rotate_T3(c, e, v3{{0, -1, 0}}, v3{{0, 0, 1}}, 3u, 0, o);
       }},
      {"spiral", 3, 2, 4,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_spiral_Q4(c, e, v3{{0, -1, 0}}, v3{{0, 0, 1}}, v3{{0, 0, 3}}, 3u, o);
       }},
      {"normal", 2, 2, 3,
       [](dense2D<double>& c, const dense2D<unsigned>& e, dense2D<unsigned>& o) {
         return extrude_normal_T3(c, e, 1.0, 3u, 2, o);
       }},
  };
  const auto edges = chain(); // built outside the failing window
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    unsigned rolled_back = 0;
    sweep_allocation_failures([&](unsigned long n) {
      auto c = k.rows_in == 2 ? line2() : line3();
      auto out = k.out_rows == 3 ? conn({{9, 9, 9}}) : conn({{9, 9, 9, 9}});
      int status = 1;
      const bool failed = fail_during(n, [&] { status = k.call(c, edges, out); });
      if (status == -199) {
        ++rolled_back;
        EXPECT_EQ(out.cols, 1u);
        EXPECT_EQ(out.rows, k.out_rows);
        EXPECT_EQ(out(0, 0), 9u);
        EXPECT_EQ(c.cols, 3u);
        // A failed lift to 3 rows changes nothing; later failures leave the
        // rows that the overload states.
        if (c.rows != k.rows_in) {
          EXPECT_EQ(c.rows, k.rows_after);
        }
        EXPECT_EQ(c(0, 2), 3.0);
      } else {
        EXPECT_EQ(status, 0);
      }
      return failed;
    });
    EXPECT_GE(rolled_back, 2u);
  }
}
