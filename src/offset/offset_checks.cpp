#include <algorithm>

#include "foundation/highest_id.h"
#include "offset/offset_steps.h"

namespace kelm {
namespace tesskit2d {
namespace {

// A node ID check that skips `null_id` would let a missing corner through
// to the list of nodes and so to a column that does not exist; only row 3
// of a 4-row array may be empty. Other row counts list no node.
bool corner_missing(const dense2D<unsigned>& conn) noexcept {
  if (conn.rows != 3 && conn.rows != 4) return false;
  for (unsigned j = 0; j < conn.cols; ++j) {
    const unsigned* c = conn.column(j);
    if (c[0] == null_id || c[1] == null_id || c[2] == null_id) return true;
  }
  return false;
}

} // namespace

int check_offset_input(const dense2D<double>& coords, const dense2D<unsigned>& conn,
                       const dense2D<double>& node_normals) noexcept {
  if (coords.rows != 3) return -1;
  if (highest_id(conn) >= std::min(coords.cols, node_normals.cols) || corner_missing(conn)) return -2;
  if (node_normals.rows != 3) return -3;
  return 0;
}

} // namespace tesskit2d
} // namespace kelm
