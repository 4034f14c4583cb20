// Splits that read coordinates: into quadrangles, and quadrangles into
// triangles by the better diagonal.

#include "fuzz_arrays.h"
#include "tesskit2d/geometric_split.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 2, 5}), coords.cols);
  auto out = fuzz::output(in, coords.cols);
  const unsigned before = out.cols;
  if (in.ConsumeBool()) {
    auto edges = in.ConsumeBool() ? kelm::dense2D<unsigned>() : fuzz::ids(in, 3, coords.cols, 6);
    const int status = kelm::tesskit2d::split_into_Q4(coords, conn, out, edges);
    fuzz::check_status(status);
    if (status == 0 && !fuzz::ids_below(out, coords.cols, before)) fuzz::broken("a child names an absent node");
  } else {
    const int split = kelm::tesskit2d::split_Q4_into_T3(coords, conn, out);
    fuzz::check_status(split);
    if (split > 0 && out.cols != before + conn.cols + unsigned(split)) fuzz::broken("split count");
  }
  return 0;
}
