#pragma once
// The statuses every export shares. The negative numbers that name a bad
// argument belong to each export's own table and stay literal there, next to
// the check they report.

namespace kelm {
namespace tesskit2d {
namespace status {

/// Success, and the answer to empty input.
constexpr int ok = 0;

/// Memory ran out; the outputs are rolled back as each export states.
constexpr int out_of_memory = -199;

} // namespace status
} // namespace tesskit2d
} // namespace kelm
