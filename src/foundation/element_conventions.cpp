#include "foundation/element_conventions.h"

#include <cstddef>

#include "tesskit/check_IDs.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Indexed by the numeric value of element_type: no element, point, line
// family, E2, E3, surface family, T3, Q4, T6, Q8, Q9, solid family, then the
// eleven solid kinds.
constexpr int node_counts[23] = {0, 1, 2, 2, 3, 4, 3, 4, 6, 8, 9, 8, 4, 10, 5, 13, 14, 6, 15, 18, 8, 20, 27};

} // namespace

int element_node_count(element_type type) noexcept {
  // A value outside the enumeration is a kind with no nodes, never an index.
  const auto index = static_cast<unsigned>(type);
  return index < sizeof node_counts / sizeof node_counts[0] ? node_counts[index] : 0;
}

bool surface_ids_valid(const dense2D<unsigned>& conn, unsigned n_nodes) noexcept {
  return (conn.rows == 3 || conn.rows == 4) && tesskit::check_IDs(conn, surface_kind(conn.rows), n_nodes);
}

unsigned triangle_count(const dense2D<unsigned>& conn) noexcept {
  if (conn.rows == 3) return conn.cols;
  const unsigned* row3 = conn.column(0) + 3;
  return count_null_rows(row3, conn.ld, row3 + std::size_t(conn.cols) * conn.ld, null_id);
}

} // namespace tesskit2d
} // namespace kelm
