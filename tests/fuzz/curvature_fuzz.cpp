// Parametric and principal curvatures on grid surfaces and on arbitrary
// arrays: neighbour tables that name any element, one past the last or
// none, degenerate and non-numeric geometry, and any radius, angle and
// patch size.

#include "fuzz_surfaces.h"
#include "tesskit2d/curvature.h"

namespace {

// A tangent component near that of the plane's Su = (1, 0, 0) or
// Sv = (0, 1, 0) (`base`), now and then an extreme or non-numeric value.
double tangent(FuzzedDataProvider& in, double base) {
  if (in.ConsumeIntegralInRange<int>(0, 15) == 15)
    return fuzz::pick<double>(
        in, {0.0, 1e300, -1e-300, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()});
  return base + in.ConsumeIntegralInRange<int>(-4, 4) * 0.25;
}

void parametric(FuzzedDataProvider& in) {
  // The scalar choices come first, so that they are still the input's when
  // a large mesh has used it up.
  const unsigned rows = fuzz::pick<unsigned>(in, {6, 6, 6, 5});
  const bool extra_column = in.ConsumeIntegralInRange<int>(0, 7) == 7;
  kelm::dense2D<double> uv;
  kelm::dense2D<unsigned> conn;
  if (in.ConsumeBool()) {
    const fuzz::surface s = fuzz::grid_surface(in, 2);
    uv = s.xyz, conn = s.tri;
  } else {
    uv = fuzz::coords(in);
    conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 3, 4, 2}), uv.cols);
  }
  const unsigned cols = uv.cols + extra_column;
  kelm::dense2D<double> tangents(rows, cols);
  for (unsigned j = 0; j < cols; ++j)
    for (unsigned r = 0; r < rows; ++r)
      tangents(r, j) = tangent(in, r == 0 || r == 4 ? 1.0 : 0.0);
  kelm::dense2D<double> forms;
  const int status = kelm::tesskit2d::parametric_curvatures(uv, conn, tangents, forms);
  fuzz::check_status(status);
  if (status == 0 && conn.rows * conn.cols != 0 && (forms.rows != 3 || forms.cols != uv.cols))
    fuzz::broken("three forms per node");
  if ((status != 0 || conn.rows * conn.cols == 0) && forms.rows * forms.cols != 0)
    fuzz::broken("forms empty after a refusal or on empty input");
}

void principal(FuzzedDataProvider& in) {
  const double radius =
      fuzz::pick<double>(in, {1.5, 0.5, 1.0, 0.0, 3.0, -2.0, 1e300, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()});
  const double max_angle = fuzz::pick<double>(
      in, {1.0, 0.5, 0.0, 3.141592653589793, 4.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()});
  const unsigned max_elements = fuzz::pick<unsigned>(in, {30u, 1u, 2u, 5u, 0u, 0xFFFFFFFFu});
  kelm::dense2D<double> coords;
  kelm::dense2D<unsigned> conn, neighbours;
  if (in.ConsumeBool()) {
    const fuzz::surface s = fuzz::grid_surface(in);
    coords = s.xyz, conn = s.tri, neighbours = s.nb;
  } else {
    coords = fuzz::coords(in);
    conn = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 3, 3, 4}), coords.cols);
    neighbours = fuzz::ids(in, fuzz::pick<unsigned>(in, {3, 3, 4, 2}), conn.cols + 1);
    if (in.ConsumeBool()) neighbours.cols = std::min(neighbours.cols, conn.cols);
  }
  auto hard_edges = fuzz::ids(in, fuzz::pick<unsigned>(in, {2, 2, 0, 3}), coords.cols, 6);
  kelm::dense2D<double> curvatures(2, 3, 1.0); // earlier content
  if (in.ConsumeBool()) curvatures = kelm::dense2D<double>();
  const unsigned rows = curvatures.rows, cols = curvatures.cols;
  const int status = kelm::tesskit2d::principal_curvatures(coords, conn, neighbours, radius, max_angle, max_elements,
                                                           hard_edges, curvatures);
  fuzz::check_status(status);
  if (status == 0 && conn.rows * conn.cols != 0 && (curvatures.rows != 8 || curvatures.cols != coords.cols))
    fuzz::broken("eight values per node");
  if (status == -199 && curvatures.rows * curvatures.cols != 0) fuzz::broken("curvatures empty after -199");
  if (status < 0 && status != -199 && (curvatures.rows != rows || curvatures.cols != cols))
    fuzz::broken("curvatures untouched after a refusal");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider in(data, size);
  if (in.ConsumeBool())
    parametric(in);
  else
    principal(in);
  return 0;
}
