#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "extrusion/layer_spacing.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/fp_traps.h"
#include "support/planar_area.h"
#include "tesskit2d/extrusion.h"

using namespace tk_test;
using namespace kelm::tesskit2d;
using v2 = kelm::vector_fixed<double, 2>;
using v3 = kelm::vector_fixed<double, 3>;

namespace {

const double pi = 3.14159265358979323846;

// Three nodes on the x axis, in 2 or 3 rows, and the chain of two edges
// through them.
dense2D<double> line(unsigned rows) {
  dense2D<double> c(rows, 3, 0.0);
  c(0, 1) = 1;
  c(0, 2) = 3;
  return c;
}
dense2D<unsigned> chain() { return conn({{0, 1}, {1, 2}}); }

double distance(const double* a, const double* b, unsigned rows) {
  double s = 0;
  for (unsigned r = 0; r < rows; ++r)
    s += (a[r] - b[r]) * (a[r] - b[r]);
  return std::sqrt(s);
}

// The arguments an extrusion checks, as bits: Z an empty `conn`, L no layer,
// C `coords` of a refused row count, I an ID past the last node, T a zero
// thickness, H0 a zero h0 (a zero path in a wrapper), H1 a negative h1,
// P a pattern above 2, V `vectors` and O `conn_out` of a wrong row count.
enum : unsigned { Z = 1, L = 2, C = 4, I = 8, T = 16, H0 = 32, H1 = 64, P = 128, V = 256, O = 512 };

// The inputs of one call, each built good or faulty.
struct faults {
  unsigned bad = 0, built = 0;
  dense2D<double> c, v;
  dense2D<unsigned> e, out;
  bool is(unsigned f) const { return bad & f; }
  dense2D<double>& x(unsigned good, unsigned refused) { return c = line(built = is(C) ? refused : good); }
  const dense2D<unsigned>& edges() { return e = is(Z) ? dense2D<unsigned>(2, 0) : is(I) ? conn({{0, 3}}) : chain(); }
  unsigned n() const { return is(L) ? 0 : 2; }
  double h(unsigned f) const { return is(f) ? (f == H1 ? -1.0 : 0.0) : 1.0; }
  int p(int wrong = 3) const { return is(P) ? wrong : 0; }
  const dense2D<double>& vectors() { return v = dense2D<double>(is(V) ? 3 : 2, 3, 0.5); }
  dense2D<unsigned>& o(unsigned good) { return out = dense2D<unsigned>(is(O) ? 7 - good : good, 1, 9u); }
};

struct overload {
  int (*call)(faults&);
  std::vector<std::pair<unsigned, int>> checks; // in checking order
};

const v2 up2 = {{0, 1}}, o2 = {{0, -1}};
const v3 up3 = {{0, 1, 0}}, o3 = {{0, -1, 0}}, w = {{0, 0, 1}}, lift = {{0, 0, 2}}, zero = {{0, 0, 0}};

// The 26 overloads, each family as plane uniform, plane graded, space
// uniform, space graded, Q4 before T3. Forms that leave `pattern` unchecked
// get 3 on every call, so a check there would show.
const overload overloads[] = {
    {[](faults& f) { return extrude_translate_Q4(f.x(2, 3), f.edges(), f.is(H0) ? v2{} : up2, f.n(), f.o(4)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -4}, {O, -7}}},
    {[](faults& f) { return extrude_translate_Q4(f.x(2, 3), f.edges(), up2, f.h(H0), f.h(H1), false, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -4}, {H1, -5}, {O, -7}}},
    {[](faults& f) { return extrude_translate_Q4(f.x(2, 4), f.edges(), f.is(H0) ? zero : up3, f.n(), f.o(4)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -4}, {O, -7}}},
    {[](faults& f) { return extrude_translate_Q4(f.x(3, 1), f.edges(), up3, f.h(H0), f.h(H1), true, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -4}, {H1, -5}, {O, -7}}},
    {[](faults& f) { return extrude_translate_T3(f.x(2, 3), f.edges(), f.is(H0) ? v2{} : up2, f.n(), f.p(), f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -4}, {P, -6}, {O, -8}}},
    {[](faults& f) {
       return extrude_translate_T3(f.x(2, 3), f.edges(), up2, f.h(H0), f.h(H1), f.p(-1), false, f.o(3));
     },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -4}, {H1, -5}, {P, -6}, {O, -8}}},
    {[](faults& f) { return extrude_translate_T3(f.x(3, 4), f.edges(), f.is(H0) ? zero : up3, f.n(), f.p(), f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -4}, {P, -6}, {O, -8}}},
    {[](faults& f) { return extrude_translate_T3(f.x(2, 1), f.edges(), up3, f.h(H0), f.h(H1), f.p(), false, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -4}, {H1, -5}, {P, -6}, {O, -8}}},
    {[](faults& f) { return extrude_rotate_Q4(f.x(3, 1), f.edges(), o2, 1.0, f.n(), f.o(4)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {O, -6}}},
    {[](faults& f) { return extrude_rotate_Q4(f.x(2, 3), f.edges(), o2, 1.0, f.h(H0), f.h(H1), false, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -5}, {H1, -6}, {O, -8}}},
    // The spatial rotations into quadrangles check `conn_out` for 3 rows.
    {[](faults& f) { return extrude_rotate_Q4(f.x(2, 1), f.edges(), o3, w, f.n(), f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {O, -3}}},
    {[](faults& f) { return extrude_rotate_Q4(f.x(3, 4), f.edges(), o3, w, f.h(H0), f.h(H1), false, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -5}, {H1, -6}, {O, -8}}},
    {[](faults& f) { return extrude_rotate_T3(f.x(2, 4), f.edges(), o2, 1.0, f.n(), 3, f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {O, -7}}},
    {[](faults& f) { return extrude_rotate_T3(f.x(2, 3), f.edges(), o2, 1.0, f.h(H0), f.h(H1), f.p(), false, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -5}, {H1, -6}, {P, -7}, {O, -9}}},
    {[](faults& f) { return extrude_rotate_T3(f.x(3, 1), f.edges(), o3, w, f.n(), 3, f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {O, -7}}},
    {[](faults& f) { return extrude_rotate_T3(f.x(2, 1), f.edges(), o3, w, f.h(H0), f.h(H1), 3, false, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -1}, {H0, -5}, {H1, -6}, {O, -9}}}, // IDs answer -1 here
    {[](faults& f) { return extrude_spiral_Q4(f.x(3, 2), f.edges(), o3, w, f.is(H0) ? zero : lift, f.n(), f.o(4)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -6}, {O, -9}}},
    {[](faults& f) { return extrude_spiral_Q4(f.x(3, 2), f.edges(), o3, w, lift, f.h(H0), f.h(H1), false, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -6}, {H1, -7}, {O, -9}}},
    {[](faults& f) { return extrude_spiral_T3(f.x(3, 2), f.edges(), o3, w, f.is(H0) ? zero : lift, f.n(), 3, f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {H0, -6}, {O, -10}}},
    {[](faults& f) { return extrude_spiral_T3(f.x(3, 2), f.edges(), o3, w, lift, f.h(H0), f.h(H1), 3, false, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {H0, -6}, {H1, -4}, {O, -10}}}, // h1 answers -4 here
    // Along given vectors the checks run even with no layer.
    {[](faults& f) { return extrude_normal_Q4(f.x(2, 3), f.edges(), f.vectors(), 0u, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {V, -3}, {O, -5}}},
    {[](faults& f) { return extrude_normal_Q4(f.x(2, 1), f.edges(), f.h(T), f.n(), f.o(4)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {T, -3}, {O, -7}}},
    {[](faults& f) { return extrude_normal_Q4(f.x(2, 1), f.edges(), f.h(T), f.h(H0), f.h(H1), false, f.o(4)); },
     {{Z, 0}, {C, -1}, {I, -2}, {T, -3}, {H0, -4}, {H1, -5}, {O, -7}}},
    {[](faults& f) { return extrude_normal_T3(f.x(2, 1), f.edges(), f.vectors(), 0u, 3, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {V, -3}, {O, -6}}},
    {[](faults& f) { return extrude_normal_T3(f.x(2, 3), f.edges(), f.h(T), f.n(), 3, f.o(3)); },
     {{Z, 0}, {L, 0}, {C, -1}, {I, -2}, {T, -3}, {O, -8}}},
    {[](faults& f) { return extrude_normal_T3(f.x(2, 3), f.edges(), f.h(T), f.h(H0), f.h(H1), false, 3, f.o(3)); },
     {{Z, 0}, {C, -1}, {I, -2}, {T, -3}, {H0, -4}, {H1, -5}, {O, -8}}},
};

} // namespace

// Each check must win over every later one: the call is given the faulty
// argument of check k and those of all checks after it. A refusal changes
// neither `coords` (no lift to 3 rows) nor `conn_out`.
TEST(ExtrusionStatuses, EveryOverloadChecksInItsOrderWithItsOwnNumbers) {
  for (const auto& k : overloads) {
    SCOPED_TRACE(&k - overloads);
    for (std::size_t i = 0; i < k.checks.size(); ++i) {
      faults f;
      for (std::size_t j = i; j < k.checks.size(); ++j)
        f.bad |= k.checks[j].first;
      EXPECT_EQ(k.call(f), k.checks[i].second) << "check " << i;
      EXPECT_EQ(f.c.rows, f.built);
      EXPECT_EQ(f.c.cols, 3u);
      EXPECT_EQ(f.out.cols, 1u);
      EXPECT_EQ(f.out(0, 0), 9u);
    }
  }
}

TEST(ExtrusionLayers, GradedTranslationRoundsTheLayerCountAndGrowsGeometrically) {
  for (bool even : {false, true}) {
    auto c = coords({{0, 0}, {1, 0}});
    dense2D<unsigned> out;
    ASSERT_EQ(extrude_translate_Q4(c, conn({{0, 1}}), v2{{0, 10}}, 1.0, 2.0, even, out), 0);
    const unsigned n = even ? 8 : 7; // 6.93 layers: 7, and 8 (not 6) when even
    ASSERT_EQ(c.cols, 2 + 2 * n);
    EXPECT_NEAR(c(1, 2 * n), 10.0, 1e-12); // the whole path is honoured
    for (unsigned j = 2; j <= n; ++j)      // thicknesses grow by one ratio
      EXPECT_NEAR((c(1, 2 * j) - c(1, 2 * j - 2)) / (c(1, 2 * j - 2) - c(1, 2 * j - 4)), std::pow(2.0, 1.0 / n), 1e-12);
  }
  // A path of zero length still makes one layer in a translation, even with
  // `even`, but none in a spiral.
  auto c = line(2), s = line(3);
  dense2D<unsigned> out, none;
  ASSERT_EQ(extrude_translate_Q4(c, chain(), v2{}, 1.0, 1.0, true, out), 0);
  EXPECT_EQ(out.cols, 2u);
  ASSERT_EQ(extrude_spiral_Q4(s, chain(), zero, w, zero, 1.0, 1.0, false, none), 0);
  EXPECT_EQ(none.cols + s.cols, 3u);
}

TEST(ExtrusionGeometry, TranslationAreaIsLineLengthTimesHeightAndSpaceLiftsTheRows) {
  for (int pattern : {-1, 0, 1, 2}) {
    auto c = line(2);
    dense2D<unsigned> out;
    ASSERT_EQ(pattern < 0 ? extrude_translate_Q4(c, chain(), v2{{0, 2}}, 4u, out)
                          : extrude_translate_T3(c, chain(), v2{{0, 2}}, 4u, pattern, out),
              0);
    double smallest = 0;
    EXPECT_NEAR(signed_area(c, out, &smallest), 3.0 * 2.0, 1e-13);
    EXPECT_GT(smallest, 0.0); // a line walked along +x swept along +y is counter-clockwise
  }
  auto c = line(2);
  dense2D<unsigned> out;
  ASSERT_EQ(extrude_translate_Q4(c, chain(), v3{{0, 2, 6}}, 3u, out), 0);
  ASSERT_EQ(c.rows, 3u);
  for (unsigned id = 0; id < c.cols; ++id) { // three nodes a layer
    const unsigned layer = id / 3;
    EXPECT_NEAR(c(2, id), 2.0 * layer, 1e-13);
  }
}

TEST(ExtrusionGeometry, RotationKeepsDistancesFromTheAxisAndAFullTurnClosesInSpace) {
  auto c = line(2), s = line(3);
  dense2D<unsigned> out, out3;
  const v2 o = {{0.5, -1}};
  const v3 centre = {{1, 2, 3}}, tilted = {{0.3, -0.2, 0.9}};
  ASSERT_EQ(extrude_rotate_Q4(c, chain(), o, 1.3, 5u, out), 0);
  ASSERT_EQ(extrude_rotate_Q4(s, chain(), centre, tilted, 4u, out3), 0);
  auto along = [&](const double* x) { return (x[0] - 1) * 0.3 - (x[1] - 2) * 0.2 + (x[2] - 3) * 0.9; };
  for (unsigned id = 3; id < c.cols; ++id)
    EXPECT_NEAR(distance(c.column(id), o.v, 2), distance(c.column(id % 3), o.v, 2), 1e-13);
  for (unsigned id = 3; id < s.cols; ++id) { // in space the position along the axis stays too
    EXPECT_NEAR(along(s.column(id)), along(s.column(id % 3)), 1e-13);
    EXPECT_NEAR(distance(s.column(id), centre.v, 3), distance(s.column(id % 3), centre.v, 3), 1e-13);
  }
  // A full turn ends on the input nodes, as new IDs; small steps use the
  // series of the rotation and stay exact to rounding.
  for (unsigned layers : {8u, 100000u}) {
    auto r = line(2), r3 = line(3);
    dense2D<unsigned> ring, ring3;
    ASSERT_EQ(extrude_rotate_T3(r, chain(), o, 2 * pi, layers, 1, ring), 0);
    ASSERT_EQ(extrude_rotate_Q4(r3, chain(), centre, v3{{0, 0, 2 * pi}}, layers, ring3), 0);
    ASSERT_EQ(r.cols, 3 + 3 * layers);
    for (unsigned p = 0; p < 3; ++p)
      EXPECT_NEAR(distance(r.column(3 * layers + p), r.column(p), 2) +
                      distance(r3.column(3 * layers + p), r3.column(p), 3),
                  0.0, 1e-9);
  }
}

TEST(ExtrusionGeometry, RotationLengthComesFromTheFirstNodeAndRowsFollowPlaneOrSpace) {
  dense2D<unsigned> out;
  for (bool centre_first : {true, false}) { // x0 on the centre: no length, one layer
    auto c = coords({{0, 0}, {5, 0}});
    const double h = centre_first ? 0.1 : 0.5;
    ASSERT_EQ(extrude_rotate_Q4(c, centre_first ? conn({{0, 1}}) : conn({{1, 0}}), v2{}, 1.0, h, h, false, out), 0);
    EXPECT_EQ(out.cols, centre_first ? 1u : 11u); // else the arc 5 of node 1
  }
  // The plane rotation drops a third row; the spatial one adds it and widens
  // a 3-row output into a mixed 4-row mesh.
  auto c3 = line(3), c2 = line(2);
  ASSERT_EQ(extrude_rotate_Q4(c3, chain(), o2, 1.0, 2u, out), 0);
  EXPECT_EQ(c3.rows * c3.cols, 2u * 9);
  auto mixed = conn({{7, 8, 9}});
  ASSERT_EQ(extrude_rotate_Q4(c2, chain(), o3, w, 1u, mixed), 0);
  EXPECT_EQ(c2.rows, 3u);
  ASSERT_EQ(mixed.rows * mixed.cols, 4u * 3);
  EXPECT_EQ(as_columns(mixed)[0], (std::vector<unsigned>{7, 8, 9, null_id}));
}

TEST(ExtrusionGeometry, SpiralTurnsAndAdvancesTogetherAndNormalSweepsKeepOrientation) {
  auto c = line(3);
  dense2D<unsigned> out;
  ASSERT_EQ(extrude_spiral_T3(c, chain(), zero, v3{{0, 0, pi}}, v3{{0, 0, 4}}, 4u, 2, out), 0);
  ASSERT_EQ(out.cols, 16u);
  for (unsigned j = 1; j <= 4; ++j)
    for (unsigned p = 0; p < 3; ++p) {
      const double *x = c.column(3 * j + p), *x0 = c.column(p);
      EXPECT_NEAR(x[2], j * 1.0, 1e-13);
      EXPECT_NEAR(std::hypot(x[0], x[1]), std::hypot(x0[0], x0[1]), 1e-13);
      EXPECT_TRUE(p == 0 || std::fabs(std::atan2(x[1], x[0]) - j * pi / 4) < 1e-13);
    }
  // A counter-clockwise loop swept along its normals gives counter-clockwise
  // quadrangles, corners moving inwards along the diagonal.
  auto sq = coords({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
  dense2D<unsigned> quads, tris;
  ASSERT_EQ(extrude_normal_Q4(sq, conn({{0, 1}, {1, 2}, {2, 3}, {3, 0}}), 1.0, 2u, quads), 0);
  ASSERT_EQ(quads.cols, 8u);
  double smallest = 0;
  signed_area(sq, quads, &smallest);
  EXPECT_GT(smallest, 0.0);
  EXPECT_NEAR(sq(0, 8), std::sqrt(0.5), 1e-14);
  EXPECT_NEAR(sq(1, 8), std::sqrt(0.5), 1e-14);
  // Given vectors are the whole displacement, whatever their length.
  auto v = line(2);
  const auto vectors = coords({{0, 1}, {0, 2}, {1, 3}});
  ASSERT_EQ(extrude_normal_T3(v, chain(), vectors, 2u, 1, tris), 0);
  for (unsigned p = 0; p < 3; ++p)
    for (unsigned i = 0; i < 2; ++i)
      EXPECT_NEAR(v(i, 6 + p), v(i, p) + vectors(i, p), 1e-14);
}

TEST(ExtrusionRollback, OutOfMemoryRestoresColumnCountsAndTheStatedRows) {
  using X = dense2D<double>;
  using E = dense2D<unsigned>;
  struct case_t {
    unsigned rows_in, rows_after, out_rows; // rows of `coords` on entry and after -199
    int (*call)(X&, const E&, E&);
  };
  const case_t cases[] = {
      {2, 2, 4, [](X& c, const E& e, E& o) { return extrude_translate_Q4(c, e, up2, 3u, o); }},
      {2, 3, 3, [](X& c, const E& e, E& o) { return extrude_translate_T3(c, e, lift, 1.0, 1.5, 2, false, o); }},
      {3, 2, 4, [](X& c, const E& e, E& o) { return extrude_rotate_Q4(c, e, o2, 1.0, 3u, o); }},
      {2, 2, 3, [](X& c, const E& e, E& o) { return extrude_rotate_T3(c, e, o3, w, 3u, 0, o); }},
      {3, 2, 4, [](X& c, const E& e, E& o) { return extrude_spiral_Q4(c, e, o3, w, lift, 3u, o); }},
      {2, 2, 3, [](X& c, const E& e, E& o) { return extrude_normal_T3(c, e, 1.0, 3u, 2, o); }},
  };
  const auto edges = chain(); // built outside the failing window
  for (const auto& k : cases) {
    SCOPED_TRACE(&k - cases);
    unsigned rolled_back = 0;
    sweep_allocation_failures([&](unsigned long n) {
      auto c = line(k.rows_in);
      dense2D<unsigned> out(k.out_rows, 1, 9u);
      int status = 1;
      const bool failed = fail_during(n, [&] { status = k.call(c, edges, out); });
      if (status != -199) {
        EXPECT_EQ(status, 0);
        return failed;
      }
      ++rolled_back;
      EXPECT_EQ(out.cols, 1u);
      EXPECT_EQ(out.rows, k.out_rows);
      EXPECT_EQ(out(0, 0), 9u);
      EXPECT_EQ(c.cols, 3u);
      // A failed lift to 3 rows changes nothing; later failures leave the
      // rows that the overload states.
      EXPECT_TRUE(c.rows == k.rows_in || c.rows == k.rows_after);
      EXPECT_EQ(c(0, 2), 3.0);
      return failed;
    });
    EXPECT_GE(rolled_back, 2u);
  }
}

TEST(ExtrusionLimits, CountsPastThirtyTwoBitsAndShortVectorsAreRefusedNotWrapped) {
  const auto edges = chain();
  auto c = line(2);
  dense2D<unsigned> out;
  // Two edges by 2^31 layers is 2^32 elements: no memory, nothing grown.
  EXPECT_EQ(extrude_translate_Q4(c, edges, up2, 0x80000000u, out), -199);
  EXPECT_EQ(extrude_translate_Q4(c, edges, up2, std::ldexp(1.0, -31), std::ldexp(1.0, -31), false, out), -199);
  EXPECT_EQ(extrude_translate_T3(c, conn({{0, 1}}), up2, 0x80000000u, 0, out), -199);
  EXPECT_EQ(c.cols, 3u);
  EXPECT_EQ(c.rows, 2u);
  EXPECT_EQ(out.cols, 0u);

  // `vectors` needs a column per node, even where the check of its rows
  // alone would let it through.
  for (unsigned cols : {0u, 1u}) {
    const dense2D<double> vectors(2, cols, 1.0);
    EXPECT_EQ(extrude_normal_Q4(c, edges, vectors, 2u, out), -3);
    EXPECT_EQ(extrude_normal_T3(c, edges, vectors, 2u, 0, out), -3);
  }

  // A path whose squared length overflows still has its length: 14 layers
  // of 1e199 along 1.41e200. The sum of squares overflows on the way, which
  // is how the length knows to rescale.
  const no_fp_traps overflow_on_purpose;
  ASSERT_EQ(extrude_translate_Q4(c, edges, v2{{1e200, 1e200}}, 1e199, 1e199, false, out), 0);
  EXPECT_EQ(out.cols, 2u * 14);
}

TEST(SweepNumbering, NewNodesFollowFirstAppearanceLayerByLayer) {
  const auto translated = [](dense2D<double>& c, const dense2D<unsigned>& edges) {
    dense2D<unsigned> out;
    EXPECT_EQ(extrude_translate_Q4(c, edges, up2, 2u, out), 0);
    return as_columns(out);
  };
  auto c = line(2);
  EXPECT_EQ(translated(c, chain()), (cols_t{{0, 1, 4, 3}, {3, 4, 7, 6}, {1, 2, 5, 4}, {4, 5, 8, 7}}));
  ASSERT_EQ(c.cols, 9u);
  EXPECT_DOUBLE_EQ(c(0, 5), 3.0);
  EXPECT_DOUBLE_EQ(c(1, 8), 1.0);
  // Edges stored 1-2 then 0-1: the swept order is 1, 2, 0.
  auto d = line(2);
  EXPECT_EQ(translated(d, conn({{1, 2}, {0, 1}})), (cols_t{{1, 2, 4, 3}, {3, 4, 7, 6}, {0, 1, 3, 5}, {5, 3, 6, 8}}));
  EXPECT_DOUBLE_EQ(d(0, 3), 1.0); // the copy of node 1 in layer 1
  EXPECT_DOUBLE_EQ(d(0, 5), 0.0);
  // Only nodes of edges are swept, and a loop closes on its own copies.
  dense2D<double> sparse(2, 10, 0.0);
  EXPECT_EQ(translated(sparse, conn({{7, 8}})), (cols_t{{7, 8, 11, 10}, {10, 11, 13, 12}}));
  EXPECT_EQ(sparse.cols, 14u);
  auto tri = line(2);
  EXPECT_EQ(translated(tri, conn({{0, 1}, {1, 2}, {2, 0}}))[5], (std::vector<unsigned>{5, 3, 6, 8}));
}

TEST(SweepNumbering, TrianglePatternsFollowTheParityOfColumnAndLayer) {
  const auto cells = [](int pattern) {
    auto c = line(2);
    dense2D<unsigned> out;
    // The uniform rotation does not check `pattern`, so any value reaches the cells.
    EXPECT_EQ(extrude_rotate_T3(c, chain(), {{0, -5}}, 0.1, 2u, pattern, out), 0);
    return as_columns(out);
  };
  // Cell (e, k) = (0, 0): cur 0, 1, top 3, 4.
  EXPECT_EQ(cells(2), (cols_t{{0, 1, 4}, {0, 4, 3}, {3, 4, 6}, {4, 7, 6}, {1, 2, 4}, {2, 5, 4}, {4, 5, 8}, {4, 8, 7}}));
  EXPECT_EQ(cells(0), (cols_t{{0, 1, 3}, {1, 4, 3}, {3, 4, 6}, {4, 7, 6}, {1, 2, 4}, {2, 5, 4}, {4, 5, 7}, {5, 8, 7}}));
  for (int pattern : {1, 3, -1})
    EXPECT_EQ(cells(pattern),
              (cols_t{{0, 1, 4}, {0, 4, 3}, {3, 4, 7}, {3, 7, 6}, {1, 2, 5}, {1, 5, 4}, {4, 5, 8}, {4, 8, 7}}));
}

TEST(SweepNumbering, AppendsBehindExistingColumnsThroughStridedViews) {
  auto packed = line(2), c = strided(line(2));
  dense2D<unsigned> packed_out = conn({{9, 9, 9}}), out = strided(conn({{9, 9, 9}}));
  ASSERT_EQ(extrude_translate_T3(packed, chain(), up2, 2u, 2, packed_out), 0);
  ASSERT_EQ(extrude_translate_T3(c, strided(chain()), up2, 2u, 2, out), 0);
  ASSERT_EQ(packed_out.cols, 9u);
  EXPECT_EQ(as_columns(packed_out)[0], (std::vector<unsigned>{9, 9, 9}));
  EXPECT_EQ(as_columns(out), as_columns(packed_out));
  EXPECT_EQ(as_columns(c), as_columns(packed));
}

TEST(LayerSpacing, CountNearestMultipleAndFractionAcrossTheirSeriesBoundaries) {
  EXPECT_NEAR(layer_count(10, 1, 2, false), 10 * std::log(2.0), 1e-14);
  EXPECT_EQ(layer_count(10, 1, 2, false), layer_count(10, 2, 1, false));
  EXPECT_EQ(layer_count(10, 2.5, 2.5, false), 4.0); // equal sizes: exactly length / h
  {
    const no_fp_traps zero_size;                  // divides by the zero size on the way to its answer
    EXPECT_EQ(layer_count(10, 0, 1, false), 0.0); // a zero size has no mean
  }
  // Below a 10% difference a series replaces the quotient: both must agree
  // at the switch and inside it; the same for the fraction near q = 1.
  EXPECT_NEAR(layer_count(1, 1, 1 + std::nextafter(0.1, 0.0), false), layer_count(1, 1, 1.1, false), 1e-8);
  EXPECT_NEAR(layer_count(1, 1, 1.05, false), std::log(1.05) / 0.05, 1e-7);
  for (double q : {1.0005, 1.001, 0.999})
    EXPECT_NEAR(layer_fraction(0.3, 1, q), (std::pow(q, 0.3) - 1) / (q - 1), 1e-12);
  for (double h1 : {0.25, 0.9995, 1.0, 1.001, 3.0})
    EXPECT_TRUE(layer_fraction(0, 1, h1) == 0.0 && layer_fraction(1, 1, h1) == 1.0) << h1;
  EXPECT_NEAR(layer_fraction(0.5, 1, 4), 1.0 / 3, 1e-15);
  EXPECT_EQ(layer_fraction(2, 1, 4), 5.0); // no clamp outside [0, 1]

  // The layer count rounds at the geometric mean of its neighbours.
  const struct {
    double x;
    unsigned m, k;
  } cases[] = {
      {6.931471805599453, 2, 8}, // 48.04 > 6 * 8, though nearer to 6
      {2.45, 1, 3},              // 6.0025 > 2 * 3
      {2.44, 1, 2},
      {0.01, 2, 2},
      {std::nextafter(5.0, 0.0), 1, 5},
      {std::nextafter(5.0, 6.0), 1, 5},
      {70000.1, 1, 70001}, // past k = 65535 the product k (k + m) wraps at 32 bits
      {60000.1, 1, 60000},
  };
  for (const auto& c : cases)
    EXPECT_EQ(nearest_multiple(c.x, c.m), c.k) << c.x;
  const no_fp_traps nan_given;
  EXPECT_EQ(nearest_multiple(std::nan(""), 1), 0u);
}
