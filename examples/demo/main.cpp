// A tour of tesskit2d on built-in meshes: each step prints its status, the
// element counts before and after, and the time it took.

#include <cstdio>

#include "steps.h"
#include "tesskit2d/version.h"

int main() {
  std::printf("tesskit2d %s demo\n", kelm::tesskit2d::version());
  demo::linear_reduction_steps();
  demo::conversion_steps();
  demo::optimised_split_steps();
  demo::measures_steps();
  demo::curvature_steps();
  demo::orientation_steps();
  demo::surface_steps();
  demo::extrusion_steps();
  demo::structured_steps();
  demo::interpolation_steps();
  demo::metrics_steps();
  return 0;
}
