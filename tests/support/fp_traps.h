#pragma once
// Floating-point traps in the test programs.
//
// In Debug builds the test main makes invalid operations, divisions by zero
// and overflows raise SIGFPE, so that a stray NaN or infinity stops the test
// where it is made. Where the library is meant to answer NaN or infinity,
// lift the traps for that part of the test only, and say why in a comment:
//
//   const tk_test::no_fp_traps nan_given; // a NaN is compared on purpose
//
// gdb -batch -ex run -ex bt --args build/default/tests/test_<folder>
// --gtest_filter=<test> stops on the operation that made the NaN. Release
// builds and systems without glibc's feenableexcept run without traps.

#include <cfenv>

namespace tk_test {

/// Makes invalid operations, divisions by zero and overflows raise SIGFPE in
/// Debug builds on glibc; does nothing elsewhere. Called once by the test main.
inline void enable_fp_traps() noexcept {
#if !defined(NDEBUG) && defined(__GLIBC__)
  std::feclearexcept(FE_ALL_EXCEPT);
  feenableexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
#endif
}

/// Lifts every trap for its lifetime (when `lift`, so that a table can lift
/// them for some rows only) and restores them, with the exceptions raised
/// meanwhile cleared, on the way out.
class no_fp_traps {
public:
  explicit no_fp_traps(bool lift = true) noexcept {
#if defined(__GLIBC__)
    if (lift) saved_ = fedisableexcept(FE_ALL_EXCEPT);
#else
    (void)lift;
#endif
  }
  ~no_fp_traps() {
#if defined(__GLIBC__)
    if (saved_ < 0) return;
    std::feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(saved_);
#endif
  }
  no_fp_traps(const no_fp_traps&) = delete;
  no_fp_traps& operator=(const no_fp_traps&) = delete;

private:
  int saved_ = -1; // the traps to restore; -1 when nothing was lifted
};

} // namespace tk_test
