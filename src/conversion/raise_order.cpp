#include "conversion/raise_order.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "conversion/edge_numbering.h"
#include "conversion/node_placement.h"
#include "foundation/output_clear.h"
#include "foundation/status.h"
#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {
namespace {

// The side m of a perfect square m * m, or null_id.
unsigned square_side(unsigned n) noexcept {
  std::uint64_t m = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(n)));
  while (m * m > n)
    --m;
  while ((m + 1) * (m + 1) <= n)
    ++m;
  return m * m == n ? static_cast<unsigned>(m) : null_id;
}

// Beyond the ID check, the ends and the first node of each known edge must
// be real nodes, and its run of consecutive IDs must stay below n_nodes.
bool edges_valid(const dense2D<unsigned>& edges, unsigned ne, unsigned n_nodes) noexcept {
  if (edges.rows * edges.cols == 0) return true;
  if (edges.rows != std::uint64_t(ne) + 2 || !tesskit::check_IDs(edges, n_nodes)) return false;
  if (ne == 0) return true;
  for (unsigned j = 0; j < edges.cols; ++j) {
    const unsigned* e = edges.column(j);
    if (e[0] == null_id || e[1] == null_id || e[2] == null_id || std::uint64_t(e[2]) + ne > n_nodes) return false;
  }
  return true;
}

} // namespace

int raise_order(dense2D<double>& coords, const dense2D<unsigned>& conn, unsigned n_edge_nodes, unsigned n_quad_nodes,
                unsigned n_tri_nodes, dense2D<unsigned>& out_conn, const dense2D<unsigned>& edges) {
  const unsigned n_nodes = coords.cols, n = conn.cols;
  const unsigned ne = n_edge_nodes, nq = n_quad_nodes, nt = n_tri_nodes;
  clear_output(out_conn);
  if (conn.rows * n == 0 || (ne | nq | nt) == 0) return 0;
  if (coords.rows != 2 && coords.rows != 3) return -1;
  if (!surface_ids_valid(conn, n_nodes)) return -2;
  const unsigned m = square_side(nq);
  if (m == null_id) return -4;
  if (nt != 0 && nt != 1 && nt != 3) return -5;
  if (!edges_valid(edges, ne, n_nodes)) return -6;

  const unsigned T = triangle_count(conn);
  const unsigned Q = n - T;

  // Triangles need nt + 3 (ne + 1) rows, quadrangles nq + 4 (ne + 1); the
  // unused rows of the shorter kind stay null_id.
  const std::uint64_t tri_rows = nt + 3 * (std::uint64_t(ne) + 1), quad_rows = nq + 4 * (std::uint64_t(ne) + 1);
  const std::uint64_t rows = Q == 0 ? tri_rows : T == 0 ? quad_rows : std::max(tri_rows, quad_rows);
  if (rows * n > id_limit) return status::out_of_memory;

  std::uint64_t next_id = n_nodes;
  edge_table table;
  if (ne != 0 && !table.build(conn, edges, ne, n_nodes)) return status::out_of_memory;

  // The numbering writes every row of every column, so the output needs no
  // fill of its own beforehand; without edge nodes only the corners are
  // copied, and the rest must read null_id.
  const bool sized = ne != 0 ? out_conn.resize(static_cast<unsigned>(rows), n)
                             : out_conn.resize(static_cast<unsigned>(rows), n, null_id);
  if (!sized) {
    clear_output(out_conn);
    return status::out_of_memory;
  }
  const bool numbered = ne != 0 ? table.number(conn, ne, out_conn, next_id) : (copy_corners(conn, out_conn), true);
  const std::uint64_t interior = std::uint64_t(Q) * nq + std::uint64_t(T) * nt;
  const std::uint64_t total = next_id + interior;
  // Every new column is written below, edge nodes once each and interior
  // nodes element by element, except the tail that three-node triangles
  // leave behind, which reads 0.0 as the resize with a fill would leave it.
  // Sparing that fill spares a pass over the largest part of `coords`.
  const bool fill = ne == 0;
  if (!numbered || total > id_limit ||
      !(fill ? coords.resize(coords.rows, static_cast<unsigned>(total), 0.0)
             : coords.resize(coords.rows, static_cast<unsigned>(total)))) {
    clear_output(out_conn);
    return status::out_of_memory;
  }
  if (!fill && nt == 3 && T != 0)
    for (unsigned j = static_cast<unsigned>(total - T); j < total; ++j)
      std::fill_n(coords.column(j), coords.rows, 0.0);

  if (ne != 0) place_edge_nodes(coords, conn, out_conn, ne, n_nodes, static_cast<unsigned>(next_id));
  if (std::uint64_t(Q) * m + std::uint64_t(T) * nt != 0)
    place_interior_nodes(coords, conn, out_conn, ne, m, nt, n_nodes, static_cast<unsigned>(next_id));
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
