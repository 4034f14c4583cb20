#pragma once
// Positions of the swept nodes, layer by layer, for each path.
//
// All forms share one skeleton: nothing happens when no node is swept or
// there are no layers; otherwise `coords` is resized once to R rows and
// n_nodes + C n_layers columns, with no fill since every new entry is
// written, then layer i = 1 .. n_layers gets its fraction s of the path
// (`layer_fraction` of t = i * (1 / n_layers) when h0 > 0 and h1 > 0, else
// t itself), the path's constants for that layer, and one new column per
// swept node in `used_nodes` order. Every new column is computed from the
// node's own input column, never from the layer before, so errors do not
// build up along the path.
//
// Each returns 0, or -199 when `coords` cannot grow (it is then unchanged).

#include "foundation/vector_fast.h"
#include "tesskit2d/mesh.h"

namespace kelm {
namespace tesskit2d {

/// x + s * direction, in 2 rows.
int place_layers_translate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                           const vector_fixed<double, 2>& direction, double h0, double h1) noexcept;

/// x + s * direction, in 3 rows.
int place_layers_translate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                           const vector_fixed<double, 3>& direction, double h0, double h1) noexcept;

/// x + thickness * s * vectors[:, id], in 2 rows; `vectors` has a column per
/// node ID.
int place_layers_normal(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const dense2D<double>& vectors, double thickness, double h0, double h1) noexcept;

/// Rotation by s * angle about `center` in the plane, in 2 rows (a third row
/// of `coords` is dropped).
int place_layers_rotate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 2>& center, double angle, double h0, double h1) noexcept;

/// center + R(s * rotation) (x - center), in 3 rows.
int place_layers_rotate(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation, double h0,
                        double h1) noexcept;

/// center + s * translation + R(s * rotation) (x - center), in 3 rows: the
/// turn and the advance move together.
int place_layers_spiral(dense2D<double>& coords, const id_list& used_nodes, unsigned n_nodes, unsigned n_layers,
                        const vector_fixed<double, 3>& center, const vector_fixed<double, 3>& rotation,
                        const vector_fixed<double, 3>& translation, double h0, double h1) noexcept;

} // namespace tesskit2d
} // namespace kelm
