#include <cmath>

#include "report.h"
#include "steps.h"
#include "tesskit2d/extrusion.h"

namespace demo {

using namespace kelm::tesskit2d;

namespace {

const double pi = 3.14159265358979323846;

// Area of the elements of `conn` (3 rows, or 4 rows of quadrangles) in 2 or
// 3 rows of coordinates: half the cross product of the diagonals of each
// quadrangle, half that of two sides of each triangle.
double total_area(const dense2D<double>& xyz, const dense2D<unsigned>& conn) {
  double total = 0;
  for (unsigned e = 0; e < conn.cols; ++e) {
    auto at = [&](unsigned k, unsigned r) { return r < xyz.rows ? xyz(r, conn(k, e)) : 0.0; };
    double u[3], v[3];
    for (unsigned r = 0; r < 3; ++r) {
      u[r] = conn.rows == 4 ? at(2, r) - at(0, r) : at(1, r) - at(0, r);
      v[r] = conn.rows == 4 ? at(3, r) - at(1, r) : at(2, r) - at(0, r);
    }
    const double c0 = u[1] * v[2] - u[2] * v[1], c1 = u[2] * v[0] - u[0] * v[2], c2 = u[0] * v[1] - u[1] * v[0];
    total += std::sqrt(c0 * c0 + c1 * c1 + c2 * c2) / 2;
  }
  return total;
}

dense2D<unsigned> chain(unsigned n, bool closed) {
  dense2D<unsigned> e(2, n);
  for (unsigned i = 0; i < n; ++i) {
    e(0, i) = i;
    e(1, i) = closed ? (i + 1) % n : i + 1;
  }
  return e;
}

} // namespace

void extrusion_steps() {
  section("Extrusion");
  {
    // A straight profile at distance 1 from the z axis, turned once round it:
    // a cylinder of height 2.
    const unsigned n = 20;
    dense2D<double> xyz(3, n + 1, 0.0);
    for (unsigned i = 0; i <= n; ++i) {
      xyz(0, i) = 1;
      xyz(2, i) = 2.0 * i / n;
    }
    dense2D<unsigned> quads;
    step s("extrude_rotate_Q4 (revolution)");
    const int status = extrude_rotate_Q4(xyz, chain(n, false), kelm::vector_fixed<double, 3>{{0, 0, 0}},
                                         kelm::vector_fixed<double, 3>{{0, 0, 2 * pi}}, 128u, quads);
    s.done(status, "%u edges -> %u Q4, area %.4f (4 pi %.4f)", n, quads.cols, total_area(xyz, quads), 4 * pi);
  }
  {
    const unsigned n = 50;
    dense2D<double> xy(2, n + 1, 0.0);
    for (unsigned i = 0; i <= n; ++i)
      xy(0, i) = double(i) / n;
    dense2D<unsigned> triangles;
    step s("extrude_translate_T3 (graded, even)");
    const int status = extrude_translate_T3(xy, chain(n, false), kelm::vector_fixed<double, 2>{{0, 1}}, 0.01, 0.05, 2,
                                            true, triangles);
    s.done(status, "%u edges -> %u layers, %u T3, area %.4f", n, triangles.cols / (2 * n), triangles.cols,
           total_area(xy, triangles));
  }
  {
    // A counter-clockwise circle swept inwards by 0.2: a ring.
    const unsigned n = 200;
    dense2D<double> xy(2, n);
    for (unsigned i = 0; i < n; ++i) {
      xy(0, i) = std::cos(2 * pi * i / n);
      xy(1, i) = std::sin(2 * pi * i / n);
    }
    dense2D<unsigned> quads;
    step s("extrude_normal_Q4 (closed loop)");
    const int status = extrude_normal_Q4(xy, chain(n, true), 0.2, 4u, quads);
    s.done(status, "%u edges -> %u Q4, area %.4f (ring %.4f)", n, quads.cols, total_area(xy, quads), pi * (1 - 0.64));
  }
}

} // namespace demo
