#include <cmath>

#include "extrusion/extrusion_frame.h"
#include "extrusion/layer_placement.h"
#include "tesskit2d/extrusion.h"

namespace kelm {
namespace tesskit2d {
namespace {

double norm(const vector_fixed<double, 2>& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1]); }
double norm(const vector_fixed<double, 3>& v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

// Both element kinds of one row count share the sweep; only the checks and
// their numbers differ between the exports.
template <class Direction>
int translate(dense2D<double>& coords, const dense2D<unsigned>& conn, const Direction& direction, double h0, double h1,
              bool even, swept_element kind, int pattern, dense2D<unsigned>& conn_out, unsigned rollback_rows) {
  const unsigned n_layers = graded_layers(norm(direction), h0, h1, even, true);
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, rollback_rows,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_translate(c, used, n_nodes, n, direction, h0, h1);
               });
}

} // namespace

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, double h0, double h1, bool even,
                         dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2) return -1;
  if (edges_refused(conn, coords)) return -2;
  if (size_refused(h0)) return -4;
  if (size_refused(h1)) return -5;
  if (!output_fits(conn_out, 4)) return -7;
  return translate(coords, conn, direction, h0, h1, even, swept_element::quadrangle, 0, conn_out, 2);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, unsigned n_layers, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = norm(direction) / n_layers;
  return extrude_translate_Q4(coords, conn, direction, h, h, false, conn_out);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, double h0, double h1, bool even,
                         dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (edges_refused(conn, coords)) return -2;
  if (size_refused(h0)) return -4;
  if (size_refused(h1)) return -5;
  if (!output_fits(conn_out, 4)) return -7;
  if (!promote_to_space(coords)) return -199;
  return translate(coords, conn, direction, h0, h1, even, swept_element::quadrangle, 0, conn_out, 3);
}

int extrude_translate_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, unsigned n_layers, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = norm(direction) / n_layers;
  return extrude_translate_Q4(coords, conn, direction, h, h, false, conn_out);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, double h0, double h1, int pattern, bool even,
                         dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2) return -1;
  if (edges_refused(conn, coords)) return -2;
  if (size_refused(h0)) return -4;
  if (size_refused(h1)) return -5;
  if (pattern_refused(pattern)) return -6;
  if (!output_fits(conn_out, 3)) return -8;
  return translate(coords, conn, direction, h0, h1, even, swept_element::triangle, pattern, conn_out, 2);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 2>& direction, unsigned n_layers, int pattern,
                         dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = norm(direction) / n_layers;
  return extrude_translate_T3(coords, conn, direction, h, h, pattern, false, conn_out);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, double h0, double h1, int pattern, bool even,
                         dense2D<unsigned>& conn_out) {
  if (conn.rows * conn.cols == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (edges_refused(conn, coords)) return -2;
  if (size_refused(h0)) return -4;
  if (size_refused(h1)) return -5;
  if (pattern_refused(pattern)) return -6;
  if (!output_fits(conn_out, 3)) return -8;
  if (!promote_to_space(coords)) return -199;
  return translate(coords, conn, direction, h0, h1, even, swept_element::triangle, pattern, conn_out, 3);
}

int extrude_translate_T3(dense2D<double>& coords, const dense2D<unsigned>& conn,
                         const vector_fixed<double, 3>& direction, unsigned n_layers, int pattern,
                         dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = norm(direction) / n_layers;
  return extrude_translate_T3(coords, conn, direction, h, h, pattern, false, conn_out);
}

} // namespace tesskit2d
} // namespace kelm
