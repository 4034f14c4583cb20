// Cutting, in place, the quadrangles that fail shape criteria: thresholds in
// and out of their active ranges, any diagonal rule, candidates that name
// any column.

#include <limits>

#include "fuzz_arrays.h"
#include "tesskit2d/geometric_split.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  const auto coords = fuzz::coords(in);
  auto conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {4, 4, 4, 3}), coords.cols);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double max_angle = fuzz::pick<double>(in, {0.0, 1.0, 2.0, 2.9, 3.5, 7.0, -1.0, nan});
  const double max_warp = fuzz::pick<double>(in, {0.0, 0.1, 0.5, 3.0, 4.0, nan});
  const double min_jacobian = fuzz::pick<double>(in, {0.0, 0.2, 0.9, 1.0, -1.0, 2.0, nan});
  const int diagonal = in.ConsumeIntegralInRange<int>(-1, 2);
  kelm::dense1D<unsigned, 8> candidates(in.ConsumeIntegralInRange<unsigned>(0, 8));
  for (unsigned k = 0; k < candidates.size; ++k)
    candidates[k] = in.ConsumeIntegralInRange<unsigned>(0, conn.cols);
  kelm::dense1D<unsigned, 8> split(in.ConsumeIntegralInRange<unsigned>(0, 3));
  // Now and then the cut columns into the candidates' or `conn`'s storage.
  switch (in.ConsumeIntegralInRange<int>(0, 5)) {
  case 0: split = candidates; break;
  case 1: split = conn; break;
  case 2: candidates = conn; break;
  default: break;
  }
  const unsigned before = conn.cols;
  const int n_cut =
      kelm::tesskit2d::split_Q4_into_T3(coords, max_angle, max_warp, min_jacobian, diagonal, candidates, split, conn);
  fuzz::check_status(n_cut);
  if (n_cut < 0) {
    if (conn.cols != before) fuzz::broken("conn changed after a refusal");
    return 0;
  }
  if (conn.rows * before == 0) return 0;
  if (split.size != unsigned(n_cut) || conn.cols != before + unsigned(n_cut)) fuzz::broken("cut count");
  for (unsigned k = 0; k < split.size; ++k)
    if (split[k] >= before || (k > 0 && split[k] <= split[k - 1])) fuzz::broken("cut columns not ascending");
  if (!fuzz::ids_below(conn, coords.cols)) fuzz::broken("a triangle names an absent node");
  return 0;
}
