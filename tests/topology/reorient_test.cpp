#include <random>

#include <gtest/gtest.h>

#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/orientation.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

bool same_orientation(const unsigned* a, const unsigned* b) { return a[0] == b[0] && a[1] == b[1] && a[2] == b[2]; }

// Two strips side by side with no node in common, as one array.
dense2D<unsigned> two_parts(const dense2D<unsigned>& part, unsigned node_shift) {
  dense2D<unsigned> both(part.rows, 2 * part.cols);
  for (unsigned j = 0; j < part.cols; ++j)
    for (unsigned i = 0; i < part.rows; ++i) {
      both(i, j) = part(i, j);
      both(i, j + part.cols) = part(i, j) == null_id ? null_id : part(i, j) + node_shift;
    }
  return both;
}

void flip_column(dense2D<unsigned>& c, unsigned j) { std::swap(c(0, j), c(2, j)); }

} // namespace

TEST(MeshReorient, RandomlyFlippedStripsBecomeCoherentAroundTheSeedAndAMoebiusBandKeepsOneSeam) {
  std::mt19937 random(7);
  for (bool mixed : {false, true})
    for (unsigned seed : {0u, 5u}) {
      const auto coherent = strip(9, mixed);
      auto c = deep(coherent);
      unsigned flipped = 0;
      for (unsigned j = 0; j < c.cols; ++j)
        if (random() % 2) {
          flip_column(c, j);
          ++flipped;
        }
      const bool seed_flipped = !same_orientation(c.column(seed), coherent.column(seed));
      const unsigned expected = seed_flipped ? c.cols - flipped : flipped;
      auto nb = neighbours_of(c);
      auto sc = strided(c), snb = strided(nb);
      EXPECT_EQ(mesh_reorient(sc, snb, seed, 0), int(expected));
      EXPECT_EQ(disagreeing_edges(sc), 0u);
      // Neighbour slots moved with the edges of every flipped element.
      EXPECT_EQ(as_columns(snb), as_columns(neighbours_of(sc)));
      EXPECT_TRUE(same_orientation(sc.column(seed), c.column(seed)));
    }
  // A Moebius band cannot be made coherent: the walk ends without error and
  // leaves one seam.
  for (bool mixed : {false, true}) {
    auto c = strip(8, mixed, true);
    auto nb = neighbours_of(c);
    EXPECT_GE(mesh_reorient(c, nb, 0, 1), 0);
    EXPECT_EQ(disagreeing_edges(c), 1u);
    EXPECT_EQ(as_columns(nb), as_columns(neighbours_of(c)));
  }
}

TEST(MeshReorient, FurtherPartsAreReachedOnlyUpwardFromTheSeed) {
  // Each part has its first element flipped against the rest.
  auto part = strip(3);
  flip_column(part, 0);
  const auto mesh = two_parts(part, 100);
  const unsigned half = part.cols;
  const auto nb0 = neighbours_of(mesh);

  auto c = deep(mesh), nb = deep(nb0);
  EXPECT_EQ(mesh_reorient(c, nb, 0, 1), 2 * int(half - 1)); // both parts follow their first element
  EXPECT_EQ(disagreeing_edges(c), 0u);

  c.copy(mesh), nb.copy(nb0); // only the seed's part
  EXPECT_EQ(mesh_reorient(c, nb, 0, 0), int(half - 1));
  for (unsigned j = half; j < 2 * half; ++j)
    EXPECT_TRUE(same_orientation(c.column(j), mesh.column(j)));

  // Seeded in the second part, the first lies wholly below and stays.
  c.copy(mesh), nb.copy(nb0);
  EXPECT_EQ(mesh_reorient(c, nb, half + 1, 1), 1);
  for (unsigned j = 0; j < half; ++j)
    EXPECT_TRUE(same_orientation(c.column(j), mesh.column(j)));
  EXPECT_EQ(as_columns(nb), as_columns(neighbours_of(c)));
}

TEST(MeshReorient, MismatchesAreCountedFromMinusTwoAndOutOfRangeNeighboursIgnored) {
  // Element 0 lists element 1, which shares no node, then element 2; the
  // mismatch ends element 0's slots. Element 1 then reaches element 2 and
  // flips it, which lifts the count from -2 to -1. Element 2's entries of 7
  // name no element.
  auto c = conn({{0, 1, 2}, {5, 6, 7}, {6, 7, 8}});
  auto nb = conn({{1, 2, null_id}, {2, null_id, null_id}, {7, 7, 1}});
  EXPECT_EQ(mesh_reorient(c, nb, 0, 0), -1);
  EXPECT_EQ(as_columns(c), (cols_t{{0, 1, 2}, {5, 6, 7}, {8, 7, 6}}));
  EXPECT_EQ(as_columns(nb), (cols_t{{1, 2, null_id}, {2, null_id, null_id}, {1, 7, 7}}));

  // A triangle in a mixed array has no slot 3: an element listed there is
  // a mismatch.
  auto m = conn({{0, 1, 2, null_id}, {2, 1, 3, 4}});
  auto mnb = conn({{null_id, null_id, null_id, 1}, {null_id, null_id, null_id, null_id}});
  EXPECT_EQ(mesh_reorient(m, mnb, 0, 0), -2);
}

TEST(MeshReorient, StatusesInCheckingOrderLeaveTheArraysUnchanged) {
  dense2D<unsigned> empty(3, 0), bad_nb(5, 7, 0u);
  EXPECT_EQ(mesh_reorient(empty, bad_nb, 1000, 1), 0);
  auto two = conn({{0, 1}}), nb2 = conn({{0, 0}}), missing = conn({{0, null_id, 2}}), t3 = conn({{0, 1, 2}});
  auto nb3 = conn({{null_id, null_id, null_id}}), nb4 = conn({{null_id, null_id, null_id, null_id}});
  auto nb3_2 = conn({{null_id, null_id, null_id}, {null_id, null_id, null_id}});
  EXPECT_EQ(mesh_reorient(two, nb2, 0, 0), -1);
  EXPECT_EQ(mesh_reorient(missing, nb3, 0, 0), -1);
  EXPECT_EQ(mesh_reorient(t3, nb4, 5, 0), -2);
  EXPECT_EQ(mesh_reorient(t3, nb3_2, 0, 0), -2);
  EXPECT_EQ(mesh_reorient(t3, nb3, 1, 0), -3);
  EXPECT_EQ(as_columns(t3), (cols_t{{0, 1, 2}}));
}
