#pragma once
// One function per family; each prints its own steps.

namespace demo {

void linear_reduction_steps();
void conversion_steps();
void optimised_split_steps();
void measures_steps();
void curvature_steps();
void orientation_steps();
void surface_steps();

void extrusion_steps();
void structured_steps();
void interpolation_steps();
void metrics_steps();

} // namespace demo
