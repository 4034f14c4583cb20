#pragma once
// How NumPy arrays cross into the library and back.
//
// A NumPy array of shape (n, d), rows contiguous, is exactly the library's
// column-major d x n array read the other way round: element (i, j) of the
// library's array is a[j, i]. Inputs are therefore wrapped, not copied, when
// their dtype is right and their rows are contiguous (a row stride wider than
// a row becomes the array's column stride `ld`); anything else is converted
// once. Outputs the library allocated are handed to NumPy over the library's
// own buffer, which a capsule keeps alive for as long as the NumPy array
// lives.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "status_text.h"
#include "tesskit2d/mesh.h"

namespace tk_py {

namespace py = pybind11;
using kelm::dense1D;
using kelm::dense2D;

/// Any NumPy array or sequence; converted to `T` only when it is not already
/// an array of `T`.
template <class T> using array_arg = py::array_t<T, py::array::forcecast>;
/// The same, for an argument that may be left out (None).
template <class T> using optional_array = std::optional<array_arg<T>>;

/// What becomes `tesskit2d.ArgumentError` (a ValueError) in Python, with
/// the function, the argument and the status as attributes.
struct argument_error : std::invalid_argument {
  argument_error(std::string function_, std::string argument_, int status_, const std::string& message)
      : std::invalid_argument(message), function(std::move(function_)), argument(std::move(argument_)),
        status(status_) {}
  std::string function, argument;
  int status;
};

/// Raises ArgumentError for an array the bindings cannot hand over; the
/// status is 0 since the library was not called.
[[noreturn]] void refuse(const char* function, const char* argument, const std::string& reason);

/// Turns a status into Python's terms: a negative status raises
/// ArgumentError with the header's words for it (MemoryError for -199), any
/// other status is returned.
int checked(int status, const char* function, const tk_doc::status_text* table);

/// A view of a 2-D array (n, d) as d x n, without copy when the dtype is `T`
/// and the rows are contiguous. `a` must outlive the view: it is the
/// caller's argument, alive for the whole call.
template <class T> dense2D<T> view2(array_arg<T>& a, const char* function, const char* argument);

/// A view of a 1-D array of n entries, without copy under the same terms.
template <class T> dense1D<T, 8> view1(array_arg<T>& a, const char* function, const char* argument);

/// A deep copy on a buffer of the library's own, for arrays the library
/// rewrites or grows: the caller's NumPy array is never changed.
template <class T> dense2D<T> owned2(array_arg<T>& a, const char* function, const char* argument);
template <class T> dense1D<T, 8> owned1(array_arg<T>& a, const char* function, const char* argument);

/// A view of the caller's array for an export whose contract only appends
/// columns behind the existing ones, which keep their values: the view's
/// storage has no room for another column, so the library grows it into
/// storage of its own before it writes, and the caller's array is never
/// written. This saves the copy that owned2() makes.
template <class T> dense2D<T> appended_only2(array_arg<T>& a, const char* function, const char* argument) {
  return view2<T>(a, function, argument);
}

/// The same for an optional argument: an empty array when it is None.
template <class T> dense2D<T> view2(optional_array<T>& a, const char* function, const char* argument) {
  return a ? view2<T>(*a, function, argument) : dense2D<T>();
}
template <class T> dense2D<T> owned2(optional_array<T>& a, const char* function, const char* argument) {
  return a ? owned2<T>(*a, function, argument) : dense2D<T>();
}
template <class T> dense1D<T, 8> owned1(optional_array<T>& a, const char* function, const char* argument) {
  return a ? owned1<T>(*a, function, argument) : dense1D<T, 8>();
}

/// A NumPy array of shape (cols, rows) over the library's buffer of `a`, no
/// copy: a capsule holds one reference to the buffer.
template <class T> py::array to_numpy(const dense2D<T>& a);
/// A NumPy array of shape (size,) over the buffer of `a`.
template <class T> py::array to_numpy(const dense1D<T, 8>& a);

/// An array argument of exactly `D` dimensions, for the overloads that
/// differ only there (a field of one value per node, or of several). An
/// array of other dimensions does not match, and the next overload is
/// tried.
template <class T, int D> struct ndarray { array_arg<T> a; };

/// The header's doc block followed by what the Python form adds.
inline std::string doc(const char* header_doc, const char* python_note) {
  return std::string(python_note) +
         "\nShapes below are the library's: \"r rows by #n\" is a NumPy array of shape (#n, r).\n\n" + header_doc;
}

/// Runs a call of the library with the interpreter's lock released: the
/// library holds no Python objects and other Python threads may run.
template <class F> int without_gil(F&& call) {
  py::gil_scoped_release unlocked;
  return std::forward<F>(call)();
}

template <unsigned N> kelm::vector_fixed<double, N> fixed(const std::array<double, N>& v) {
  kelm::vector_fixed<double, N> f;
  for (unsigned i = 0; i < N; ++i)
    f[i] = v[i];
  return f;
}

/// An element kind from the number a caller passes. A number past the
/// range of the enumeration becomes NO_ELEMENT, which every export refuses
/// with its status for `type`, as it would the number itself.
inline kelm::element_type element_kind(int type) {
  return type >= 0 && type < 32 ? static_cast<kelm::element_type>(type) : kelm::NO_ELEMENT;
}

inline kelm::symmetric_fixed<double, 3> symmetric(const std::array<double, 6>& v) {
  kelm::symmetric_fixed<double, 3> s;
  for (unsigned i = 0; i < 6; ++i)
    s[i] = v[i];
  return s;
}

} // namespace tk_py

namespace pybind11 {
namespace detail {
template <class T, int D> struct type_caster<tk_py::ndarray<T, D>> {
  using value_type = tk_py::ndarray<T, D>;
  PYBIND11_TYPE_CASTER(value_type, const_name("numpy.ndarray[") + make_caster<T>::name + const_name("], ") +
                                       const_name<D>() + const_name("-D"));
  bool load(handle src, bool convert) {
    make_caster<tk_py::array_arg<T>> inner;
    if (!inner.load(src, convert)) return false;
    auto& a = static_cast<tk_py::array_arg<T>&>(inner);
    if (a.ndim() != D) return false;
    value.a = a;
    return true;
  }
  static handle cast(const tk_py::ndarray<T, D>& src, return_value_policy, handle) { return src.a.inc_ref(); }
};
} // namespace detail
} // namespace pybind11
