#pragma once
// Geometric primitives of single elements, shared by the measures, the
// element walk, normals, curvature and metric generation.
//
// A point is a pointer to its first coordinate, so a node is
// `coords.column(id)` and a point that is not a node (a search target) works
// the same way. The overloads taking `coords` and a column of `conn` read the
// element's nodes from its rows, corners first.
//
// Corners are named P0, P1, P2 (P3) after the element's rows, and the
// triangle edge vectors are e0 = P0 - P2, e1 = P1 - P2, e2 = P1 - P0. Of the
// three possible cross products the triangle formulas take the pair that
// keeps the most digits: a cross product of two long, nearly parallel edges
// cancels, one with the short edge does not.

#include <algorithm>
#include <cmath>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The largest finite double: the squared radius of a triangle that has no
/// circumcentre.
constexpr double max_double = 1.7976931348623157e308;

namespace primitive_detail {

inline vector_fixed<double, 3> cross(const double* a, const double* b) noexcept {
  return {{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]}};
}
inline double dot3(const double* a, const double* b) noexcept { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline double norm3(const vector_fixed<double, 3>& v) noexcept { return std::sqrt(dot3(v.v, v.v)); }

} // namespace primitive_detail

/// The cross product of a triangle in space, of length twice its area,
/// pointing to the side from which P0, P1, P2 run counter-clockwise. Not
/// normalised; a degenerate triangle gives the zero vector. 3 coordinates.
///
/// e0 x e2 when |e2|^2 is at most the smaller of |e0|^2 and |e1|^2, else
/// e0 x e1: both are the same vector in exact arithmetic.
inline vector_fixed<double, 3> triangle_normal(const double* p0, const double* p1, const double* p2) noexcept {
  const double e0[3] = {p0[0] - p2[0], p0[1] - p2[1], p0[2] - p2[2]};
  const double e1[3] = {p1[0] - p2[0], p1[1] - p2[1], p1[2] - p2[2]};
  const double e2[3] = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
  using namespace primitive_detail;
  const double m = std::min(dot3(e0, e0), dot3(e1, e1));
  const double* const second[2] = {e1, e2};
  return cross(e0, second[dot3(e2, e2) <= m]);
}

inline vector_fixed<double, 3> triangle_normal(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return triangle_normal(coords.column(nodes[0]), coords.column(nodes[1]), coords.column(nodes[2]));
}

/// Twice the signed area of a triangle in the plane: positive when P0, P1,
/// P2 run counter-clockwise. Takes e0 x e2 only when |e2|^2 is strictly below
/// the smaller of |e0|^2 and |e1|^2, else e0 x e1.
inline double triangle_double_area_2d(const double* p0, const double* p1, const double* p2) noexcept {
  const double x0 = p0[0] - p2[0], y0 = p0[1] - p2[1];
  const double x1 = p1[0] - p2[0], y1 = p1[1] - p2[1];
  const double x2 = p1[0] - p0[0], y2 = p1[1] - p0[1];
  const double m = std::min(x0 * x0 + y0 * y0, x1 * x1 + y1 * y1);
  // Both products are formed and one is picked by index: the choice varies
  // from element to element, and as a branch it would be mispredicted about
  // as often as taken.
  const double products[2] = {x0 * y1 - y0 * x1, x0 * y2 - y0 * x2};
  return products[x2 * x2 + y2 * y2 < m];
}

/// Twice the area of a triangle in space, a magnitude. The same strict
/// choice as in the plane, with e2 formed as e1 - e0.
inline double triangle_double_area_3d(const double* p0, const double* p1, const double* p2) noexcept {
  const double e0[3] = {p0[0] - p2[0], p0[1] - p2[1], p0[2] - p2[2]};
  const double e1[3] = {p1[0] - p2[0], p1[1] - p2[1], p1[2] - p2[2]};
  const double e2[3] = {e1[0] - e0[0], e1[1] - e0[1], e1[2] - e0[2]};
  using namespace primitive_detail;
  const double m = std::min(dot3(e0, e0), dot3(e1, e1));
  const double* const second[2] = {e1, e2}; // a select rather than a branch
  return norm3(cross(e0, second[dot3(e2, e2) < m]));
}

/// Twice the area of a triangle: signed with `dim` 2, a magnitude otherwise
/// (three coordinates are then read).
inline double triangle_double_area(const double* p0, const double* p1, const double* p2, unsigned dim) noexcept {
  return dim == 2 ? triangle_double_area_2d(p0, p1, p2) : triangle_double_area_3d(p0, p1, p2);
}

inline double triangle_double_area(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return triangle_double_area(coords.column(nodes[0]), coords.column(nodes[1]), coords.column(nodes[2]), coords.rows);
}

/// The cross product of the diagonals, (P2 - P0) x (P3 - P1): twice the area
/// of a planar quadrangle in length, not normalised. 3 coordinates.
inline vector_fixed<double, 3> quadrangle_normal(const double* p0, const double* p1, const double* p2,
                                                 const double* p3) noexcept {
  const double d0[3] = {p2[0] - p0[0], p2[1] - p0[1], p2[2] - p0[2]};
  const double d1[3] = {p3[0] - p1[0], p3[1] - p1[1], p3[2] - p1[2]};
  return primitive_detail::cross(d0, d1);
}

inline vector_fixed<double, 3> quadrangle_normal(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return quadrangle_normal(coords.column(nodes[0]), coords.column(nodes[1]), coords.column(nodes[2]),
                           coords.column(nodes[3]));
}

/// Twice the area of a quadrangle A, B, C, D in space, a magnitude. A warped
/// quadrangle has two triangulations of different area, across AC and
/// across BD; the larger one counts. 3 coordinates.
inline double quadrangle_double_area(const double* a, const double* b, const double* c, const double* d) noexcept {
  using namespace primitive_detail;
  const double ac[3] = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
  const double ab[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
  const double ad[3] = {d[0] - a[0], d[1] - a[1], d[2] - a[2]};
  const double bd[3] = {d[0] - b[0], d[1] - b[1], d[2] - b[2]};
  const double bc[3] = {c[0] - b[0], c[1] - b[1], c[2] - b[2]};
  const double ba[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
  const double across_ac = norm3(cross(ac, ab)) + norm3(cross(ac, ad));
  const double across_bd = norm3(cross(bd, bc)) + norm3(cross(bd, ba));
  return std::max(across_ac, across_bd);
}

inline double quadrangle_double_area(const dense2D<double>& coords, const unsigned* nodes) noexcept {
  return quadrangle_double_area(coords.column(nodes[0]), coords.column(nodes[1]), coords.column(nodes[2]),
                                coords.column(nodes[3]));
}

/// The angle at `o` between the directions to `u` and to `w`, in space, from
/// 0 to pi: atan2(|u x w|, u . w), which keeps its accuracy near 0 and pi
/// where acos does not. 3 coordinates.
inline double corner_angle(const double* o, const double* u, const double* w) noexcept {
  using namespace primitive_detail;
  const double a[3] = {u[0] - o[0], u[1] - o[1], u[2] - o[2]};
  const double b[3] = {w[0] - o[0], w[1] - o[1], w[2] - o[2]};
  return std::atan2(norm3(cross(a, b)), dot3(a, b));
}

/// The three corner angles of a triangle, corner i between the directions to
/// corners i + 1 and i + 2 (mod 3), into `out`. With 2-row `coords` the angle
/// is signed, atan2(u x w, u . w), so every corner of a clockwise triangle
/// is negative; with 3 rows it is `corner_angle`. `normalized` scales by
/// 3 / pi, so an equilateral triangle gives 1.
void triangle_angles(const dense2D<double>& coords, const unsigned* nodes, bool normalized, double out[3]) noexcept;

/// The four corner angles of a quadrangle, corner i between the directions
/// to corners i + 1 and i + 3 (mod 4), into `out`, signed in the plane as for
/// triangles. `normalized` scales by 2 / pi, so a square gives 1.
void quadrangle_angles(const dense2D<double>& coords, const unsigned* nodes, bool normalized, double out[4]) noexcept;

/// The circumcentre of a triangle in the plane into `center` (2 values), and
/// its squared radius as the result. A flat triangle has none: its centre is
/// then the midpoint of its longest edge, and the squared radius `max_double`
/// (or a quarter of that edge's squared length when the third corner lies on
/// the edge's circle to rounding, as for a triangle with two equal corners).
double circumcenter_2d(const double* p0, const double* p1, const double* p2, double center[2]) noexcept;

/// The circumcentre of a triangle in space into `center` (3 values), and its
/// squared radius as the result. A flat triangle gives P2 itself and
/// `max_double`.
double circumcenter_3d(const double* p0, const double* p1, const double* p2, double center[3]) noexcept;

/// Solves the symmetric system a11 x + a12 y = b1, a12 x + a22 y = b2, given
/// `inverse`, the reciprocal of its determinant, by Cramer's rule followed by
/// up to `max_steps` steps of iterative refinement on the residual; stops
/// early once both corrections are within 1e-12 of their unknown.
void solve_symmetric_2x2(double a11, double a12, double a22, double inverse, double b1, double b2, unsigned max_steps,
                         double& x, double& y) noexcept;

} // namespace tesskit2d
} // namespace kelm
