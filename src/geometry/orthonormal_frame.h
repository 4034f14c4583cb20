#pragma once
// A right-handed orthonormal frame built from one direction and a hint for
// the second, shared by the principal curvatures and the metric generation.

#include <cmath>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Makes a unit vector of `v` in place: when its squared length is neither 0
/// nor exactly 1 it is multiplied by the reciprocal of its length, so a unit
/// vector and the zero vector pass unchanged (and so does a vector so short
/// that its squared length underflows). Returns the squared length.
inline double normalise(double v[3]) noexcept {
  const double s = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
  if (s != 0.0 && s != 1.0) {
    const double r = 1.0 / std::sqrt(s);
    v[0] *= r;
    v[1] *= r;
    v[2] *= r;
  }
  return s;
}

/// Turns `a`, `b` into the orthonormal frame `a`, `b`, `c` with c = a x b and
/// b = c x a, all in place.
///
/// `a` keeps its direction; a zero `a` becomes the x axis. `b` only chooses
/// the plane of the first two vectors: when it is parallel to `a` (the cross
/// product is exactly zero), it is replaced by the axis along which `a` has
/// its smallest component (the first such axis on a tie), which can never be
/// parallel to a unit `a`.
inline void orthonormal_frame(double a[3], double b[3], double c[3]) noexcept {
  normalise(a);
  if (a[0] == 0.0 && a[1] == 0.0 && a[2] == 0.0) a[0] = 1.0;
  const auto cross_ab = [&] {
    c[0] = a[1] * b[2] - a[2] * b[1];
    c[1] = a[2] * b[0] - a[0] * b[2];
    c[2] = a[0] * b[1] - a[1] * b[0];
  };
  cross_ab();
  if (c[0] == 0.0 && c[1] == 0.0 && c[2] == 0.0) {
    unsigned axis = 0;
    for (unsigned i = 1; i < 3; ++i)
      if (std::fabs(a[i]) < std::fabs(a[axis])) axis = i;
    b[0] = b[1] = b[2] = 0.0;
    b[axis] = 1.0;
    cross_ab();
  }
  normalise(c);
  b[0] = c[1] * a[2] - c[2] * a[1];
  b[1] = c[2] * a[0] - c[0] * a[2];
  b[2] = c[0] * a[1] - c[1] * a[0];
}

} // namespace tesskit2d
} // namespace kelm
