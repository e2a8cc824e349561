#!/usr/bin/env python3
"""Refuses an #include against the order of the folders, and any circle of files.

A folder of the library sees the folders before it; providers/ and tools/ see the public headers, formats/ and
diag/ only. `--root DIR` checks another tree.
"""
import argparse
import pathlib
import re
import sys

ORDER = ["include", "platform", "props", "hosting", "profiles", "addrbook", "ui", "session"]
# Folders outside the library: what each may see besides itself and include/.
OUTSIDE = {
    "kit": [],
    "formats": [],
    "diag": [],
    "providers": ["formats", "diag"],
    "tools": ["formats", "diag"],
}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^">]+)[">]', re.MULTILINE)
SUFFIXES = {".h", ".hpp", ".inc", ".cpp", ".cc", ".c", ".rc"}


def sources(root):
    for folder in [*ORDER, *OUTSIDE]:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in SUFFIXES and path.is_file():
                yield path.relative_to(root).as_posix()


def resolve(root, including, name):
    """The file of ours that an include line means, or None for the toolchain's."""
    beside = (pathlib.PurePosixPath(including).parent / name).as_posix()
    for candidate in (name, "include/" + name, beside):
        if (root / candidate).is_file():
            return candidate
    return None


def graph(root):
    result = {}
    for file in sources(root):
        text = (root / file).read_text(encoding="utf-8", errors="replace")
        found = (resolve(root, file, name) for name in INCLUDE.findall(text))
        result[file] = sorted({target for target in found if target and target != file})
    return result


def allowed_by_order(source, target):
    here, there = source.split("/")[0], target.split("/")[0]
    if here == there or there == "include":
        return True
    if here in OUTSIDE:
        return there in OUTSIDE[here]
    return here in ORDER and there in ORDER and ORDER.index(there) < ORDER.index(here)


def circles(edges):
    """Groups of files that include each other, found by depth-first search without recursion (Tarjan)."""
    index, low, on_stack, stack, found = {}, {}, set(), [], []
    for start in edges:
        if start in index:
            continue
        work = [(start, iter(edges[start]))]
        index[start] = low[start] = len(index)
        stack.append(start)
        on_stack.add(start)
        while work:
            node, rest = work[-1]
            for target in rest:
                if target not in edges:
                    continue
                if target not in index:
                    index[target] = low[target] = len(index)
                    stack.append(target)
                    on_stack.add(target)
                    work.append((target, iter(edges[target])))
                    break
                if target in on_stack:
                    low[node] = min(low[node], index[target])
            else:
                work.pop()
                if work:
                    low[work[-1][0]] = min(low[work[-1][0]], low[node])
                if low[node] == index[node]:
                    group = []
                    while True:
                        member = stack.pop()
                        on_stack.discard(member)
                        group.append(member)
                        if member == node:
                            break
                    if len(group) > 1:
                        found.append(sorted(group))
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--root", type=pathlib.Path, default=pathlib.Path(__file__).resolve().parent.parent)
    root = parser.parse_args().root
    edges = graph(root)
    passed, failures = 0, []
    for source, targets in edges.items():
        for target in targets:
            if allowed_by_order(source, target):
                passed += 1
            else:
                failures.append(f"{source} includes {target} against the order of the folders")
    groups = circles(edges)
    failures += ["files in a circle: " + ", ".join(group) for group in groups]
    passed += not groups
    for line in failures:
        print(line)
    print(f"{passed} passed, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
