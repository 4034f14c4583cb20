#include <cmath>

#include "extrusion/extrusion_frame.h"
#include "extrusion/layer_placement.h"
#include "tesskit2d/extrusion.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The arc of x0, the start of the first edge, stands for the whole sweep:
// no search is made for the node farthest from the centre.
double arc_in_plane(const dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center,
                    double angle) {
  const double* x0 = coords.column(conn(0, 0));
  const double dx = x0[0] - center[0], dy = x0[1] - center[1];
  return std::fabs(angle) * std::sqrt(dx * dx + dy * dy);
}

// |rotation x (x0 - center)| is the angle times x0's distance from the axis.
double arc_in_space(const dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                    const vector_fixed<double, 3>& w) {
  const double* x0 = coords.column(conn(0, 0));
  const double d0 = x0[0] - center[0], d1 = x0[1] - center[1], d2 = x0[2] - center[2];
  const double c0 = w[1] * d2 - w[2] * d1, c1 = w[2] * d0 - w[0] * d2, c2 = w[0] * d1 - w[1] * d0;
  return std::sqrt(c0 * c0 + c1 * c1 + c2 * c2);
}

int rotate(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center, double angle,
           unsigned n_layers, double h0, double h1, swept_element kind, int pattern, dense2D<unsigned>& conn_out) {
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, 2,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_rotate(c, used, n_nodes, n, center, angle, h0, h1);
               });
}

int rotate(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
           const vector_fixed<double, 3>& rotation, unsigned n_layers, double h0, double h1, swept_element kind,
           int pattern, dense2D<unsigned>& conn_out, unsigned rollback_rows) {
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, rollback_rows,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_rotate(c, used, n_nodes, n, center, rotation, h0, h1);
               });
}

} // namespace

int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center,
                      double angle, unsigned n_layers, dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::rotate_Q4_2_uniform, coords, {conn, conn_out, n_layers});
  if (checked != checks_passed) return checked;
  return rotate(coords, conn, center, angle, n_layers, 0, 0, swept_element::quadrangle, 0, conn_out);
}

int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center,
                      double angle, double h0, double h1, bool even, dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::rotate_Q4_2, coords, {conn, conn_out, 1, nullptr, 1, h0, h1});
  if (checked != checks_passed) return checked;
  const unsigned n_layers = graded_layers(arc_in_plane(coords, conn, center, angle), h0, h1, even, true);
  return rotate(coords, conn, center, angle, n_layers, h0, h1, swept_element::quadrangle, 0, conn_out);
}

int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, unsigned n_layers, dense2D<unsigned>& conn_out) {
  const unsigned rows_on_entry = coords.rows;
  const int checked = check_extrusion(extrusion_row::rotate_Q4_3_uniform, coords, {conn, conn_out, n_layers});
  if (checked != checks_passed) return checked;
  return rotate(coords, conn, center, rotation, n_layers, 0, 0, swept_element::quadrangle, 0, conn_out, rows_on_entry);
}

int extrude_rotate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, double h0, double h1, bool even,
                      dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::rotate_Q4_3, coords, {conn, conn_out, 1, nullptr, 1, h0, h1});
  if (checked != checks_passed) return checked;
  const unsigned n_layers = graded_layers(arc_in_space(coords, conn, center, rotation), h0, h1, even, true);
  return rotate(coords, conn, center, rotation, n_layers, h0, h1, swept_element::quadrangle, 0, conn_out, 3);
}

int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center,
                      double angle, unsigned n_layers, int pattern, dense2D<unsigned>& conn_out) {
  const int checked = check_extrusion(extrusion_row::rotate_T3_2_uniform, coords, {conn, conn_out, n_layers});
  if (checked != checks_passed) return checked;
  return rotate(coords, conn, center, angle, n_layers, 0, 0, swept_element::triangle, pattern, conn_out);
}

int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 2>& center,
                      double angle, double h0, double h1, int pattern, bool even, dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::rotate_T3_2, coords, {conn, conn_out, 1, nullptr, 1, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  const unsigned n_layers = graded_layers(arc_in_plane(coords, conn, center, angle), h0, h1, even, true);
  return rotate(coords, conn, center, angle, n_layers, h0, h1, swept_element::triangle, pattern, conn_out);
}

int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, unsigned n_layers, int pattern,
                      dense2D<unsigned>& conn_out) {
  const unsigned rows_on_entry = coords.rows;
  const int checked = check_extrusion(extrusion_row::rotate_T3_3_uniform, coords, {conn, conn_out, n_layers});
  if (checked != checks_passed) return checked;
  return rotate(coords, conn, center, rotation, n_layers, 0, 0, swept_element::triangle, pattern, conn_out,
                rows_on_entry);
}

int extrude_rotate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const vector_fixed<double, 3>& center,
                      const vector_fixed<double, 3>& rotation, double h0, double h1, int pattern, bool even,
                      dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::rotate_T3_3, coords, {conn, conn_out, 1, nullptr, 1, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  const unsigned n_layers = graded_layers(arc_in_space(coords, conn, center, rotation), h0, h1, even, true);
  return rotate(coords, conn, center, rotation, n_layers, h0, h1, swept_element::triangle, pattern, conn_out, 3);
}

} // namespace tesskit2d
} // namespace kelm
