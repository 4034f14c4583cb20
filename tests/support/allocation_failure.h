#pragma once
// Sweeping allocation failures over a call.

#include "treisoma/allocation.h"

namespace tk_test {

/// Runs `call` with the n-th raw allocation from now made to fail, and tells
/// whether the call reached that allocation.
template <class Call> bool fail_during(unsigned long n, Call&& call) {
  kelm::treisoma::fail_allocation_at(n);
  call();
  const bool fired = kelm::treisoma::allocation_failure_fired();
  kelm::treisoma::disarm_allocation_failure();
  return fired;
}

/// Calls `attempt(n)` for n = 0, 1, 2, ... until it returns false. Each
/// attempt builds fresh inputs, runs the call under `fail_during(n, ...)`,
/// checks the outcome and returns what `fail_during` said, so the sweep ends
/// once a call has made fewer than n + 1 allocations: every allocation of the
/// call has then failed once. Returns the number of allocations walked.
template <class Attempt> unsigned long sweep_allocation_failures(Attempt&& attempt) {
  unsigned long n = 0;
  while (attempt(n))
    ++n;
  return n;
}

} // namespace tk_test
