#include <gtest/gtest.h>

#include "foundation/hash_table.h"
#include "foundation/stamped_set.h"
#include "support/allocation_failure.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

// Edge keys of the curvature's hard edges and the search's visited sets.
namespace {
using edge_map = hash_table<triad<pair<edge2, unsigned>, unsigned, unsigned>>;
using id_set = hash_table<triad<unsigned, unsigned, unsigned>>;
using id_map = hash_table<triad<pair<unsigned, unsigned>, unsigned, unsigned>>;
} // namespace

TEST(HashTable, EdgeKeysAreUnorderedAndKeepTheFirstOrientationAndValue) {
  EXPECT_EQ(key_hash(edge2(7, 900)), key_hash(edge2(900, 7)));
  edge_map t(23);
  const auto first = t.insert_checked({{edge2(4, 9), 100}, 0, 0});
  ASSERT_TRUE(first.inserted);
  const auto again = t.insert_checked({{edge2(9, 4), 200}, 0, 0});
  EXPECT_FALSE(again.inserted);
  EXPECT_EQ(again.position, first.position);
  const unsigned at = t.find(edge2(9, 4));
  ASSERT_NE(at, t.end());
  EXPECT_EQ(t[at].first.first.a, 4u); // stored as first met
  EXPECT_EQ(t[at].first.second, 100u);
  EXPECT_EQ(t.find(edge2(4, 10)), t.end());

  // The hot-loop form hands back the same record and says whether it is new.
  bool created = true;
  EXPECT_EQ(t.find_or_insert(key_hash(edge2(9, 4)), {{edge2(9, 4), 300}, 0, 0}, created), &t[at]);
  EXPECT_FALSE(created);
  const auto* r = t.find_or_insert(key_hash(edge2(4, 10)), {{edge2(4, 10), 400}, 0, 0}, created);
  ASSERT_NE(r, nullptr);
  EXPECT_TRUE(created);
  EXPECT_EQ(r->first.second, 400u);
  EXPECT_EQ(t.n_live, 2u);
}

TEST(HashTable, RebuildsAboveLoadTwoKeepMappings) {
  id_map t(23);
  for (unsigned k = 0; k < 46; ++k)
    t.insert_checked({{k * 23, k}, 0, 0}); // one bucket: a long overflow chain
  EXPECT_EQ(t.n_buckets, 23u);
  t.insert_checked({{46 * 23, 46}, 0, 0});
  EXPECT_EQ(t.n_buckets, 53u); // the 47th key
  for (unsigned k = 47; k < 5000; ++k)
    t.insert_checked({{k * 7919u, k}, 0, 0});
  EXPECT_EQ(t.n_live, 5000u);
  for (unsigned k = 0; k < 5000; ++k) {
    const unsigned at = t.find(k < 47 ? k * 23 : k * 7919u);
    ASSERT_NE(at, t.end()) << k;
    EXPECT_EQ(t[at].first.second, k);
  }
}

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
