#!/usr/bin/env python3
"""Writes the type stubs of the built extension, from the signatures pybind11 gives each function.

Usage: make_stubs.py PACKAGE_PARENT OUTPUT  (imports tesskit2d._core from PACKAGE_PARENT)
"""
import re
import sys

TYPES = [
    (r"Optional\[numpy\.ndarray\[[^\]]*\]\]", "Optional[ArrayLike]"),
    (r"numpy\.ndarray\[[^\]]*\](, \d-D)?", "ArrayLike"),
    (r"List\[float\[\d+\]\]", "Sequence[float]"),
    (r"-> object", "-> Any"),
    (r"-> tuple", "-> Tuple[Any, ...]"),
    (r"-> numpy\.ndarray", "-> NDArray[Any]"),
]


def signatures(function) -> list:
    """The signature lines of a pybind11 function, one per form."""
    lines = (function.__doc__ or "").splitlines()
    name = function.__name__
    found = [re.sub(r"^\d+\. ", "", line.strip()) for line in lines]
    return [s for s in found if s.startswith(name + "(") and "*args, **kwargs" not in s]


HEADER = ["# Generated from the built extension by make_stubs.py; do not edit.",
          "from typing import Any, Optional, Sequence, Tuple, overload", "",
          "from numpy.typing import ArrayLike, NDArray", ""]


def functions(module) -> list:
    """Stub lines of the public functions of a pybind11 module."""
    out = []
    for name in sorted(dir(module)):
        value = getattr(module, name)
        if name.startswith("_") or not callable(value) or isinstance(value, type) or not hasattr(value, "__doc__"):
            continue
        forms = signatures(value)
        for form in forms:
            for pattern, replacement in TYPES:
                form = re.sub(pattern, replacement, form)
            if len(forms) > 1:
                out.append("@overload")
            out.append(f"def {form}: ...")
        if forms:
            out.append("")
    return out


def main() -> None:
    sys.path.insert(0, sys.argv[1])
    from tesskit2d import _core

    out = HEADER + ["class ArgumentError(ValueError):", "    function: str", "    argument: str", "    status: int",
                    ""]
    out += [f"{name}: int" for name in sorted(dir(_core)) if isinstance(getattr(_core, name), int)]
    out += ["", "from . import extras as extras", ""] if hasattr(_core, "extras") else [""]
    out += functions(_core)
    with open(sys.argv[2], "w", encoding="utf-8") as f:
        f.write("\n".join(out))
    if hasattr(_core, "extras"):
        # The submodule tesskit2d.extras re-exports _core.extras.
        with open(sys.argv[2].replace("_core.pyi", "extras.pyi"), "w", encoding="utf-8") as f:
            f.write("\n".join(HEADER + functions(_core.extras)))


if __name__ == "__main__":
    main()
