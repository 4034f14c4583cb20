// Sweeps of line meshes along each path, with sizes and layer counts that
// stay small enough to run fast (the layer count of a graded sweep is the
// path length over the sizes, so extremes would only make huge outputs) but
// include the refused values and a NaN size, which the checks let through.

#include "fuzz_arrays.h"
#include "tesskit2d/extrusion.h"

using v2 = kelm::vector_fixed<double, 2>;
using v3 = kelm::vector_fixed<double, 3>;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelm::tesskit2d;
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in, 12, false);
  auto edges = fuzz::ids(in, fuzz::pick<unsigned>(in, {2, 2, 3}), coords.cols, 8);
  auto out = fuzz::output(in, coords.cols);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto length = [&] { return fuzz::pick<double>(in, {0.0, -1.0, 0.5, 1.0, 2.0, 1e-300}); };
  const auto size_of = [&] { return fuzz::pick<double>(in, {0.0, -0.5, 0.25, 0.5, 1.0, 3.0, nan}); };
  const unsigned layers = in.ConsumeIntegralInRange<unsigned>(0, 6);
  const int pattern = in.ConsumeIntegralInRange<int>(-1, 3);
  const bool even = in.ConsumeBool();
  const v2 d2{{length(), length()}};
  const v3 d3{{length(), length(), length()}}, w{{size_of(), size_of(), size_of()}};
  auto vectors = fuzz::array<double>(in, fuzz::pick<unsigned>(in, {2, 2, 3}), 14, [&] { return length(); });
  if (in.ConsumeBool()) out = edges; // sharing storage with the input
  const unsigned old_elements = out.cols;
  int status = 0;
  switch (in.ConsumeIntegralInRange<int>(0, 11)) {
  case 0: status = extrude_translate_Q4(coords, edges, d2, layers, out); break;
  case 1: status = extrude_translate_Q4(coords, edges, d3, size_of(), size_of(), even, out); break;
  case 2: status = extrude_translate_T3(coords, edges, d2, size_of(), size_of(), pattern, even, out); break;
  case 3: status = extrude_rotate_Q4(coords, edges, v2{{0, 0}}, length(), layers, out); break;
  case 4: status = extrude_rotate_Q4(coords, edges, v3{{0, 0, 0}}, w, size_of(), size_of(), even, out); break;
  case 5: status = extrude_rotate_T3(coords, edges, v3{{0, 0, 0}}, w, layers, pattern, out); break;
  case 6: status = extrude_spiral_Q4(coords, edges, v3{{0, 0, 0}}, w, d3, layers, out); break;
  case 7:
    status = extrude_spiral_T3(coords, edges, v3{{0, 0, 0}}, w, d3, size_of(), size_of(), pattern, even, out);
    break;
  case 8: status = extrude_normal_Q4(coords, edges, vectors, layers, out); break;
  case 9: status = extrude_normal_T3(coords, edges, vectors, layers, pattern, out); break;
  case 10: status = extrude_normal_Q4(coords, edges, length(), size_of(), size_of(), even, out); break;
  default: status = extrude_normal_T3(coords, edges, length(), layers, pattern, out);
  }
  fuzz::check_status(status);
  if (status == 0 && !fuzz::ids_below(out, coords.cols, old_elements))
    fuzz::broken("a swept element names an absent node");
  return 0;
}
