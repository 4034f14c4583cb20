#pragma once
// Inputs that an output of the same call could overwrite.
//
// Arrays are views, so a caller may pass an output that shares storage with
// an input: the same array, a shallow copy, or an emptied view over the
// input's buffer. Writing the output would then change the input while it is
// read. The exports that read an input while they append to an output read
// it through `separate_input`, which copies it once when, and only when, the
// two can meet; the result is then the one separate arrays give.

#include <cstddef>
#include <functional>
#include <new>
#include <optional>
#include <utility>

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The storage an array occupies, [first, last); empty for an empty view.
template <class A> std::pair<const void*, const void*> occupied(const A& a) noexcept;

template <class T> std::pair<const void*, const void*> occupied(const dense2D<T>& a) noexcept {
  if (a.rows * a.cols == 0) return {nullptr, nullptr};
  const T* first = a.column(0);
  return {first, first + std::size_t(a.cols - 1) * a.ld + a.rows};
}

template <class T> std::pair<const void*, const void*> occupied(const dense1D<T, 8>& a) noexcept {
  if (a.size == 0) return {nullptr, nullptr};
  return {a.begin(), a.end()};
}

/// Whether writing `out` can change `in`: they share a buffer, or the room
/// `out` writes into (from its offset to the end of its buffer's storage)
/// overlaps the elements of `in`.
template <class Out, class In> bool may_overwrite(const Out& out, const In& in) noexcept {
  if (static_cast<const void*>(out.buffer.get()) == static_cast<const void*>(in.buffer.get())) return true;
  const auto read = occupied(in);
  if (read.first == nullptr || out.buffer->data == nullptr) return false;
  const void* room_first = out.buffer->data + out.offset;
  const void* room_last = out.buffer->data + out.buffer->capacity;
  std::less<const void*> before;
  return before(room_first, read.second) && before(read.first, room_last);
}

/// Whether two arrays that are both written can write over each other: they
/// share a buffer, or the rooms they write into overlap.
template <class A, class B> bool rooms_overlap(const A& a, const B& b) noexcept {
  if (static_cast<const void*>(a.buffer.get()) == static_cast<const void*>(b.buffer.get())) return true;
  if (a.buffer->data == nullptr || b.buffer->data == nullptr) return false;
  std::less<const void*> before;
  return before(a.buffer->data + a.offset, b.buffer->data + b.buffer->capacity) &&
         before(b.buffer->data + b.offset, a.buffer->data + a.buffer->capacity);
}

/// `in` itself, or a private copy of it when any of the outputs `out` may
/// overwrite it. `ok()` is false when the copy found no memory. Nothing is
/// allocated when no copy is needed.
template <class Array> class separate_input {
public:
  template <class... Out> separate_input(const Array& in, const Out&... out) noexcept : in_(&in) {
    if (!(may_overwrite(out, in) || ...)) return;
    // The copy's buffer object comes from operator new; its failure is one
    // more way for memory to run out, reported like the others.
    try {
      own_.emplace();
      ok_ = own_->copy(in);
    } catch (const std::bad_alloc&) {
      ok_ = false;
    }
    if (ok_) in_ = &*own_;
  }
  separate_input(const separate_input&) = delete;
  separate_input& operator=(const separate_input&) = delete;

  bool ok() const noexcept { return ok_; }
  const Array& get() const noexcept { return *in_; }

private:
  const Array* in_;
  std::optional<Array> own_;
  bool ok_ = true;
};

} // namespace tesskit2d
} // namespace kelm
