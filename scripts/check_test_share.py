#!/usr/bin/env python3
"""Holds the share of test code: lines of tests/ and fuzz/ against all C and C++ lines, from 25 to 33 %.

A line counts when it is neither blank nor only comment. `--root DIR` measures another tree, `--table` prints a
line a folder.
"""
import argparse
import pathlib
import sys

SUFFIXES = {".c", ".cpp", ".h", ".hpp"}
TESTS = {"tests", "fuzz"}
NOT_OURS = {"build", ".git"}
LEAST, MOST = 25, 33


def counted_lines(text):
    """Comments are told by where a line begins, which is where ours stand."""
    count, in_comment = 0, False
    for line in map(str.strip, text.splitlines()):
        if in_comment:
            end = line.find("*/")
            in_comment = end < 0
            count += not in_comment and bool(line[end + 2:].strip())
        elif line.startswith("/*") and "*/" not in line:
            in_comment = True
        elif line.startswith("/*"):
            count += bool(line[line.find("*/") + 2:].strip())
        else:
            count += bool(line) and not line.startswith("//")
    return count


def measure(root):
    lines = {}
    for path in root.rglob("*"):
        folder = path.relative_to(root).parts[0]
        if folder in NOT_OURS or path.suffix not in SUFFIXES or not path.is_file():
            continue
        text = path.read_text(encoding="utf-8", errors="replace")
        lines[folder] = lines.get(folder, 0) + counted_lines(text)
    return lines


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    parser.add_argument("--table", action="store_true")
    options = parser.parse_args()
    lines = measure(options.root)
    if options.table:
        for folder, count in sorted(lines.items()):
            print(f"{count:7} {folder}")
    tests, total = sum(lines.get(folder, 0) for folder in TESTS), sum(lines.values())
    share = 100 * tests / total
    good = LEAST <= share <= MOST
    print(f"tests are {tests} of {total} lines: {share:.1f} % (from {LEAST} to {MOST})")
    print("1 passed, 0 failed" if good else "0 passed, 1 failed")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
