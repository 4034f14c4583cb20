#!/usr/bin/env python3
"""Turns the doc blocks of the public headers into a C++ header of strings.

Usage: extract_docs.py OUTPUT HEADER...

For the n-th exported declaration of a name (counting over the headers in
the order given), the output holds `name_n`, the block as plain text for the
Python docstring, and `name_n_status`, the rows of its status list: code,
the argument the row names (the first backticked parameter of the
declaration that the row mentions, else empty) and the row's text. The
bindings read both, so the Python help and error messages follow the
headers word for word.
"""
import re
import sys

DECL = re.compile(r"TESSKIT2D(?:_EXTRAS)?_EXPORT\s+(.*?)\b(\w+)\s*\((.*?)\)\s*(?:noexcept\s*)?;", re.S)


def parameters(text: str) -> list:
    names, depth, current = [], 0, ""
    for ch in text:
        depth += ch == "<"
        depth -= ch == ">"
        if ch == "," and depth == 0:
            names.append(current)
            current = ""
        else:
            current += ch
    if current.strip():
        names.append(current)
    return [re.findall(r"\w+", p.split("=")[0])[-1] for p in names]


def plain(block: list) -> str:
    """Doxygen markup to the text a Python user reads."""
    out = []
    for line in block:
        line = re.sub(r"^\\brief\s*", "", line)
        line = re.sub(r"^\\param\[(in|out|in,out)\]\s+(\w+)", r"\2 (\1):", line)
        line = re.sub(r"^\\retval\s+(\S+)", r"status \1:", line)
        line = re.sub(r"^\\return\b", "Returns:", line)
        line = re.sub(r"^\\(pre|note|par)\b\s*", lambda m: m.group(1).capitalize() + ": ", line)
        line = line.replace("\\code", "").replace("\\endcode", "").replace("\\#", "#")
        out.append(line)
    return "\n".join(out).strip() + "\n"


def status_rows(block: list, params: list) -> list:
    rows, current = [], None
    for line in block + [""]:
        m = re.match(r"\\retval\s+(-?\d+)\s*(.*)", line)
        if m:
            current = [int(m.group(1)), m.group(2)]
            rows.append(current)
        elif current is not None and line.startswith(" ") and line.strip():
            current[1] += " " + line.strip()
        else:
            current = None
    result = []
    for code, text in rows:
        if code >= 0:
            continue
        # The argument a row names: a backticked parameter, else a parameter
        # named in plain words, else the one at the status's position.
        named = [w for w in re.findall(r"`(\w+)`", text) if w in params]
        named += [w for w in re.findall(r"\w+", text) if w in params]
        if not named and code != -199 and -code <= len(params):
            named = [params[-code - 1]]
        text = text.replace("\\#", "#")
        result.append((code, named[0] if named else "", text))
    return result


def cxx_string(text: str) -> str:
    return 'R"tkdoc(' + text + ')tkdoc"'


def main() -> None:
    output, headers = sys.argv[1], sys.argv[2:]
    seen = {}
    lines = ["// Generated from the public headers by extract_docs.py; do not edit.", "#pragma once", "",
             '#include "status_text.h"', "", "namespace tk_doc {"]
    for header in headers:
        block = []
        with open(header, encoding="utf-8") as f:
            source = f.read()
        text_lines = source.splitlines()
        i = 0
        while i < len(text_lines):
            stripped = text_lines[i].strip()
            if stripped.startswith("///"):
                content = stripped[3:]
                block.append(content[1:] if content.startswith(" ") else content)
                i += 1
                continue
            if "_EXPORT" in stripped and "#" not in stripped:
                j = i
                decl = stripped
                while ";" not in decl:
                    j += 1
                    decl += " " + text_lines[j].strip()
                m = DECL.search(decl)
                if m:
                    name, params = m.group(2), parameters(m.group(3))
                    n = seen.get(name, 0)
                    seen[name] = n + 1
                    key = f"{name}_{n}"
                    lines.append(f"inline constexpr const char* {key} = {cxx_string(plain(block))};")
                    rows = status_rows(block, params)
                    entries = ", ".join(f'{{{c}, "{a}", {cxx_string(t)}}}' for c, a, t in rows)
                    lines.append(f"inline constexpr status_text {key}_status[] = {{{entries}{', ' if entries else ''}"
                                 f'{{0, "", ""}}}};')
                    lines.append(f'inline constexpr const char* {key}_name = "{name}";')
                i = j + 1
                block = []
                continue
            # A block belongs to the declaration right under it.
            if not stripped.startswith("//"):
                block = []
            i += 1
    lines += ["} // namespace tk_doc", ""]
    with open(output, "w", encoding="utf-8") as f:
        f.write("\n".join(lines))


if __name__ == "__main__":
    main()
