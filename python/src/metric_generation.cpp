// Anisotropic metrics from the curvature of a surface.

#include "tesskit2d/metric_generation.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_metric_generation(py::module_& m) {
  m.def(
      "metrics_gen_aniso3d",
      [](array_arg<double> coords, array_arg<unsigned> conn, double normal_size, optional_array<double> metrics) {
        const char* f = tk_doc::metrics_gen_aniso3d_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        auto values = owned2(metrics, f, "metrics");
        checked(without_gil([&] { return tk::metrics_gen_aniso3d(c, e, normal_size, values); }), f,
                tk_doc::metrics_gen_aniso3d_0_status);
        return to_numpy(values);
      },
      "coords"_a, "conn"_a, "normal_size"_a, "metrics"_a = py::none(),
      doc(tk_doc::metrics_gen_aniso3d_0,
          "Returns the new metrics (#nodes, 6), tightened from a copy of `metrics` (None: start empty).")
          .c_str());
}

} // namespace tk_py
