// The companion tables on any connectivity: neighbours that point back,
// ancestors that hold their node, node orders that come back.

#include <vector>

#include "fuzz_arrays.h"
#include "tesskit2d/extras.h"

namespace ex = kelm::tesskit2d::extras;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned n_nodes = in.ConsumeIntegralInRange<unsigned>(0, 30);
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2, 6, 8, 9});
  auto conn = fuzz::ids(in, rows, n_nodes + in.ConsumeIntegralInRange<unsigned>(0, 2));

  kelm::dense2D<unsigned> neighbours;
  const int found = ex::neighbours_of(conn, neighbours);
  fuzz::check_status(found);
  if (found >= 0 && conn.rows * conn.cols != 0) {
    if (neighbours.rows != conn.rows || neighbours.cols != conn.cols) fuzz::broken("neighbours not shaped as conn");
    for (unsigned j = 0; j < neighbours.cols; ++j)
      for (unsigned s = 0; s < neighbours.rows; ++s) {
        const unsigned k = neighbours(s, j);
        if (k == fuzz::null_id) continue;
        if (k >= conn.cols || k == j) fuzz::broken("a neighbour that is no other element");
        bool back = false;
        for (unsigned t = 0; t < neighbours.rows; ++t)
          back |= neighbours(t, k) == j;
        if (!back) fuzz::broken("a neighbour that does not point back");
      }
  } else if (found < 0 && neighbours.cols != 0) {
    fuzz::broken("neighbours left after a refusal");
  }

  kelm::dense1D<unsigned> ancestors;
  const int held = ex::ancestors_of(conn, n_nodes, ancestors);
  fuzz::check_status(held);
  if (held == 0)
    for (unsigned n = 0; n < ancestors.size; ++n) {
      const unsigned e = ancestors[n];
      if (e == fuzz::null_id) continue;
      bool holds = false;
      for (unsigned r = 0; r < conn.rows; ++r)
        holds |= e < conn.cols && conn(r, e) == n;
      if (!holds) fuzz::broken("an ancestor that does not hold its node");
    }

  kelm::dense2D<unsigned> copy;
  copy.copy(conn);
  if (ex::to_vtk_order(copy) == 0 && ex::from_vtk_order(copy) == 0)
    for (unsigned j = 0; j < conn.cols; ++j)
      for (unsigned r = 0; r < conn.rows; ++r)
        if (copy(r, j) != conn(r, j)) fuzz::broken("node orders do not come back");

  // Renumbering any coordinates (NaN and infinities included): the orders
  // are permutations and the cells name the same nodes as before.
  auto xy = fuzz::coords(in, 24);
  auto cells = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4}), xy.cols);
  kelm::dense2D<unsigned> before;
  before.copy(cells);
  kelm::dense1D<unsigned> nodes, elements;
  const int renumbered = ex::renumber(xy, cells, nullptr, nullptr, nodes, elements);
  fuzz::check_status(renumbered);
  if (renumbered == 0) {
    std::vector<bool> seen(nodes.size);
    for (unsigned k = 0; k < nodes.size; ++k) {
      if (nodes[k] >= nodes.size || seen[nodes[k]]) fuzz::broken("a node order that is no permutation");
      seen[nodes[k]] = true;
    }
    for (unsigned j = 0; j < cells.cols; ++j)
      for (unsigned r = 0; r < cells.rows; ++r) {
        const unsigned now = cells(r, j), was = before(r, elements[j]);
        if ((now == fuzz::null_id) != (was == fuzz::null_id) || (now != fuzz::null_id && nodes[now] != was))
          fuzz::broken("a renumbered cell that names other nodes");
      }
  } else if (renumbered != -1 && renumbered != -2) {
    fuzz::broken("a status renumber does not give here");
  }
  return 0;
}
