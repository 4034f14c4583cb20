#pragma once
// One-dimensional view on a shared buffer.

#include "treisoma/export.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "treisoma/ptr.h"
#include "treisoma/vector_num.h"

namespace kelm {

/// A view of `size` elements starting at `offset` in a shared
/// `vector_num<T, A>`. Element i is `buffer->data[offset + i]`.
///
/// Copies share the buffer; nothing is copied element by element unless a
/// function says so. `buffer` is never null, even for an empty view, so
/// `buffer->capacity` can always be read.
///
/// Constructors that allocate throw `std::bad_alloc` when memory runs out;
/// the growth operations report it by returning false instead.
template <class T, unsigned A = 8> class dense1D {
public:
  using buffer_type = vector_num<T, A>;

  /// Empty view on an empty buffer of its own.
  dense1D() : buffer(new buffer_type) {}

  /// View of `n` elements, not initialised beyond the buffer's defaults.
  explicit dense1D(unsigned n) : dense1D() {
    if (!resize(n)) throw std::bad_alloc();
  }

  /// View of `n` elements, each set to `fill`.
  dense1D(unsigned n, const T& fill) : dense1D() {
    if (!resize(n, fill)) throw std::bad_alloc();
  }

  /// View of `n` elements of storage that the caller owns and keeps alive
  /// for as long as the view or any copy of it lives. The storage is never
  /// freed by the library; growing the view moves it into storage of its own.
  static dense1D view(T* storage, unsigned n) {
    dense1D v(adopt, new buffer_type(storage, n));
    v.size = n;
    return v;
  }

  dense1D(const dense1D&) noexcept = default;
  dense1D& operator=(const dense1D&) noexcept = default;
  ~dense1D() = default;

  T& operator[](unsigned i) const noexcept { return buffer->data[offset + i]; }
  T* begin() const noexcept { return buffer->data + offset; }
  T* end() const noexcept { return buffer->data + offset + size; }
  bool empty() const noexcept { return size == 0; }

  /// Makes room for `n` elements from `offset` on without changing `size`.
  bool reserve(unsigned n, unsigned growth = 1) noexcept {
    const unsigned long long need = (unsigned long long)offset + n;
    if (need <= buffer->capacity) return true;
    if (need > 0xFFFFFFFFu) return false;
    return buffer->__grow(static_cast<unsigned>(need), buffer->capacity, growth);
  }

  /// Sets `size` to `n`; elements below the old size keep their values, new
  /// ones are left as the buffer holds them.
  bool resize(unsigned n) noexcept {
    if (!reserve(n)) return false;
    size = n;
    return true;
  }

  /// As `resize(n)`, and the new elements are set to `fill`.
  bool resize(unsigned n, T fill) noexcept {
    const unsigned old = size;
    if (!resize(n)) return false;
    T* d = buffer->data + offset;
    for (unsigned i = old; i < n; ++i)
      d[i] = fill;
    return true;
  }

  /// Deep copy: this view gets a buffer of its own holding the elements of
  /// `other` from offset 0. False when memory runs out, and this view is
  /// then unchanged.
  bool copy(const dense1D& other) {
    Ptr<buffer_type> fresh(new buffer_type);
    if (other.size && !fresh->__grow(other.size, 0, 1)) return false;
    if (other.size) std::memcpy(static_cast<void*>(fresh->data), other.begin(), std::size_t(other.size) * sizeof(T));
    buffer = std::move(fresh);
    offset = 0;
    size = other.size;
    return true;
  }

  /// Appends one value, doubling the buffer when it is full. A value that
  /// cannot be stored for lack of memory is dropped; the result tells.
  bool push_back(T value) noexcept {
    const unsigned k = offset + size;
    if (k >= buffer->capacity && !buffer->__grow(k + 1, k, 2)) return false;
    buffer->data[k] = value;
    ++size;
    return true;
  }

  Ptr<buffer_type> buffer;
  unsigned size = 0;
  unsigned offset = 0;

protected:
  struct adopt_t {};
  static constexpr adopt_t adopt{};
  dense1D(adopt_t, buffer_type* b) noexcept : buffer(b) {}
};

extern template class TREISOMA_EXPORT dense1D<double, 8>;
extern template class TREISOMA_EXPORT dense1D<unsigned, 8>;

} // namespace kelm
