// Flipping elements and making a mesh consistently oriented.

#include "tesskit2d/orientation.h"
#include <algorithm>

#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_orientation(py::module_& m) {
  const char* note = "Returns the new conn; the argument is not changed.";
  m.def(
      "flip",
      [](array_arg<unsigned> conn) {
        const char* f = tk_doc::flip_0_name;
        auto e = owned2(conn, f, "conn");
        checked(without_gil([&] { return tk::flip(e); }), f, tk_doc::flip_0_status);
        return to_numpy(e);
      },
      "conn"_a, doc(tk_doc::flip_0, note).c_str());
  m.def(
      "flip",
      [](array_arg<unsigned> conn, int type) {
        const char* f = tk_doc::flip_1_name;
        auto e = owned2(conn, f, "conn");
        checked(without_gil([&] { return tk::flip(e, element_kind(type)); }), f, tk_doc::flip_1_status);
        return to_numpy(e);
      },
      "conn"_a, "type"_a, doc(tk_doc::flip_1, note).c_str());
  m.def(
      "flip",
      [](array_arg<unsigned> conn, array_arg<unsigned> neighbours, int type) {
        const char* f = tk_doc::flip_2_name;
        auto e = owned2(conn, f, "conn");
        auto n = owned2(neighbours, f, "neighbours");
        checked(without_gil([&] { return tk::flip(e, n, element_kind(type)); }), f, tk_doc::flip_2_status);
        return py::make_tuple(to_numpy(e), to_numpy(n));
      },
      "conn"_a, "neighbours"_a, "type"_a,
      doc(tk_doc::flip_2, "Returns (conn, neighbours), new arrays; the arguments are not changed.").c_str());
  m.def(
      "mesh_reorient",
      [](array_arg<unsigned> conn, array_arg<unsigned> neighbours, unsigned seed, int all_parts) {
        const char* f = tk_doc::mesh_reorient_0_name;
        auto e = owned2(conn, f, "conn");
        auto n = owned2(neighbours, f, "neighbours");
        dense2D<unsigned> before;
        if (!before.copy(e)) throw std::bad_alloc();
        const int flipped = without_gil([&] { return tk::mesh_reorient(e, n, seed, all_parts); });
        // A flip count of -2 or -1 after a neighbour that shares no node of
        // its edge is a result, not a refusal: a refused `neighbours` (-2)
        // has another shape than `conn`, and a refused `conn` (-1) is left
        // as it was, while a count of -1 follows a flip.
        const bool same_shape = n.rows == e.rows && n.cols == e.cols;
        const bool refused = flipped == -3 || (flipped == -2 && !same_shape) ||
                             (flipped == -1 && std::equal(before.begin(), before.end(), e.begin()));
        if (refused) checked(flipped, f, tk_doc::mesh_reorient_0_status);
        return py::make_tuple(flipped, to_numpy(e), to_numpy(n));
      },
      "conn"_a, "neighbours"_a, "seed"_a, "all_parts"_a,
      doc(tk_doc::mesh_reorient_0,
          "Returns (count, conn, neighbours): the flip count and new arrays; the arguments are not changed. "
          "A count of -2 or -1 that tells a mismatch in `neighbours` is returned; only refusals raise.")
          .c_str());
}

} // namespace tk_py
