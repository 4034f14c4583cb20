// Structured grids inside a closed boundary loop.

#include "tesskit2d/structured.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_structured(py::module_& m) {
  const char* note = "Returns (coords, conn_out), new arrays: coords with the interior nodes and a copy of the "
                     "keyword `conn_out` (default empty) with the cells appended.";
  m.def(
      "mesh_struct_Q4",
      [](array_arg<double> coords, array_arg<unsigned> boundary, unsigned n_side, optional_array<unsigned> conn_out) {
        const char* f = tk_doc::mesh_struct_Q4_0_name;
        auto c = owned2(coords, f, "coords");
        const auto loop = view1(boundary, f, "boundary");
        auto o = owned2(conn_out, f, "conn_out");
        checked(without_gil([&] { return tk::mesh_struct_Q4(c, loop, n_side, o); }), f,
                tk_doc::mesh_struct_Q4_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(o));
      },
      "coords"_a, "boundary"_a, "n_side"_a, py::kw_only(), "conn_out"_a = py::none(),
      doc(tk_doc::mesh_struct_Q4_0, note).c_str());

  m.def(
      "mesh_struct_T3",
      [](array_arg<double> coords, array_arg<unsigned> boundary, unsigned n_side, int pattern,
         optional_array<unsigned> conn_out) {
        const char* f = tk_doc::mesh_struct_T3_0_name;
        auto c = owned2(coords, f, "coords");
        const auto loop = view1(boundary, f, "boundary");
        auto o = owned2(conn_out, f, "conn_out");
        checked(without_gil([&] { return tk::mesh_struct_T3(c, loop, n_side, pattern, o); }), f,
                tk_doc::mesh_struct_T3_0_status);
        return py::make_tuple(to_numpy(c), to_numpy(o));
      },
      "coords"_a, "boundary"_a, "n_side"_a, "pattern"_a, py::kw_only(), "conn_out"_a = py::none(),
      doc(tk_doc::mesh_struct_T3_0, note).c_str());
}

} // namespace tk_py
