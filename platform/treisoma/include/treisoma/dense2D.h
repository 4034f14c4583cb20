#pragma once
// Two-dimensional column-major view on a shared buffer.

#include "treisoma/export.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "treisoma/dense1D.h"

namespace kelm {

/// A column-major view of `rows` by `cols` elements. Element (i, j) is
/// `buffer->data[offset + i + j * ld]`; a column is contiguous and columns
/// are `ld` elements apart, with `ld >= rows`. A mesh stores one node or one
/// element per column.
///
/// The array is empty when `rows * cols` is 0. `size` is `rows * cols`.
///
/// \code
///   kelm::dense2D<double> coords(2, 3);          // three nodes in the plane
///   coords(0, 2) = 1.0;                          // x of node 2
///   double xy[] = {0, 0, 1, 0, 0, 1};
///   auto mine = kelm::dense2D<double>::view(xy, 2, 3);   // no copy
/// \endcode
template <class T> class dense2D : public dense1D<T, 8> {
  using base = dense1D<T, 8>;

public:
  using typename base::buffer_type;

  /// Empty array: every field 0, on an empty buffer of its own.
  dense2D() = default;

  /// `r` by `c` elements, not initialised beyond the buffer's defaults.
  dense2D(unsigned r, unsigned c) {
    if (!resize(r, c)) throw std::bad_alloc();
  }

  /// `r` by `c` elements, each set to `fill`.
  dense2D(unsigned r, unsigned c, T fill) {
    if (!resize(r, c, fill)) throw std::bad_alloc();
  }

  /// View of storage that the caller owns and keeps alive, with column
  /// stride `stride` (`rows` when 0). Nothing is copied and the storage is
  /// never freed by the library; an array that has to grow moves into
  /// storage of its own and leaves the caller's untouched from then on.
  static dense2D view(T* storage, unsigned r, unsigned c, unsigned stride = 0) {
    if (stride == 0) stride = r;
    const unsigned extent = c ? (c - 1) * stride + r : 0;
    dense2D a(base::adopt, new buffer_type(storage, extent));
    a.rows = r;
    a.cols = c;
    a.ld = stride;
    a.size = r * c;
    return a;
  }

  dense2D(const dense2D&) noexcept = default;
  dense2D& operator=(const dense2D&) noexcept = default;
  ~dense2D() = default;

  T& operator()(unsigned i, unsigned j) const noexcept { return this->buffer->data[this->offset + i + j * ld]; }

  /// Pointer to column j; valid until the buffer grows.
  T* column(unsigned j) const noexcept { return this->buffer->data + this->offset + j * ld; }

  bool empty() const noexcept { return rows * cols == 0; }

  /// Columns that fit in the buffer from `offset` on at the current stride.
  unsigned column_capacity() const noexcept {
    const unsigned room = this->buffer->capacity - this->offset;
    return ld ? room / ld : room;
  }

  /// Makes this view alias `other`: same buffer, same shape and stride.
  void shallow_copy(const dense2D& other) noexcept { *this = other; }

  /// Deep copy: this array gets a buffer of its own, packed (`ld == rows`),
  /// with the shape and elements of `other`. False when memory runs out, and
  /// this array is then unchanged.
  bool copy(const dense2D& other) {
    Ptr<buffer_type> fresh(new buffer_type);
    const unsigned long long n = (unsigned long long)other.rows * other.cols;
    if (n > 0xFFFFFFFFu) return false;
    if (n && !fresh->__grow(static_cast<unsigned>(n), 0, 1)) return false;
    for (unsigned j = 0; j < other.cols; ++j)
      if (other.rows)
        std::memcpy(static_cast<void*>(fresh->data + std::size_t(j) * other.rows), other.column(j),
                    other.rows * sizeof(T));
    this->buffer = std::move(fresh);
    this->offset = 0;
    rows = other.rows;
    cols = other.cols;
    ld = other.rows;
    this->size = static_cast<unsigned>(n);
    return true;
  }

  /// Reshapes to `r` by `c`. Element (i, j) keeps its value for every i below
  /// both row counts and j below both column counts, also when the row count
  /// changes; other elements are left as the buffer holds them. A shrink
  /// never fails. On false the array is unchanged.
  bool resize(unsigned r, unsigned c) noexcept { return reshape(r, c, r, c); }

  /// As `resize(r, c)`, and every element that did not exist before is set
  /// to `fill`; existing ones keep their values.
  bool resize(unsigned r, unsigned c, T fill) noexcept {
    const bool had_content = rows * cols != 0;
    const unsigned r0 = had_content ? rows : 0, c0 = had_content ? cols : 0;
    if (!resize(r, c)) return false;
    T* d = this->buffer->data + this->offset;
    const unsigned keep_c = std::min(c0, c);
    if (r > r0)
      for (unsigned j = 0; j < keep_c; ++j)
        std::fill(d + std::size_t(j) * ld + r0, d + std::size_t(j) * ld + r, fill);
    for (unsigned j = keep_c; j < c; ++j)
      std::fill(d + std::size_t(j) * ld, d + std::size_t(j) * ld + r, fill);
    return true;
  }

  /// Makes room for `c` columns of `r` elements without changing `cols`.
  /// On an empty array this also sets `rows` and the stride to `r`, which
  /// fixes the column capacity seen by later appends. On a non-empty array
  /// with `r` above the stride, the columns are spread to stride `r` first.
  bool reserve(unsigned r, unsigned c, unsigned growth = 1) noexcept {
    if (rows * cols == 0) {
      const unsigned long long need = (unsigned long long)this->offset + (unsigned long long)c * r;
      if (need > 0xFFFFFFFFu) return false;
      if (need > this->buffer->capacity &&
          !this->buffer->__grow(static_cast<unsigned>(need), this->buffer->capacity, growth))
        return false;
      rows = r;
      ld = r;
      this->size = 0;
      return true;
    }
    return reshape(rows, cols, std::max(r, ld), c, growth);
  }

  /// Flat view of all elements, sharing the buffer. Meaningful when
  /// `ld == rows`.
  dense1D<T, 8> as_vector() const noexcept {
    dense1D<T, 8> v(*this);
    v.size = rows * cols;
    return v;
  }

  unsigned rows = 0;
  unsigned cols = 0;
  unsigned ld = 0;

private:
  dense2D(typename base::adopt_t tag, buffer_type* b) noexcept : base(tag, b) {}

  bool reshape(unsigned r, unsigned c, unsigned min_ld, unsigned room_cols, unsigned growth = 1) noexcept {
    // The stride only ever grows in place: a smaller row count keeps it, so a
    // shrink moves nothing and cannot fail.
    const bool had_content = rows * cols != 0;
    const unsigned new_ld = (ld >= min_ld && ld != 0) ? ld : min_ld;
    const unsigned long long need = (unsigned long long)this->offset + (unsigned long long)room_cols * new_ld;
    if (need > 0xFFFFFFFFu) return false;
    if (need > this->buffer->capacity &&
        !this->buffer->__grow(static_cast<unsigned>(need), this->buffer->capacity, growth))
      return false;
    if (had_content && new_ld != ld) {
      // Spread the kept columns to the wider stride, last first, so that no
      // column is overwritten before it has moved.
      T* d = this->buffer->data + this->offset;
      const unsigned n_rows = std::min(rows, r), n_cols = std::min(cols, c);
      for (unsigned j = n_cols; j-- > 1;)
        std::memmove(static_cast<void*>(d + std::size_t(j) * new_ld), d + std::size_t(j) * ld, n_rows * sizeof(T));
    }
    ld = new_ld;
    rows = r;
    cols = c;
    this->size = r * c;
    return true;
  }
};

extern template class TREISOMA_EXPORT dense2D<double>;
extern template class TREISOMA_EXPORT dense2D<unsigned>;

} // namespace kelm
