#include "conversion/triangle_quality.h"

#include <algorithm>
#include <cmath>

namespace kelm {
namespace tesskit2d {

double triangle_quality(const dense2D<double>& coords, unsigned a, unsigned b, unsigned c) noexcept {
  const unsigned dim = coords.rows;
  const double *p0 = coords.column(a), *p1 = coords.column(b), *p2 = coords.column(c);
  // Edge vectors from the third corner: A = P0 - P2, B = P1 - P2, and
  // E = B - A, the edge from P0 to P1.
  double va[3] = {0, 0, 0}, vb[3] = {0, 0, 0}, ve[3] = {0, 0, 0};
  for (unsigned i = 0; i < dim; ++i) {
    va[i] = p0[i] - p2[i];
    vb[i] = p1[i] - p2[i];
    ve[i] = vb[i] - va[i];
  }
  const double la = std::sqrt(va[0] * va[0] + va[1] * va[1] + va[2] * va[2]);
  const double lb = std::sqrt(vb[0] * vb[0] + vb[1] * vb[1] + vb[2] * vb[2]);
  const double le = std::sqrt(ve[0] * ve[0] + ve[1] * ve[1] + ve[2] * ve[2]);
  const double longest = std::max(std::max(la, lb), le), perimeter = la + lb + le;
  // A x B and A x E are equal in exact arithmetic; crossing A with the
  // shorter partner loses less to rounding. This is deliberately not the
  // choice of geometry/primitives.h: the quality compares edge lengths, not
  // squared lengths, from corner A and takes A x B only when the shorter of A
  // and B is strictly below E, while the normals and areas there compare
  // squared lengths with their own tie rules. Each result is observable to
  // the last bit, so neither may borrow the other's rule.
  const double* w = std::min(la, lb) < le ? vb : ve;
  double x;
  if (dim == 2) {
    x = va[0] * w[1] - va[1] * w[0];
    if (perimeter * longest <= 0) return 0.0;
  } else {
    const double cx = va[1] * w[2] - va[2] * w[1], cy = va[2] * w[0] - va[0] * w[2], cz = va[0] * w[1] - va[1] * w[0];
    x = std::sqrt(cx * cx + cy * cy + cz * cz);
    if (!(perimeter * longest > 0)) return 0.0;
  }
  // 2 sqrt(3) makes the equilateral triangle's quality exactly 1.
  constexpr double two_sqrt3 = 3.4641016151377544;
  const double q = x / (perimeter * longest) * two_sqrt3;
  if (q < -1) return -1.0;
  if (q > 1) return 1.0;
  return q;
}

} // namespace tesskit2d
} // namespace kelm
