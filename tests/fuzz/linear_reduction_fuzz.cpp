// Linear reduction and the plain splits on arbitrary arrays.

#include "fuzz_arrays.h"
#include "tesskit2d/linear_reduction.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned n_nodes = in.ConsumeIntegralInRange<unsigned>(0, 30);
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 6, 8, 9, 2}), n_nodes);
  auto out = fuzz::output(in, n_nodes);
  const unsigned before = out.cols;
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
  case 0: fuzz::check_status(kelm::tesskit2d::convert_into_linear(conn)); break;
  case 1: fuzz::check_status(kelm::tesskit2d::split_into_linear(conn, out)); break;
  case 2: {
    const int split = kelm::tesskit2d::split_Q4_into_T3(conn, out);
    fuzz::check_status(split);
    // Every column gives one triangle, and each split quadrangle one more.
    if (split > 0 && out.cols != before + conn.cols + unsigned(split)) fuzz::broken("split count");
    break;
  }
  default: fuzz::check_status(kelm::tesskit2d::split_Q4_into_T3(conn, conn)); // output on its input
  }
  return 0;
}
