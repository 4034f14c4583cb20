// Outputs that share storage with an input: the same array, a shallow copy,
// or an emptied view over the input's buffer. Each export must give what it
// gives on separate arrays.

#include <functional>

#include <gtest/gtest.h>

#include "support/arrays.h"
#include "support/conversion_meshes.h"
#include "tesskit2d/extrusion.h"
#include "tesskit2d/geometric_split.h"
#include "tesskit2d/high_order.h"
#include "tesskit2d/linear_reduction.h"
#include "tesskit2d/structured.h"

using namespace tk_test;
using namespace kelm::tesskit2d;

namespace {

// A view with no rows or columns at the start of `a`'s buffer: appending to
// it writes over `a`.
template <class A> dense2D<unsigned> emptied_view_of(const A& a) {
  dense2D<unsigned> v;
  v.buffer = a.buffer;
  v.offset = 0;
  return v;
}

template <class T> dense2D<T> deep_copy(const dense2D<T>& a) {
  dense2D<T> d;
  d.copy(a);
  return d;
}

} // namespace

TEST(SharedStorage, EachExportGivesTheResultOfSeparateArrays) {
  const auto mesh = make_random_mesh(3, 7);
  const auto t6 = conn({{0, 1, 2, 3, 4, 5}, {2, 1, 6, 4, 7, 8}});
  const auto line = coords({{0, 0}, {1, 0}, {3, 0}});
  const auto edges = conn({{0, 1}, {1, 2}});
  // Each case runs the call once with the output made from `in` by `alias`,
  // and once on separate arrays holding the same values, and compares.
  struct case_t {
    const char* name;
    dense2D<unsigned> in;
    std::function<dense2D<unsigned>(dense2D<unsigned>&)> alias;
    std::function<int(const dense2D<unsigned>&, dense2D<unsigned>&)> call;
  };
  const auto same = [](dense2D<unsigned>& a) { return a; };
  const auto emptied = [](dense2D<unsigned>& a) { return emptied_view_of(a); };
  const case_t cases[] = {
      {"split_Q4_into_T3 on itself", conn({{0, 1, 2}, {2, 1, 3}}), same,
       [](const dense2D<unsigned>& c, dense2D<unsigned>& o) { return split_Q4_into_T3(c, o); }},
      {"split_Q4_into_T3 into its buffer", mesh.conn, emptied,
       [](const dense2D<unsigned>& c, dense2D<unsigned>& o) { return split_Q4_into_T3(c, o); }},
      {"geometric split on itself", conn({{0, 1, 2}, {2, 1, 3}}), same,
       [&](const dense2D<unsigned>& c, dense2D<unsigned>& o) { return split_Q4_into_T3(mesh.coords, c, o); }},
      {"geometric split into its buffer", mesh.conn, emptied,
       [&](const dense2D<unsigned>& c, dense2D<unsigned>& o) { return split_Q4_into_T3(mesh.coords, c, o); }},
      {"split_into_linear into its buffer", t6, emptied,
       [](const dense2D<unsigned>& c, dense2D<unsigned>& o) { return split_into_linear(c, o); }},
      {"raising into a shallow copy", mesh.conn, same,
       [&](const dense2D<unsigned>& c, dense2D<unsigned>& o) {
         auto xy = deep_copy(mesh.coords);
         return convert_into_high_order(xy, c, 2, 1, 1, o, dense2D<unsigned>());
       }},
      {"sweep into its buffer", edges, emptied,
       [&](const dense2D<unsigned>& c, dense2D<unsigned>& o) {
         auto xy = deep_copy(line);
         return extrude_translate_T3(xy, c, kelm::vector_fixed<double, 2>{{0, 1}}, 3u, 2, o);
       }},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(k.name);
    auto in = deep_copy(k.in);
    auto out = k.alias(in);
    auto in_apart = deep_copy(in), out_apart = deep_copy(out);
    const int expected = k.call(in_apart, out_apart);
    EXPECT_EQ(k.call(in, out), expected);
    EXPECT_EQ(as_columns(out), as_columns(out_apart));
  }

  // A boundary loop read while the grid's elements are written into its
  // buffer.
  dense2D<double> square = coords({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
  dense1D<unsigned, 8> loop(5);
  for (unsigned k = 0; k < 5; ++k)
    loop[k] = k % 4;
  dense2D<unsigned> apart, into_loop;
  into_loop.buffer = loop.buffer;
  auto square_apart = deep_copy(square);
  ASSERT_EQ(mesh_struct_Q4(square_apart, loop, 1, apart), 0);
  ASSERT_EQ(mesh_struct_Q4(square, loop, 1, into_loop), 0);
  EXPECT_EQ(as_columns(into_loop), as_columns(apart));
}
