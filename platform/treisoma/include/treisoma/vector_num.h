#pragma once
// The shared, growable buffer behind every treisoma array.

#include "treisoma/export.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "treisoma/allocation.h"
#include "treisoma/ref_counted.h"

namespace kelm {

/// Marker in `pad` of a buffer whose storage belongs to somebody else: it is
/// read and written but never freed.
constexpr std::uint16_t not_owned = 0xFFFF;

/// A reference-counted buffer of `T`. Views (`dense1D`, `dense2D`) share one
/// buffer; growing it replaces `data` inside this object, so every view sees
/// the new storage at once.
///
/// The second template argument has no effect; it is kept for the layout of
/// the type's name only.
///
/// `T` must be trivially copyable: storage is moved with `memcpy`.
template <class T, unsigned A = 8> class vector_num : public treisoma::ref_counted {
  static_assert(std::is_trivially_copyable<T>::value, "vector_num holds trivially copyable elements");

public:
  vector_num() noexcept = default;

  /// Wraps storage that the caller owns and keeps alive; it is never freed.
  /// Growing such a buffer moves its content into storage of its own.
  vector_num(T* storage, unsigned n) noexcept : data(storage), capacity(n), pad(not_owned) {}

  ~vector_num() override { __release_storage(); }

  /// Frees the storage if it is owned and leaves the buffer empty.
  void __release_storage() noexcept {
    if (data && pad != not_owned) __vector_num_free(reinterpret_cast<unsigned char*>(data) - pad);
    data = nullptr;
    capacity = 0;
    pad = 0;
  }

  /// Replaces the storage by a larger one that keeps the first `n_keep`
  /// elements; the rest up to the new capacity is default-initialised.
  /// The new capacity is the largest of `min_capacity`, `capacity * growth`
  /// and 2. Returns false, with the buffer unchanged, when memory runs out or
  /// the size does not fit in 32 bits.
  ///
  /// Low level: libraries that append to arrays call it directly.
  bool __grow(unsigned min_capacity, unsigned n_keep, unsigned growth) noexcept {
    constexpr std::uint64_t B = sizeof(T);
    if (growth != 0 && capacity > 0xFFFFFFFFu / growth) return false;
    std::uint64_t wanted = std::uint64_t(capacity) * growth;
    if (wanted < min_capacity) wanted = min_capacity;
    if (wanted < 2) wanted = 2;
    const std::uint64_t bytes = wanted * B + B - 1;
    if (bytes > 0xFFFFFFFFu) return false;

    void* raw = __vector_num_alloc(static_cast<unsigned>(bytes));
    if (!raw) return false;
    // Aligned up with the mask ~(B - 1). For element sizes that are not
    // powers of two (12- and 20-byte records) the result is not a multiple of
    // B, but it is still a multiple of 4, which is all such records need.
    const std::uintptr_t at = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (at + B - 1) & ~std::uintptr_t(B - 1);
    const unsigned skipped = static_cast<unsigned>(aligned - at);
    T* fresh = reinterpret_cast<T*>(aligned);
    const unsigned new_capacity = static_cast<unsigned>((bytes - skipped) / B);

    if (n_keep > capacity) n_keep = capacity;
    if (data && n_keep) std::memcpy(static_cast<void*>(fresh), data, n_keep * B);
    // The allocator hands out zeroed storage, which is already the default of
    // numbers; only other element types need a pass over the new room. That
    // saves a full write of every large output before it is written for real.
    if constexpr (!std::is_arithmetic<T>::value)
      for (unsigned i = n_keep; i < new_capacity; ++i)
        fresh[i] = T();

    __release_storage();
    data = fresh;
    capacity = new_capacity;
    pad = static_cast<std::uint16_t>(skipped);
    return true;
  }

  T* data = nullptr;
  unsigned capacity = 0;
  std::uint16_t pad = 0;
};

extern template class TREISOMA_EXPORT vector_num<double, 8>;
extern template class TREISOMA_EXPORT vector_num<unsigned, 8>;

} // namespace kelm
