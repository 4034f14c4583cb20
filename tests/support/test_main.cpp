// The main of every test program: GoogleTest's, with floating-point traps
// on in Debug builds (see support/fp_traps.h).

#include <gtest/gtest.h>

#include "support/fp_traps.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  tk_test::enable_fp_traps();
  return RUN_ALL_TESTS();
}
