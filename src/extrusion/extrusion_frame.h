#pragma once
// The steps that every extrusion export runs once its own checks have
// passed, and the small checks they share.

#include "extrusion/extrusion_core.h"
#include "extrusion/layer_spacing.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {

/// Which elements a sweep writes.
enum class swept_element { quadrangle, triangle };

/// False when `conn_out` holds columns of other than `rows` rows; an empty
/// one (rows * cols of 0) always fits.
inline bool output_fits(const dense2D<unsigned>& conn_out, unsigned rows) noexcept {
  return conn_out.rows * conn_out.cols == 0 || conn_out.rows == rows;
}

/// Sizes are refused when zero or negative; a NaN passes.
inline bool size_refused(double h) noexcept { return h <= 0; }

/// `pattern` is compared as unsigned, so a negative value is refused too.
inline bool pattern_refused(int pattern) noexcept { return static_cast<unsigned>(pattern) > 2; }

inline bool edges_refused(const dense2D<unsigned>& conn, const dense2D<double>& coords) noexcept {
  return !tesskit::check_IDs(conn, E2, coords.cols);
}

/// Layers of a graded sweep of `length`: the real count rounded to a
/// multiple of 2 (`even`) or 1. Translations and rotations make at least one
/// layer, so a path of zero length still gives one layer of zero height.
inline unsigned graded_layers(double length, double h0, double h1, bool even, bool at_least_one) noexcept {
  const unsigned n = nearest_multiple(layer_count(length, h0, h1, false), even ? 2 : 1);
  return n == 0 && at_least_one ? 1 : n;
}

/// Gives 2-row `coords` a third row of 0, for paths in space. False when
/// memory runs out, with `coords` unchanged.
inline bool promote_to_space(dense2D<double>& coords) noexcept {
  return coords.rows != 2 || coords.resize(3, coords.cols, 0.0);
}

/// Lists the swept nodes, writes the elements, then places the new nodes by
/// `place(coords, used_nodes, n_nodes, n_layers)`. Connectivity is written
/// first; after a failure of either step `conn_out` and `coords` get their
/// column counts back, `coords` with `rollback_rows` rows, and the status is
/// returned.
///
/// A failure while listing the nodes is deliberately not looked at: only an
/// exhausted memory leads there, and the elements are then written with the
/// lookups that the list can answer.
template <class Place>
int sweep(dense2D<double>& coords, const dense2D<unsigned>& conn, unsigned n_layers, swept_element kind, int pattern,
          dense2D<unsigned>& conn_out, unsigned rollback_rows, Place&& place) {
  const unsigned n_nodes = coords.cols, old_elements = conn_out.cols;
  id_list used_nodes;
  collect_used_nodes(conn, used_nodes);
  int status = kind == swept_element::quadrangle
                   ? extrude_elements_Q4(conn, used_nodes, n_nodes, n_layers, conn_out)
                   : extrude_elements_T3(conn, used_nodes, n_nodes, n_layers, pattern, conn_out);
  if (status == 0) status = place(coords, used_nodes, n_nodes, n_layers);
  if (status != 0) {
    conn_out.resize(conn_out.rows, old_elements);
    coords.resize(rollback_rows, n_nodes);
  }
  return status;
}

} // namespace tesskit2d
} // namespace kelm
