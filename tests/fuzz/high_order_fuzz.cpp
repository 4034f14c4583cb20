// Raising the order with arbitrary node counts per edge, face and triangle.

#include "fuzz_arrays.h"
#include "tesskit2d/high_order.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  const unsigned n_nodes = coords.cols;
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 2, 6}), n_nodes);
  const unsigned ne = in.ConsumeIntegralInRange<unsigned>(0, 3), nq = in.ConsumeIntegralInRange<unsigned>(0, 9);
  const unsigned nt = in.ConsumeIntegralInRange<unsigned>(0, 4);
  auto edges = in.ConsumeBool() ? kelm::dense2D<unsigned>() : fuzz::ids(in, ne + 2, n_nodes, 6);
  auto out = fuzz::output(in, n_nodes);
  int status;
  switch (in.ConsumeIntegralInRange<int>(0, 2)) {
  case 0: status = kelm::tesskit2d::convert_into_high_order(coords, conn, ne, nq, nt, out, edges); break;
  case 1:
    out = conn;
    status = kelm::tesskit2d::convert_into_high_order(coords, conn, ne, nq, nt, out, edges);
    break;
  default: status = kelm::tesskit2d::convert_into_high_order(coords, conn, ne, nq, nt, edges); out = conn;
  }
  fuzz::check_status(status);
  if (status == 0 && !fuzz::ids_below(out, coords.cols)) fuzz::broken("a raised element names an absent node");
  return 0;
}
