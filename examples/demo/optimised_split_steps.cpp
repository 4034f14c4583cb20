#include <algorithm>
#include <cmath>

#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/measures.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0), deg = pi / 180;

// The unit-square grid in space with a few nodes spoilt: every tenth node
// each way (offset 5) pushed 0.9 of a cell towards its upper right
// neighbour, which makes the cell beyond it concave, and every tenth node
// (offset 0) lifted by 0.4 of a cell, which warps the four cells around it.
dense2D<double> spoilt_surface(unsigned n) {
  const dense2D<double> xy = grid_nodes(n);
  dense2D<double> xyz(3, xy.cols, 0.0);
  for (unsigned j = 0; j <= n; ++j)
    for (unsigned i = 0; i <= n; ++i) {
      const unsigned v = j * (n + 1) + i;
      const bool inner = i > 0 && i < n && j > 0 && j < n;
      const bool pushed = inner && i % 10 == 5 && j % 10 == 5, lifted = inner && i % 10 == 0 && j % 10 == 0;
      xyz(0, v) = xy(0, v) + (pushed ? 0.9 / n : 0.0);
      xyz(1, v) = xy(1, v) + (pushed ? 0.9 / n : 0.0);
      xyz(2, v) = lifted ? 0.4 / n : 0.0;
    }
  return xyz;
}

// The corner angles seen from above, where they are signed: a reflex corner
// of a counter-clockwise quadrangle shows as a negative angle.
void angle_range(const dense2D<double>& xyz, const dense2D<unsigned>& conn, double& smallest, double& largest) {
  dense2D<double> xy(2, xyz.cols);
  for (unsigned j = 0; j < xyz.cols; ++j)
    xy(0, j) = xyz(0, j), xy(1, j) = xyz(1, j);
  dense1D<double> lo, hi;
  smallest = largest = 0;
  if (angles(xy, conn, false, lo, hi) == 0 && lo.size > 0) {
    smallest = *std::min_element(lo.begin(), lo.end()) / deg;
    largest = *std::max_element(hi.begin(), hi.end()) / deg;
  }
}

} // namespace

void optimised_split_steps() {
  section("Splitting only the quadrangles that fail shape limits");
  const unsigned n = 200;
  const dense2D<double> xyz = spoilt_surface(n);
  const dense2D<unsigned> quads = grid_quadrangles(n);
  const dense1D<unsigned, 8> all; // empty: consider every column
  const double no_angle = 0, no_warp = 0, no_jacobian = -1;

  // Each limit alone, on a copy: the count it returns is the number that
  // fail it.
  struct limit {
    const char* name;
    double angle, warp, jacobian;
  };
  const limit limits[] = {{"max_angle 170 deg", 170 * deg, no_warp, no_jacobian},
                          {"max_warp 10 deg", no_angle, 10 * deg, no_jacobian},
                          {"min_jacobian 0.2", no_angle, no_warp, 0.2}};
  for (const limit& l : limits) {
    dense2D<unsigned> conn;
    conn.copy(quads);
    dense1D<unsigned, 8> split;
    step s(l.name);
    const int status = split_Q4_into_T3(xyz, l.angle, l.warp, l.jacobian, 0, all, split, conn);
    s.done(status, "%d of %u quadrangles fail", status, quads.cols);
  }

  double lo, hi;
  angle_range(xyz, quads, lo, hi);
  std::printf("    corner angles seen from above before: %.1f..%.1f deg\n", lo, hi);
  // Both cuts. In space a triangle's quality has no sign, so the quality
  // rule may cut a concave quadrangle outside its reflex corner and leave an
  // inverted triangle, as the form without limits would; the shorter
  // diagonal runs through the reflex corner of these.
  const char* rules[] = {"split_Q4_into_T3 (all limits, rule 0)", "split_Q4_into_T3 (all limits, rule 1)"};
  for (int rule = 0; rule < 2; ++rule) {
    dense2D<unsigned> conn;
    conn.copy(quads);
    dense1D<unsigned, 8> split;
    step s(rules[rule]);
    const int status = split_Q4_into_T3(xyz, 170 * deg, 10 * deg, 0.2, rule, all, split, conn);
    angle_range(xyz, conn, lo, hi);
    s.done(status, "%d split, angles from above %.1f..%.1f deg", status, lo, hi);
  }
}

} // namespace demo
