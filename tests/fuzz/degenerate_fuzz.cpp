// Collapsed quadrangles rewritten as triangles.

#include "fuzz_arrays.h"
#include "tesskit2d/degenerate.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned n_nodes = in.ConsumeIntegralInRange<unsigned>(1, 6); // few nodes: many repeats
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {4, 8, 9, 3, 6}), n_nodes);
  kelm::dense1D<unsigned> converted;
  if (in.ConsumeBool())
    fuzz::check_status(kelm::tesskit2d::convert_degenerated_Q4(conn));
  else
    fuzz::check_status(kelm::tesskit2d::convert_degenerated_Q(conn, converted));
  for (unsigned k = 0; k < converted.size; ++k)
    if (converted[k] >= conn.cols) fuzz::broken("a converted column past the end");
  return 0;
}
