// Extrusion of line meshes into layered surface meshes, along a translation,
// a rotation, a spiral or the normals; every form appends to `conn_out`.

#include "tesskit2d/extrusion.h"
#include "arrays.h"
#include "families.h"
#include "surface_growth.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;

void bind_extrusion(py::module_& m) {
  using V2 = kelm::vector_fixed<double, 2>;
  using V3 = kelm::vector_fixed<double, 3>;
  constexpr auto appended = conn_out_mode::appended;
  // The forms of one name differ by the number of arguments or by the length
  // of the vectors (2 or 3 entries), so pybind11 picks the form from the call.
  def_growth<appended, const V2&, double, double, bool>(
      m, "extrude_translate_Q4", tk::extrude_translate_Q4, {"direction", "h0", "h1", "even"},
      tk_doc::extrude_translate_Q4_0, tk_doc::extrude_translate_Q4_0_status);
  def_growth<appended, const V2&, unsigned>(m, "extrude_translate_Q4", tk::extrude_translate_Q4,
                                            {"direction", "n_layers"}, tk_doc::extrude_translate_Q4_1,
                                            tk_doc::extrude_translate_Q4_1_status);
  def_growth<appended, const V3&, double, double, bool>(
      m, "extrude_translate_Q4", tk::extrude_translate_Q4, {"direction", "h0", "h1", "even"},
      tk_doc::extrude_translate_Q4_2, tk_doc::extrude_translate_Q4_2_status);
  def_growth<appended, const V3&, unsigned>(m, "extrude_translate_Q4", tk::extrude_translate_Q4,
                                            {"direction", "n_layers"}, tk_doc::extrude_translate_Q4_3,
                                            tk_doc::extrude_translate_Q4_3_status);
  def_growth<appended, const V2&, double, double, int, bool>(
      m, "extrude_translate_T3", tk::extrude_translate_T3, {"direction", "h0", "h1", "pattern", "even"},
      tk_doc::extrude_translate_T3_0, tk_doc::extrude_translate_T3_0_status);
  def_growth<appended, const V2&, unsigned, int>(m, "extrude_translate_T3", tk::extrude_translate_T3,
                                                 {"direction", "n_layers", "pattern"}, tk_doc::extrude_translate_T3_1,
                                                 tk_doc::extrude_translate_T3_1_status);
  def_growth<appended, const V3&, double, double, int, bool>(
      m, "extrude_translate_T3", tk::extrude_translate_T3, {"direction", "h0", "h1", "pattern", "even"},
      tk_doc::extrude_translate_T3_2, tk_doc::extrude_translate_T3_2_status);
  def_growth<appended, const V3&, unsigned, int>(m, "extrude_translate_T3", tk::extrude_translate_T3,
                                                 {"direction", "n_layers", "pattern"}, tk_doc::extrude_translate_T3_3,
                                                 tk_doc::extrude_translate_T3_3_status);
  def_growth<appended, const V2&, double, unsigned>(m, "extrude_rotate_Q4", tk::extrude_rotate_Q4,
                                                    {"center", "angle", "n_layers"}, tk_doc::extrude_rotate_Q4_0,
                                                    tk_doc::extrude_rotate_Q4_0_status);
  def_growth<appended, const V2&, double, double, double, bool>(
      m, "extrude_rotate_Q4", tk::extrude_rotate_Q4, {"center", "angle", "h0", "h1", "even"},
      tk_doc::extrude_rotate_Q4_1, tk_doc::extrude_rotate_Q4_1_status);
  def_growth<appended, const V3&, const V3&, unsigned>(m, "extrude_rotate_Q4", tk::extrude_rotate_Q4,
                                                       {"center", "rotation", "n_layers"}, tk_doc::extrude_rotate_Q4_2,
                                                       tk_doc::extrude_rotate_Q4_2_status);
  def_growth<appended, const V3&, const V3&, double, double, bool>(
      m, "extrude_rotate_Q4", tk::extrude_rotate_Q4, {"center", "rotation", "h0", "h1", "even"},
      tk_doc::extrude_rotate_Q4_3, tk_doc::extrude_rotate_Q4_3_status);
  def_growth<appended, const V2&, double, unsigned, int>(
      m, "extrude_rotate_T3", tk::extrude_rotate_T3, {"center", "angle", "n_layers", "pattern"},
      tk_doc::extrude_rotate_T3_0, tk_doc::extrude_rotate_T3_0_status);
  def_growth<appended, const V2&, double, double, double, int, bool>(
      m, "extrude_rotate_T3", tk::extrude_rotate_T3, {"center", "angle", "h0", "h1", "pattern", "even"},
      tk_doc::extrude_rotate_T3_1, tk_doc::extrude_rotate_T3_1_status);
  def_growth<appended, const V3&, const V3&, unsigned, int>(
      m, "extrude_rotate_T3", tk::extrude_rotate_T3, {"center", "rotation", "n_layers", "pattern"},
      tk_doc::extrude_rotate_T3_2, tk_doc::extrude_rotate_T3_2_status);
  def_growth<appended, const V3&, const V3&, double, double, int, bool>(
      m, "extrude_rotate_T3", tk::extrude_rotate_T3, {"center", "rotation", "h0", "h1", "pattern", "even"},
      tk_doc::extrude_rotate_T3_3, tk_doc::extrude_rotate_T3_3_status);
  def_growth<appended, const V3&, const V3&, const V3&, double, double, bool>(
      m, "extrude_spiral_Q4", tk::extrude_spiral_Q4, {"center", "rotation", "translation", "h0", "h1", "even"},
      tk_doc::extrude_spiral_Q4_0, tk_doc::extrude_spiral_Q4_0_status);
  def_growth<appended, const V3&, const V3&, const V3&, unsigned>(
      m, "extrude_spiral_Q4", tk::extrude_spiral_Q4, {"center", "rotation", "translation", "n_layers"},
      tk_doc::extrude_spiral_Q4_1, tk_doc::extrude_spiral_Q4_1_status);
  def_growth<appended, const V3&, const V3&, const V3&, double, double, int, bool>(
      m, "extrude_spiral_T3", tk::extrude_spiral_T3,
      {"center", "rotation", "translation", "h0", "h1", "pattern", "even"}, tk_doc::extrude_spiral_T3_0,
      tk_doc::extrude_spiral_T3_0_status);
  def_growth<appended, const V3&, const V3&, const V3&, unsigned, int>(
      m, "extrude_spiral_T3", tk::extrude_spiral_T3, {"center", "rotation", "translation", "n_layers", "pattern"},
      tk_doc::extrude_spiral_T3_1, tk_doc::extrude_spiral_T3_1_status);
  def_growth<appended, const dense2D<double>&, unsigned>(m, "extrude_normal_Q4", tk::extrude_normal_Q4,
                                                         {"vectors", "n_layers"}, tk_doc::extrude_normal_Q4_0,
                                                         tk_doc::extrude_normal_Q4_0_status);
  def_growth<appended, double, double, double, bool>(m, "extrude_normal_Q4", tk::extrude_normal_Q4,
                                                     {"thickness", "h0", "h1", "even"}, tk_doc::extrude_normal_Q4_1,
                                                     tk_doc::extrude_normal_Q4_1_status);
  def_growth<appended, double, unsigned>(m, "extrude_normal_Q4", tk::extrude_normal_Q4, {"thickness", "n_layers"},
                                         tk_doc::extrude_normal_Q4_2, tk_doc::extrude_normal_Q4_2_status);
  def_growth<appended, const dense2D<double>&, unsigned, int>(
      m, "extrude_normal_T3", tk::extrude_normal_T3, {"vectors", "n_layers", "pattern"}, tk_doc::extrude_normal_T3_0,
      tk_doc::extrude_normal_T3_0_status);
  def_growth<appended, double, double, double, bool, int>(
      m, "extrude_normal_T3", tk::extrude_normal_T3, {"thickness", "h0", "h1", "even", "pattern"},
      tk_doc::extrude_normal_T3_1, tk_doc::extrude_normal_T3_1_status);
  def_growth<appended, double, unsigned, int>(m, "extrude_normal_T3", tk::extrude_normal_T3,
                                              {"thickness", "n_layers", "pattern"}, tk_doc::extrude_normal_T3_2,
                                              tk_doc::extrude_normal_T3_2_status);
}

} // namespace tk_py
