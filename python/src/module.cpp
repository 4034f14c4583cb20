// The extension module tesskit2d._core: the error type, the constants and
// the bindings of every family.

#include <pybind11/pybind11.h>

#include "arrays.h"
#include "families.h"
#include "tesskit2d/version.h"
#include "tesskit2d_docs.h"

namespace py = pybind11;

PYBIND11_MODULE(_core, m) {
  m.doc() = "Bindings of tesskit2d over NumPy arrays: points (n, 2) or (n, 3) float64, cells (m, k) uint32.";

  // The type object lives as long as the module; the translator below only
  // borrows it.
  static py::handle argument_error_type =
      PyErr_NewExceptionWithDoc("tesskit2d.ArgumentError",
                                "An argument the library refused: `function`, `argument` and the library's "
                                "`status` (0 when the bindings refused it before the call).",
                                PyExc_ValueError, nullptr);
  m.attr("ArgumentError") = argument_error_type;
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) std::rethrow_exception(p);
    } catch (const tk_py::argument_error& e) {
      py::object error = argument_error_type(e.what());
      error.attr("function") = e.function;
      error.attr("argument") = e.argument;
      error.attr("status") = e.status;
      PyErr_SetObject(argument_error_type.ptr(), error.ptr());
    }
  });

  m.attr("null_id") = py::int_(kelm::tesskit2d::null_id);
  for (const auto& [name, kind] : {std::pair{"E2", kelm::E2},
                                   {"E3", kelm::E3},
                                   {"MIXED", kelm::MIXED},
                                   {"T3", kelm::T3},
                                   {"Q4", kelm::Q4},
                                   {"T6", kelm::T6},
                                   {"Q8", kelm::Q8},
                                   {"Q9", kelm::Q9}})
    m.attr(name) = py::int_(static_cast<int>(kind));

  m.def(
      "version", [] { return std::string(kelm::tesskit2d::version()); }, tk_doc::version_0);

  tk_py::bind_measures(m);
  tk_py::bind_linear_reduction(m);
  tk_py::bind_high_order(m);
  tk_py::bind_geometric_split(m);
  tk_py::bind_extrusion(m);
  tk_py::bind_structured(m);
  tk_py::bind_offset(m);
  tk_py::bind_interpolation(m);
  tk_py::bind_metrics(m);
  tk_py::bind_metric_generation(m);
  tk_py::bind_orientation(m);
  tk_py::bind_degenerate(m);
  tk_py::bind_connectivity(m);
  tk_py::bind_normals(m);
  tk_py::bind_curvature(m);
  tk_py::bind_extras(m);
#ifdef TESSKIT2D_PYTHON_TEST_HOOKS
  tk_py::bind_test_hooks(m);
#endif
}
