#pragma once
// Reference-counted bases of treisoma's shared buffers.

#include <atomic>
#include <cstdint>

namespace kelm {
namespace treisoma {

/// Abstract base of every shared buffer. The count is changed only by
/// atomic increment and decrement; whoever takes it to zero ends the object.
class ref_counted {
public:
  ref_counted() noexcept : count(0) {}
  ref_counted(const ref_counted&) = delete;
  ref_counted& operator=(const ref_counted&) = delete;
  virtual ~ref_counted() = default;

  /// Takes one more reference.
  void __acquire() noexcept { count.fetch_add(1, std::memory_order_relaxed); }

  /// Drops one reference and ends the object when it was the last.
  void __release() noexcept {
    if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) __destroy();
  }

  std::atomic<std::uint32_t> count;

private:
  void __destroy() noexcept { delete this; }
};

} // namespace treisoma

/// A second, independent base with the same two fields. Objects derived from
/// it live as local variables, so its count stays 0 and nothing reads it.
class ref_counted {
public:
  ref_counted() noexcept : count(0) {}
  virtual ~ref_counted() = default;

  std::uint32_t count;
};

} // namespace kelm
