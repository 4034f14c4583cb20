#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/fp_traps.h"
#include "support/surface_meshes.h"
#include "tesskit2d/normals.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

const double big = 1.7976931348623157e308, inf = HUGE_VAL;

// Three triangles round node 0 with axis normals and sizes L of 1, 4 and 9,
// a flat one, the first one reversed, and node 9 that nothing uses.
const dense2D<double> star = coords(
    {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 2, 0}, {0, 0, 2}, {0, 0, 3}, {3, 0, 0}, {1, 1, 0}, {2, 2, 0}, {5, 5, 5}});
enum { A, B, C, Z, R };
const std::vector<unsigned> star_element[] = {{0, 1, 2}, {0, 3, 4}, {0, 5, 6}, {0, 7, 8}, {0, 2, 1}}; // z, x, y, 0, -z

dense2D<unsigned> pick(std::initializer_list<int> which) {
  dense2D<unsigned> c(3, static_cast<unsigned>(which.size()));
  unsigned j = 0;
  for (int w : which)
    std::copy(star_element[w].begin(), star_element[w].end(), c.column(j++));
  return c;
}

std::vector<double> column(const dense2D<double>& a, unsigned j) { return {a(0, j), a(1, j), a(2, j)}; }

void expect_near(const std::vector<double>& got, const std::vector<double>& want, const char* what) {
  for (unsigned i = 0; i < 3; ++i)
    EXPECT_NEAR(got[i], want[i], 1e-15) << what << " row " << i;
}

} // namespace

TEST(NodeNormals, WeightsFollowThePowerAndUnitOnlyNormalises) {
  const double s = std::sqrt(0.5);
  const struct {
    double power;
    bool unit;
    std::vector<double> node0;
  } cases[] = {
      {0, false, {0.5, 0, 0.5}},            // plain mean of z and x: shorter than 1
      {0, true, {s, 0, s}},                 //
      {inf, false, {0.5, 0, 0.5}},          // infinities and NaN weigh every element 1
      {-inf, false, {0.5, 0, 0.5}},         //
      {std::nan(""), false, {0.5, 0, 0.5}}, //
      {1, false, {0.8, 0, 0.2}},            // (4 x + 1 z) / 5
      {-1, false, {0.2, 0, 0.8}},           // (x / 4 + z) / 1.25
      {2, false, {16.0 / 17, 0, 1.0 / 17}}, //
      {1, true, {4 / std::sqrt(17.0), 0, 1 / std::sqrt(17.0)}},
      {-1, true, {1 / std::sqrt(17.0), 0, 4 / std::sqrt(17.0)}},
  };
  for (const auto& c : cases) {
    const no_fp_traps nan_power(std::isnan(c.power)); // a NaN power compared on purpose
    dense2D<double> out(2, 2, 9.0);
    ASSERT_EQ(normals(strided(star), strided(pick({A, B})), c.power, c.unit, out), 0);
    ASSERT_EQ(out.rows, 3u);
    ASSERT_EQ(out.cols, 10u);
    expect_near(column(out, 0), c.node0, "node 0");
    expect_near(column(out, 1), {0, 0, 1}, "a node of one element"); // any power, either unit
    expect_near(column(out, 9), {0, 0, 0}, "an unused node");
  }
  // A flat element still weighs 1 at power 0 and dilutes the mean; opposite
  // normals cancel to the zero vector, which normalising leaves alone.
  dense2D<double> out;
  ASSERT_EQ(normals(star, pick({A, Z}), 0, false, out), 0);
  expect_near(column(out, 0), {0, 0, 0.5}, "diluted");
  ASSERT_EQ(normals(star, pick({A, R}), 0, true, out), 0);
  expect_near(column(out, 0), {0, 0, 0}, "cancelled");
}

TEST(NodeNormals, ExtremeModesAccumulateLosersAndSkipTheFinalPass) {
  const struct {
    double power;
    dense2D<unsigned> order;
    std::vector<double> node0;
  } cases[] = {
      {big, pick({A, B, C}), {0, 1, 0}},  // rising sizes: the last, largest wins
      {big, pick({C, B, A}), {1, 1, 1}},  // falling: C holds, B and A add with weight 1
      {big, pick({C, A, B}), {1, 1, 1}},  // B (4) loses to the raised weight 10
      {-big, pick({C, B, A}), {0, 0, 1}}, // falling: the last, smallest wins
      {-big, pick({A, B, C}), {1, 1, 1}}, // rising: A holds, B and C add
      {-big, pick({Z, B, A}), {0, 0, 1}}, // a flat first element leaves the weight 0
      {-big, pick({Z, C, B}), {1, 0, 0}}, //
      {big, pick({Z, A}), {0, 0, 1}},     //
  };
  for (const auto& c : cases)
    for (bool unit : {false, true}) {
      dense2D<double> out;
      ASSERT_EQ(normals(star, c.order, c.power, unit, out), 0);
      expect_near(column(out, 0), c.node0, "node 0"); // never normalised
      expect_near(column(out, 9), {0, 0, 0}, "an unused node");
    }
}

TEST(NodeNormals, FineSphereNormalsAreRadialUnitVectors) {
  const surface s = uv_sphere(96, 48, 2.0); // triangles at the poles, quadrangles elsewhere
  dense2D<double> out;
  ASSERT_EQ(normals(s.xyz, s.conn, 1.0, true, out), 0);
  // Size weighting leans towards the larger band of a ring, so the error
  // falls with the first power of the spacing: under a quarter of the angle
  // between meridians here (cosine 0.9997).
  for (unsigned j = 0; j < out.cols; ++j) {
    const auto n = column(out, j);
    EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1.0, 1e-14);
    EXPECT_GT((n[0] * s.xyz(0, j) + n[1] * s.xyz(1, j) + n[2] * s.xyz(2, j)) / 2, 0.9997);
  }
}

TEST(ElementNormals, RawLengthIsTwiceTheAreaAndUnitNormalises) {
  // A unit square in the plane z = 1, a right triangle and a flat one.
  const auto xyz = coords({{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}, {3, 0, 1}, {3, 2, 1}, {2, 2, 1}});
  const auto mixed = conn({{0, 1, 2, 3}, {1, 4, 5, null_id}, {0, 1, 4, null_id}});
  dense2D<double> out(3, 1, 5.0);
  ASSERT_EQ(normals(strided(xyz), strided(mixed), false, out), 0);
  ASSERT_EQ(as_columns(out), (std::vector<std::vector<double>>{{0, 0, 2}, {0, 0, 4}, {0, 0, 0}}));
  ASSERT_EQ(normals(xyz, mixed, true, out), 0);
  EXPECT_EQ(as_columns(out), (std::vector<std::vector<double>>{{0, 0, 1}, {0, 0, 1}, {0, 0, 0}}));
}

TEST(Normals, StatusesInCheckingOrderLeaveTheOutputEmpty) {
  const dense2D<double> flat(2, 10, 0.0);
  const struct {
    int status;
    const dense2D<double>& coords;
    dense2D<unsigned> conn;
  } cases[] = {
      {0, flat, dense2D<unsigned>(3, 0)},            // empty conn: nothing checked
      {0, dense2D<double>(3, 0), conn({{0, 1, 2}})}, // empty coords
      {-1, flat, conn({{0, 1, 2}})},                 //
      {-2, star, conn({{0, 1}})},                    //
      {-2, star, conn({{0, 1, 10}})},                // node 10 does not exist
      {-2, star, conn({{0, null_id, 2, null_id}})},  // a triangle's corner missing
      {-2, star, conn({{0, 1, 2, 3, 4, 5}})},        // 6 rows
  };
  for (const auto& c : cases) {
    dense2D<double> by_node(3, 4, 1.0), by_element(3, 4, 1.0);
    EXPECT_EQ(normals(c.coords, c.conn, 1.0, true, by_node), c.status);
    EXPECT_EQ(normals(c.coords, c.conn, true, by_element), c.status);
    EXPECT_EQ(by_node.rows * by_node.cols + by_element.rows * by_element.cols, 0u);
  }

  const auto mesh = pick({A, B, C});
  for (bool per_node : {false, true})
    expect_all_or_nothing<dense2D<double>>([&](dense2D<double>& out) {
      return per_node ? normals(star, mesh, 1.0, false, out) : normals(star, mesh, false, out);
    });
}
