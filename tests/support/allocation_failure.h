#pragma once
// Sweeping allocation failures over a call.

#include <gtest/gtest.h>

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

/// The sweep of a call that builds its output whole or not at all: each run
/// of `call(out)` on a fresh `Out` that met a failed allocation answers -199
/// and leaves `out` empty; the others answer 0 with something in `out`.
/// Returns the number of allocations walked.
template <class Out, class Call> unsigned long expect_all_or_nothing(Call&& call) {
  return sweep_allocation_failures([&](unsigned long n) {
    Out out;
    int status = 1;
    const bool failed = fail_during(n, [&] { status = call(out); });
    EXPECT_EQ(status, failed ? -199 : 0) << "allocation " << n;
    EXPECT_EQ(out.empty(), failed) << "allocation " << n;
    return failed;
  });
}

} // namespace tk_test
