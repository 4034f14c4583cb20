// Raising the order of a mesh.

#include "tesskit2d/high_order.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_high_order(py::module_& m) {
  m.def(
      "convert_into_high_order",
      [](array_arg<double> coords, array_arg<unsigned> conn, unsigned n_edge_nodes, unsigned n_quad_nodes,
         unsigned n_tri_nodes, optional_array<unsigned> edges, bool in_place) {
        auto c = appended_only2(coords, tk_doc::convert_into_high_order_0_name, "coords");
        const auto known = view2(edges, tk_doc::convert_into_high_order_0_name, "edges");
        if (in_place) {
          const char* f = tk_doc::convert_into_high_order_1_name;
          auto e = owned2(conn, f, "conn");
          checked(without_gil([&] {
                    return tk::convert_into_high_order(c, e, n_edge_nodes, n_quad_nodes, n_tri_nodes, known);
                  }),
                  f, tk_doc::convert_into_high_order_1_status);
          return py::make_tuple(to_numpy(c), to_numpy(e));
        }
        const char* f = tk_doc::convert_into_high_order_0_name;
        const auto e = view2(conn, f, "conn");
        dense2D<unsigned> out_conn;
        checked(without_gil([&] {
                  return tk::convert_into_high_order(c, e, n_edge_nodes, n_quad_nodes, n_tri_nodes, out_conn, known);
                }),
                f, tk_doc::convert_into_high_order_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(out_conn));
      },
      "coords"_a, "conn"_a, "n_edge_nodes"_a, "n_quad_nodes"_a, "n_tri_nodes"_a, "edges"_a = py::none(), py::kw_only(),
      "in_place"_a = false,
      doc((std::string(tk_doc::convert_into_high_order_0) + "\nThe in-place form:\n\n" +
           tk_doc::convert_into_high_order_1)
              .c_str(),
          "Returns (coords, out_conn), new arrays; the arguments are not changed. The two C++ forms are one "
          "function here: the keyword in_place=True runs the in-place form on a copy of conn (the results "
          "are the same; only the order of its checks differs). `edges` None means no known edges.")
          .c_str());

  m.def(
      "convert_into_quadratic",
      [](array_arg<double> coords, array_arg<unsigned> conn, optional_array<unsigned> edges) {
        const int form = edges ? 1 : 0;
        const char* f = tk_doc::convert_into_quadratic_0_name;
        auto c = appended_only2(coords, f, "coords");
        auto e = owned2(conn, f, "conn");
        const auto known = view2(edges, f, "edges");
        const int status = without_gil(
            [&] { return form ? tk::convert_into_quadratic(c, e, known) : tk::convert_into_quadratic(c, e); });
        checked(status, f, form ? tk_doc::convert_into_quadratic_1_status : tk_doc::convert_into_quadratic_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(e));
      },
      "coords"_a, "conn"_a, "edges"_a = py::none(),
      doc((std::string(tk_doc::convert_into_quadratic_0) + "\nWith known mid nodes:\n\n" +
           tk_doc::convert_into_quadratic_1)
              .c_str(),
          "Returns (coords, conn), new arrays; the arguments are not changed. Without `edges` (None) the form "
          "without known edges runs, with it the form with known mid nodes.")
          .c_str());
}

} // namespace tk_py
