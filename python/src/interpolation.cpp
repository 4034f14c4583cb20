// Carrying a nodal field from a background mesh to target nodes.

#include "tesskit2d/interpolation.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

namespace {

// The field form is chosen by the field's dimensions: (#nodes, r) for the
// array form, (#nodes,) for the vector form.
template <class Field>
py::array interpolate_field(array_arg<double>& coords, array_arg<unsigned>& bg_conn, array_arg<unsigned>& neighbours,
                            array_arg<unsigned>& ancestors, Field& field, array_arg<unsigned>& target_nodes, int type,
                            const char* f, const tk_doc::status_text* table) {
  const auto c = view2(coords, f, "coords");
  const auto bg = view2(bg_conn, f, "bg_conn");
  const auto n = view2(neighbours, f, "neighbours");
  const auto a = view1(ancestors, f, "ancestors");
  const auto t = view1(target_nodes, f, "target_nodes");
  checked(without_gil([&] { return tk::interpolate(c, bg, n, a, field, t, element_kind(type)); }), f, table);
  return to_numpy(field);
}

} // namespace

void bind_interpolation(py::module_& m) {
  m.def(
      "interpolate",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, ndarray<double, 2> field, array_arg<unsigned> target_nodes, int type) {
        const char* f = tk_doc::interpolate_0_name;
        auto values = owned2(field.a, f, "field");
        return interpolate_field(coords, bg_conn, neighbours, ancestors, values, target_nodes, type, f,
                                 tk_doc::interpolate_0_status);
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "field"_a, "target_nodes"_a, "type"_a,
      doc(tk_doc::interpolate_0,
          "Form with a field of shape (#nodes, r). Returns the new field; the argument is not changed.")
          .c_str());
  m.def(
      "interpolate",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, ndarray<double, 1> field, array_arg<unsigned> target_nodes, int type) {
        const char* f = tk_doc::interpolate_1_name;
        auto values = owned1(field.a, f, "field");
        return interpolate_field(coords, bg_conn, neighbours, ancestors, values, target_nodes, type, f,
                                 tk_doc::interpolate_1_status);
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "field"_a, "target_nodes"_a, "type"_a,
      doc(tk_doc::interpolate_1,
          "Form with a field of shape (#nodes,). Returns the new field; the argument is not changed.")
          .c_str());
}

} // namespace tk_py
