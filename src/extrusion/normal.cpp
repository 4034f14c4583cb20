#include "extrusion/extrusion_frame.h"
#include "extrusion/layer_placement.h"
#include "tesskit1d/normals.h"
#include "tesskit2d/extrusion.h"

namespace kelm {
namespace tesskit2d {
namespace {

int along_vectors(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& vectors,
                  unsigned n_layers, double thickness, double h0, double h1, swept_element kind, int pattern,
                  dense2D<unsigned>& conn_out, unsigned rollback_rows) {
  return sweep(coords, conn, n_layers, kind, pattern, conn_out, rollback_rows,
               [&](dense2D<double>& c, const id_list& used, unsigned n_nodes, unsigned n) {
                 return place_layers_normal(c, used, n_nodes, n, vectors, thickness, h0, h1);
               });
}

// Unit normals of the line mesh, edges weighted by their length; a zero
// layer count still computes them, as the sweep has no early exit.
int along_normals(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness, double h0, double h1,
                  bool even, swept_element kind, int pattern, dense2D<unsigned>& conn_out) {
  const unsigned n_layers = graded_layers(thickness, h0, h1, even, false);
  const unsigned rows_on_entry = coords.rows;
  dense2D<double> node_normals;
  const int status = tesskit1d::normals(coords, conn, 1.0, true, node_normals);
  if (status < 0) return status;
  return along_vectors(coords, conn, node_normals, n_layers, thickness, h0, h1, kind, pattern, conn_out, rows_on_entry);
}

} // namespace

int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& vectors,
                      unsigned n_layers, dense2D<unsigned>& conn_out) {
  const unsigned rows_on_entry = coords.rows;
  const int checked = check_extrusion(extrusion_row::normal_Q4_vectors, coords, {conn, conn_out, 1, &vectors});
  if (checked != checks_passed) return checked;
  return along_vectors(coords, conn, vectors, n_layers, 1, 1, 1, swept_element::quadrangle, 0, conn_out, rows_on_entry);
}

int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness, double h0, double h1,
                      bool even, dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::normal_Q4, coords, {conn, conn_out, 1, nullptr, thickness, h0, h1});
  if (checked != checks_passed) return checked;
  return along_normals(coords, conn, thickness, h0, h1, even, swept_element::quadrangle, 0, conn_out);
}

int extrude_normal_Q4(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness, unsigned n_layers,
                      dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = thickness / n_layers;
  return extrude_normal_Q4(coords, conn, thickness, h, h, false, conn_out);
}

int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, const dense2D<double>& vectors,
                      unsigned n_layers, int pattern, dense2D<unsigned>& conn_out) {
  const unsigned rows_on_entry = coords.rows;
  const int checked =
      check_extrusion(extrusion_row::normal_T3_vectors, coords, {conn, conn_out, 1, &vectors, 1, 1, 1, pattern});
  if (checked != checks_passed) return checked;
  return along_vectors(coords, conn, vectors, n_layers, 1, 1, 1, swept_element::triangle, pattern, conn_out,
                       rows_on_entry);
}

int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness, double h0, double h1,
                      bool even, int pattern, dense2D<unsigned>& conn_out) {
  const int checked =
      check_extrusion(extrusion_row::normal_T3, coords, {conn, conn_out, 1, nullptr, thickness, h0, h1, pattern});
  if (checked != checks_passed) return checked;
  return along_normals(coords, conn, thickness, h0, h1, even, swept_element::triangle, pattern, conn_out);
}

int extrude_normal_T3(dense2D<double>& coords, const dense2D<unsigned>& conn, double thickness, unsigned n_layers,
                      int pattern, dense2D<unsigned>& conn_out) {
  if (n_layers == 0) return 0;
  const double h = thickness / n_layers;
  return extrude_normal_T3(coords, conn, thickness, h, h, false, pattern, conn_out);
}

} // namespace tesskit2d
} // namespace kelm
