#pragma once

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Empties an output array before it is rebuilt: shape and stride go to 0,
/// the buffer keeps its storage and capacity, and `offset` stays, so a
/// rebuilt output reuses what the caller already had.
template <class T> void clear_output(dense2D<T>& a) noexcept {
  a.size = 0;
  a.rows = 0;
  a.cols = 0;
  a.ld = 0;
}

} // namespace tesskit2d
} // namespace kelm
