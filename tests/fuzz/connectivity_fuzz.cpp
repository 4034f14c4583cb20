// The elements round each node, with neighbour and ancestor tables whose
// entries name any element, none, or one that does not hold the node.

#include "fuzz_arrays.h"
#include "tesskit2d/connectivity.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned n_nodes = in.ConsumeIntegralInRange<unsigned>(0, 30);
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2, 6});
  const auto conn = fuzz::ids(in, rows, n_nodes);
  auto neighbours = fuzz::ids(in, fuzz::pick<unsigned>(in, {rows, rows, rows, 3, 4}), conn.cols + 1);
  if (in.ConsumeBool()) neighbours.cols = std::min(neighbours.cols, conn.cols);
  // Mostly an element that holds the node, so that rings are walked; now
  // and then none, one past the end, or any element.
  kelm::dense1D<unsigned> ancestors(n_nodes, fuzz::null_id);
  for (unsigned j = conn.cols; j-- > 0;)
    for (unsigned r = 0; r < std::min(conn.rows, 4u); ++r)
      if (conn(r, j) < n_nodes) ancestors[conn(r, j)] = j;
  for (unsigned i = 0; i < n_nodes; ++i) {
    const unsigned k = in.ConsumeIntegralInRange<unsigned>(0, 12);
    if (k < 3)
      ancestors[i] = k == 0 ? fuzz::null_id : k == 1 ? conn.cols : in.ConsumeIntegralInRange<unsigned>(0, conn.cols);
  }
  kelm::dense1D<unsigned> offsets, elements;
  if (in.ConsumeBool()) offsets = kelm::dense1D<unsigned>(in.ConsumeIntegralInRange<unsigned>(0, 5));
  if (in.ConsumeBool()) elements = kelm::dense1D<unsigned>(in.ConsumeIntegralInRange<unsigned>(0, 5));
  // Now and then an output over the storage of an input or of the other.
  switch (in.ConsumeIntegralInRange<int>(0, 5)) {
  case 0: offsets = ancestors; break;
  case 1: elements = conn; break;
  case 2: elements = offsets; break;
  default: break;
  }
  const int status = kelm::tesskit2d::get_connected_elements(conn, neighbours, ancestors, offsets, elements);
  fuzz::check_status(status);
  if (status > 0) fuzz::broken("a count from a form that returns none");
  if (status < 0) {
    if (offsets.size != 0 || elements.size != 0) fuzz::broken("outputs left after a refusal");
    return 0;
  }
  if (offsets.size == 0 || offsets.size > n_nodes + 1) fuzz::broken("offsets not sized as promised");
  if (offsets[0] != 0 || offsets[offsets.size - 1] != elements.size) fuzz::broken("offsets do not span elements");
  for (unsigned i = 1; i < offsets.size; ++i)
    if (offsets[i] < offsets[i - 1]) fuzz::broken("offsets not ascending");
  for (unsigned k = 0; k < elements.size; ++k)
    if (elements[k] >= conn.cols) fuzz::broken("a ring names an absent element");
  return 0;
}
