// Flips and reorientation, with neighbour tables that name any element or
// none, and element kinds outside the enumeration.

#include "fuzz_arrays.h"
#include "tesskit2d/orientation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned n_nodes = in.ConsumeIntegralInRange<unsigned>(0, 30);
  const unsigned rows = fuzz::pick<unsigned>(in, {3, 4, 6, 8, 9, 2});
  auto conn = fuzz::ids(in, rows, n_nodes);
  auto neighbours = fuzz::ids(in, fuzz::pick<unsigned>(in, {rows, rows, 3, 4}), conn.cols + 1);
  if (in.ConsumeBool()) neighbours.cols = std::min(neighbours.cols, conn.cols);
  // Any value the enumeration's range holds, named by it or not.
  const auto type = static_cast<kelm::element_type>(in.ConsumeIntegralInRange<int>(0, 31));
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
  case 0: fuzz::check_status(kelm::tesskit2d::flip(conn)); break;
  case 1: fuzz::check_status(kelm::tesskit2d::flip(conn, type)); break;
  case 2: fuzz::check_status(kelm::tesskit2d::flip(conn, neighbours, type)); break;
  default:
    fuzz::check_status(kelm::tesskit2d::mesh_reorient(conn, neighbours, in.ConsumeIntegralInRange<unsigned>(0, 30),
                                                      in.ConsumeIntegralInRange<int>(-1, 2)));
  }
  return 0;
}
