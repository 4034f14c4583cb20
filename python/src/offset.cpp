// Moving a surface, or a copy of it, along its node normals.

#include "tesskit2d/offset.h"
#include "arrays.h"
#include "families.h"
#include "surface_growth.h"
#include "tesskit2d_docs.h"

namespace tk_py {

namespace tk = kelm::tesskit2d;

void bind_offset(py::module_& m) {
  using S3 = kelm::symmetric_fixed<double, 3>;
  using N = dense2D<double>;
  constexpr auto rebuilt = conn_out_mode::rebuilt;
  // A tensor is 6 numbers (m00, m10, m11, m20, m21, m22), a distance one
  // number: with or without node_normals, pybind11 picks the form from the
  // call.
  def_growth<const N&, const S3&>(m, "offset", tk::offset, {"node_normals", "tensor"}, tk_doc::offset_0,
                                  tk_doc::offset_0_status);
  def_growth<const N&, double>(m, "offset", tk::offset, {"node_normals", "distance"}, tk_doc::offset_1,
                               tk_doc::offset_1_status);
  def_growth<const S3&>(m, "offset", tk::offset, {"tensor"}, tk_doc::offset_2, tk_doc::offset_2_status);
  def_growth<double>(m, "offset", tk::offset, {"distance"}, tk_doc::offset_3, tk_doc::offset_3_status);

  def_growth<rebuilt, const N&, const S3&>(m, "copy_with_offset", tk::copy_with_offset, {"node_normals", "tensor"},
                                           tk_doc::copy_with_offset_0, tk_doc::copy_with_offset_0_status);
  def_growth<rebuilt, const N&, double>(m, "copy_with_offset", tk::copy_with_offset, {"node_normals", "distance"},
                                        tk_doc::copy_with_offset_1, tk_doc::copy_with_offset_1_status);
  def_growth<rebuilt, const S3&>(m, "copy_with_offset", tk::copy_with_offset, {"tensor"}, tk_doc::copy_with_offset_2,
                                 tk_doc::copy_with_offset_2_status);
  def_growth<rebuilt, double>(m, "copy_with_offset", tk::copy_with_offset, {"distance"}, tk_doc::copy_with_offset_3,
                              tk_doc::copy_with_offset_3_status);
}

} // namespace tk_py
