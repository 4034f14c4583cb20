#include <cmath>

#include "extrusion/extrusion_frame.h"
#include "extrusion/layer_placement.h"
#include "tesskit2d/extrusion.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The turn adds nothing to the path length, and a spiral is not raised to
// one layer: with no advance it makes none. After a failure `coords` is cut
// to the row count of `conn`, as the family always did.
int spiral(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
           const vector_fixed<double, 3>& rotation, const vector_fixed<double, 3>& translation, double h0, double h1,
           bool even, swept_element kind, int pattern, dense2D<unsigned>& conn_out) {
  const unsigned n_layers = graded_layers(path_length(translation), h0, h1, even, false);
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, conn.rows,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_spiral(c, used, n_nodes, n, center, rotation, translation, h0, h1);
               });
}

} // namespace

int extrude_spiral_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, const vector_fixed<double, 3>& translation, double h0,
                      double h1, bool even, dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::spiral_Q4, coords, {conn, conn_out, 1, nullptr, 1, h0, h1});
  if (checked != checks_passed) return checked;
  return spiral(coords, conn, center, rotation, translation, h0, h1, even, swept_element::quadrangle, 0, conn_out);
}

int extrude_spiral_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, const vector_fixed<double, 3>& translation,
                      unsigned n_layers, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(translation) / n_layers;
  return extrude_spiral_Q4(coords, conn, center, rotation, translation, h, h, false, conn_out);
}

int extrude_spiral_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, const vector_fixed<double, 3>& translation, double h0,
                      double h1, int pattern, bool even, dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::spiral_T3, coords, {conn, conn_out, 1, nullptr, 1, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  return spiral(coords, conn, center, rotation, translation, h0, h1, even, swept_element::triangle, pattern, conn_out);
}

int extrude_spiral_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, const vector_fixed<double, 3>& translation,
                      unsigned n_layers, int pattern, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(translation) / n_layers;
  return extrude_spiral_T3(coords, conn, center, rotation, translation, h, h, pattern, false, conn_out);
}

} // namespace tesskit2d
} // namespace kelm
