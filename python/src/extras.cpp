// The companion library's tables and node orders, as tesskit2d.extras.

#include <vector>

#include "arrays.h"
#include "families.h"
#include "tesskit2d/extras.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace ex = kelm::tesskit2d::extras;
using namespace pybind11::literals;

namespace {

py::object order_list(const unsigned* order, unsigned rows) {
  if (!order) return py::none();
  return py::cast(std::vector<unsigned>(order, order + rows));
}

// The order functions rewrite a copy: the caller's array stays as it was.
template <int (*Reorder)(kelm::dense2D<unsigned>&)>
py::array reordered(array_arg<unsigned> conn, const char* f, const tk_doc::status_text* table) {
  auto c = owned2(conn, f, "conn");
  checked(Reorder(c), f, table);
  return to_numpy(c);
}

} // namespace

void bind_extras(py::module_& parent) {
  py::module_ m = parent.def_submodule("extras", "Neighbour and ancestor tables, and other programs' node orders.");
  m.def(
      "neighbours_of",
      [](array_arg<unsigned> conn) {
        const char* f = tk_doc::neighbours_of_0_name;
        const auto c = view2(conn, f, "conn");
        kelm::dense2D<unsigned> neighbours;
        const int n =
            checked(without_gil([&] { return ex::neighbours_of(c, neighbours); }), f, tk_doc::neighbours_of_0_status);
        return py::make_tuple(n, to_numpy(neighbours));
      },
      "conn"_a,
      doc(tk_doc::neighbours_of_0, "Returns (non_manifold_edges, neighbours), neighbours shaped like conn.").c_str());
  m.def(
      "ancestors_of",
      [](array_arg<unsigned> conn, unsigned n_nodes) {
        const char* f = tk_doc::ancestors_of_0_name;
        const auto c = view2(conn, f, "conn");
        kelm::dense1D<unsigned> ancestors;
        checked(without_gil([&] { return ex::ancestors_of(c, n_nodes, ancestors); }), f, tk_doc::ancestors_of_0_status);
        return to_numpy(ancestors);
      },
      "conn"_a, "n_nodes"_a, doc(tk_doc::ancestors_of_0, "Returns ancestors, of shape (n_nodes,).").c_str());
  m.def(
      "renumber",
      [](array_arg<double> coords, array_arg<unsigned> conn, optional_array<double> field,
         optional_array<unsigned> neighbours) {
        const char* f = tk_doc::renumber_0_name;
        auto c = owned2(coords, f, "coords");
        auto e = owned2(conn, f, "conn");
        auto values = owned2(field, f, "field");
        auto table = owned2(neighbours, f, "neighbours");
        kelm::dense1D<unsigned> nodes, elements;
        checked(without_gil([&] {
                  return ex::renumber(c, e, field ? &values : nullptr, neighbours ? &table : nullptr, nodes, elements);
                }),
                f, tk_doc::renumber_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(e), field ? py::object(to_numpy(values)) : py::none(),
                              neighbours ? py::object(to_numpy(table)) : py::none(), to_numpy(nodes),
                              to_numpy(elements));
      },
      "coords"_a, "conn"_a, "field"_a = py::none(), "neighbours"_a = py::none(),
      doc(tk_doc::renumber_0, "Returns (coords, conn, field, neighbours, node_order, element_order), new arrays "
                              "(field and neighbours None when not given); the arguments are not changed. field "
                              "is (#nodes, r).")
          .c_str());
  m.def(
      "vtk_order", [](unsigned rows) { return order_list(ex::vtk_order(rows), rows); }, "rows"_a,
      doc(tk_doc::vtk_order_0, "Returns a list of `rows` row numbers, or None.").c_str());
  m.def(
      "library_order", [](unsigned rows) { return order_list(ex::library_order(rows), rows); }, "rows"_a,
      doc(tk_doc::library_order_0, "Returns a list of `rows` row numbers, or None.").c_str());
  m.def(
      "to_vtk_order",
      [](array_arg<unsigned> conn) {
        return reordered<ex::to_vtk_order>(conn, tk_doc::to_vtk_order_0_name, tk_doc::to_vtk_order_0_status);
      },
      "conn"_a,
      doc(tk_doc::to_vtk_order_0, "Returns the reordered cells as a new array; `conn` is unchanged.").c_str());
  m.def(
      "from_vtk_order",
      [](array_arg<unsigned> conn) {
        return reordered<ex::from_vtk_order>(conn, tk_doc::from_vtk_order_0_name, tk_doc::from_vtk_order_0_status);
      },
      "conn"_a,
      doc(tk_doc::from_vtk_order_0, "Returns the reordered cells as a new array; `conn` is unchanged.").c_str());
}

} // namespace tk_py
