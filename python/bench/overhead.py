#!/usr/bin/python3
"""Time per element that the Python package adds over the C++ call, for inputs in the library's layout.

Needs an optimised build with the hooks (benchmarks on), e.g.
    cmake --preset release -DTESSKIT2D_BUILD_PYTHON=ON && cmake --build --preset release --target tesskit2d_python
    PYTHONPATH=build/release/python /usr/bin/python3 python/bench/overhead.py
Each figure is the best of several runs; the C++ and the Python call alternate in the same process, so the
ratio holds on a noisy machine.
"""
import time

import numpy as np

import tesskit2d as tk


def grid(n: int) -> tuple:
    t = np.linspace(0, 1, n + 1)
    x, y = np.meshgrid(t, t)
    i, j = np.meshgrid(np.arange(n), np.arange(n))
    a = (j * (n + 1) + i).ravel()
    return np.c_[x.ravel(), y.ravel()], np.c_[a, a + 1, a + n + 2, a + n + 1].astype(np.uint32)


def python_seconds(call) -> float:
    start = time.perf_counter()
    call()
    return time.perf_counter() - start


def main() -> None:
    coords, conn = grid(1000)  # 1e6 quadrangles
    m = len(conn)
    calls = {
        "area": lambda: tk.area(coords, conn),
        "convert_into_quadratic": lambda: tk.convert_into_quadratic(coords, conn),
    }
    print(f"{m} Q4 elements, {len(coords)} nodes; best of 7")
    for name, call in calls.items():
        cpp, py = [], []
        for _ in range(7):
            cpp.append(tk._core._cpp_seconds(name, coords, conn))
            py.append(python_seconds(call))
        c, p = min(cpp), min(py)
        print(f"{name:24s} C++ {c / m * 1e9:7.2f} ns/element   Python {p / m * 1e9:7.2f} ns/element"
              f"   ratio {p / c:5.3f}   added {(p - c) / m * 1e9:+6.2f} ns/element")


if __name__ == "__main__":
    main()
