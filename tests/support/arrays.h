#pragma once
// Building and reading small arrays in tests.

#include <initializer_list>
#include <vector>

#include "tesskit2d/mesh.h"

namespace tk_test {

using kelm::dense1D;
using kelm::dense2D;
using kelm::tesskit2d::null_id;
constexpr unsigned N = null_id; // short, for tables of columns
using cols_t = std::vector<std::vector<unsigned>>;

/// An array with one column per inner list (all of one length).
template <class T> dense2D<T> columns(std::initializer_list<std::initializer_list<T>> cols) {
  const unsigned r = cols.size() ? static_cast<unsigned>(cols.begin()->size()) : 0;
  dense2D<T> a(r, static_cast<unsigned>(cols.size()));
  unsigned j = 0;
  for (const auto& c : cols) {
    unsigned i = 0;
    for (T v : c)
      a(i++, j) = v;
    ++j;
  }
  return a;
}

inline dense2D<unsigned> conn(std::initializer_list<std::initializer_list<unsigned>> cols) {
  return columns<unsigned>(cols);
}
inline dense2D<double> coords(std::initializer_list<std::initializer_list<double>> cols) {
  return columns<double>(cols);
}

/// A copy with a buffer of its own: copying an array only shares its buffer.
template <class A> A deep(const A& a) {
  A d;
  d.copy(a);
  return d;
}

/// A copy of `a` laid out with `extra` unused rows between columns and an
/// `offset` into its buffer, filled with `junk` where no element lives, so
/// that code which assumes ld == rows or offset == 0 reads the junk.
template <class T> dense2D<T> strided(const dense2D<T>& a, unsigned extra = 3, unsigned offset = 5, T junk = T(77)) {
  dense2D<T> big(a.rows + extra, a.cols + 2, junk); // room for the offset
  dense2D<T> v(big);
  v.offset = offset;
  v.rows = a.rows;
  v.cols = a.cols;
  v.ld = a.rows + extra;
  v.size = a.rows * a.cols;
  for (unsigned j = 0; j < a.cols; ++j)
    for (unsigned i = 0; i < a.rows; ++i)
      v(i, j) = a(i, j);
  return v;
}

/// The columns of `a` as nested vectors, for comparisons with ==.
template <class T> std::vector<std::vector<T>> as_columns(const dense2D<T>& a) {
  std::vector<std::vector<T>> out(a.cols);
  for (unsigned j = 0; j < a.cols; ++j)
    for (unsigned i = 0; i < a.rows; ++i)
      out[j].push_back(a(i, j));
  return out;
}

template <class T> std::vector<T> as_vector(const dense1D<T, 8>& a) { return std::vector<T>(a.begin(), a.end()); }

} // namespace tk_test
