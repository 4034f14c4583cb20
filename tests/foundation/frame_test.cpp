#include <gtest/gtest.h>

#include "foundation/column_append.h"
#include "foundation/element_conventions.h"
#include "foundation/highest_id.h"
#include "foundation/output_clear.h"
#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit2d/version.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

TEST(Frame, VersionKindsAndTriangleCountFollowTheLibrarysConventions) {
  EXPECT_STREQ(version(), "5.3.0.0");
  EXPECT_EQ(element_node_count(MIXED), 4);

  // Edge conventions are checked through the neighbour slots of the
  // orientation and ring tests; the triangle count reads row 3 by the stride.
  const auto mixed = strided(conn({{0, 1, 2, null_id}, {0, 2, 3, 4}, {1, 2, 3, null_id}}));
  const unsigned* row3 = mixed.column(0) + 3;
  EXPECT_EQ(count_null_rows(row3, mixed.ld, row3 + std::size_t(mixed.cols) * mixed.ld, null_id), 2u);
}

TEST(Frame, HighestIdIgnoresNullAndReadsStridedArrays) {
  EXPECT_EQ(highest_id(strided(conn({{0, 7, null_id}, {3, 9, 1}}))), 9u); // junk 77 not read
  EXPECT_EQ(highest_id(dense2D<unsigned>()), null_id);
  EXPECT_EQ(highest_id(conn({{null_id, 0}})), 0u);
}

TEST(Frame, AppendsGrowRefuseWrongRowsAndLeaveTheDestinationOnFailure) {
  dense2D<unsigned> a;
  for (unsigned k = 0; k < 100; ++k)
    ASSERT_TRUE(push_column<3>(a, {k, k + 1, k + 2}));
  EXPECT_EQ(a(2, 99), 101u);
  EXPECT_FALSE(push_column<4>(a, {1, 2, 3, 4}));
  EXPECT_EQ(a.cols, 100u);
  clear_output(a);
  EXPECT_TRUE(a.empty());
  EXPECT_GE(a.buffer->capacity, 300u); // a cleared output keeps its storage
  EXPECT_TRUE(push_column<4>(a, {1, 2, 3, 4}));

  const auto source = strided(conn({{7, 8, 9}, {10, 11, 12}}));
  const auto start = as_columns(conn({{1, 2, 3}})), appended = as_columns(conn({{1, 2, 3}, {7, 8, 9}, {10, 11, 12}}));
  for (bool one : {false, true}) {
    const unsigned long walked = sweep_allocation_failures([&](unsigned long n) {
      auto dest = conn({{1, 2, 3}});
      bool ok = false;
      const bool failed = fail_during(n, [&] {
        ok = one ? push_column<3>(dest, {7, 8, 9}) : append_columns(dest, source);
      });
      // A failed reservation alone is survived by the exact growth after it.
      EXPECT_TRUE(ok || failed);
      auto want = ok ? appended : start;
      if (ok && one) want.pop_back();
      EXPECT_EQ(as_columns(dest), want);
      return failed;
    });
    EXPECT_GE(walked, 1u);
  }
}
