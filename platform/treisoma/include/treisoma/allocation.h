#pragma once
// Raw storage of treisoma's buffers.

#include "treisoma/export.h"

/// Allocates `bytes` bytes, all zero. Returns null when memory is exhausted;
/// callers test for null and have no other failure path. Blocks of 1 MiB and
/// more are mapped on their own where the system allows it, aligned on 2 MiB
/// and advised for transparent huge pages: the kernel's zero pages, so the
/// zeroing costs nothing until the memory is touched, and large ones, so
/// that first touch and random access cost less. Smaller blocks come from
/// the heap.
TREISOMA_EXPORT void* __vector_num_alloc(unsigned bytes) noexcept;

/// Frees what `__vector_num_alloc` returned. Null is ignored.
TREISOMA_EXPORT void __vector_num_free(void* p) noexcept;

#ifdef TREISOMA_FAULT_INJECTION
namespace kelm {
namespace treisoma {

/// Fault injection for tests. Present only in builds configured with
/// TREISOMA_FAULT_INJECTION; release builds have neither the switch nor its
/// cost. The state is per thread, so tests running in parallel threads do not
/// disturb each other.
///
/// `fail_allocation_at(n)` makes the n-th raw allocation from now fail
/// (counting from 0) and only that one; `disarm_allocation_failure()` cancels
/// it. `allocation_failure_fired()` tells whether the armed failure was
/// reached; a test sweeps n upward until it is not, which proves that every
/// allocation of a call has been made to fail once.
TREISOMA_EXPORT void fail_allocation_at(unsigned long n) noexcept;
TREISOMA_EXPORT void disarm_allocation_failure() noexcept;
TREISOMA_EXPORT bool allocation_failure_fired() noexcept;

} // namespace treisoma
} // namespace kelm
#endif
