#!/usr/bin/env bash
# Installs an optimised library into a scratch prefix, shared and then
# static, and builds a small outside project against each as a user would:
# with find_package, and with pkg-config. The programs must run as built,
# without LD_LIBRARY_PATH.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for kind in shared static; do
  shared=ON
  [[ $kind == static ]] && shared=OFF
  # The Python package goes with the shared libraries, which its extension
  # loads.
  python=$shared
  prefix="$work/$kind/prefix"
  cmake -S "$top" -B "$work/$kind/build" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=$shared \
        -DTESSKIT2D_BUILD_TESTS=OFF -DTESSKIT2D_BUILD_EXAMPLES=OFF -DTESSKIT2D_BUILD_PYTHON=$python \
        -DKELM_WARNINGS_AS_ERRORS=${KELM_WARNINGS_AS_ERRORS:-OFF} >/dev/null
  cmake --build "$work/$kind/build" -j "$(nproc)" >/dev/null
  cmake --install "$work/$kind/build" --prefix "$prefix" >/dev/null

  cmake -S "$top/examples/consumer" -B "$work/$kind/consumer" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$work/$kind/consumer" >/dev/null
  env -u LD_LIBRARY_PATH "$work/$kind/consumer/consumer"

  pc_dir=$(dirname "$(find "$prefix" -name tesskit2d.pc)")
  static_flag=""
  [[ $kind == static ]] && static_flag=--static
  flags=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --cflags --libs $static_flag tesskit2d)
  lib_dir=$(PKG_CONFIG_PATH="$pc_dir" pkg-config --variable=libdir tesskit2d)
  # pkg-config gives no run path; a shared build's user sets one, as here.
  rpath=""
  [[ $kind == shared ]] && rpath="-Wl,-rpath,$lib_dir"
  g++ -std=c++17 "$top/examples/consumer/consumer.cpp" -o "$work/$kind/pc-consumer" $flags $rpath
  env -u LD_LIBRARY_PATH "$work/$kind/pc-consumer"

  if [[ $python == ON ]]; then
    # Imported from the prefix as a user would, with PYTHONPATH only.
    (cd "$work" && env -u LD_LIBRARY_PATH PYTHONPATH="$prefix/lib/python3/dist-packages" /usr/bin/python3 -c '
import numpy as np, tesskit2d
area = tesskit2d.area(np.array([[0, 0], [1, 0], [1, 1], [0, 1.0]]), np.array([[0, 1, 2, 3]]))
assert area == 1.0 and tesskit2d.__version__ == tesskit2d.version(), area
print("python: tesskit2d", tesskit2d.__version__, "from", tesskit2d.__file__)')
  fi
done
echo "install-check: shared and static packages used through CMake and pkg-config, the shared one from Python"
