#pragma once
/// \file
/// \brief Conventions shared by every tesskit2d family: arrays, element
/// kinds, node orders, local edges, statuses and output modes.
///
/// \par Arrays
/// A mesh is two arrays. `coords` is a dense2D<double> of 2 or 3 rows (the
/// space dimension) with one node per column; a node ID is a column number.
/// `conn` is a dense2D<unsigned> with one element per column and one row per
/// node of the element. Arrays are column-major views with column stride
/// `ld`, which may exceed `rows`; an array is empty when rows * cols is 0.
/// Shapes are written "2 or 3 rows by \#nodes", "4 rows by \#elements".
///
/// \par Node orders, row by row
/// | Kind | Rows |
/// |------|------|
/// | E2 | 0, 1 the ends |
/// | E3 | 0, 1 the ends; 2 the mid node |
/// | T3 | 0, 1, 2 the corners |
/// | Q4 | 0 .. 3 the corners in order round the element |
/// | T6 | corners; 3, 4, 5 the mid nodes of edges 0, 1, 2 |
/// | Q8 | corners; 4 .. 7 the mid nodes of edges 0 .. 3 |
/// | Q9 | as Q8; 8 the centre |
///
/// Higher orders go on the same way: corners, the nodes of edge 0, of edge
/// 1, and so on, then interior nodes.
///
/// \par Local edges
/// A triangle's edge i lies opposite corner i: (1, 2), (2, 0), (0, 1). A
/// quadrangle's edge i is (i, i + 1 mod 4).
///
/// \par Mixed meshes
/// A triangle in a quadrangle-shaped array has `null_id` in the rows it
/// lacks, and the test is on one fixed row: row 3 in a 4-row array, row 6 in
/// an 8- or 9-row array (where row 3 is an ordinary mid node). A 3-row array
/// is read as triangles without any test.
///
/// \par Statuses
/// Every export returns an int: 0 on success (and on empty input), -1, -2,
/// ... for the first bad argument in checking order (each export lists its
/// own, and some numbers deliberately do not follow the argument
/// positions), -199 when memory ran out. A few exports return a positive
/// count on success, so test for `< 0`. Failures of growth are reported by
/// status; `std::bad_alloc` from small working objects is not caught and
/// passes through.
///
/// \par Output modes
/// Each export states one of four for each output array:
/// - in place: rewritten where it stands;
/// - rebuilt: cleared, then written;
/// - appended: existing columns stay, new ones follow; the array must be
///   empty or have the right rows;
/// - filled: the array already has its exact shape.
///
/// New nodes always go behind the existing columns of `coords`.
///
/// \par Shared storage
/// An output may share storage with an input of the same call: the same
/// array, a shallow copy of it, or a view over its buffer. The exports that
/// append to or rebuild an output while they read an input then read that
/// input from a private copy, made only when the two can meet, and give the
/// result that separate arrays give; a copy that finds no memory gives -199.
/// Exceptions are named where they apply (the two outputs of `angles`).
///
/// \par Units
/// Angles are in radians, positive from the first axis towards the second.
///
/// \par Threads
/// Nothing here keeps state between calls; calls on separate arrays may run
/// in parallel. Views of one buffer are not protected against each other.

#include "tesskit/element_type.h"
#include "treisoma/dense2D.h"
#include "treisoma/fixed.h"

/// The mesh libraries of kelm.
namespace kelm {
/// Operations on two-dimensional and surface meshes: plain free functions
/// over column-major arrays, returning int statuses (see mesh.h).
namespace tesskit2d {

using kelm::dense1D;
using kelm::dense2D;
using kelm::symmetric_fixed;
using kelm::vector_fixed;

using kelm::E2;
using kelm::E3;
using kelm::element_type;
using kelm::MIXED;
using kelm::Q4;
using kelm::Q8;
using kelm::Q9;
using kelm::T3;
using kelm::T6;

/// An absent node or neighbour.
constexpr unsigned null_id = 0xFFFFFFFFu;

} // namespace tesskit2d
} // namespace kelm
