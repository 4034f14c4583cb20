// Splitting with geometry: into quadrangles, and quadrangles into triangles.

#include "tesskit2d/geometric_split.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_geometric_split(py::module_& m) {
  m.def(
      "split_into_Q4",
      [](array_arg<double> coords, array_arg<unsigned> conn, optional_array<unsigned> edges,
         optional_array<unsigned> out_conn) {
        const char* f = tk_doc::split_into_Q4_0_name;
        auto c = owned2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        auto o = owned2(out_conn, f, "out_conn");
        const auto known = view2(edges, f, "edges");
        checked(without_gil([&] { return tk::split_into_Q4(c, e, o, known); }), f, tk_doc::split_into_Q4_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(o));
      },
      "coords"_a, "conn"_a, "edges"_a = py::none(), py::kw_only(), "out_conn"_a = py::none(),
      doc(tk_doc::split_into_Q4_0,
          "Returns (coords, out_conn), new arrays: coords with the new nodes, and a copy of the keyword "
          "`out_conn` (default empty) with the quadrangles appended. `edges` None means no known edges.")
          .c_str());

  m.def(
      "split_Q4_into_T3",
      [](array_arg<double> coords, array_arg<unsigned> conn, optional_array<unsigned> out_conn) {
        const char* f = tk_doc::split_Q4_into_T3_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        auto o = owned2(out_conn, f, "out_conn");
        const int n =
            checked(without_gil([&] { return tk::split_Q4_into_T3(c, e, o); }), f, tk_doc::split_Q4_into_T3_0_status);
        return py::make_tuple(n, to_numpy(o));
      },
      "coords"_a, "conn"_a, py::kw_only(), "out_conn"_a = py::none(),
      doc(tk_doc::split_Q4_into_T3_0,
          "Form with coords (two positional arrays). Returns (count, out_conn): a copy of the keyword "
          "`out_conn` (default empty) with the triangles appended.")
          .c_str());

  m.def(
      "split_Q4_into_T3",
      [](array_arg<double> coords, double max_angle, double max_warp, double min_jacobian, int diagonal,
         array_arg<unsigned> candidates, array_arg<unsigned> conn) {
        const char* f = tk_doc::split_Q4_into_T3_1_name;
        const auto c = view2(coords, f, "coords");
        const auto chosen = view1(candidates, f, "candidates");
        auto e = owned2(conn, f, "conn");
        dense1D<unsigned, 8> split;
        const int n =
            checked(without_gil([&] {
                      return tk::split_Q4_into_T3(c, max_angle, max_warp, min_jacobian, diagonal, chosen, split, e);
                    }),
                    f, tk_doc::split_Q4_into_T3_1_status);
        return py::make_tuple(n, to_numpy(split), to_numpy(e));
      },
      "coords"_a, "max_angle"_a, "max_warp"_a, "min_jacobian"_a, "diagonal"_a, "candidates"_a, "conn"_a,
      doc(tk_doc::split_Q4_into_T3_1,
          "Form with limits (seven arguments). Returns (count, split, conn): the cut columns and a new conn; "
          "the argument conn is not changed.")
          .c_str());
}

} // namespace tk_py
