#pragma once
// One function per family; each prints its own steps.

namespace demo {

void linear_reduction_steps();

} // namespace demo
