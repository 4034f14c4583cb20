// The rings of elements round every node.

#include "tesskit2d/connectivity.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_connectivity(py::module_& m) {
  m.def(
      "get_connected_elements",
      [](array_arg<unsigned> conn, array_arg<unsigned> neighbours, array_arg<unsigned> ancestors) {
        const char* f = tk_doc::get_connected_elements_0_name;
        const auto e = view2(conn, f, "conn");
        const auto n = view2(neighbours, f, "neighbours");
        const auto a = view1(ancestors, f, "ancestors");
        dense1D<unsigned> offsets, elements;
        checked(without_gil([&] { return tk::get_connected_elements(e, n, a, offsets, elements); }), f,
                tk_doc::get_connected_elements_0_status);
        return py::make_tuple(to_numpy(offsets), to_numpy(elements));
      },
      "conn"_a, "neighbours"_a, "ancestors"_a,
      doc(tk_doc::get_connected_elements_0,
          "Returns (offsets, elements): the ring of node i is elements[offsets[i]:offsets[i + 1]].")
          .c_str());
}

} // namespace tk_py
