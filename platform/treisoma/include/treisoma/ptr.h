#pragma once
// Intrusive smart pointer over treisoma's reference-counted buffers.

#include <utility>

namespace kelm {

/// Holds one reference to a `T` derived from `treisoma::ref_counted`, or
/// nothing. Copies share the object; the last holder ends it.
template <class T> class Ptr {
public:
  Ptr() noexcept = default;
  Ptr(T* object) noexcept : p(object) {
    if (p) p->__acquire();
  }
  Ptr(const Ptr& other) noexcept : Ptr(other.p) {}
  Ptr(Ptr&& other) noexcept : p(std::exchange(other.p, nullptr)) {}
  ~Ptr() {
    if (p) p->__release();
  }

  /// Acquires the new object before releasing the old one, so that assigning
  /// an object to the pointer that already holds it is safe.
  Ptr& operator=(T* object) noexcept {
    if (object) object->__acquire();
    if (p) p->__release();
    p = object;
    return *this;
  }
  Ptr& operator=(const Ptr& other) noexcept { return *this = other.p; }
  Ptr& operator=(Ptr&& other) noexcept {
    if (this != &other) {
      if (p) p->__release();
      p = std::exchange(other.p, nullptr);
    }
    return *this;
  }

  T* operator->() const noexcept { return p; }
  T& operator*() const noexcept { return *p; }
  T* get() const noexcept { return p; }
  explicit operator bool() const noexcept { return p != nullptr; }

  T* p = nullptr;
};

} // namespace kelm
