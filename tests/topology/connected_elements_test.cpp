#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/orientation_meshes.h"
#include "support/surface_meshes.h"
#include "tesskit2d/connectivity.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

using ids = std::vector<unsigned>;

struct table {
  int status;
  ids offsets, elements;
};

table rings(const dense2D<unsigned>& conn, const dense2D<unsigned>& nb, const ids& ancestors) {
  dense1D<unsigned> a(static_cast<unsigned>(ancestors.size())), offsets(3, 5u), elements(3, 5u);
  std::copy(ancestors.begin(), ancestors.end(), a.begin());
  const int status = get_connected_elements(conn, nb, a, offsets, elements);
  return {status, as_vector(offsets), as_vector(elements)};
}

// The ring of `node` alone, from `ancestor`; the other nodes have none.
ids ring(const dense2D<unsigned>& conn, unsigned node, unsigned ancestor, unsigned n_nodes) {
  ids a(n_nodes, null_id);
  a[node] = ancestor;
  const table t = rings(strided(conn), strided(neighbours_of(conn)), a);
  EXPECT_EQ(t.status, 0);
  EXPECT_EQ(t.offsets.size(), n_nodes + 1);
  return t.elements;
}

} // namespace

TEST(ConnectedElements, ClosedRingsStartAtTheAncestorAndFansAtTheirClockwiseEnd) {
  // Round node 4 of a 2 by 2 grid the counter-clockwise order is 0, 3, 6, 7,
  // 4, 1; round node 1 on the lower side it is the fan 2, 3, 0.
  const surface g = triangle_grid(2);
  const ids round_4 = {0, 3, 6, 7, 4, 1};
  for (unsigned k = 0; k < 6; ++k) {
    ids want(round_4.begin() + k, round_4.end());
    want.insert(want.end(), round_4.begin(), round_4.begin() + k);
    EXPECT_EQ(ring(g.conn, 4, round_4[k], 9), want);
  }
  for (unsigned ancestor : {0u, 2u, 3u})
    EXPECT_EQ(ring(g.conn, 1, ancestor, 9), (ids{2, 3, 0}));

  // A closed ring of two quadrangles and two triangles, the node at another
  // corner in each: the triangle rule on a quadrangle would leave the ring.
  const auto mixed = conn({{0, 1, 2, 3}, {0, 3, 4, null_id}, {4, 5, 0, null_id}, {6, 1, 0, 5}});
  EXPECT_EQ(ring(mixed, 0, 0, 7), (ids{0, 1, 2, 3}));
  EXPECT_EQ(ring(mixed, 0, 2, 7), (ids{2, 3, 0, 1}));
  // A mixed strip: a fan through a quadrangle and two triangles.
  EXPECT_EQ(ring(strip(2, true), 1, 0, 6), (ids{1, 2, 0}));
  EXPECT_EQ(ring(strip(2, true), 4, 2, 6), (ids{0, 2}));
}

TEST(ConnectedElements, WholeTableUnusedNodesAndTheSilentStop) {
  const auto tri = conn({{0, 1, 2}});
  const auto free = neighbours_of(tri);
  const table one = rings(tri, free, {0, null_id, 0, 0});
  EXPECT_EQ(one.offsets, (ids{0, 1, 1, 2, 3}));
  EXPECT_EQ(one.elements, (ids{0, 0, 0}));
  EXPECT_EQ(rings(tri, free, {}).offsets, (ids{0}));

  // Node 1's ancestor does not hold it: the table ends after node 1, whose
  // range holds that element, and the call still succeeds.
  const surface g = triangle_grid(2);
  const table t = rings(g.conn, neighbours_of(g.conn), {0, 6, 2, 1, 0, 2, 5, 4, 6});
  EXPECT_EQ(t.status, 0);
  EXPECT_EQ(t.offsets, (ids{0, 2, 3}));
  EXPECT_EQ(t.elements, (ids{0, 1, 6}));
}

TEST(ConnectedElements, StatusesInCheckingOrderLeaveBothOutputsEmpty) {
  const surface g = triangle_grid(2);
  const auto nb = neighbours_of(g.conn);
  // Three triangles round node 0 whose turn slots run 0 -> 1 -> 2 -> 1 ...
  const auto fan = conn({{0, 1, 2}, {0, 2, 3}, {0, 3, 4}});
  const auto looping = conn({{null_id, 1, null_id}, {null_id, 2, null_id}, {null_id, 1, null_id}});
  const struct {
    int status;
    dense2D<unsigned> conn, nb;
    ids ancestors;
  } cases[] = {
      {-1, conn({{0, 1}}), conn({{0, 1}}), {0}},
      {-2, g.conn, conn({{null_id, null_id, null_id, null_id}}), {0}},
      {-2, g.conn, conn({{null_id, null_id, null_id}}), {0}},
      {-3, g.conn, nb, {0, 8}},
      {-2, fan, looping, {0}}, // a rotation that never closes
  };
  for (const auto& c : cases) {
    const table t = rings(c.conn, c.nb, c.ancestors);
    EXPECT_EQ(t.status, c.status);
    EXPECT_EQ(t.offsets.size() + t.elements.size(), 0u);
  }

  const ids ancestors = {0, 0, 2, 1, 0, 2, 5, 4, 6};
  dense1D<unsigned> a(9);
  std::copy(ancestors.begin(), ancestors.end(), a.begin());
  sweep_allocation_failures([&](unsigned long n) {
    dense1D<unsigned> offsets, elements;
    int status = 1;
    const bool failed = fail_during(n, [&] { status = get_connected_elements(g.conn, nb, a, offsets, elements); });
    EXPECT_EQ(status, failed ? -199 : 0);
    EXPECT_EQ(offsets.size + elements.size, failed ? 0u : 10u + 24u);
    return failed;
  });
}
