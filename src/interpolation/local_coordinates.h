#pragma once
// Local coordinates of a point in the element that holds it: barycentric
// weights in a triangle, the inverse of the bilinear map in a quadrangle.
//
// `coords` has 2 rows; `nodes` is an element's column of `conn`, corners
// first. Results are not clamped: a point found within a walk's tolerance
// may lie a hair outside its element, and its coordinates then do too.

#include <cmath>

#include "foundation/tolerances.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Solves [a11 a12; a21 a22] x = r by Cramer's rule with the given
/// `inv_det`, then refines x up to `rounds` times on its residual, stopping
/// once both corrections are within 1e-12 of their unknown.
inline void solve2_refined(double a11, double a21, double a12, double a22, double inv_det, double r1, double r2,
                           double& x1, double& x2, unsigned rounds) noexcept {
  x1 = (a22 * r1 - a12 * r2) * inv_det;
  x2 = (a11 * r2 - a21 * r1) * inv_det;
  for (unsigned k = 0; k < rounds; ++k) {
    const double e1 = r1 - (a11 * x1 + a12 * x2);
    const double e2 = r2 - (a21 * x1 + a22 * x2);
    const double d1 = (a22 * e1 - a12 * e2) * inv_det;
    const double d2 = (a11 * e2 - a21 * e1) * inv_det;
    x1 += d1;
    x2 += d2;
    if (std::abs(d1) <= std::abs(x1) * tolerance::newton_step && std::abs(d2) <= std::abs(x2) * tolerance::newton_step)
      break;
  }
}

/// The weights (w0, w1) of corners 0 and 1 of a triangle at `point`; corner
/// 2 weighs 1 - w0 - w1. Returns twice the signed area of the system used.
///
/// With a = P0 - P2, b = P1 - P2 and e = P1 - P0, the system takes a and the
/// shorter of b and e (e only when strictly shorter than both a and b), the
/// pair that loses the fewest digits; with e, w0 is corrected by -w1. A point
/// exactly on corner 0 or 1 gets exactly (1, 0) or (0, 1). A flat triangle
/// gives (0, 0): the point takes corner 2's value.
inline double barycentric_T3(const double* p0, const double* p1, const double* p2, const double point[2],
                             double w[2]) noexcept {
  const double ax = p0[0] - p2[0], ay = p0[1] - p2[1];
  const double bx = p1[0] - p2[0], by = p1[1] - p2[1];
  const double ex = p1[0] - p0[0], ey = p1[1] - p0[1];
  const double ee = ex * ex + ey * ey;
  const bool short_e = ee < ax * ax + ay * ay && ee < bx * bx + by * by;
  const double cx = short_e ? ex : bx, cy = short_e ? ey : by;
  const double det = ax * cy - ay * cx;
  w[0] = w[1] = 0.0;
  if (point[0] == p0[0] && point[1] == p0[1]) {
    w[0] = 1.0;
    return det;
  }
  if (point[0] == p1[0] && point[1] == p1[1]) {
    w[1] = 1.0;
    return det;
  }
  if (det == 0.0) return det;
  solve2_refined(ax, ay, cx, cy, 1.0 / det, point[0] - p2[0], point[1] - p2[1], w[0], w[1], 2);
  if (short_e) w[0] -= w[1];
  return det;
}

inline double barycentric_T3(const dense2D<double>& coords, const unsigned* nodes, const double point[2],
                             double w[2]) noexcept {
  return barycentric_T3(coords.column(nodes[0]), coords.column(nodes[1]), coords.column(nodes[2]), point, w);
}

/// Signs of the corners of the reference square from -1 to 1: corner 0 at
/// (-1, -1), 1 at (1, -1), 2 at (1, 1), 3 at (-1, 1).
constexpr double corner_u[4] = {-1.0, 1.0, 1.0, -1.0};
constexpr double corner_v[4] = {-1.0, -1.0, 1.0, 1.0};

/// The point of local coordinates `uv` in a quadrangle: the sum of the
/// corners weighted by the shape functions (1 + su u)(1 + sv v) / 4; a
/// corner of weight exactly 0 is skipped.
inline void bilinear_point(const dense2D<double>& coords, const unsigned* nodes, const double uv[2],
                           double point[2]) noexcept {
  point[0] = point[1] = 0.0;
  for (unsigned i = 0; i < 4; ++i) {
    const double n = (1.0 + corner_u[i] * uv[0]) * (1.0 + corner_v[i] * uv[1]) / 4.0;
    if (n == 0.0) continue;
    const double* p = coords.column(nodes[i]);
    point[0] += n * p[0];
    point[1] += n * p[1];
  }
}

/// The Jacobian of the bilinear map at `uv`: `j` holds dx/du, dy/du, dx/dv,
/// dy/dv (column by column).
inline void bilinear_jacobian(const dense2D<double>& coords, const unsigned* nodes, const double uv[2],
                              double j[4]) noexcept {
  constexpr double cu[4] = {-0.5, 0.5, 0.5, -0.5};
  constexpr double cv[4] = {-0.5, -0.5, 0.5, 0.5};
  j[0] = j[1] = j[2] = j[3] = 0.0;
  for (unsigned i = 0; i < 4; ++i) {
    const double* p = coords.column(nodes[i]);
    const double du = (uv[1] * cv[i] + 0.5) * cu[i];
    const double dv = (cu[i] * uv[0] + 0.5) * cv[i];
    j[0] += du * p[0];
    j[1] += du * p[1];
    j[2] += dv * p[0];
    j[3] += dv * p[1];
  }
}

/// The local coordinates (u, v) of `point` in a quadrangle, by Newton's
/// method from the centre: at most 10 steps, ending once a step is 1e-12
/// long or less. A singular Jacobian keeps the previous inverse (a zero
/// step on the first), so a quadrangle collapsed at its centre gives (0, 0).
/// No failure is reported; the last iterate stands.
inline void inverse_bilinear_Q4(const dense2D<double>& coords, const unsigned* nodes, const double point[2],
                                double uv[2]) noexcept {
  uv[0] = uv[1] = 0.0;
  double inv[4] = {0.0, 0.0, 0.0, 0.0}; // row by row
  for (unsigned step = 0; step < 10; ++step) {
    double at[2], j[4];
    bilinear_point(coords, nodes, uv, at);
    const double rx = at[0] - point[0], ry = at[1] - point[1];
    bilinear_jacobian(coords, nodes, uv, j);
    // j[0] = J00, j[1] = J10, j[2] = J01, j[3] = J11.
    const double det = j[0] * j[3] - j[2] * j[1];
    if (det != 0.0) {
      inv[0] = j[3] / det;
      inv[1] = -j[2] / det;
      inv[2] = -j[1] / det;
      inv[3] = j[0] / det;
    }
    const double du = inv[0] * rx + inv[1] * ry;
    const double dv = inv[2] * rx + inv[3] * ry;
    uv[0] -= du;
    uv[1] -= dv;
    if (std::sqrt(du * du + dv * dv) <= tolerance::newton_step) break;
  }
}

} // namespace tesskit2d
} // namespace kelm
