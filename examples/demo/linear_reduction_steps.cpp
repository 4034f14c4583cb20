#include "meshes.h"
#include "report.h"
#include "steps.h"
#include "tesskit2d/linear_reduction.h"

namespace demo {

using namespace kelm::tesskit2d;

void linear_reduction_steps() {
  section("Linear reduction and plain splits");
  const unsigned n = 200;
  const dense2D<unsigned> quadratic = mixed_quadratic_grid(n);
  unsigned q9 = 0;
  for (unsigned j = 0; j < quadratic.cols; ++j)
    q9 += quadratic(6, j) != null_id;

  {
    dense2D<unsigned> c;
    c.copy(quadratic);
    step s("convert_into_linear");
    const int status = convert_into_linear(c);
    s.done(status, "%u Q9 + %u T6 -> %u rows", q9, quadratic.cols - q9, c.rows);
  }
  dense2D<unsigned> linear;
  {
    step s("split_into_linear");
    const int status = split_into_linear(quadratic, linear);
    s.done(status, "%u quadratic -> %u linear elements", quadratic.cols, linear.cols);
  }
  {
    dense2D<unsigned> triangles;
    step s("split_Q4_into_T3 (diagonal 0-2)");
    const int status = split_Q4_into_T3(linear, triangles);
    s.done(status, "%u elements -> %u triangles", linear.cols, triangles.cols);
  }
}

} // namespace demo
