#!/usr/bin/env python3
"""Compares the topics of compiled help files with what the code and the sources ask for, both ways.

    check_help.py --lister chmls --header ui/help_ids.h --popup FILE... --main FILE --pages "a.htm b.htm"
    check_help.py --lister chmls --header help_topics.h --template windows.rc.in --popup FILE...
With a template every control of it that has a name needs a topic, and no other has one.
Prints every difference and 'N passed, N failed'; fails when a file differs.
"""
import argparse
import re
import subprocess
import sys
from pathlib import Path

_TABLE = re.compile(r"HelpIdPair \w+\[\] = \{(.*?)\n\};", re.DOTALL)
_PAIR = re.compile(r"\{(\d+), (0x[0-9A-Fa-f]+|0)\}")

# The same of windows on the provider kit, whose controls have names.
_TOPIC_TABLE = re.compile(r"HelpTopic \w+\[\] = \{(.*?)\n\};", re.DOTALL)
_TOPIC = re.compile(r"\{(\w+), (0x[0-9A-Fa-f]+)\}")
_NAMED_CONTROL = re.compile(r"\b(?:IDC_\w+|IDOK|IDCANCEL)\b")


def named_topics_of(header):
    """Names of controls with their help identifiers; a name may have another one in each window."""
    tables = _TOPIC_TABLE.findall(header)
    if not tables:
        raise ValueError("there are no tables of topics")
    return {(control, int(identifier, 16)) for table in tables for control, identifier in _TOPIC.findall(table)}


def controls_of(template):
    return set(_NAMED_CONTROL.findall(re.sub(r"//.*", "", template)))


def control_differences(template, wanted, found):
    return ([f"{template}: {name} has no topic" for name in sorted(wanted - found)]
            + [f"{template}: there is no control {name}" for name in sorted(found - wanted)])


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
    parser.add_argument("--template", type=Path)
    parser.add_argument("--main", nargs="*", default=[])
    parser.add_argument("--pages", default="")
    arguments = parser.parse_args()
    header = arguments.header.read_text(encoding="utf-8")
    numbers = {number for _, number in named_topics_of(header)} if arguments.template else identifiers_of(header)
    popup_topics = {f"{number}.htm" for number in numbers}
    wanted = {file: popup_topics for file in arguments.popup}
    wanted.update({file: set(arguments.pages.split()) for file in arguments.main})
    failed = 0
    if arguments.template:
        controls = controls_of(arguments.template.read_text(encoding="utf-8"))
        faults = control_differences(arguments.template.name, controls, {name for name, _ in named_topics_of(header)})
        failed += bool(faults)
        print(*faults, sep="\n", end="\n" if faults else "")
    for file, topics in wanted.items():
        faults = differences(file, topics, topics_of(arguments.lister, file))
        failed += bool(faults)
        print(*faults, sep="\n", end="\n" if faults else "")
    checks = len(wanted) + bool(arguments.template)
    print(f"{checks - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
