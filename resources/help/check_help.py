#!/usr/bin/env python3
"""Compares the topics of compiled help files with what the code and the sources ask for, both ways.

    check_help.py --lister chmls --header ui/help_ids.h --popup FILE... --main FILE --pages "a.htm b.htm"
Prints every difference and 'N passed, N failed'; fails when a file differs.
"""
import argparse
import re
import subprocess
import sys
from pathlib import Path

_TABLE = re.compile(r"HelpIdPair \w+\[\] = \{(.*?)\n\};", re.DOTALL)
_PAIR = re.compile(r"\{(\d+), (0x[0-9A-Fa-f]+|0)\}")


def identifiers_of(header):
    """Help identifiers of all tables; every table must end with control 0."""
    tables = [_PAIR.findall(re.sub(r"//.*", "", body)) for body in _TABLE.findall(header)]
    if not tables or any(table[-1:] != [("0", "0")] for table in tables):
        raise ValueError("the tables of help identifiers cannot be read")
    return {int(identifier, 16) for table in tables for control, identifier in table if control != "0"}


def topics_of(lister, file):
    output = subprocess.run([lister, "-p", "-n", "list", file], check=True, capture_output=True, text=True).stdout
    return {line.strip().lstrip("/") for line in output.splitlines() if line.strip().endswith(".htm")}


def differences(file, wanted, found):
    return ([f"{file}: no topic {name}" for name in sorted(wanted - found)]
            + [f"{file}: topic {name} is asked for by nothing" for name in sorted(found - wanted)])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--lister", required=True)
    parser.add_argument("--header", type=Path, required=True)
    parser.add_argument("--popup", nargs="+", required=True)
    parser.add_argument("--main", nargs="+", required=True)
    parser.add_argument("--pages", required=True)
    arguments = parser.parse_args()
    popup_topics = {f"{number}.htm" for number in identifiers_of(arguments.header.read_text(encoding="utf-8"))}
    wanted = {file: popup_topics for file in arguments.popup}
    wanted.update({file: set(arguments.pages.split()) for file in arguments.main})
    failed = 0
    for file, topics in wanted.items():
        faults = differences(file, topics, topics_of(arguments.lister, file))
        failed += bool(faults)
        print(*faults, sep="\n", end="\n" if faults else "")
    print(f"{len(wanted) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
