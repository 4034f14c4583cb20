// Curvatures: fundamental forms over a parametrisation, and principal
// curvatures from fitted quadrics.

#include "tesskit2d/curvature.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_curvature(py::module_& m) {
  m.def(
      "parametric_curvatures",
      [](array_arg<double> uv, array_arg<unsigned> conn, array_arg<double> tangents) {
        const char* f = tk_doc::parametric_curvatures_0_name;
        const auto p = view2(uv, f, "uv");
        const auto e = view2(conn, f, "conn");
        const auto t = view2(tangents, f, "tangents");
        dense2D<double> forms;
        checked(without_gil([&] { return tk::parametric_curvatures(p, e, t, forms); }), f,
                tk_doc::parametric_curvatures_0_status);
        return to_numpy(forms);
      },
      "uv"_a, "conn"_a, "tangents"_a,
      doc(tk_doc::parametric_curvatures_0, "Returns forms, of shape (#nodes, 3).").c_str());
  m.def(
      "principal_curvatures",
      [](array_arg<double> coords, array_arg<unsigned> conn, array_arg<unsigned> neighbours, double radius,
         double max_angle, unsigned max_elements, optional_array<unsigned> hard_edges) {
        const char* f = tk_doc::principal_curvatures_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        const auto n = view2(neighbours, f, "neighbours");
        const auto h = view2(hard_edges, f, "hard_edges");
        dense2D<double> curvatures;
        checked(without_gil(
                    [&] { return tk::principal_curvatures(c, e, n, radius, max_angle, max_elements, h, curvatures); }),
                f, tk_doc::principal_curvatures_0_status);
        return to_numpy(curvatures);
      },
      "coords"_a, "conn"_a, "neighbours"_a, "radius"_a, "max_angle"_a, "max_elements"_a, "hard_edges"_a = py::none(),
      doc(tk_doc::principal_curvatures_0, "Returns curvatures, of shape (#nodes, 8). `hard_edges` None means none.")
          .c_str());
}

} // namespace tk_py
