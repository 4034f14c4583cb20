#pragma once
// Element kinds shared by the kelm mesh libraries.

namespace kelm {

/// Kind of element, passed by value. The numeric values are part of the
/// interface: callers store and pass them as numbers.
enum element_type {
  NO_ELEMENT = 0, ///< no element
  POINT = 1,      ///< point family
  LINE = 2,       ///< line family
  E2 = 3,         ///< two-node line
  E3 = 4,         ///< three-node line: ends in rows 0 and 1, mid node in row 2
  MIXED = 5,      ///< surface family: triangles and quadrangles in one array
  T3 = 6,         ///< three-node triangle
  Q4 = 7,         ///< four-node quadrangle
  T6 = 8,         ///< six-node triangle
  Q8 = 9,         ///< eight-node quadrangle
  Q9 = 10,        ///< nine-node quadrangle
  SOLID = 11,     ///< solid family
  TH4 = 12,
  TH10 = 13,
  PY5 = 14,
  PY13 = 15,
  PY14 = 16,
  PR6 = 17,
  PR15 = 18,
  PR18 = 19,
  HX8 = 20,
  HX20 = 21,
  HX27 = 22
};

} // namespace kelm
