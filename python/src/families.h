#pragma once
// One function per family of exports, each adding its bindings to the module.

#include <pybind11/pybind11.h>

namespace tk_py {

void bind_measures(pybind11::module_& m);
void bind_linear_reduction(pybind11::module_& m);
void bind_high_order(pybind11::module_& m);
void bind_geometric_split(pybind11::module_& m);
void bind_extrusion(pybind11::module_& m);
void bind_structured(pybind11::module_& m);
void bind_offset(pybind11::module_& m);
void bind_interpolation(pybind11::module_& m);
void bind_metrics(pybind11::module_& m);
void bind_metric_generation(pybind11::module_& m);
void bind_orientation(pybind11::module_& m);
void bind_degenerate(pybind11::module_& m);
void bind_connectivity(pybind11::module_& m);
void bind_normals(pybind11::module_& m);
void bind_curvature(pybind11::module_& m);
void bind_extras(pybind11::module_& m);
#ifdef TESSKIT2D_PYTHON_TEST_HOOKS
void bind_test_hooks(pybind11::module_& m);
#endif

} // namespace tk_py
