#include "treisoma/allocation.h"

#include <cstdlib>

#ifdef TREISOMA_FAULT_INJECTION
namespace {
// Per-thread countdown to the allocation that is made to fail; -1 when
// nothing is armed.
thread_local long long countdown = -1;
thread_local bool fired = false;
} // namespace

void kelm::treisoma::fail_allocation_at(unsigned long n) noexcept {
  countdown = static_cast<long long>(n);
  fired = false;
}

void kelm::treisoma::disarm_allocation_failure() noexcept { countdown = -1; }

bool kelm::treisoma::allocation_failure_fired() noexcept { return fired; }
#endif

void* __vector_num_alloc(unsigned bytes) noexcept {
#ifdef TREISOMA_FAULT_INJECTION
  if (countdown >= 0 && countdown-- == 0) {
    fired = true;
    return nullptr;
  }
#endif
  return std::calloc(bytes ? bytes : 1, 1);
}

void __vector_num_free(void* p) noexcept { std::free(p); }
