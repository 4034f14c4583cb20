#!/usr/bin/env bash
# Builds an optimised library, installs it into a scratch prefix and builds a
# small outside project against it with find_package, as a user would.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake -S "$top" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DTESSKIT2D_BUILD_TESTS=OFF \
      -DTESSKIT2D_BUILD_EXAMPLES=OFF -DKELM_WARNINGS_AS_ERRORS=${KELM_WARNINGS_AS_ERRORS:-OFF} >/dev/null
cmake --build "$work/build" -j "$(nproc)"
cmake --install "$work/build" --prefix "$work/prefix" >/dev/null

cmake -S "$top/examples/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/consumer"
LD_LIBRARY_PATH="$work/prefix/lib:$work/prefix/lib/x86_64-linux-gnu" "$work/consumer/consumer"
