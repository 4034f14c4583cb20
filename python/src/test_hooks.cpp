// Hooks for the package's own tests, compiled only into builds with tests:
// where an input view starts, and the library's allocation failure switch.

#include "arrays.h"
#include "families.h"

#ifdef TESSKIT2D_PYTHON_TEST_HOOKS
#include <cstdint>

#include "treisoma/allocation.h"

namespace tk_py {

using namespace pybind11::literals;

void bind_test_hooks(py::module_& m) {
  // (address of element (0, 0), column stride) of the view an export gets.
  m.def("_input_view", [](array_arg<double> a) {
    const auto v = view2(a, "_input_view", "a");
    return py::make_tuple(reinterpret_cast<std::uintptr_t>(v.column(0)), v.ld);
  });
  m.def("_input_view", [](array_arg<unsigned> a) {
    const auto v = view2(a, "_input_view", "a");
    return py::make_tuple(reinterpret_cast<std::uintptr_t>(v.column(0)), v.ld);
  });
  m.def(
      "_fail_allocation_at", [](unsigned long n) { kelm::treisoma::fail_allocation_at(n); }, "n"_a);
  m.def("_disarm_allocation_failure", [] { kelm::treisoma::disarm_allocation_failure(); });
}

} // namespace tk_py
#endif
