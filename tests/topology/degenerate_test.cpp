#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/degenerate.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

TEST(DegenerateQuadrangles, FirstMatchingAdjacentPairCollapses) {
  const auto mesh = conn({{1, 1, 2, 3},   // 0 = 1
                          {4, 5, 5, 6},   // 1 = 2
                          {4, 5, 6, 6},   // 2 = 3
                          {7, 5, 6, 7},   // 0 = 3
                          {7, 7, 7, 7},   // all equal: the first rule
                          {1, 2, 1, 3},   // diagonal pair only: stays
                          {1, 1, 2, N},   // a triangle: never touched
                          {8, 8, 9, 9}}); // two pairs: one collapse
  const cols_t expected{{1, 2, 3, N}, {4, 5, 6, N}, {4, 5, 6, N}, {7, 5, 6, N},
                        {7, 7, 7, N}, {1, 2, 1, 3}, {1, 1, 2, N}, {8, 9, 9, N}};
  for (bool stride : {false, true})
    for (bool listed : {false, true}) { // convert_degenerated_Q lists what it converted
      auto a = stride ? strided(mesh) : deep(mesh);
      dense1D<unsigned> converted(3, 99u);
      EXPECT_EQ(listed ? convert_degenerated_Q(a, converted) : convert_degenerated_Q4(a), 6);
      EXPECT_EQ(as_columns(a), expected);
      EXPECT_EQ(as_vector(converted),
                listed ? (std::vector<unsigned>{0, 1, 2, 3, 4, 7}) : std::vector<unsigned>(3, 99u));
      EXPECT_EQ(listed ? convert_degenerated_Q(a, converted) : convert_degenerated_Q4(a), 0); // stable
      EXPECT_EQ(as_columns(a), expected);
      EXPECT_EQ(converted.size, listed ? 0u : 3u);
    }
}

TEST(DegenerateQuadrangles, QuadraticColumnsBecomeT6WithSurvivingMidNodes) {
  // Mid node of edge e is 10 + e, the centre 20; the collapsed pair varies.
  const auto mesh = conn({{0, 0, 2, 3, 10, 11, 12, 13, 20},
                          {0, 1, 1, 3, 10, 11, 12, 13, 20},
                          {0, 1, 2, 2, 10, 11, 12, 13, 20},
                          {0, 1, 2, 0, 10, 11, 12, 13, 20},
                          {0, 1, 2, 3, 10, 11, 12, 13, 20},
                          {0, 1, 2, 4, 5, 6, N, N, N}}); // a T6 already
  dense1D<unsigned> converted;
  auto a = strided(mesh);
  EXPECT_EQ(convert_degenerated_Q(a, converted), 4);
  EXPECT_EQ(as_vector(converted), (std::vector<unsigned>{0, 1, 2, 3}));
  EXPECT_EQ(as_columns(a), (cols_t{{0, 2, 3, 12, 13, 11, N, N, N},
                                   {0, 1, 3, 12, 13, 10, N, N, N},
                                   {0, 1, 2, 11, 13, 10, N, N, N},
                                   {0, 1, 2, 11, 12, 10, N, N, N},
                                   {0, 1, 2, 3, 10, 11, 12, 13, 20},
                                   {0, 1, 2, 4, 5, 6, N, N, N}}));

  dense2D<unsigned> q8 = conn({{5, 6, 7, 7, 10, 11, 12, 13}});
  EXPECT_EQ(convert_degenerated_Q(q8, converted), 1);
  EXPECT_EQ(as_columns(q8), (cols_t{{5, 6, 7, 11, 13, 10, N, N}}));
}

TEST(DegenerateQuadrangles, StatusesAndRefusalsLeaveEverythingAsItWas) {
  dense1D<unsigned> converted(2, 7u);
  auto t3 = conn({{1, 1, 2}});
  EXPECT_EQ(convert_degenerated_Q4(t3), -1);
  EXPECT_EQ(convert_degenerated_Q(t3, converted), -1);
  EXPECT_EQ(converted.size, 0u);
  EXPECT_EQ(as_columns(t3), (cols_t{{1, 1, 2}}));
  auto q8 = conn({{1, 1, 2, 3, 4, 5, 6, 7}});
  EXPECT_EQ(convert_degenerated_Q4(q8), -1);
  dense2D<unsigned> empty(3, 0);
  converted.size = 2;
  EXPECT_EQ(convert_degenerated_Q4(empty), 0); // emptiness comes before the rows
  EXPECT_EQ(convert_degenerated_Q(empty, converted), 0);
  EXPECT_EQ(converted.size, 0u);
}

TEST(DegenerateQuadrangles, ListThatCannotGrowMissesColumnsButConnIsConverted) {
  sweep_allocation_failures([&](unsigned long n) {
    auto a = conn({{1, 1, 2, 3}, {4, 5, 6, 7}, {4, 4, 6, 7}});
    dense1D<unsigned> converted;
    int status = 0;
    const bool failed = fail_during(n, [&] { status = convert_degenerated_Q(a, converted); });
    EXPECT_EQ(as_columns(a), (cols_t{{1, 2, 3, N}, {4, 5, 6, 7}, {4, 6, 7, N}}));
    EXPECT_EQ(status, static_cast<int>(converted.size));
    EXPECT_EQ(status, failed ? 1 : 2);
    return failed;
  });
}
