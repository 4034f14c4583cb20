#pragma once
// Floating-point traps in the test programs.
//
// In Debug builds (NDEBUG not defined) the test main makes invalid
// operations, divisions by zero and overflows raise SIGFPE, so that a stray
// NaN or infinity stops the test where it is made rather than passing
// unseen through a comparison. Where the library is meant to answer NaN or
// infinity (degenerate geometry, NaN inputs given on purpose), lift the
// traps for that part of the test only:
//
//   {
//     const tk_test::no_fp_traps nan_given; // a NaN is compared on purpose
//     EXPECT_EQ(nearest_multiple(std::nan(""), 1), 0u);
//   }
//
// and say in a comment why: a NaN given on purpose, a degenerate input whose
// answer is NaN or infinite, or an overflow the library makes and recovers
// from. A test that dies of SIGFPE is found with
//   gdb -batch -ex run -ex bt --args build/default/tests/test_<folder> --gtest_filter=<test>
// which stops on the operation that made the NaN. Release builds and
// systems without glibc's feenableexcept run without traps.

#include <cfenv>

namespace tk_test {

/// The exceptions that trap in Debug test programs.
constexpr int trapped_fp_exceptions = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

/// Makes `trapped_fp_exceptions` raise SIGFPE in Debug builds on glibc; does
/// nothing elsewhere. Called once by the test main.
inline void enable_fp_traps() noexcept {
#if !defined(NDEBUG) && defined(__GLIBC__)
  std::feclearexcept(FE_ALL_EXCEPT);
  feenableexcept(trapped_fp_exceptions);
#endif
}

/// Lifts every floating-point trap for its lifetime and restores the traps
/// that were on when it was made. Exceptions raised meanwhile are cleared
/// on the way out, so that none is left pending under the restored traps.
/// `lift` false makes a guard that does nothing, for a table where only some
/// rows are meant to make a NaN:
///
///   const tk_test::no_fp_traps nan_row(std::isnan(row.power));
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
  no_fp_traps(no_fp_traps&&) = delete;
  no_fp_traps& operator=(no_fp_traps&&) = delete;

private:
  int saved_ = -1; // the traps to restore; -1 when nothing was lifted
};

} // namespace tk_test
