#pragma once
// What the demo prints for each step: its name, status, element counts and
// time.

#include <chrono>
#include <cstdio>

namespace demo {

/// Times one step from construction to `done`.
class step {
public:
  explicit step(const char* name) : name_(name), start_(std::chrono::steady_clock::now()) {}

  /// Prints "name  status  detail  time" on one line; `detail` is free text
  /// such as element counts.
  template <class... Args> void done(int status, const char* detail_format, Args... args) const {
    const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
    char detail[256];
    std::snprintf(detail, sizeof detail, detail_format, args...);
    std::printf("  %-38s status %4d  %-44s %8.2f ms\n", name_, status, detail, ms);
  }

private:
  const char* name_;
  std::chrono::steady_clock::time_point start_;
};

inline void section(const char* title) { std::printf("\n%s\n", title); }

} // namespace demo
