#pragma once
// The steps that every extrusion export runs once its own checks have
// passed, and the small checks they share.

#include <cmath>
#include <limits>

#include "extrusion/extrusion_checks.h"
#include "extrusion/extrusion_core.h"
#include "extrusion/layer_spacing.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"

namespace kelm {
namespace tesskit2d {

/// Which elements a sweep writes.
enum class swept_element { quadrangle, triangle };

/// The Euclidean length of a path vector. Evaluated as the square root of
/// the sum of squares, except where that sum overflows or underflows: then
/// the vector is first scaled by its largest component, so that any
/// representable vector has a representable length.
template <unsigned N> double path_length(const vector_fixed<double, N>& v) noexcept {
  double sum = 0, largest = 0;
  for (unsigned i = 0; i < N; ++i) {
    sum += v[i] * v[i];
    largest = std::fmax(largest, std::fabs(v[i]));
  }
  // Below this a square may have lost digits to underflow.
  constexpr double smallest_exact = 0x1p-968;
  if (sum <= std::numeric_limits<double>::max() && (sum >= smallest_exact || largest == 0)) return std::sqrt(sum);
  if (!(largest <= std::numeric_limits<double>::max())) return largest; // an infinity or a NaN
  double scaled = 0;
  for (unsigned i = 0; i < N; ++i)
    scaled += (v[i] / largest) * (v[i] / largest);
  return largest * std::sqrt(scaled);
}

/// Layers of a graded sweep of `length`: the real count rounded to a
/// multiple of 2 (`even`) or 1. Translations and rotations make at least one
/// layer, so a path of zero length still gives one layer of zero height.
inline unsigned graded_layers(double length, double h0, double h1, bool even, bool at_least_one) noexcept {
  const unsigned n = nearest_multiple(layer_count(length, h0, h1, false), even ? 2 : 1);
  return n == 0 && at_least_one ? 1 : n;
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
  // The edges are read while `conn_out` grows: a copy where the two can meet.
  const separate_input<dense2D<unsigned>> edges(conn, conn_out);
  if (!edges.ok()) {
    coords.resize(rollback_rows, n_nodes);
    return status::out_of_memory;
  }
  id_list used_nodes;
  collect_used_nodes(edges.get(), used_nodes);
  int status = kind == swept_element::quadrangle
                   ? extrude_elements_Q4(edges.get(), used_nodes, n_nodes, n_layers, conn_out)
                   : extrude_elements_T3(edges.get(), used_nodes, n_nodes, n_layers, pattern, conn_out);
  if (status == 0) status = place(coords, used_nodes, n_nodes, n_layers);
  if (status != 0) {
    conn_out.resize(conn_out.rows, old_elements);
    coords.resize(rollback_rows, n_nodes);
  }
  return status;
}

} // namespace tesskit2d
} // namespace kelm
