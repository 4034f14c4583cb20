#pragma once
// The rotation matrix of a rotation vector.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Row-major 3 x 3 matrix of the right-handed rotation about the axis of `w`
/// by the angle |w| (radians), by Rodrigues' formula
///   M = I + a S + b S S,  a = sin(theta) / theta,  b = (1 - cos(theta)) / theta^2,
/// S the cross-product matrix of w (S v = w x v). For theta <= 0.1 a and b
/// come from their series in theta^2, so w = 0 gives the identity with no
/// division and small angles keep their digits.
void rotation_tensor(const vector_fixed<double, 3>& w, double (&M)[9]) noexcept;

} // namespace tesskit2d
} // namespace kelm
