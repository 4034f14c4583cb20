#include "geometry/primitives.h"
#include "foundation/tolerances.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Factors that make the regular element's corner angle 1: pi / 3 for a
// triangle, pi / 2 for a quadrangle.
constexpr double triangle_scale = 0.9549296585513721;
constexpr double quadrangle_scale = 0.6366197723675814;

// Signed angle in the plane at `o` from the direction to `u` to the direction
// to `w`.
inline double plane_angle(const double* o, const double* u, const double* w) noexcept {
  const double ax = u[0] - o[0], ay = u[1] - o[1];
  const double bx = w[0] - o[0], by = w[1] - o[1];
  return std::atan2(ax * by - ay * bx, ax * bx + ay * by);
}

// Corner i of a K-corner element sits between its successor and its
// predecessor, so that a counter-clockwise element has positive angles.
template <unsigned K>
void corner_angles(const dense2D<double>& coords, const unsigned* nodes, double scale, double* out) noexcept {
  const double* p[K];
  for (unsigned k = 0; k < K; ++k)
    p[k] = coords.column(nodes[k]);
  const bool plane = coords.rows == 2;
  for (unsigned i = 0; i < K; ++i) {
    const double *o = p[i], *u = p[(i + 1) % K], *w = p[(i + K - 1) % K];
    out[i] = (plane ? plane_angle(o, u, w) : corner_angle(o, u, w)) * scale;
  }
}

} // namespace

void triangle_angles(const dense2D<double>& coords, const unsigned* nodes, bool normalized, double out[3]) noexcept {
  corner_angles<3>(coords, nodes, normalized ? triangle_scale : 1.0, out);
}

void quadrangle_angles(const dense2D<double>& coords, const unsigned* nodes, bool normalized, double out[4]) noexcept {
  corner_angles<4>(coords, nodes, normalized ? quadrangle_scale : 1.0, out);
}

double circumcenter_2d(const double* p0, const double* p1, const double* p2, double center[2]) noexcept {
  // The centre is sought on the perpendicular bisector of the longest edge,
  // M + t / 2 (-dy, dx), so that a flat triangle, for which no centre
  // exists, falls back to that edge's midpoint rather than to a point far
  // away.
  const double* p[3] = {p0, p1, p2};
  unsigned longest = 0;
  double L = -1.0, dx = 0.0, dy = 0.0;
  for (unsigned i = 0; i < 3; ++i) {
    const double *from = p[(i + 1) % 3], *to = p[(i + 2) % 3];
    const double x = to[0] - from[0], y = to[1] - from[1];
    const double len2 = x * x + y * y;
    if (len2 > L) {
      L = len2;
      longest = i;
      dx = x;
      dy = y;
    }
  }
  const double *a = p[longest], *b = p[(longest + 1) % 3], *c = p[(longest + 2) % 3];
  const double mx = 0.5 * (b[0] + c[0]), my = 0.5 * (b[1] + c[1]);
  const double vx = a[0] - mx, vy = a[1] - my;
  const double q = L / 4;
  const double cr = dx * vy - dy * vx;
  const double v2 = vx * vx + vy * vy;
  const double s = v2 - q;
  center[0] = mx;
  center[1] = my;
  if (cr * cr <= v2 * tolerance::flat_squared * q) return std::abs(s) > tolerance::flat * q ? max_double : q;
  // Equal distances to the edge's ends and to corner `a` give t = s / c,
  // with s = |v|^2 - L / 4 and c = d x v.
  const double t = s / cr;
  const double half = t / 2;
  if (half != 0.0) {
    center[0] = mx - half * dy;
    center[1] = my + half * dx;
  }
  return (t * t + 1) * q;
}

double circumcenter_3d(const double* p0, const double* p1, const double* p2, double center[3]) noexcept {
  // The centre is B + x / 2 u + y / 2 w on the two edges from a base corner
  // B. The base is P2 unless P0 - P1 is the shortest edge, in which case P0
  // is, so that the system is built from the two shorter edges.
  const double* base = p2;
  double u[3] = {p0[0] - p2[0], p0[1] - p2[1], p0[2] - p2[2]};
  double w[3] = {p1[0] - p2[0], p1[1] - p2[1], p1[2] - p2[2]};
  const double e2[3] = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
  using primitive_detail::dot3;
  double uu = dot3(u, u), ww = dot3(w, w);
  const double e22 = dot3(e2, e2);
  if (e22 < uu && e22 < ww) {
    base = p0;
    for (unsigned k = 0; k < 3; ++k) {
      u[k] = p2[k] - p0[k];
      w[k] = e2[k];
    }
    uu = dot3(u, u);
    ww = e22;
  }
  const double g = dot3(u, w);
  const double det = uu * ww - g * g;
  if (det <= uu * tolerance::flat * ww) {
    for (unsigned k = 0; k < 3; ++k)
      center[k] = p2[k];
    return max_double;
  }
  // Equal distances from the centre to B, B + u and B + w.
  double x, y;
  solve_symmetric_2x2(uu, g, ww, 1.0 / det, uu, ww, 2, x, y);
  const double hx = x / 2, hy = y / 2;
  double off[3];
  for (unsigned k = 0; k < 3; ++k)
    off[k] = hx * u[k];
  if (hy != 0.0)
    for (unsigned k = 0; k < 3; ++k)
      off[k] += hy * w[k];
  for (unsigned k = 0; k < 3; ++k)
    center[k] = base[k] + off[k];
  return dot3(off, off);
}

void solve_symmetric_2x2(double a11, double a12, double a22, double inverse, double b1, double b2, unsigned max_steps,
                         double& x, double& y) noexcept {
  x = (a22 * b1 - a12 * b2) * inverse;
  y = (a11 * b2 - a12 * b1) * inverse;
  for (unsigned step = 0; step < max_steps; ++step) {
    const double r1 = b1 - (a11 * x + a12 * y);
    const double r2 = b2 - (a12 * x + a22 * y);
    const double dx = (a22 * r1 - a12 * r2) * inverse;
    const double dy = (a11 * r2 - a12 * r1) * inverse;
    x += dx;
    y += dy;
    if (std::abs(dx) <= tolerance::newton_step * std::abs(x) && std::abs(dy) <= tolerance::newton_step * std::abs(y))
      break;
  }
}

} // namespace tesskit2d
} // namespace kelm
