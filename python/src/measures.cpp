// Corner angles, total area and circumcentres.

#include "tesskit2d/measures.h"
#include "arrays.h"
#include "families.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;
using namespace pybind11::literals;

void bind_measures(py::module_& m) {
  m.def(
      "angles",
      [](array_arg<double> coords, array_arg<unsigned> conn, bool normalized) {
        const char* f = tk_doc::angles_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        dense1D<double> smallest, largest;
        checked(without_gil([&] { return tk::angles(c, e, normalized, smallest, largest); }), f,
                tk_doc::angles_0_status);
        return py::make_tuple(to_numpy(smallest), to_numpy(largest));
      },
      "coords"_a, "conn"_a, "normalized"_a,
      doc(tk_doc::angles_0, "Returns (min_angles, max_angles), each of shape (#elements,).").c_str());

  m.def(
      "area",
      [](array_arg<double> coords, array_arg<unsigned> conn) {
        const char* f = tk_doc::area_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        double total_area = 0;
        checked(without_gil([&] { return tk::area(c, e, total_area); }), f, tk_doc::area_0_status);
        return total_area;
      },
      "coords"_a, "conn"_a, doc(tk_doc::area_0, "Returns total_area, a float.").c_str());

  m.def(
      "circumcenters",
      [](array_arg<double> coords, array_arg<unsigned> conn) {
        const char* f = tk_doc::circumcenters_0_name;
        const auto c = view2(coords, f, "coords");
        const auto e = view2(conn, f, "conn");
        dense2D<double> centers;
        checked(without_gil([&] { return tk::circumcenters(c, e, centers); }), f, tk_doc::circumcenters_0_status);
        return to_numpy(centers);
      },
      "coords"_a, "conn"_a, doc(tk_doc::circumcenters_0, "Returns centers, of shape (#elements, d).").c_str());
}

} // namespace tk_py
