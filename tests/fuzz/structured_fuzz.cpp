// Structured grids in loops of any length, closed or not.

#include "fuzz_arrays.h"
#include "tesskit2d/structured.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  auto coords = fuzz::coords(in);
  const unsigned n_nodes = coords.cols;
  kelm::dense1D<unsigned, 8> loop(in.ConsumeIntegralInRange<unsigned>(0, 40));
  for (unsigned k = 0; k < loop.size; ++k)
    loop[k] = in.ConsumeIntegralInRange<unsigned>(0, n_nodes);
  if (loop.size > 1 && in.ConsumeBool()) loop[loop.size - 1] = loop[0];
  const unsigned n_side =
      in.ConsumeBool() ? in.ConsumeIntegralInRange<unsigned>(0, 24) : in.ConsumeIntegral<unsigned>();
  auto out = fuzz::output(in, n_nodes);
  const unsigned before = coords.cols, old_elements = out.cols;
  int status;
  if (in.ConsumeBool())
    status = kelm::tesskit2d::mesh_struct_Q4(coords, loop, n_side, out);
  else
    status = kelm::tesskit2d::mesh_struct_T3(coords, loop, n_side, in.ConsumeIntegralInRange<int>(-1, 3), out);
  fuzz::check_status(status);
  if (status == 0 && coords.cols >= before && !fuzz::ids_below(out, coords.cols, old_elements))
    fuzz::broken("an absent node");
  return 0;
}
