#pragma once
// The argument checks of the extrusion exports as data: one row per export,
// giving the status of each check in the order they run. The numbers are
// irregular on purpose (each export keeps the table it was published with),
// so they live in one table, beside each other, instead of in 20 ladders.

#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// The checks of one export, in the order they run. A status of 0 means the
/// export does not make that check.
struct extrusion_checks {
  bool zero_layers_first; ///< 0 for `n_layers` of 0, before any other check
  unsigned coords_rows;   ///< 2 or 3 exactly, or 23 for either
  int coords_status;      ///< `coords` of another row count
  int ids_status;         ///< an edge with a node outside `coords`
  int vectors_status;     ///< `vectors` not 2 rows, or fewer columns than `coords`
  int thickness_status;   ///< `thickness` zero or negative (a NaN passes)
  int h0_status;          ///< `h0` zero or negative
  int h1_status;          ///< `h1` zero or negative
  int pattern_status;     ///< `pattern` above 2, compared as unsigned
  unsigned out_rows;      ///< the rows `conn_out` must have unless empty
  int out_status;         ///< `conn_out` of other rows
  bool lift_to_space;     ///< 2-row `coords` gets a third row of 0 first
};

/// What the checks look at; the arguments an export lacks stay at their
/// defaults, which every check passes.
struct extrusion_arguments {
  const dense2D<unsigned>& conn;
  const dense2D<unsigned>& conn_out;
  unsigned n_layers = 1;
  const dense2D<double>* vectors = nullptr;
  double thickness = 1, h0 = 1, h1 = 1;
  int pattern = 0;
};

/// The checks of the graded exports and of the forms that take a layer count
/// themselves; the forms that only turn a layer count into sizes call their
/// graded row and have none.
namespace extrusion_row {
//                                    zero  rows  rows ids  vec  thick h0  h1  pat  out out   lift
constexpr extrusion_checks translate_Q4_2{false, 2, -1, -2, 0, 0, -4, -5, 0, 4, -7, false};
constexpr extrusion_checks translate_Q4_3{false, 23, -1, -2, 0, 0, -4, -5, 0, 4, -7, true};
constexpr extrusion_checks translate_T3_2{false, 2, -1, -2, 0, 0, -4, -5, -6, 3, -8, false};
constexpr extrusion_checks translate_T3_3{false, 23, -1, -2, 0, 0, -4, -5, -6, 3, -8, true};
constexpr extrusion_checks rotate_Q4_2_uniform{true, 23, -1, -2, 0, 0, 0, 0, 0, 4, -6, false};
constexpr extrusion_checks rotate_Q4_2{false, 2, -1, -2, 0, 0, -5, -6, 0, 4, -8, false};
// The 3D rotations of quadrangles check `conn_out` for 3 rows: a 3-row mesh
// is widened into a mixed one.
constexpr extrusion_checks rotate_Q4_3_uniform{true, 23, -1, -2, 0, 0, 0, 0, 0, 3, -3, true};
constexpr extrusion_checks rotate_Q4_3{false, 23, -1, -2, 0, 0, -5, -6, 0, 3, -8, true};
constexpr extrusion_checks rotate_T3_2_uniform{true, 23, -1, -2, 0, 0, 0, 0, 0, 3, -7, false};
constexpr extrusion_checks rotate_T3_2{false, 2, -1, -2, 0, 0, -5, -6, -7, 3, -9, false};
constexpr extrusion_checks rotate_T3_3_uniform{true, 23, -1, -2, 0, 0, 0, 0, 0, 3, -7, true};
// The IDs share -1 with the rows here, and `pattern` is not checked.
constexpr extrusion_checks rotate_T3_3{false, 23, -1, -1, 0, 0, -5, -6, 0, 3, -9, true};
constexpr extrusion_checks spiral_Q4{false, 3, -1, -2, 0, 0, -6, -7, 0, 4, -9, false};
// `h1` reports -4, below `h0`'s -6, and `pattern` is not checked.
constexpr extrusion_checks spiral_T3{false, 3, -1, -2, 0, 0, -6, -4, 0, 3, -10, false};
constexpr extrusion_checks normal_Q4_vectors{false, 2, -1, -2, -3, 0, 0, 0, 0, 4, -5, false};
constexpr extrusion_checks normal_Q4{false, 2, -1, -2, 0, -3, -4, -5, 0, 4, -7, false};
constexpr extrusion_checks normal_T3_vectors{false, 2, -1, -2, -3, 0, 0, 0, 0, 3, -6, false};
constexpr extrusion_checks normal_T3{false, 2, -1, -2, 0, -3, -4, -5, 0, 3, -8, false};
} // namespace extrusion_row

/// Status meaning that every check passed and the sweep may run.
constexpr int checks_passed = 1;

/// Runs the checks of `row` on `coords` and `args` in order: 0 for empty `conn` (and for
/// a zero layer count where the row says so), the first failing check's
/// status, -199 when `coords` could not be lifted to 3 rows, or
/// `checks_passed`. Only the lift changes anything, and only once every
/// check has passed.
int check_extrusion(const extrusion_checks& row, dense2D<double>& coords, const extrusion_arguments& args) noexcept;

} // namespace tesskit2d
} // namespace kelm
