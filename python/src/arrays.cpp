#include "arrays.h"

#include <cstdint>
#include <string>

#include "treisoma/vector_num.h"

namespace tk_py {

namespace {

constexpr const char* capsule_name = "tesskit2d.buffer";

template <class T> using buffer_ptr = kelm::Ptr<kelm::vector_num<T, 8>>;

template <class T> void release_buffer(PyObject* capsule) {
  delete static_cast<buffer_ptr<T>*>(PyCapsule_GetPointer(capsule, capsule_name));
}

// A count of the library's arrays is 32 bits wide.
unsigned extent(py::ssize_t n, const char* function, const char* argument) {
  if (n < 0 || static_cast<std::uint64_t>(n) > 0xFFFFFFFFu)
    refuse(function, argument, "more than 2^32 - 1 entries along one axis");
  return static_cast<unsigned>(n);
}

// Rows contiguous and columns a whole number of entries apart, wider than a
// row or equal to it: the layout of a library array, with `ld` the stride.
template <class T> bool library_layout(const py::array& a) {
  const auto item = static_cast<py::ssize_t>(sizeof(T));
  if (a.ndim() == 1) return a.shape(0) <= 1 || a.strides(0) == item;
  return (a.shape(1) <= 1 || a.strides(1) == item) &&
         (a.shape(0) <= 1 || (a.strides(0) % item == 0 && a.strides(0) >= a.shape(1) * item));
}

template <class T> void expect_dimensions(array_arg<T>& a, int ndim, const char* function, const char* argument) {
  if (a.ndim() != ndim)
    refuse(function, argument,
           std::string("expected a ") + (ndim == 2 ? "2-D array (one node or element per row)" : "1-D array") +
               ", got " + std::to_string(a.ndim()) + " dimensions");
  if (!library_layout<T>(a)) a = array_arg<T>::ensure(py::array_t<T, py::array::c_style>::ensure(a));
}

} // namespace

void refuse(const char* function, const char* argument, const std::string& reason) {
  throw argument_error(function, argument, 0, std::string(function) + ": `" + argument + "`: " + reason);
}

int checked(int status, const char* function, const tk_doc::status_text* table) {
  if (status >= 0) return status;
  if (status == -199) throw std::bad_alloc();
  const tk_doc::status_text* row = table;
  while (row->code != 0 && row->code != status)
    ++row;
  const std::string argument = row->code ? row->argument : "";
  const std::string reason = row->code ? row->reason : "refused";
  throw argument_error(function, argument, status,
                       std::string(function) + ": `" + argument + "` (status " + std::to_string(status) +
                           "): " + reason);
}

template <class T> dense2D<T> view2(array_arg<T>& a, const char* function, const char* argument) {
  expect_dimensions(a, 2, function, argument);
  const unsigned cols = extent(a.shape(0), function, argument), rows = extent(a.shape(1), function, argument);
  const auto stride = cols > 1 ? extent(a.strides(0) / static_cast<py::ssize_t>(sizeof(T)), function, argument) : 0u;
  // The library reads a const input only; the view is writable by type alone.
  return dense2D<T>::view(const_cast<T*>(a.data()), rows, cols, stride);
}

template <class T> dense1D<T, 8> view1(array_arg<T>& a, const char* function, const char* argument) {
  expect_dimensions(a, 1, function, argument);
  return dense1D<T, 8>::view(const_cast<T*>(a.data()), extent(a.shape(0), function, argument));
}

template <class T> dense2D<T> owned2(array_arg<T>& a, const char* function, const char* argument) {
  dense2D<T> own;
  if (!own.copy(view2<T>(a, function, argument))) throw std::bad_alloc();
  return own;
}

template <class T> dense1D<T, 8> owned1(array_arg<T>& a, const char* function, const char* argument) {
  dense1D<T, 8> own;
  if (!own.copy(view1<T>(a, function, argument))) throw std::bad_alloc();
  return own;
}

template <class T> py::array to_numpy(const dense2D<T>& a) {
  if (a.buffer->pad == kelm::not_owned) {
    // A view of somebody's storage, which no capsule can keep alive: the
    // one case that is copied.
    dense2D<T> own;
    if (!own.copy(a)) throw std::bad_alloc();
    return to_numpy(own);
  }
  const py::ssize_t item = sizeof(T);
  py::capsule owner(new buffer_ptr<T>(a.buffer), capsule_name, &release_buffer<T>);
  T* data = a.buffer->data ? a.buffer->data + a.offset : nullptr;
  if (a.rows * a.cols == 0)
    return py::array_t<T>({py::ssize_t(a.cols), py::ssize_t(a.rows)}, {py::ssize_t(a.rows) * item, item});
  return py::array_t<T>({py::ssize_t(a.cols), py::ssize_t(a.rows)}, {py::ssize_t(a.ld) * item, item}, data, owner);
}

template <class T> py::array to_numpy(const dense1D<T, 8>& a) {
  if (a.buffer->pad == kelm::not_owned) {
    dense1D<T, 8> own;
    if (!own.copy(a)) throw std::bad_alloc();
    return to_numpy(own);
  }
  if (a.size == 0) return py::array_t<T>(0);
  py::capsule owner(new buffer_ptr<T>(a.buffer), capsule_name, &release_buffer<T>);
  return py::array_t<T>({py::ssize_t(a.size)}, {py::ssize_t(sizeof(T))}, a.buffer->data + a.offset, owner);
}

template dense2D<double> view2(array_arg<double>&, const char*, const char*);
template dense2D<unsigned> view2(array_arg<unsigned>&, const char*, const char*);
template dense1D<double, 8> view1(array_arg<double>&, const char*, const char*);
template dense1D<unsigned, 8> view1(array_arg<unsigned>&, const char*, const char*);
template dense2D<double> owned2(array_arg<double>&, const char*, const char*);
template dense2D<unsigned> owned2(array_arg<unsigned>&, const char*, const char*);
template dense1D<double, 8> owned1(array_arg<double>&, const char*, const char*);
template dense1D<unsigned, 8> owned1(array_arg<unsigned>&, const char*, const char*);
template py::array to_numpy(const dense2D<double>&);
template py::array to_numpy(const dense2D<unsigned>&);
template py::array to_numpy(const dense1D<double, 8>&);
template py::array to_numpy(const dense1D<unsigned, 8>&);

} // namespace tk_py
