#pragma once
// Working arrays of the extras, on the storage the library's own arrays use.

#include <cstddef>
#include <new>
#include <vector>

#include "treisoma/allocation.h"

namespace kelm {
namespace tesskit2d {
namespace extras {

/// A standard allocator over the library's raw storage: large working
/// arrays then sit on huge pages as the library's outputs do, where the
/// heap would fault them in page by page. Throws std::bad_alloc when memory
/// runs out, which the callers turn into -199.
template <class T> struct storage_allocator {
  using value_type = T;
  storage_allocator() noexcept = default;
  template <class U> storage_allocator(const storage_allocator<U>&) noexcept {}

  T* allocate(std::size_t n) {
    if (n > 0xFFFFFFFFu / sizeof(T)) throw std::bad_alloc();
    void* p = __vector_num_alloc(static_cast<unsigned>(n * sizeof(T)));
    if (!p) throw std::bad_alloc();
    return static_cast<T*>(p);
  }
  void deallocate(T* p, std::size_t) noexcept { __vector_num_free(p); }

  template <class U> bool operator==(const storage_allocator<U>&) const noexcept { return true; }
  template <class U> bool operator!=(const storage_allocator<U>&) const noexcept { return false; }
};

template <class T> using scratch = std::vector<T, storage_allocator<T>>;

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
