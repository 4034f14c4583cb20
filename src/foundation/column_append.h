#pragma once
// Appending columns to an output array.

#include <algorithm>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// Appends one column of R values to `a`, which must be empty (rows * cols
/// of 0) or have R rows. A full array is first given room for twice its
/// columns (4 at least), so a run of appends costs amortised constant time;
/// callers that know the final size reserve it before their loop. False when
/// the shape is wrong or memory ran out; the array is then as it was.
template <unsigned R> bool push_column(dense2D<unsigned>& a, const unsigned (&values)[R]) noexcept {
  // Splitting loops reserve ahead and then append millions of columns, so the
  // case of a column that already fits is kept free of divisions and calls.
  if (a.rows == R && (unsigned long long)a.offset + (unsigned long long)(a.cols + 1) * a.ld <= a.buffer->capacity) {
    unsigned* c = a.buffer->data + a.offset + (unsigned long long)a.cols * a.ld;
    for (unsigned i = 0; i < R; ++i)
      c[i] = values[i];
    ++a.cols;
    a.size += R;
    return true;
  }
  if (a.rows * a.cols != 0 && a.rows != R) return false;
  if (a.cols == a.column_capacity()) a.reserve(R, std::max(2 * a.cols, 4u), 1);
  if (!a.resize(R, a.cols + 1)) return false;
  unsigned* c = a.column(a.cols - 1);
  for (unsigned i = 0; i < R; ++i)
    c[i] = values[i];
  return true;
}

/// Appends all columns of `source` to `dest`, which has the same rows. An
/// empty source is a success. False when memory ran out; `dest` is then as
/// it was.
bool append_columns(dense2D<unsigned>& dest, const dense2D<unsigned>& source) noexcept;

} // namespace tesskit2d
} // namespace kelm
