#include <gtest/gtest.h>

#include "foundation/hash_table.h"
#include "foundation/stamped_set.h"
#include "support/allocation_failure.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

// Keys, rebuilds and edge orientation are checked through the edge numbering
// of the raised meshes; here, what only a failed allocation or a wrapped
// stamp reaches.
namespace {
using id_set = hash_table<triad<unsigned, unsigned, unsigned>>;
using id_map = hash_table<triad<pair<unsigned, unsigned>, unsigned, unsigned>>;
} // namespace

TEST(HashTable, OutOfMemoryIsReportedAndTheOldTableStands) {
  id_map t(23);
  for (unsigned k = 0; k < 30; ++k)
    t.insert_checked({{k, k + 1}, 0, 0});
  EXPECT_TRUE(fail_during(0, [&] { EXPECT_FALSE(t.reserve(5000)); }));
  EXPECT_EQ(t.n_buckets, 23u);
  EXPECT_EQ(t[t.find(29)].first.second, 30u);

  // A full overflow area that cannot grow: no record, and the key count
  // does not move.
  id_set s(23);
  unsigned k = 0;
  for (; s.used < s.records->capacity; k += 23)
    s.insert(k, {k, 0, 0});
  const unsigned live = s.n_live;
  bool created = true;
  const void* r = &s;
  EXPECT_TRUE(fail_during(0, [&] { r = s.find_or_insert(k, {k, 0, 0}, created); }));
  EXPECT_EQ(r, nullptr);
  EXPECT_FALSE(created);
  EXPECT_EQ(s.n_live, live);
}

TEST(StampedSet, ClearIsANewGenerationUntilTheStampWraps) {
  stamped_set s;
  ASSERT_TRUE(s.resize(10));
  s.clear();
  s.insert(4);
  EXPECT_TRUE(s.contains(4));
  s.clear();
  EXPECT_FALSE(s.contains(4));
  s.insert(7);
  s.stamp = 0xFFFFFFFFu;
  s.insert(3);
  s.clear();
  EXPECT_EQ(s.stamp, 1u);
  for (unsigned i = 0; i < 10; ++i)
    EXPECT_EQ(s.marks[i], 0u) << i; // a stale mark must not come back at stamp 1
}
