#include "tesskit2d/high_order.h"

#include "conversion/raise_order.h"
#include "foundation/separate_input.h"
#include "foundation/status.h"

namespace kelm {
namespace tesskit2d {

int convert_into_high_order(dense2D<double>& coords, const dense2D<unsigned>& conn, unsigned n_edge_nodes,
                            unsigned n_quad_nodes, unsigned n_tri_nodes, dense2D<unsigned>& out_conn,
                            const dense2D<unsigned>& edges) {
  // `out_conn` is rebuilt while `conn` and `edges` are read: where it could
  // overwrite them they are read from copies.
  const separate_input<dense2D<unsigned>> elements(conn, out_conn), known_edges(edges, out_conn);
  if (!elements.ok() || !known_edges.ok()) return status::out_of_memory;
  return raise_order(coords, elements.get(), n_edge_nodes, n_quad_nodes, n_tri_nodes, out_conn, known_edges.get());
}

int convert_into_high_order(dense2D<double>& coords, dense2D<unsigned>& conn, unsigned n_edge_nodes,
                            unsigned n_quad_nodes, unsigned n_tri_nodes, const dense2D<unsigned>& edges) {
  dense2D<unsigned> input;
  if (!input.copy(conn)) return status::out_of_memory;
  const separate_input<dense2D<unsigned>> known_edges(edges, conn);
  if (!known_edges.ok()) return status::out_of_memory;
  return raise_order(coords, input, n_edge_nodes, n_quad_nodes, n_tri_nodes, conn, known_edges.get());
}

int convert_into_quadratic(dense2D<double>& coords, dense2D<unsigned>& conn) {
  const dense2D<unsigned> no_edges;
  return convert_into_high_order(coords, conn, 1, 1, 0, no_edges);
}

int convert_into_quadratic(dense2D<double>& coords, dense2D<unsigned>& conn, const dense2D<unsigned>& edges) {
  return convert_into_high_order(coords, conn, 1, 1, 0, edges);
}

} // namespace tesskit2d
} // namespace kelm
