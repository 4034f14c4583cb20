// Anisotropic metric generation on grid surfaces and arbitrary arrays, with
// any normal size and a field that is empty, of the right shape, or of
// another, holding any values.

#include "fuzz_surfaces.h"
#include "tesskit2d/metric_generation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const double normal_size =
      fuzz::pick<double>(in, {0.0, 0.1, -0.1, 2.0, -3.0, 1e-300, -1e300, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()});
  kelm::dense2D<double> coords;
  kelm::dense2D<unsigned> conn;
  if (in.ConsumeBool()) {
    const fuzz::surface s = fuzz::grid_surface(in, fuzz::pick<unsigned>(in, {3, 3, 4}));
    coords = s.xyz, conn = s.tri;
  } else {
    coords = fuzz::coords(in);
    conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 3, 3, 4}), coords.cols);
  }
  kelm::dense2D<double> metrics;
  if (in.ConsumeBool()) // a field held already: any values, also indefinite or not numbers
    metrics = fuzz::array<double>(in, fuzz::pick<unsigned>(in, {6, 6, 3, 0}), coords.cols + 2, [&] {
      if (in.ConsumeIntegralInRange<int>(0, 15) == 0)
        return fuzz::pick<double>(in, {1e300, -1.0, std::numeric_limits<double>::quiet_NaN()});
      return in.ConsumeIntegralInRange<int>(0, 8) * 0.25;
    });
  const unsigned rows = metrics.rows, cols = metrics.cols;
  const int status = kelm::tesskit2d::metrics_gen_aniso3d(coords, conn, normal_size, metrics);
  fuzz::check_status(status);
  if (status == 0) {
    unsigned largest = 0;
    for (unsigned e = 0; e < conn.cols; ++e)
      for (unsigned k = 0; k < 3; ++k)
        largest = std::max(largest, conn(k, e));
    if (metrics.rows != 6 || metrics.cols != std::max(largest + 1, cols))
      fuzz::broken("a field of 6 rows, grown as promised");
  } else if (metrics.rows != rows || metrics.cols != cols) {
    fuzz::broken("metrics untouched after a refusal");
  }
  return 0;
}
