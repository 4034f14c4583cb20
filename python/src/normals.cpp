// Element and node normals of surfaces in space.

#include "tesskit2d/normals.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_normals(py::module_& m) {
  // Four arguments give node normals, three element normals.
  m.def(
      "normals",
      [](array_arg<double> coords, array_arg<unsigned> conn, double power, bool unit) {
        const char* f = tk_doc::normals_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        dense2D<double> node_normals;
        checked(without_gil([&] { return tk::normals(c, e, power, unit, node_normals); }), f, tk_doc::normals_0_status);
        return to_numpy(node_normals);
      },
      "coords"_a, "conn"_a, "power"_a, "unit"_a,
      doc(tk_doc::normals_0, "Node form (with power). Returns node_normals, of shape (#nodes, 3).").c_str());
  m.def(
      "normals",
      [](array_arg<double> coords, array_arg<unsigned> conn, bool unit) {
        const char* f = tk_doc::normals_1_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        dense2D<double> element_normals;
        checked(without_gil([&] { return tk::normals(c, e, unit, element_normals); }), f, tk_doc::normals_1_status);
        return to_numpy(element_normals);
      },
      "coords"_a, "conn"_a, "unit"_a,
      doc(tk_doc::normals_1, "Element form (without power). Returns element_normals, of shape (#elements, 3).")
          .c_str());
}

} // namespace tk_py
