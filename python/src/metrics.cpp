// Metric transfer to target nodes, and metric fields over structured grids.

#include "tesskit2d/metrics.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

namespace {

// A metric field is (#nodes, 3 or 6), a size field (#nodes,): pybind11 picks
// the form by the dimensions, and by the presence of target_nodes.
template <class Field, class... Targets>
py::array transfer(array_arg<double>& coords, array_arg<unsigned>& bg_conn, array_arg<unsigned>& neighbours,
                   array_arg<unsigned>& ancestors, Field field, bool keep_valid, int type, const char* f,
                   const tk_doc::status_text* table, const char* field_name, Targets&... target_nodes) {
  const auto c = view2(coords, f, "coords");
  const auto bg = view2(bg_conn, f, "bg_conn");
  const auto n = view2(neighbours, f, "neighbours");
  const auto a = view1(ancestors, f, "ancestors");
  auto values = [&] {
    if constexpr (std::is_same_v<Field, ndarray<double, 2>>)
      return owned2(field.a, f, field_name);
    else
      return owned1(field.a, f, field_name);
  }();
  const auto t = std::make_tuple(view1(target_nodes, f, "target_nodes")...);
  const auto kind = element_kind(type);
  checked(without_gil([&] {
            return std::apply(
                [&](const auto&... targets) {
                  return tk::interpolate_metrics(c, bg, n, a, values, targets..., keep_valid, kind);
                },
                t);
          }),
          f, table);
  return to_numpy(values);
}

} // namespace

void bind_metrics(py::module_& m) {
  const char* note = "Returns the new field; the argument is not changed.";
  using M = ndarray<double, 2>;
  using S = ndarray<double, 1>;
  m.def(
      "interpolate_metrics",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, M metrics, array_arg<unsigned> target_nodes, bool keep_valid, int type) {
        return transfer(coords, bg_conn, neighbours, ancestors, metrics, keep_valid, type,
                        tk_doc::interpolate_metrics_0_name, tk_doc::interpolate_metrics_0_status, "metrics",
                        target_nodes);
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "metrics"_a, "target_nodes"_a, "keep_valid"_a, "type"_a,
      doc(tk_doc::interpolate_metrics_0, note).c_str());
  m.def(
      "interpolate_metrics",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, M metrics, bool keep_valid, int type) {
        return transfer(coords, bg_conn, neighbours, ancestors, metrics, keep_valid, type,
                        tk_doc::interpolate_metrics_1_name, tk_doc::interpolate_metrics_1_status, "metrics");
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "metrics"_a, "keep_valid"_a, "type"_a,
      doc(tk_doc::interpolate_metrics_1, note).c_str());
  m.def(
      "interpolate_metrics",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, S sizes, array_arg<unsigned> target_nodes, bool keep_valid, int type) {
        return transfer(coords, bg_conn, neighbours, ancestors, sizes, keep_valid, type,
                        tk_doc::interpolate_metrics_2_name, tk_doc::interpolate_metrics_2_status, "sizes",
                        target_nodes);
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "sizes"_a, "target_nodes"_a, "keep_valid"_a, "type"_a,
      doc(tk_doc::interpolate_metrics_2, note).c_str());
  m.def(
      "interpolate_metrics",
      [](array_arg<double> coords, array_arg<unsigned> bg_conn, array_arg<unsigned> neighbours,
         array_arg<unsigned> ancestors, S sizes, bool keep_valid, int type) {
        return transfer(coords, bg_conn, neighbours, ancestors, sizes, keep_valid, type,
                        tk_doc::interpolate_metrics_3_name, tk_doc::interpolate_metrics_3_status, "sizes");
      },
      "coords"_a, "bg_conn"_a, "neighbours"_a, "ancestors"_a, "sizes"_a, "keep_valid"_a, "type"_a,
      doc(tk_doc::interpolate_metrics_3, note).c_str());

  const char* grown = "Returns the new field: a copy of the argument with the grid's entries appended.";
  m.def(
      "metrics_struct",
      [](array_arg<unsigned> boundary, unsigned n_side, S sizes) {
        const char* f = tk_doc::metrics_struct_0_name;
        const auto loop = view1(boundary, f, "boundary");
        auto values = owned1(sizes.a, f, "sizes");
        checked(without_gil([&] { return tk::metrics_struct(loop, n_side, values); }), f,
                tk_doc::metrics_struct_0_status);
        return to_numpy(values);
      },
      "boundary"_a, "n_side"_a, "sizes"_a, doc(tk_doc::metrics_struct_0, grown).c_str());
  m.def(
      "metrics_struct",
      [](array_arg<unsigned> boundary, unsigned n_side, M metrics) {
        const char* f = tk_doc::metrics_struct_1_name;
        const auto loop = view1(boundary, f, "boundary");
        auto values = owned2(metrics.a, f, "metrics");
        checked(without_gil([&] { return tk::metrics_struct(loop, n_side, values); }), f,
                tk_doc::metrics_struct_1_status);
        return to_numpy(values);
      },
      "boundary"_a, "n_side"_a, "metrics"_a, doc(tk_doc::metrics_struct_1, grown).c_str());
}

} // namespace tk_py
