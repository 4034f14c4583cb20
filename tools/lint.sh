#!/usr/bin/env bash
# The lint: every C++ file formatted as .clang-format says, and clang-tidy
# with the repository's .clang-tidy over the compilation database of the
# default build (library, platform, tests, examples and benchmarks).
set -euo pipefail
cd "$(dirname "$0")/.."

files=$(git ls-files '*.h' '*.cpp')
clang-format --dry-run -Werror $files

cmake --preset default -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DTESSKIT2D_BUILD_BENCHMARKS=ON >/dev/null
# The generated export header must exist before clang-tidy parses the sources.
cmake --build --preset default --target tesskit2d_objects -j "$(nproc)" >/dev/null
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
run-clang-tidy -p build/default -quiet -j "$(nproc)" "$PWD/src/" "$PWD/platform/" "$PWD/extras/" "$PWD/tests/" "$PWD/examples/" \
  "$PWD/bench/" >"$log" 2>&1 || status=$?
grep -v -e '^[0-9]* warnings generated' -e '^Suppressed' -e '^Use -header-filter' -e '^clang-tidy' "$log" || true
[[ $status -eq 0 ]] || { echo "lint: clang-tidy found the problems above" >&2; exit 1; }
echo "lint: clean"
