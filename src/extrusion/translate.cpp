#include <cmath>

#include "extrusion/extrusion_frame.h"
#include "extrusion/layer_placement.h"
#include "tesskit2d/extrusion.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Both element kinds of one row count share the sweep; only the checks and
// their numbers differ between the exports.
template <class Direction>
int translate(dense2D<double>& coords, const dense2D<unsigned>& conn, const Direction& direction, double h0, double h1,
              bool even, swept_element kind, int pattern, dense2D<unsigned>& conn_out, unsigned rollback_rows) {
  const unsigned n_layers = graded_layers(path_length(direction), h0, h1, even, true);
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, rollback_rows,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_translate(c, used, n_nodes, n, direction, h0, h1);
               });
}

} // namespace

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, double h0, double h1, bool even,
                         dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::translate_Q4_2, coords, {conn, conn_out, 1, nullptr, 1, h0, h1});
  if (checked != checks_passed) return checked;
  return translate(coords, conn, direction, h0, h1, even, swept_element::quadrangle, 0, conn_out, 2);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, unsigned n_layers, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(direction) / n_layers;
  return extrude_translate_Q4(coords, conn, direction, h, h, false, conn_out);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, double h0, double h1, bool even,
                         dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::translate_Q4_3, coords, {conn, conn_out, 1, nullptr, 1, h0, h1});
  if (checked != checks_passed) return checked;
  return translate(coords, conn, direction, h0, h1, even, swept_element::quadrangle, 0, conn_out, 3);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, unsigned n_layers, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(direction) / n_layers;
  return extrude_translate_Q4(coords, conn, direction, h, h, false, conn_out);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, double h0, double h1, int pattern, bool even,
                         dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::translate_T3_2, coords, {conn, conn_out, 1, nullptr, 1, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  return translate(coords, conn, direction, h0, h1, even, swept_element::triangle, pattern, conn_out, 2);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, unsigned n_layers, int pattern,
                         dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(direction) / n_layers;
  return extrude_translate_T3(coords, conn, direction, h, h, pattern, false, conn_out);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, double h0, double h1, int pattern, bool even,
                         dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::translate_T3_3, coords, {conn, conn_out, 1, nullptr, 1, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  return translate(coords, conn, direction, h0, h1, even, swept_element::triangle, pattern, conn_out, 3);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, unsigned n_layers, int pattern,
                         dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = path_length(direction) / n_layers;
  return extrude_translate_T3(coords, conn, direction, h, h, pattern, false, conn_out);
}

} // namespace tesskit2d
} // namespace kelm
