#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "tesskit/check_IDs.h"

using namespace tk_test;

TEST(Buffer, GrowthIsSeenByEveryViewAndCallerStorageIsUsedInPlaceAndNeverFreed) {
  dense1D<double, 8> a;
  dense1D<double, 8> b(a);
  for (int k = 0; k < 100; ++k)
    a.push_back(k + 1.5);
  EXPECT_TRUE(b.buffer->data == a.buffer->data && b.buffer->data[0] == 1.5 && a.buffer->count.load() == 2u);

  double xy[6] = {0, 0, 1, 0, 0, 1};
  {
    auto v = dense2D<double>::view(xy, 2, 3);
    v(1, 2) = 2.0;
    EXPECT_EQ(xy[5], 2.0);
    ASSERT_TRUE(v.resize(2, 40)); // moves into storage of its own
    EXPECT_NE(v.buffer->data, xy);
    EXPECT_EQ(v(1, 2), 2.0);
    v(0, 0) = 5.0;
  }
  EXPECT_EQ(xy[0], 0.0); // the caller's storage is left alone once moved
}

TEST(Buffer, FailedGrowthChangesNothing) {
  const cols_t before{{1, 2, 3}, {4, 5, 6}};
  for (bool reserve : {false, true})
    sweep_allocation_failures([&](unsigned long n) {
      dense2D<unsigned> a = conn({{1, 2, 3}, {4, 5, 6}});
      const unsigned* data = a.buffer->data;
      bool ok = false;
      const bool failed = fail_during(n, [&] { ok = reserve ? a.reserve(5, 100) : a.resize(4, 1000, 0); });
      EXPECT_EQ(ok, !failed);
      if (failed || reserve) {
        EXPECT_EQ(a.buffer->data == data, failed);
        EXPECT_EQ(a.ld, failed ? 3u : 5u);
        EXPECT_EQ(as_columns(a), before);
      }
      return failed;
    });
  sweep_allocation_failures([](unsigned long n) {
    dense1D<double, 8> v(3, 2.5);
    const auto capacity = v.buffer->capacity;
    bool ok = false;
    const bool failed = fail_during(n, [&] { ok = v.buffer->__grow(1000, 3, 2); });
    EXPECT_EQ(ok, !failed);
    EXPECT_EQ(v.buffer->capacity, ok ? 1000u : capacity);
    EXPECT_EQ(as_vector(v), std::vector<double>(3, 2.5));
    return failed;
  });
  // Sizes that do not fit in 32 bits are refused without asking for memory.
  dense1D<double, 8> big;
  EXPECT_FALSE(big.buffer->__grow(0x20000000u, 0, 1));
}

TEST(Buffer, GrownStorageReadsZeroAndKeepsItsContentOnBothSidesOfTheMappedSize) {
  // From 4 KiB on the heap through 1 MiB and 24 MiB, which are mapped on
  // their own: every size reads zero where it was not written, keeps what
  // it was grown from, and is given back (the sanitizers see a wrong free).
  dense1D<double, 8> v(3, 2.5);
  for (unsigned n : {512u, 1u << 17, 3u << 20}) {
    ASSERT_TRUE(v.buffer->__grow(n, 3, 1));
    const double* d = v.buffer->data;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(d) % 16, 0u);
    EXPECT_EQ(d[2], 2.5);
    EXPECT_EQ(d[3], 0.0);
    EXPECT_EQ(d[n / 2], 0.0);
    EXPECT_EQ(d[v.buffer->capacity - 1], 0.0);
  }
}

TEST(CheckIDs, ShapeBoundsAndNullRows) {
  using kelm::tesskit::check_IDs;
  const auto quads = conn({{0, 1, 2, 3}, {1, 2, 3, null_id}});
  EXPECT_TRUE(check_IDs(quads, kelm::MIXED, 4));
  EXPECT_FALSE(check_IDs(quads, kelm::MIXED, 3));
  EXPECT_FALSE(check_IDs(quads, kelm::Q4, 4)); // null_id is no node of a Q4
  EXPECT_FALSE(check_IDs(quads, kelm::T3, 4)); // wrong rows
  EXPECT_TRUE(check_IDs(strided(conn({{0, 1}, {1, 2}})), kelm::E2, 3));
  EXPECT_FALSE(check_IDs(conn({{0, 1}, {1, null_id}}), kelm::E2, 0xFFFFFFFFu));
  EXPECT_TRUE(check_IDs(conn({{0, 1}, {1, 7}}), kelm::E2, 0xFFFFFFFFu));
  EXPECT_TRUE(check_IDs(conn({{0, null_id, 2}}), 3));
  EXPECT_FALSE(check_IDs(conn({{0, 3, 2}}), 3));
  dense1D<unsigned, 8> ids(3, 2);
  EXPECT_TRUE(check_IDs(ids, 3));
  ids[1] = 3;
  EXPECT_FALSE(check_IDs(ids, 3));
}
