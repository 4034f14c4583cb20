#pragma once
// Outputs that share storage with an input, in each of the ways a caller can
// arrange it.

#include "tesskit2d/mesh.h"

namespace tk_test {

using kelm::dense2D;

enum class sharing {
  same_array,   // the input itself passed as the output
  shallow_copy, // a copy of the view, on the same buffer
  emptied_view, // no rows or columns, at the start of the input's buffer
  view_inside,  // no rows or columns, at the input's middle column
};
constexpr sharing every_sharing[] = {sharing::same_array, sharing::shallow_copy, sharing::emptied_view,
                                     sharing::view_inside};

/// An output over `in`'s storage as `how` says; for `same_array` a shallow
/// copy, which the caller passes as `in` itself.
template <class T> dense2D<T> shared_output(const dense2D<T>& in, sharing how) {
  dense2D<T> out = in;
  if (how == sharing::same_array || how == sharing::shallow_copy) return out;
  out.offset = how == sharing::emptied_view ? 0 : in.offset + in.cols / 2 * in.ld;
  out.rows = out.cols = out.ld = out.size = 0;
  return out;
}

} // namespace tk_test
