#include "neighbour_table.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace bench {

using kelm::tesskit2d::null_id;

dense2D<unsigned> triangle_neighbours(const dense2D<unsigned>& conn) {
  std::vector<std::pair<std::uint64_t, unsigned>> edges;
  edges.reserve(3 * std::size_t(conn.cols));
  for (unsigned j = 0; j < conn.cols; ++j)
    for (unsigned s = 0; s < 3; ++s) {
      const unsigned a = conn((s + 1) % 3, j), b = conn((s + 2) % 3, j);
      edges.push_back({std::uint64_t(std::min(a, b)) << 32 | std::max(a, b), 3 * j + s});
    }
  std::sort(edges.begin(), edges.end());
  dense2D<unsigned> nb(3, conn.cols, null_id);
  for (std::size_t k = 0; k + 1 < edges.size(); ++k)
    if (edges[k].first == edges[k + 1].first) {
      const unsigned p = edges[k].second, q = edges[k + 1].second;
      nb(p % 3, p / 3) = q / 3;
      nb(q % 3, q / 3) = p / 3;
      ++k;
    }
  return nb;
}

} // namespace bench
