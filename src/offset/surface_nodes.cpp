#include <algorithm>

#include "foundation/status.h"
#include "offset/offset_steps.h"

namespace kelm {
namespace tesskit2d {
namespace {

// How many columns ahead the buckets of a column's nodes are fetched, so
// that the misses of several columns overlap.
constexpr unsigned look_ahead = 8;

template <unsigned Rows> int collect(const dense2D<unsigned>& conn, id_list& used_nodes) noexcept {
  const unsigned E = conn.cols;
  auto& table = used_nodes.table;
  for (unsigned j = 0; j < E; ++j) {
    if (j + look_ahead < E) {
      const unsigned* ahead = conn.column(j + look_ahead);
      for (unsigned r = 0; r < Rows; ++r)
        table.prefetch(ahead[r]);
    }
    const unsigned* c = conn.column(j);
    const unsigned corners = Rows == 4 && c[3] == null_id ? 3 : Rows;
    for (unsigned r = 0; r < corners; ++r) {
      // The checked insertion rather than push_back_unique, which drops an
      // ID silently when memory runs out.
      bool created;
      const id_list::record entry{{c[r], used_nodes.size}, 0, 0};
      if (!table.find_or_insert(c[r], entry, created)) return status::out_of_memory;
      if (created && !used_nodes.push_back(c[r])) return status::out_of_memory;
    }
  }
  return 0;
}

} // namespace

int collect_surface_nodes(const dense2D<unsigned>& conn, unsigned n_nodes, id_list& used_nodes) noexcept {
  // A mesh has fewer nodes than elements as a rule (about half as many for
  // triangles), and never more distinct IDs than `n_nodes`: sizing for the
  // smaller count keeps the load at most 1 per bucket. The table gets no
  // overflow room ahead: an ID hashes to itself, so IDs below the bucket
  // count (all of them when `n_nodes` is the smaller count) never share a
  // bucket, and the rare chain grows on demand.
  const unsigned expected = std::min(conn.cols, n_nodes);
  used_nodes.size = 0;
  if (!used_nodes.reserve(expected) || !used_nodes.table.initialise(0, expected)) return status::out_of_memory;
  if (conn.rows == 3) return collect<3>(conn, used_nodes);
  if (conn.rows == 4) return collect<4>(conn, used_nodes);
  return 0;
}

int remap_to_copies(const dense2D<unsigned>& conn, const id_list& used_nodes, unsigned n_nodes,
                    dense2D<unsigned>& conn_out) {
  if (!conn_out.copy(conn)) return status::out_of_memory;
  unsigned* d = conn_out.column(0);
  for (unsigned k = 0, n = conn_out.rows * conn_out.cols; k < n; ++k)
    if (d[k] != null_id) d[k] = n_nodes + used_nodes.position_of(d[k]);
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
