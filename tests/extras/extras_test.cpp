#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "support/orientation_meshes.h"
#include "tesskit2d/extras.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

TEST(Extras, NeighboursMatchTheEdgeMapOnMixedStripsMoebiusBandsAndStridedViews) {
  // The map-based builder of the test support is the reference: slow, but
  // plainly right.
  const dense2D<unsigned> meshes[] = {make_random_mesh(7, 3).conn, strip(9), strip(8, true), strip(9, false, true),
                                      strip(8, true, true)};
  for (const auto& mesh : meshes) {
    dense2D<unsigned> nb(2, 2, 7u); // rebuilt whatever it held
    EXPECT_EQ(extras::neighbours_of(strided(mesh), nb), 0);
    EXPECT_EQ(as_columns(nb), as_columns(neighbours_of(mesh)));
  }
  // A quadrangle with a triangle on its edge (1, 2) and one on (3, 0).
  const auto mixed = conn({{0, 1, 2, 3}, {2, 1, 4, N}, {0, 3, 5, N}});
  dense2D<unsigned> nb;
  ASSERT_EQ(extras::neighbours_of(mixed, nb), 0);
  EXPECT_EQ(as_columns(nb), (cols_t{{N, 1, N, 2}, {N, N, 0, N}, {N, N, 0, N}}));
  // The same array as input and output.
  auto same = deep(mixed);
  ASSERT_EQ(extras::neighbours_of(same, same), 0);
  EXPECT_EQ(as_columns(same), as_columns(nb));
}

TEST(Extras, NeighboursLeaveNonManifoldEdgesFreeAndRefuseWhatTheyCannotRead) {
  // Three triangles on the edge (0, 1), and a fourth beside the first.
  dense2D<unsigned> nb;
  EXPECT_EQ(extras::neighbours_of(conn({{0, 1, 2}, {1, 0, 3}, {0, 1, 4}, {2, 1, 5}}), nb), 1);
  EXPECT_EQ(as_columns(nb), (cols_t{{3, N, N}, {N, N, N}, {N, N, N}, {N, N, 0}}));
  for (const auto& bad : {dense2D<unsigned>(5, 1, 0u), conn({{0, N, 2, 3}}), conn({{0, 1}})}) {
    nb = dense2D<unsigned>(3, 1, 7u);
    EXPECT_EQ(extras::neighbours_of(bad, nb), -1);
    EXPECT_EQ(nb.cols, 0u);
  }
  EXPECT_EQ(extras::neighbours_of(dense2D<unsigned>(3, 0), nb), 0);
  const auto mesh = make_random_mesh(5, 2).conn;
  expect_all_or_nothing<dense2D<unsigned>>([&](dense2D<unsigned>& out) { return extras::neighbours_of(mesh, out); });
}

TEST(Extras, AncestorsAreFirstHoldersAndUnusedNodesStayNull) {
  dense1D<unsigned> ancestors;
  ASSERT_EQ(extras::ancestors_of(strided(conn({{3, 1, 4, N}, {1, 0, 3, 4}})), 6, ancestors), 0);
  EXPECT_EQ(as_vector(ancestors), (std::vector<unsigned>{1, 0, N, 0, 0, N}));
  EXPECT_EQ(extras::ancestors_of(conn({{0, 1, 6}}), 6, ancestors), -1);
  EXPECT_EQ(ancestors.size, 0u);
}

TEST(Extras, NodeOrdersPutEachMidNodeOnItsEdgeAndComeBack) {
  // Mid node of edge (a, b) numbered 10 a + b, so its place says its edge.
  const auto library = conn({{0, 1, 2, 12, 20, 1, N, N}, {0, 1, 2, 3, 1, 12, 23, 30}});
  auto c = deep(library);
  ASSERT_EQ(extras::to_vtk_order(c), 0);
  EXPECT_EQ(as_columns(c), (cols_t{{0, 1, 2, 1, 12, 20, N, N}, {0, 1, 2, 3, 1, 12, 23, 30}}));
  ASSERT_EQ(extras::from_vtk_order(c), 0);
  EXPECT_EQ(as_columns(c), as_columns(library));
  EXPECT_EQ(extras::vtk_order(4), nullptr);
  auto linear = conn({{0, 1, 2, 3}});
  EXPECT_EQ(extras::to_vtk_order(linear), -1);
  EXPECT_EQ(as_columns(linear), (cols_t{{0, 1, 2, 3}}));
}

TEST(Extras, RenumberingMovesEverythingTogetherAndRefusesWithoutChange) {
  const auto mesh = make_random_mesh(9, 4);
  auto xy = deep(mesh.coords);
  auto c = deep(mesh.conn);
  dense2D<double> field(1, xy.cols);
  for (unsigned k = 0; k < xy.cols; ++k)
    field(0, k) = 3 * xy(0, k) - xy(1, k);
  dense2D<unsigned> nb;
  ASSERT_EQ(extras::neighbours_of(c, nb), 0);
  dense1D<unsigned> nodes, elements;
  ASSERT_EQ(extras::renumber(xy, c, &field, &nb, nodes, elements), 0);
  ASSERT_EQ(nodes.size, xy.cols);
  ASSERT_EQ(elements.size, c.cols);
  for (unsigned k = 0; k < xy.cols; ++k) {
    EXPECT_EQ(xy(0, k), mesh.coords(0, nodes[k]));
    EXPECT_EQ(field(0, k), 3 * xy(0, k) - xy(1, k));
  }
  unsigned previous = 0;
  for (unsigned j = 0; j < c.cols; ++j) {
    unsigned smallest = N;
    for (unsigned r = 0; r < 4; ++r) {
      const unsigned was = mesh.conn(r, elements[j]);
      EXPECT_EQ(c(r, j) == N ? N : nodes[c(r, j)], was);
      if (c(r, j) != N) smallest = std::min(smallest, c(r, j));
    }
    EXPECT_LE(previous, smallest); // elements by their smallest new node
    previous = smallest;
  }
  dense2D<unsigned> fresh;
  ASSERT_EQ(extras::neighbours_of(c, fresh), 0);
  EXPECT_EQ(as_columns(nb), as_columns(fresh));

  struct row {
    unsigned coord_rows, bad_id, field_cols, nb_cols;
    int status;
  };
  for (const row& r : {row{4, 0, 9, 9, -1}, row{2, 9, 9, 9, -2}, row{2, 0, 8, 9, -3}, row{2, 0, 9, 8, -4}}) {
    dense2D<double> x(r.coord_rows, 9, 1.0), f(1, r.field_cols, 2.0);
    auto cc = conn({{0, 1, 2, r.bad_id}, {3, 4, 5, N}});
    dense2D<unsigned> n2(3, r.nb_cols == 9 ? 2 : 1, N);
    EXPECT_EQ(extras::renumber(x, cc, &f, &n2, nodes, elements), r.status);
    EXPECT_EQ(as_columns(cc), (cols_t{{0, 1, 2, r.bad_id}, {3, 4, 5, N}}));
  }
}
