#include "tesskit2d/extras.h"

namespace kelm {
namespace tesskit2d {
namespace extras {

int ancestors_of(const dense2D<unsigned>& conn, unsigned n_nodes, dense1D<unsigned>& ancestors) noexcept {
  ancestors.size = 0;
  // Checked before anything is written, so a refusal leaves no partial table.
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned r = 0; r < conn.rows; ++r) {
      const unsigned id = conn(r, j);
      if (id != null_id && id >= n_nodes) return -1;
    }
  if (!ancestors.resize(n_nodes, null_id)) {
    ancestors.size = 0;
    return -199;
  }
  // Backwards, so that the first element holding a node writes last.
  for (unsigned j = conn.cols; j-- > 0;)
    for (unsigned r = 0; r < conn.rows; ++r) {
      const unsigned id = conn(r, j);
      if (id != null_id) ancestors[id] = j;
    }
  return 0;
}

} // namespace extras
} // namespace tesskit2d
} // namespace kelm
