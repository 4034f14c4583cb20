// Hooks for the package's own tests, compiled only into builds with tests:
// where an input view starts, and the library's allocation failure switch.

#include "arrays.h"
#include "families.h"

#ifdef TESSKIT2D_PYTHON_TEST_HOOKS
#include <chrono>
#include <cstdint>
#include <string>

#include "tesskit2d/high_order.h"
#include "tesskit2d/measures.h"
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
#ifdef TREISOMA_FAULT_INJECTION
  m.def(
      "_fail_allocation_at", [](unsigned long n) { kelm::treisoma::fail_allocation_at(n); }, "n"_a);
  m.def("_disarm_allocation_failure", [] { kelm::treisoma::disarm_allocation_failure(); });
#endif
  // Seconds of one C++ call of `area` or `convert_into_quadratic` on arrays
  // a C++ caller already holds, for the overhead measurement of the package.
  m.def("_cpp_seconds", [](const std::string& name, array_arg<double> coords, array_arg<unsigned> conn) {
    namespace tk = kelm::tesskit2d;
    using clock = std::chrono::steady_clock;
    auto c = owned2(coords, "_cpp_seconds", "coords");
    auto e = owned2(conn, "_cpp_seconds", "conn");
    double total = 0;
    const auto start = clock::now();
    const int status = name == "area" ? tk::area(c, e, total) : tk::convert_into_quadratic(c, e);
    const std::chrono::duration<double> elapsed = clock::now() - start;
    static constexpr tk_doc::status_text no_rows[] = {{0, "", ""}};
    checked(status, name.c_str(), no_rows);
    return elapsed.count();
  });
}

} // namespace tk_py
#endif
