#!/usr/bin/env python3
"""Writes include/orv/orvcmacros.h, the call macros for C, from the interfaces' declarations. With --check it only
compares, and fails when the file is not what the declarations make."""
import re
import sys
import textwrap
from pathlib import Path

HEADERS = Path(__file__).resolve().parent.parent / "include" / "orv"
TARGET = HEADERS / "orvcmacros.h"
HEAD = """/*
 * Calls of methods in C: IAddrBook_OpenEntry(book, ...) stands for book->lpVtbl->OpenEntry(book, ...). Defined where
 * COBJMACROS is and interfaces are tables. Generated from the declarations.
 */
#ifndef ORV_ORVCMACROS_H
#define ORV_ORVCMACROS_H

#if defined(COBJMACROS) && (!defined(__cplusplus) || defined(CINTERFACE))
/* clang-format off */
"""
TAIL = """
/* clang-format on */
#endif

#endif
"""
METHOD = re.compile(r"ORV_METHOD(?:_\(\s*\w+\s*,|\()\s*(\w+)\s*\)\s*\(\s*THIS_?\s*([^)]*)\)\s*PURE")
GROUP = re.compile(r"#define (ORV_\w+_METHODS) (.*)")
INTERFACE = re.compile(r"^ORV_INTERFACE\((\w+), \w+\) \{(.*?)^\};", re.DOTALL | re.MULTILINE)
COLUMNS = 108


def declarations() -> str:
    text = "".join((HEADERS / name).read_text() for name in ("orvapi.h", "orvspi.h"))
    return re.sub(r"/\*.*?\*/", "", text.replace("\\\n", " "), flags=re.DOTALL)


def interfaces(text: str) -> list[tuple[str, str]]:
    groups = dict(GROUP.findall(text))
    expand = lambda body: re.sub(r"ORV_\w+_METHODS", lambda group: groups[group[0]], body)
    return [(name, expand(body)) for name, body in INTERFACE.findall(text)]


def macro(interface: str, method: str, parameters: str) -> str:
    names = ["This"] + [re.search(r"(\w+)\s*$", part)[1] for part in parameters.split(",") if part.strip()]
    head = f"#define {interface}_{method}({', '.join(names)})"
    call = f"(This)->lpVtbl->{method}({', '.join(names)})"
    return " \\\n".join(textwrap.wrap(f"{head} {call}", COLUMNS, subsequent_indent="  "))


def header() -> str:
    lines = []
    for interface, body in interfaces(declarations()):
        lines.append(f"\n/* {interface} */")
        lines += [macro(interface, method, parameters) for method, parameters in METHOD.findall(body)]
    return HEAD + "\n".join(lines) + "\n" + TAIL


def main() -> int:
    if "--check" not in sys.argv[1:]:
        TARGET.write_text(header())
        return 0
    if TARGET.read_text() == header():
        return 0
    print("orvcmacros.h does not follow the declarations: run scripts/make_c_macros.py")
    return 1


if __name__ == "__main__":
    sys.exit(main())
