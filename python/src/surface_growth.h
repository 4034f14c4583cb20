#pragma once
// Bindings of the exports that add nodes behind `coords` and, for most, write
// a `conn_out`: the extrusions and the offsets. Their shapes are alike:
//   int f(dense2D<double>& coords, const dense2D<unsigned>& conn, path..., [dense2D<unsigned>& conn_out])
// where the path is a few numbers, small fixed vectors or a normals array.
// In Python `coords` is copied and returned grown, never changed in place.

#include <array>
#include <tuple>
#include <utility>

#include "arrays.h"

namespace tk_py {

/// How one path argument of the C++ signature is taken from Python.
template <class T> struct path_arg {
  using type = T;
  static T from(type v, const char*, const char*) { return v; }
};
template <unsigned N> struct path_arg<const kelm::vector_fixed<double, N>&> {
  using type = std::array<double, N>;
  static kelm::vector_fixed<double, N> from(const type& v, const char*, const char*) { return fixed<N>(v); }
};
template <> struct path_arg<const kelm::symmetric_fixed<double, 3>&> {
  using type = std::array<double, 6>;
  static kelm::symmetric_fixed<double, 3> from(const type& v, const char*, const char*) { return symmetric(v); }
};
// Two dimensions exactly, so that a number given where a form takes a
// thickness never reaches the form that takes vectors.
template <> struct path_arg<const dense2D<double>&> {
  using type = ndarray<double, 2>;
  static dense2D<double> from(type& v, const char* function, const char* argument) {
    return view2(v.a, function, argument);
  }
};
template <class T> using path_value = decltype(path_arg<T>::from(std::declval<typename path_arg<T>::type&>(), "", ""));

/// `T` itself, in a context from which nothing is deduced.
template <class T> struct as_given { using type = T; };

/// What the call does with `conn_out`.
enum class conn_out_mode {
  absent,   ///< no such argument: Python gets coords back
  appended, ///< an optional keyword, copied, appended to and returned
  rebuilt   ///< not an argument: returned after coords
};

template <conn_out_mode mode, class... Path, std::size_t... I>
void def_growth(
    py::module_& m, const char* name, std::array<const char*, sizeof...(Path)> names, std::index_sequence<I...>,
    const std::string& docstring, const tk_doc::status_text* table,
    typename as_given<int (*)(dense2D<double>&, const dense2D<unsigned>&, Path..., dense2D<unsigned>&)>::type fn,
    typename as_given<int (*)(dense2D<double>&, const dense2D<unsigned>&, Path...)>::type fn_without_out) {
  auto run = [=](array_arg<double>& coords, array_arg<unsigned>& conn, optional_array<unsigned>* conn_out,
                 typename path_arg<Path>::type&... path) -> py::object {
    auto c = owned2(coords, name, "coords");
    const auto e = view2(conn, name, "conn");
    std::tuple<path_value<Path>...> values{path_arg<Path>::from(path, name, names[I])...};
    dense2D<unsigned> o = conn_out ? owned2(*conn_out, name, "conn_out") : dense2D<unsigned>();
    const int status = without_gil([&] {
      if constexpr (mode == conn_out_mode::absent)
        return fn_without_out(c, e, std::get<I>(values)...);
      else
        return fn(c, e, std::get<I>(values)..., o);
    });
    checked(status, name, table);
    if constexpr (mode == conn_out_mode::absent)
      return to_numpy(c);
    else
      return py::make_tuple(to_numpy(c), to_numpy(o));
  };
  if constexpr (mode == conn_out_mode::appended)
    m.def(
        name,
        [run](array_arg<double> coords, array_arg<unsigned> conn, typename path_arg<Path>::type... path,
              optional_array<unsigned> conn_out) { return run(coords, conn, &conn_out, path...); },
        py::arg("coords"), py::arg("conn"), py::arg(names[I])..., py::kw_only(), py::arg("conn_out") = py::none(),
        docstring.c_str());
  else
    m.def(
        name,
        [run](array_arg<double> coords, array_arg<unsigned> conn, typename path_arg<Path>::type... path) {
          return run(coords, conn, nullptr, path...);
        },
        py::arg("coords"), py::arg("conn"), py::arg(names[I])..., docstring.c_str());
}

/// An export that appends to or rebuilds `conn_out`.
template <conn_out_mode mode, class... Path>
void def_growth(py::module_& m, const char* name,
                int (*fn)(dense2D<double>&, const dense2D<unsigned>&, Path..., dense2D<unsigned>&),
                std::array<const char*, sizeof...(Path)> names, const char* header_doc,
                const tk_doc::status_text* table) {
  static_assert(mode != conn_out_mode::absent);
  const char* note = mode == conn_out_mode::appended
                         ? "Returns (coords, conn_out), new arrays: coords with the new nodes and a copy of the "
                           "keyword `conn_out` (default empty) with the new elements appended."
                         : "Returns (coords, conn_out), new arrays: coords with the new nodes, and conn_out.";
  def_growth<mode, Path...>(m, name, names, std::index_sequence_for<Path...>(), doc(header_doc, note), table, fn,
                            nullptr);
}

/// An export that only moves or adds nodes.
template <class... Path>
void def_growth(py::module_& m, const char* name, int (*fn)(dense2D<double>&, const dense2D<unsigned>&, Path...),
                std::array<const char*, sizeof...(Path)> names, const char* header_doc,
                const tk_doc::status_text* table) {
  def_growth<conn_out_mode::absent, Path...>(m, name, names, std::index_sequence_for<Path...>(),
                                             doc(header_doc, "Returns the new coords; the argument is not changed."),
                                             table, nullptr, fn);
}

} // namespace tk_py
