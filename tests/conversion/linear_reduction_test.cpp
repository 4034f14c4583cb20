#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/linear_reduction.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// A T6 and a Q9 in one 9-row array; the triangle is marked in row 6.
dense2D<unsigned> mixed_quadratic() { return conn({{0, 1, 2, 10, 11, 12, N, N, N}, {1, 3, 4, 2, 20, 21, 22, 10, 23}}); }

} // namespace

TEST(ConvertIntoLinear, DropsMidNodesMarksTrianglesInRow3AndRefusesLinearInput) {
  for (bool stride : {false, true}) {
    auto a = stride ? strided(mixed_quadratic()) : mixed_quadratic();
    auto t6 = stride ? strided(conn({{0, 1, 2, 3, 4, 5}})) : conn({{0, 1, 2, 3, 4, 5}});
    ASSERT_EQ(convert_into_linear(a), 0);
    ASSERT_EQ(convert_into_linear(t6), 0);
    EXPECT_EQ(as_columns(a), (cols_t{{0, 1, 2, N}, {1, 3, 4, 2}}));
    EXPECT_EQ(as_columns(t6), (cols_t{{0, 1, 2}}));
  }
  auto t3 = conn({{0, 1, 2}}), q4 = conn({{0, 1, 2, 3}});
  dense2D<unsigned> empty(4, 0), no_rows(0, 5);
  EXPECT_EQ(convert_into_linear(t3), -1);
  EXPECT_EQ(as_columns(t3), (cols_t{{0, 1, 2}}));
  EXPECT_EQ(convert_into_linear(q4), -1);
  EXPECT_EQ(convert_into_linear(empty), 0);
  EXPECT_EQ(convert_into_linear(no_rows), 0);
}

TEST(SplitIntoLinear, AppendsTheChildrenInOrderAndWidensA3RowOutputForMixedInput) {
  const auto t6 = conn({{0, 1, 2, 3, 4, 5}});
  const cols_t children{{0, 5, 4}, {1, 3, 5}, {2, 4, 3}, {3, 4, 5}};
  dense2D<unsigned> out = conn({{7, 8, 9}}), out4 = conn({{7, 8, 9, 6}}), fresh;
  ASSERT_EQ(split_into_linear(strided(t6), out), 0);
  ASSERT_EQ(split_into_linear(t6, out4), 0);
  ASSERT_EQ(split_into_linear(t6, fresh), 0);
  EXPECT_EQ(as_columns(out), (cols_t{{7, 8, 9}, {0, 5, 4}, {1, 3, 5}, {2, 4, 3}, {3, 4, 5}}));
  EXPECT_EQ(as_columns(out4), (cols_t{{7, 8, 9, 6}, {0, 5, 4, N}, {1, 3, 5, N}, {2, 4, 3, N}, {3, 4, 5, N}}));
  EXPECT_EQ(as_columns(fresh), children);

  dense2D<unsigned> mixed = conn({{7, 8, 9}}), tri_out = conn({{7, 8, 9}});
  ASSERT_EQ(split_into_linear(strided(mixed_quadratic()), mixed), 0);
  EXPECT_EQ(as_columns(mixed), (cols_t{{7, 8, 9, N},
                                       {0, 12, 11, N},
                                       {1, 10, 12, N},
                                       {2, 11, 10, N},
                                       {10, 11, 12, N},
                                       {1, 20, 23, 10},
                                       {3, 21, 23, 20},
                                       {4, 22, 23, 21},
                                       {2, 10, 23, 22}}));
  // Only T6 parents, still the 3-row output becomes 4 rows.
  ASSERT_EQ(split_into_linear(conn({{0, 1, 2, 3, 4, 5, N, N, N}}), tri_out), 0);
  EXPECT_EQ(tri_out.rows, 4u);
  EXPECT_EQ(tri_out(3, 0), N);
}

TEST(SplitIntoLinear, StatusesInCheckingOrderAndOutOfMemoryLeaveTheOutputUnchanged) {
  dense2D<unsigned> bad_out(5, 1, 0), rows5_no_cols(5, 0);
  EXPECT_EQ(split_into_linear(dense2D<unsigned>(8, 0), bad_out), 0); // empty input: nothing checked
  EXPECT_EQ(split_into_linear(conn({{0, 1, 2, 3, 4, 5, 6, 7}}), bad_out), -1);
  EXPECT_EQ(split_into_linear(conn({{0, 1, 2, 3, 4, 5}}), bad_out), -2);
  EXPECT_EQ(split_into_linear(conn({{0, 1, 2, 3, 4, 5}}), rows5_no_cols), -2); // rows alone are tested
  EXPECT_EQ(bad_out.cols, 1u);

  const auto parents = mixed_quadratic();
  for (const auto& start : {conn({{7, 8, 9}}), conn({{7, 8, 9, 6}})}) {
    const unsigned long walked = sweep_allocation_failures([&](unsigned long n) {
      dense2D<unsigned> out;
      out.copy(start);
      int status = 1;
      const bool failed = fail_during(n, [&] { status = split_into_linear(parents, out); });
      EXPECT_EQ(status == -199, failed);
      EXPECT_EQ(out.cols, failed ? 1u : 9u);
      if (failed) {
        EXPECT_EQ(as_columns(out), as_columns(start));
      }
      return failed;
    });
    EXPECT_GE(walked, 1u);
  }
  // An output without rows cannot be reserved ahead, so a failed append is
  // lost and the call still succeeds; nothing else is disturbed.
  const auto t6s = conn({{0, 1, 2, 3, 4, 5}, {6, 7, 8, 9, 10, 11}, {1, 2, 3, 4, 5, 6}});
  sweep_allocation_failures([&](unsigned long n) {
    dense2D<unsigned> out;
    int status = 1;
    const bool failed = fail_during(n, [&] { status = split_into_linear(t6s, out); });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.rows, 3u);
    EXPECT_GE(out.cols, failed ? 11u : 12u);
    EXPECT_EQ(out(0, 0), 0u);
    return failed;
  });
}

TEST(SplitQ4IntoT3, SplitsAlongDiagonal02CountsQuadranglesAndChecksInOrder) {
  const auto mesh = conn({{0, 1, 2, 3}, {1, 4, 2, N}, {4, 5, 6, 7}});
  dense2D<unsigned> out = conn({{9, 9, 9}}), copied;
  EXPECT_EQ(split_Q4_into_T3(strided(mesh), out), 2);
  EXPECT_EQ(as_columns(out), (cols_t{{9, 9, 9}, {0, 1, 2}, {2, 3, 0}, {1, 4, 2}, {4, 5, 6}, {6, 7, 4}}));
  EXPECT_EQ(split_Q4_into_T3(strided(conn({{0, 1, 2}, {2, 3, 0}})), copied), 0);
  EXPECT_EQ(as_columns(copied), (cols_t{{0, 1, 2}, {2, 3, 0}}));

  dense2D<unsigned> bad_out = conn({{1, 2, 3, 4}}), empty4(4, 0);
  EXPECT_EQ(split_Q4_into_T3(dense2D<unsigned>(7, 0), bad_out), 0);
  EXPECT_EQ(split_Q4_into_T3(dense2D<unsigned>(0, 2), bad_out), -1); // only cols is tested for emptiness
  EXPECT_EQ(split_Q4_into_T3(conn({{0, 1, 2, 3, 4}}), bad_out), -1);
  EXPECT_EQ(split_Q4_into_T3(conn({{0, 1, 2, 3}}), bad_out), -2);
  EXPECT_EQ(split_Q4_into_T3(conn({{0, 1, 2, 3}}), empty4), 1); // an empty output of any rows is taken

  // Both forms, without and with coordinates, leave the output as it was.
  const auto x = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {2, 0}});
  for (const auto& mesh : {conn({{0, 1, 2, 3}, {1, 4, 2, N}}), conn({{0, 1, 2}, {2, 3, 0}})})
    for (bool geometric : {false, true}) {
      sweep_allocation_failures([&](unsigned long n) {
        auto out = conn({{9, 9, 9}});
        int status = 0;
        const bool failed =
            fail_during(n, [&] { status = geometric ? split_Q4_into_T3(x, mesh, out) : split_Q4_into_T3(mesh, out); });
        EXPECT_EQ(out.cols, status == -199 ? 1u : mesh.rows == 4 ? 4u : 3u);
        EXPECT_EQ(out(0, 0), 9u);
        EXPECT_TRUE(status != -199 || failed);
        return failed;
      });
    }
}
