#include <algorithm>
#include <cmath>

#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/linear_reduction.h"
#include "tesskit2d/measures.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

// The unit-square grid bent into a quarter annulus of radii 1 and 2, so that
// its cells are no longer squares: its area is 3 pi / 4.
dense2D<double> quarter_annulus(unsigned n) {
  dense2D<double> xy = grid_nodes(n);
  for (unsigned j = 0; j < xy.cols; ++j) {
    const double r = 1 + xy(0, j), t = xy(1, j) * pi / 2;
    xy(0, j) = r * std::cos(t);
    xy(1, j) = r * std::sin(t);
  }
  return xy;
}

void quality(const char* name, const dense2D<double>& xy, const dense2D<unsigned>& conn) {
  step s(name);
  dense1D<double> lo, hi;
  int status = angles(xy, conn, false, lo, hi);
  double smallest = 0, largest = 0, total = 0;
  if (status == 0) {
    smallest = *std::min_element(lo.begin(), lo.end()) * 180 / pi;
    largest = *std::max_element(hi.begin(), hi.end()) * 180 / pi;
    status = area(xy, conn, total);
  }
  s.done(status, "%u elements, angles %.1f..%.1f deg, area %.6f (3 pi / 4 = %.6f)", conn.cols, smallest, largest, total,
         3 * pi / 4);
}

} // namespace

void measures_steps() {
  section("Element measures");
  const unsigned n = 300;
  const dense2D<double> xy = quarter_annulus(n);
  const dense2D<unsigned> quads = grid_quadrangles(n);
  dense2D<unsigned> triangles;
  split_Q4_into_T3(quads, triangles);

  quality("angles + area, Q4", xy, quads);
  quality("angles + area, T3", xy, triangles);
  {
    dense2D<double> centers;
    step s("circumcenters");
    const int status = circumcenters(xy, triangles, centers);
    s.done(status, "%u triangles -> %u centres", triangles.cols, centers.cols);
  }
}

} // namespace demo
