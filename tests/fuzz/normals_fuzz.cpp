// Element and node normals, with every weighting mode, over IDs past the last
// node and coordinates that are huge, tiny or not numbers.

#include <limits>

#include "fuzz_arrays.h"
#include "tesskit2d/normals.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  const auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 3, 4, 2, 5}), coords.cols);
  const bool unit = in.ConsumeBool();
  // A fresh output, one holding values, or `coords` itself.
  const int kind = in.ConsumeIntegralInRange<int>(0, 2);
  kelm::dense2D<double> out = kind == 0 ? kelm::dense2D<double>() : kind == 1 ? fuzz::coords(in, 4) : coords;
  const unsigned n_nodes = coords.cols;
  const bool nodes = in.ConsumeBool();
  int status;
  if (nodes) {
    const double max = std::numeric_limits<double>::max();
    const double power =
        fuzz::pick<double>(in, {0.0, 1.0, 2.0, -1.0, 0.5, -2.5, max, -max, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()});
    status = kelm::tesskit2d::normals(coords, conn, power, unit, out);
  } else {
    status = kelm::tesskit2d::normals(coords, conn, unit, out);
  }
  fuzz::check_status(status);
  if (status > 0) fuzz::broken("a count from a form that returns none");
  const bool empty = coords.rows * n_nodes == 0 || conn.rows * conn.cols == 0;
  if (status != 0 || empty) {
    if (out.rows * out.cols != 0) fuzz::broken("an output left after a refusal or empty input");
  } else if (out.rows != 3 || out.cols != (nodes ? n_nodes : conn.cols)) {
    fuzz::broken("normals not sized as promised");
  }
  return 0;
}
