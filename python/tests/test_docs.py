"""Docstrings, status texts and stubs follow the headers."""
import ast
import importlib.util
import pathlib
import re

import pytest

import tesskit2d as tk

here = pathlib.Path(__file__).resolve().parent
found = importlib.util.spec_from_file_location("extract_docs", here.parent / "extract_docs.py")
extract_docs = importlib.util.module_from_spec(found)
found.loader.exec_module(extract_docs)

HEADER = """
/// \\file
/// \\brief Not an export's block.

/// \\brief Grows `coords`.
///
/// \\param[in,out] coords 2 rows by \\#nodes.
/// \\param[in] conn 2 rows.
/// \\retval 0 Done.
/// \\retval -1 `coords` not 2 rows.
/// \\retval -2 IDs.
/// \\retval -4 The size thickness / n_layers is zero (an underflow
///   of h0).
/// \\retval -199 No memory.
TESSKIT2D_EXPORT int grow(dense2D<double>& coords, const dense2D<unsigned>& conn,
                          const vector_fixed<double, 2>& d, double thickness, unsigned n_layers) noexcept;
/// \\brief Second form.
TESSKIT2D_EXTRAS_EXPORT int grow(dense2D<double>& coords);
"""

ROWS = [
    # (status, argument the row names, start of its text)
    (-1, "coords", "`coords` not 2 rows."),
    (-2, "conn", "IDs."),  # no name in the text: the argument at the status's position
    (-4, "thickness", "The size thickness / n_layers is zero (an underflow of h0)."),
    (-199, "", "No memory."),
]


def test_status_rows_name_their_arguments(tmp_path):
    header = tmp_path / "grow.h"
    header.write_text(HEADER)
    out = tmp_path / "docs.h"
    extract_docs.main.__globals__["sys"].argv = ["extract_docs.py", str(out), str(header)]
    extract_docs.main()
    text = out.read_text()
    rows = re.findall(r'\{(-\d+), "(\w*)", R"tkdoc\((.*?)\)tkdoc"\}', text.split("grow_0_status")[1].split(";")[0])
    assert [(int(c), a, t) for c, a, t in rows] == ROWS
    assert "Not an export" not in text
    assert 'grow_1_name = "grow"' in text and "Second form." in text
    assert "coords (in,out): 2 rows by #nodes." in text


def public_functions(module) -> list:
    return [name for name in dir(module) if not name.startswith("_") and callable(getattr(module, name))
            and name not in ("ArgumentError", "version")]


EXPORTS = public_functions(tk._core)  # the bound exports, not the package's files and pictures
STUBBED = [(tk, "_core.pyi", name) for name in EXPORTS] + [
    (tk.extras, "extras.pyi", name) for name in public_functions(tk.extras)]


@pytest.mark.parametrize("module, stubs, name", STUBBED, ids=[f"{s[0].__name__}.{s[2]}" for s in STUBBED])
def test_every_export_carries_its_header_block_and_a_stub(module, stubs, name):
    doc = getattr(module, name).__doc__
    assert "Shapes below are the library's" in doc
    assert name in ("vtk_order", "library_order") or re.search(r"status -\d+:", doc), "the header's status list"
    tree = ast.parse((pathlib.Path(tk.__file__).parent / stubs).read_text())
    assert name in {node.name for node in tree.body if isinstance(node, ast.FunctionDef)}


def test_every_form_is_bound():
    # 70 C++ exports with `version`; overloads share a Python name, and the two forms of each of
    # convert_into_high_order and convert_into_quadratic are one Python function.
    forms = sum(len(re.findall(r"^\d+\. ", getattr(tk, n).__doc__, re.M)) or 1 for n in EXPORTS) + 1
    assert forms == 70 - 2
