// Reduction to linear elements and the plain splits.

#include "tesskit2d/linear_reduction.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_linear_reduction(py::module_& m) {
  m.def(
      "convert_into_linear",
      [](array_arg<unsigned> conn) {
        const char* f = tk_doc::convert_into_linear_0_name;
        auto e = owned2(conn, f, "conn");
        checked(without_gil([&] { return tk::convert_into_linear(e); }), f, tk_doc::convert_into_linear_0_status);
        return to_numpy(e);
      },
      "conn"_a, doc(tk_doc::convert_into_linear_0, "Returns the new conn; the argument is not changed.").c_str());

  m.def(
      "split_into_linear",
      [](array_arg<unsigned> conn, optional_array<unsigned> out) {
        const char* f = tk_doc::split_into_linear_0_name;
        const auto e = view2(conn, f, "conn");
        auto o = owned2(out, f, "out");
        checked(without_gil([&] { return tk::split_into_linear(e, o); }), f, tk_doc::split_into_linear_0_status);
        return to_numpy(o);
      },
      "conn"_a, py::kw_only(), "out"_a = py::none(),
      doc(tk_doc::split_into_linear_0,
          "Returns out: a copy of the keyword `out` (default empty) with the new elements appended.")
          .c_str());

  m.def(
      "split_Q4_into_T3",
      [](array_arg<unsigned> conn, optional_array<unsigned> out) {
        const char* f = tk_doc::split_Q4_into_T3_2_name;
        const auto e = view2(conn, f, "conn");
        auto o = owned2(out, f, "out");
        const int n =
            checked(without_gil([&] { return tk::split_Q4_into_T3(e, o); }), f, tk_doc::split_Q4_into_T3_2_status);
        return py::make_tuple(n, to_numpy(o));
      },
      "conn"_a, py::kw_only(), "out"_a = py::none(),
      doc(tk_doc::split_Q4_into_T3_2,
          "Connectivity form (one positional argument). Returns (count, out): out is a copy of the keyword "
          "`out` (default empty) with the triangles appended.")
          .c_str());
}

} // namespace tk_py
