#include <algorithm>
#include <cmath>

#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"
#include "tesskit2d/measures.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = std::acos(-1.0);

// The grid's left half as quadrangles and its right half as pairs of
// triangles, in one 4-row array: the mixed input every raising and split
// accepts.
dense2D<unsigned> mixed_linear_grid(unsigned n) {
  const dense2D<unsigned> quads = grid_quadrangles(n);
  dense2D<unsigned> c(4, 0);
  c.reserve(4, 2 * quads.cols);
  for (unsigned e = 0; e < quads.cols; ++e) {
    const unsigned a = quads(0, e), b = quads(1, e), d = quads(2, e), f = quads(3, e);
    const bool quadrangle = e % n < n / 2;
    const unsigned cols[2][4] = {{a, b, d, quadrangle ? f : null_id}, {a, d, f, null_id}};
    for (unsigned k = 0; k < (quadrangle ? 1u : 2u); ++k) {
      c.resize(4, c.cols + 1);
      for (unsigned r = 0; r < 4; ++r)
        c(r, c.cols - 1) = cols[k][r];
    }
  }
  return c;
}

// Smallest and largest corner angle over the mesh, in degrees.
int angle_range(const dense2D<double>& xy, const dense2D<unsigned>& conn, double& smallest, double& largest) {
  dense1D<double> lo, hi;
  const int status = angles(xy, conn, false, lo, hi);
  smallest = largest = 0;
  if (status == 0 && lo.size > 0) {
    smallest = *std::min_element(lo.begin(), lo.end()) * 180 / pi;
    largest = *std::max_element(hi.begin(), hi.end()) * 180 / pi;
  }
  return status;
}

} // namespace

void conversion_steps() {
  section("Raising the order and splitting with coordinates");
  const unsigned n = 200;
  const dense2D<double> nodes = grid_nodes(n);
  const dense2D<unsigned> mixed = mixed_linear_grid(n);
  const dense2D<unsigned> no_edges;
  {
    dense2D<double> xy;
    xy.copy(nodes);
    dense2D<unsigned> c;
    c.copy(mixed);
    step s("convert_into_quadratic");
    const int status = convert_into_quadratic(xy, c);
    s.done(status, "%u x %u rows, %u -> %u nodes", c.cols, c.rows, nodes.cols, xy.cols);
  }
  {
    dense2D<double> xy;
    xy.copy(nodes);
    dense2D<unsigned> cubic;
    step s("convert_into_high_order (2, 4, 1)");
    const int status = convert_into_high_order(xy, mixed, 2, 4, 1, cubic, no_edges);
    s.done(status, "%u x %u rows, %u -> %u nodes", cubic.cols, cubic.rows, nodes.cols, xy.cols);
  }
  dense2D<double> xy;
  xy.copy(nodes);
  dense2D<unsigned> quads;
  {
    step s("split_into_Q4");
    int status = split_into_Q4(xy, mixed, quads, no_edges);
    double smallest = 0, largest = 0;
    if (status == 0) status = angle_range(xy, quads, smallest, largest);
    s.done(status, "%u -> %u Q4, angles %.1f..%.1f deg", mixed.cols, quads.cols, smallest, largest);
  }
  {
    dense2D<unsigned> triangles;
    step s("split_Q4_into_T3 (better diagonal)");
    // A non-negative result is the number of quadrangles cut.
    int status = split_Q4_into_T3(xy, quads, triangles);
    double smallest = 0, largest = 0;
    if (status >= 0) status = angle_range(xy, triangles, smallest, largest);
    s.done(status, "%u -> %u T3, angles %.1f..%.1f deg", quads.cols, triangles.cols, smallest, largest);
  }
}

} // namespace demo
