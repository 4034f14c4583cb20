// Angles, area and circumcentres on arbitrary meshes.

#include "fuzz_arrays.h"
#include "tesskit2d/measures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 4, 2, 6}), coords.cols);
  switch (in.ConsumeIntegralInRange<int>(0, 2)) {
  case 0: {
    kelm::dense1D<double> lo, hi;
    const int status = kelm::tesskit2d::angles(coords, conn, in.ConsumeBool(), lo, hi);
    fuzz::check_status(status);
    if (status == 0 && (lo.size != conn.cols || hi.size != conn.cols)) fuzz::broken("an angle per element");
    break;
  }
  case 1: {
    double total;
    fuzz::check_status(kelm::tesskit2d::area(coords, conn, total));
    break;
  }
  default: {
    kelm::dense2D<double> centers;
    const int status = kelm::tesskit2d::circumcenters(coords, conn, centers);
    fuzz::check_status(status);
    if (status == 0 && centers.cols != conn.cols) fuzz::broken("a centre per element");
  }
  }
  return 0;
}
