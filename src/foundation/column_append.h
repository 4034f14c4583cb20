#pragma once
// Appending columns to an output array.

#include <algorithm>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The general path of `push_column`: shape check and growth.
template <unsigned R> bool push_column_growing(dense2D<unsigned>& a, const unsigned (&values)[R]) noexcept {
  if (a.rows * a.cols != 0 && a.rows != R) return false;
  if (a.cols == a.column_capacity()) a.reserve(R, std::max(2 * a.cols, 4u), 1);
  if (!a.resize(R, a.cols + 1)) return false;
  unsigned* c = a.column(a.cols - 1);
  for (unsigned i = 0; i < R; ++i)
    c[i] = values[i];
  return true;
}

/// Appends one column of R values to `a`, which must be empty (rows * cols
/// of 0) or have R rows. A full array is first given room for twice its
/// columns (4 at least), so a run of appends costs amortised constant time;
/// callers that know the final size reserve it before their loop. False when
/// the shape is wrong or memory ran out; the array is then as it was.
template <unsigned R> inline bool push_column(dense2D<unsigned>& a, const unsigned (&values)[R]) noexcept {
  // Splitting loops reserve ahead and then append millions of columns, so the
  // column that already fits is a bound check and R writes, inlined into the
  // loop; growth and the shape check stay out of line.
  const unsigned cols = a.cols, ld = a.ld;
  if (a.rows != R || (unsigned long long)a.offset + (unsigned long long)(cols + 1) * ld > a.buffer->capacity)
    return push_column_growing(a, values);
  unsigned* c = a.buffer->data + a.offset + (unsigned long long)cols * ld;
  for (unsigned i = 0; i < R; ++i)
    c[i] = values[i];
  a.cols = cols + 1;
  a.size += R;
  return true;
}

/// Writes columns of R rows into room that the caller has already reserved
/// in `a`, which has R rows: a cursor that stays in registers, with the
/// array's shape brought up to date once, when the writer ends. Nothing may
/// grow `a` while a writer lives.
template <unsigned R> class reserved_columns {
public:
  explicit reserved_columns(dense2D<unsigned>& a) noexcept
      : a_(a), next_(a.buffer->data + a.offset + (unsigned long long)a.cols * a.ld), ld_(a.ld) {}
  reserved_columns(const reserved_columns&) = delete;
  reserved_columns& operator=(const reserved_columns&) = delete;
  ~reserved_columns() {
    a_.cols += written_;
    a_.size = a_.rows * a_.cols;
  }

  void push(const unsigned (&values)[R]) noexcept {
    for (unsigned i = 0; i < R; ++i)
      next_[i] = values[i];
    next_ += ld_;
    ++written_;
  }

private:
  dense2D<unsigned>& a_;
  unsigned* next_;
  unsigned ld_;
  unsigned written_ = 0;
};

/// Appends all columns of `source` to `dest`, which has the same rows. An
/// empty source is a success. False when memory ran out; `dest` is then as
/// it was.
bool append_columns(dense2D<unsigned>& dest, const dense2D<unsigned>& source) noexcept;

} // namespace tesskit2d
} // namespace kelm
