#include "extrusion/extrusion_core.h"

#include "foundation/cell_diagonal.h"
#include "foundation/status.h"

#include <cstddef>
#include <cstdint>

namespace kelm {
namespace tesskit2d {

int collect_used_nodes(const dense2D<unsigned>& conn, id_list& used_nodes) noexcept {
  const unsigned E = conn.cols;
  used_nodes.size = 0;
  used_nodes.table.initialise(used_nodes.table.default_buckets, used_nodes.table.default_buckets);
  if (!used_nodes.reserve(E)) return status::out_of_memory;
  if (E > used_nodes.table.n_buckets && !used_nodes.table.reserve(E)) return status::out_of_memory;
  for (unsigned e = 0; e < E; ++e) {
    const unsigned* edge = conn.column(e);
    used_nodes.push_back_unique(edge[0]);
    used_nodes.push_back_unique(edge[1]);
  }
  return 0;
}

namespace {

// Every new column is written in full by the generators, so the fill value
// is spent only where nothing else would be written: the new rows of old
// columns (a 3-row mesh widened to 4) and the columns of an output that was
// empty but had columns.
//
// The count is taken wide: a sweep of more elements than 32-bit IDs can
// number is refused as memory that cannot be had, before anything grows.
bool size_elements(dense2D<unsigned>& conn_out, unsigned rows, std::uint64_t wide_cols) noexcept {
  if (wide_cols > 0xFFFFFFFFu) return false;
  const auto cols = static_cast<unsigned>(wide_cols);
  const bool all_written = conn_out.cols == 0 || (conn_out.rows * conn_out.cols != 0 && conn_out.rows >= rows);
  return all_written ? conn_out.resize(rows, cols) : conn_out.resize(rows, cols, null_id);
}

} // namespace

int extrude_elements_Q4(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        dense2D<unsigned>& conn_out) noexcept {
  const unsigned E = conn.cols, C = used_nodes.size, old_elements = conn_out.cols;
  if (!size_elements(conn_out, 4, old_elements + std::uint64_t(E) * n_layers)) return status::out_of_memory;
  const std::size_t ld = conn_out.ld;
  unsigned* out = conn_out.column(old_elements);
  for (unsigned e = 0; e < E; ++e) {
    const unsigned* edge = conn.column(e);
    // Two lookups per edge; the layers above follow by adding C.
    const unsigned p1 = used_nodes.position_of(edge[1]), p0 = used_nodes.position_of(edge[0]);
    unsigned cur0 = edge[0], cur1 = edge[1], top0 = n_nodes + p0, top1 = n_nodes + p1;
    for (unsigned k = 0; k < n_layers; ++k, out += ld) {
      out[0] = cur0;
      out[1] = cur1;
      out[2] = top1;
      out[3] = top0;
      cur0 = top0;
      cur1 = top1;
      top0 += C;
      top1 += C;
    }
  }
  return 0;
}

int extrude_elements_T3(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        int pattern, dense2D<unsigned>& conn_out) noexcept {
  const unsigned E = conn.cols, C = used_nodes.size, old_elements = conn_out.cols;
  if (!size_elements(conn_out, 3, old_elements + 2 * std::uint64_t(E) * n_layers)) return status::out_of_memory;
  const std::size_t ld = conn_out.ld;
  unsigned* out = conn_out.column(old_elements);
  for (unsigned e = 0; e < E; ++e) {
    const unsigned* edge = conn.column(e);
    const unsigned p1 = used_nodes.position_of(edge[1]), p0 = used_nodes.position_of(edge[0]);
    unsigned cur0 = edge[0], cur1 = edge[1], top0 = n_nodes + p0, top1 = n_nodes + p1;
    for (unsigned k = 0; k < n_layers; ++k, out += 2 * ld) {
      // The parity is that of the edge's column, not of its place along a
      // chain, so the alternation follows the storage order of `conn`.
      const bool diagonal_0_top1 = first_diagonal(pattern, e, k);
      unsigned* second = out + ld;
      if (diagonal_0_top1) {
        out[0] = cur0, out[1] = cur1, out[2] = top1;
        second[0] = cur0, second[1] = top1, second[2] = top0;
      } else {
        out[0] = cur0, out[1] = cur1, out[2] = top0;
        second[0] = cur1, second[1] = top1, second[2] = top0;
      }
      cur0 = top0;
      cur1 = top1;
      top0 += C;
      top1 += C;
    }
  }
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
