// Rewriting degenerate quadrangles as triangles.

#include "tesskit2d/degenerate.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_degenerate(py::module_& m) {
  m.def(
      "convert_degenerated_Q4",
      [](array_arg<unsigned> conn) {
        const char* f = tk_doc::convert_degenerated_Q4_0_name;
        auto e = owned2(conn, f, "conn");
        const int n = checked(without_gil([&] { return tk::convert_degenerated_Q4(e); }), f,
                              tk_doc::convert_degenerated_Q4_0_status);
        return py::make_tuple(n, to_numpy(e));
      },
      "conn"_a,
      doc(tk_doc::convert_degenerated_Q4_0,
          "Returns (count, conn): the count of converted columns and a new conn; the argument is not changed.")
          .c_str());
  m.def(
      "convert_degenerated_Q",
      [](array_arg<unsigned> conn) {
        const char* f = tk_doc::convert_degenerated_Q_0_name;
        auto e = owned2(conn, f, "conn");
        dense1D<unsigned, 8> converted;
        const int n = checked(without_gil([&] { return tk::convert_degenerated_Q(e, converted); }), f,
                              tk_doc::convert_degenerated_Q_0_status);
        return py::make_tuple(n, to_numpy(e), to_numpy(converted));
      },
      "conn"_a,
      doc(tk_doc::convert_degenerated_Q_0,
          "Returns (count, conn, converted): a new conn and the converted columns; the argument is not changed.")
          .c_str());
}

} // namespace tk_py
