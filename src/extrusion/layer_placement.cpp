#include "extrusion/layer_placement.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "extrusion/layer_spacing.h"
#include "extrusion/rotation_tensor.h"
#include "foundation/status.h"

namespace kelm {
namespace tesskit2d {
namespace {

// Runs the shared skeleton. `layer(s)` returns the per-node writer of one
// layer, `write(id, source, target)`, so the path's constants are computed once
// per layer and the node loop holds no call to the mathematics library.
template <class Layer>
int place_layers(dense2D<double>& coords, unsigned R, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                 double h0, double h1, Layer&& layer) noexcept {
  const unsigned C = used_nodes.size;
  if (C == 0 || n_layers == 0) return 0;
  // Every new column is written in full below, so it is not filled first.
  // More nodes than 32-bit IDs can number count as memory that cannot be had.
  const std::uint64_t total = n_nodes + std::uint64_t(C) * n_layers;
  if (total > 0xFFFFFFFFu || !coords.resize(R, static_cast<unsigned>(total))) return status::out_of_memory;
  const std::size_t ld = coords.ld;
  const double* x = coords.column(0);
  double* out = coords.column(n_nodes);
  const unsigned* ids = used_nodes.begin();
  const bool graded = h0 > 0 && h1 > 0;
  const double step = 1.0 / n_layers;
  for (unsigned i = 1; i <= n_layers; ++i) {
    const double t = i * step;
    const auto write = layer(graded ? layer_fraction(t, h0, h1) : t);
    for (unsigned p = 0; p < C; ++p, out += ld)
      write(ids[p], x + ids[p] * ld, out);
  }
  return 0;
}

void copy_column(const double* source, double* target, unsigned R) noexcept {
  for (unsigned r = 0; r < R; ++r)
    target[r] = source[r];
}

} // namespace

int place_layers_translate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                           const vector_fixed<double, 2>& direction, double h0, double h1) noexcept {
  return place_layers(coords, 2, used_nodes, n_nodes, n_layers, h0, h1, [&](double s) {
    const double dx = s * direction[0], dy = s * direction[1];
    const bool still = s == 0;
    return [=](unsigned, const double* a, double* b) {
      if (still) return copy_column(a, b, 2);
      b[0] = a[0] + dx;
      b[1] = a[1] + dy;
    };
  });
}

int place_layers_translate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                           const vector_fixed<double, 3>& direction, double h0, double h1) noexcept {
  return place_layers(coords, 3, used_nodes, n_nodes, n_layers, h0, h1, [&](double s) {
    const double dx = s * direction[0], dy = s * direction[1], dz = s * direction[2];
    const bool still = s == 0;
    return [=](unsigned, const double* a, double* b) {
      if (still) return copy_column(a, b, 3);
      b[0] = a[0] + dx;
      b[1] = a[1] + dy;
      b[2] = a[2] + dz;
    };
  });
}

int place_layers_normal(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const dense2D<double>& vectors, double thickness, double h0, double h1) noexcept {
  const std::size_t vld = vectors.ld;
  return place_layers(coords, 2, used_nodes, n_nodes, n_layers, h0, h1, [&](double s) {
    const double w = thickness * s;
    const double* v = vectors.column(0);
    return [=](unsigned id, const double* a, double* b) {
      if (w == 0) return copy_column(a, b, 2);
      const double* n = v + id * vld;
      b[0] = a[0] + w * n[0];
      b[1] = a[1] + w * n[1];
    };
  });
}

int place_layers_rotate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 2>& center, double angle, double h0, double h1) noexcept {
  const double cx = center[0], cy = center[1];
  return place_layers(coords, 2, used_nodes, n_nodes, n_layers, h0, h1, [&](double s) {
    const double theta = s * angle, c = std::cos(theta), sn = std::sin(theta);
    return [=](unsigned, const double* a, double* b) {
      const double dx = a[0] - cx, dy = a[1] - cy;
      b[0] = cx + dx * c - dy * sn;
      b[1] = cy + dx * sn + dy * c;
    };
  });
}

int place_layers_rotate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation, double h0,
                        double h1) noexcept {
  const vector_fixed<double, 3> no_advance = {{0, 0, 0}};
  return place_layers_spiral(coords, used_nodes, n_nodes, n_layers, center, rotation, no_advance, h0, h1);
}

int place_layers_spiral(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                        const vector_fixed<double, 3>& translation, double h0, double h1) noexcept {
  const double c0 = center[0], c1 = center[1], c2 = center[2];
  return place_layers(coords, 3, used_nodes, n_nodes, n_layers, h0, h1, [&](double s) {
    const vector_fixed<double, 3> w = {{s * rotation[0], s * rotation[1], s * rotation[2]}};
    double M[9];
    rotation_tensor(w, M);
    const double o0 = c0 + s * translation[0], o1 = c1 + s * translation[1], o2 = c2 + s * translation[2];
    return [=](unsigned, const double* a, double* b) {
      const double d0 = a[0] - c0, d1 = a[1] - c1, d2 = a[2] - c2;
      b[0] = o0 + M[0] * d0 + M[1] * d1 + M[2] * d2;
      b[1] = o1 + M[3] * d0 + M[4] * d1 + M[5] * d2;
      b[2] = o2 + M[6] * d0 + M[7] * d1 + M[8] * d2;
    };
  });
}

} // namespace tesskit2d
} // namespace kelm
