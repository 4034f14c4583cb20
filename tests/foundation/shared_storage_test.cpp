// Outputs that share storage with an input: the same array, a shallow copy,
// or an emptied view over the input's buffer. Each export must give what it
// gives on separate arrays.

#include <functional>

#include <gtest/gtest.h>

#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "support/orientation_meshes.h"
#include "support/shared_outputs.h"
#include "support/surface_meshes.h"
#include "tesskit2d/connectivity.h"
#include "tesskit2d/extrusion.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"
#include "tesskit2d/linear_reduction.h"
#include "tesskit2d/normals.h"
#include "tesskit2d/offset.h"
#include "tesskit2d/structured.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// A view with no rows or columns at the start of `a`'s buffer, of another
// element type: appending to it writes over `a`.
template <class A, class T = unsigned> dense2D<T> emptied_view_of(const A& a) {
  dense2D<T> v;
  v.buffer = a.buffer;
  v.offset = 0;
  return v;
}

} // namespace

TEST(SharedStorage, EachExportGivesTheResultOfSeparateArrays) {
  const auto mesh = make_random_mesh(3, 7);
  const auto t6 = conn({{0, 1, 2, 3, 4, 5}, {2, 1, 6, 4, 7, 8}});
  const auto line = coords({{0, 0}, {1, 0}, {3, 0}});
  const auto edges = conn({{0, 1}, {1, 2}});
  // Each call runs once with its output over the storage of `in`, in each
  // way a caller can arrange it, and once on separate arrays; the results
  // must agree.
  using C = const dense2D<unsigned>&;
  using O = dense2D<unsigned>&;
  const struct {
    dense2D<unsigned> in;
    std::function<int(C, O)> call;
  } cases[] = {
      {mesh.conn, [](C c, O o) { return split_Q4_into_T3(c, o); }},
      {mesh.conn, [&](C c, O o) { return split_Q4_into_T3(mesh.coords, c, o); }},
      {t6, [](C c, O o) { return split_into_linear(c, o); }},
      {mesh.conn,
       [&](C c, O o) {
         auto xy = deep(mesh.coords);
         return convert_into_high_order(xy, c, 2, 1, 1, o, dense2D<unsigned>());
       }},
      {edges,
       [&](C c, O o) {
         auto xy = deep(line);
         return extrude_translate_T3(xy, c, kelm::vector_fixed<double, 2>{{0, 1}}, 3u, 2, o);
       }},
  };
  for (const auto& k : cases)
    for (const sharing how : every_sharing) {
      SCOPED_TRACE(testing::Message() << &k - cases << " sharing " << static_cast<int>(how));
      auto in = deep(k.in), out = shared_output(in, how);
      auto in_apart = deep(in), out_apart = deep(out);
      const int expected = k.call(in_apart, out_apart);
      EXPECT_EQ(how == sharing::same_array ? k.call(in, in) : k.call(in, out), expected);
      EXPECT_EQ(as_columns(how == sharing::same_array ? in : out), as_columns(out_apart));
    }

  // A boundary loop read while the grid's elements are written into its
  // buffer.
  dense2D<double> square = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  dense1D<unsigned, 8> loop(5);
  for (unsigned k = 0; k < 5; ++k)
    loop[k] = k % 4;
  dense2D<unsigned> apart, into_loop;
  into_loop.buffer = loop.buffer;
  auto square_apart = deep(square);
  ASSERT_EQ(mesh_struct_Q4(square_apart, loop, 1, apart), 0);
  ASSERT_EQ(mesh_struct_Q4(square, loop, 1, into_loop), 0);
  EXPECT_EQ(as_columns(into_loop), as_columns(apart));
}

TEST(SharedStorage, SurfaceOutputsOverTheirInputs) {
  const auto sphere = uv_sphere(6, 4, 2.0);
  // The normals and offsets of a sphere, each with its second array made
  // from `xyz` by an alias, against separate arrays: the normals' output, or
  // the normals that an offset reads while it writes `xyz`.
  struct case_t {
    const char* name;
    bool moves; // the result is in `xyz`
    std::function<dense2D<double>(dense2D<double>&)> alias;
    std::function<int(dense2D<double>&, dense2D<double>&)> call;
  };
  const auto same = [](dense2D<double>& a) { return a; };
  const auto shifted = [](dense2D<double>& a) { // node i reads the column of node i + 1
    dense2D<double> v(a);
    v.offset += a.ld;
    return v;
  };
  const auto emptied = [](dense2D<double>& a) { return shared_output(a, sharing::emptied_view); };
  const auto& conn = sphere.conn;
  const case_t cases[] = {
      {"node normals on coords", false, same,
       [&](dense2D<double>& x, dense2D<double>& o) { return normals(x, conn, 1.0, false, o); }},
      {"node normals into its buffer", false, emptied,
       [&](dense2D<double>& x, dense2D<double>& o) { return normals(x, conn, 1.0, true, o); }},
      {"element normals on coords", false, same,
       [&](dense2D<double>& x, dense2D<double>& o) { return normals(x, conn, true, o); }},
      {"offset by coords shifted", true, shifted,
       [&](dense2D<double>& x, dense2D<double>& n) { return offset(x, conn, n, 0.5); }},
      {"copy offset by coords", true, same,
       [&](dense2D<double>& x, dense2D<double>& n) {
         dense2D<unsigned> out;
         return copy_with_offset(x, conn, n, 0.5, out);
       }},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    auto x = deep(sphere.xyz);
    // Room to grow over, and one column past the last node for the
    // shifted view to read.
    const unsigned n = x.cols;
    x.reserve(3, 2 * n);
    x.resize(3, n + 1, 1.0);
    x.resize(3, n);
    auto o = k.alias(x);
    auto x_apart = deep(x), o_apart = deep(o);
    const int expected = k.call(x_apart, o_apart);
    ASSERT_EQ(expected, 0);
    EXPECT_EQ(k.call(x, o), expected);
    if (k.moves)
      EXPECT_EQ(as_columns(x), as_columns(x_apart));
    else
      EXPECT_EQ(as_columns(o), as_columns(o_apart));
  }

  // The distance form empties `conn_out` on entry, but not when it is `conn`.
  auto x = deep(sphere.xyz), x_apart = deep(x);
  auto c = deep(conn);
  dense2D<unsigned> c_apart;
  ASSERT_EQ(copy_with_offset(x_apart, conn, 1.0, c_apart), 0);
  EXPECT_EQ(copy_with_offset(x, c, 1.0, c), 0);
  EXPECT_EQ(as_columns(c), as_columns(c_apart));
  EXPECT_EQ(as_columns(x), as_columns(x_apart));

  // Rings written over the ancestors and the connectivity they are read from.
  auto neighbours = neighbours_of(conn);
  dense1D<unsigned> ancestors(sphere.xyz.cols);
  for (unsigned j = conn.cols; j-- > 0;)
    for (unsigned r = 0; r < 4; ++r)
      if (conn(r, j) != null_id) ancestors[conn(r, j)] = j;
  dense1D<unsigned> offsets, elements;
  ASSERT_EQ(get_connected_elements(conn, neighbours, ancestors, offsets, elements), 0);
  auto c2 = deep(conn);
  dense1D<unsigned> on_ancestors(ancestors), over_conn(emptied_view_of(c2));
  ancestors.copy(dense1D<unsigned>(ancestors)); // the outputs hold it still
  EXPECT_EQ(get_connected_elements(c2, neighbours, on_ancestors, on_ancestors, over_conn), 0);
  EXPECT_EQ(as_vector(on_ancestors), as_vector(offsets));
  EXPECT_EQ(as_vector(over_conn), as_vector(elements));
  // Two outputs over one storage cannot both hold their result.
  dense1D<unsigned> one(4), other(one);
  EXPECT_EQ(get_connected_elements(conn, neighbours, ancestors, one, other), -4);

  // Cut columns written where the quadrangles are: refused, nothing changed.
  auto quads = make_random_mesh(3, 7, 1.0);
  dense1D<unsigned, 8> over_quads(emptied_view_of(quads.conn)), candidates(quads.conn);
  const auto before = as_columns(quads.conn);
  EXPECT_EQ(split_Q4_into_T3(quads.coords, 1.0, 0.0, 0.0, 0, dense1D<unsigned, 8>(), over_quads, quads.conn), -7);
  EXPECT_EQ(as_columns(quads.conn), before);
  // Candidates read from the array that grows are read in full first.
  auto apart = deep(quads.conn);
  candidates.size = 2;
  dense1D<unsigned, 8> cut, cut_apart;
  dense1D<unsigned, 8> listed(2);
  listed[0] = candidates[0], listed[1] = candidates[1];
  const int n_cut = split_Q4_into_T3(quads.coords, 1.0, 0.0, 0.0, 0, listed, cut_apart, apart);
  EXPECT_EQ(split_Q4_into_T3(quads.coords, 1.0, 0.0, 0.0, 0, candidates, cut, quads.conn), n_cut);
  EXPECT_EQ(as_columns(quads.conn), as_columns(apart));
}
