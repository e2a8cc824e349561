#!/usr/bin/env python3
"""The soak: programs killed at random moments, programs and threads side by side, the same thing very often, and
damaged storage, all against the library that is delivered, in an installation of its own.

soak.py BUILD [--share] [--seed N] [--table FILE] [ROW...]   rows: `--list`. Exits with 1 when something that has to be
zero is not."""
import argparse
import collections
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

import wine_installation

TESTS = pathlib.Path(__file__).resolve().parents[1] / "tests"
FUZZ = TESTS.parent / "fuzz" / "corpus"
LIBRARY = "xhtabb.dll"
OPERATIONS = ["copy", "rename", "services", "section", "create", "delete", "settings", "configure"]
SUBJECTS = ["session", "book", "containers", "profiles", "services", "sections", "advise", "ending"]
MEMBERS = 8
# How much of each a full run does, and the share of it that every test run does.
FULL = {"kills": 500, "members": 120, "threads": 30, "logons": 20_000, "profiles": 10_000, "getprops": 1_000_000,
        "dialogs": 1_000, "windows": 500, "registry": 5_000, "catalogue": 5_000, "fuzzing": 300, "checks": 10,
        "faulty": 1, "book-kills": 500, "timed": 1}
SHARE = {"kills": 16, "members": 3, "threads": 1, "logons": 100, "profiles": 40, "getprops": 20_000, "dialogs": 20,
         "windows": 0, "registry": 60, "catalogue": 60, "fuzzing": 0, "checks": 0, "faulty": 0, "book-kills": 0,
         "timed": 0}
CATALOGUE = """
[Named]
PR_SERVICE_DLL_NAME=xhtsmp%c.dll
PR_SERVICE_ENTRY_NAME=SampleServiceEntry

[Busy]
PR_SERVICE_DLL_NAME=xhtbusy%c.dll
PR_SERVICE_ENTRY_NAME=FakeServiceEntry

[Book]
PR_SERVICE_DLL_NAME=xhtpab%c.dll
PR_SERVICE_ENTRY_NAME=PersonalServiceEntry
"""
CONTACTS = "BEGIN:VCARD\nVERSION:3.0\nUID:{0}\nFN:Person {0}\nTEL;TYPE=FAX:+49 40 {0}\nEND:VCARD\n"
# A program that runs longer than this hangs: seconds, at full size and for a share.
LONGEST, LONGEST_OF_SHARE = 3600, 300
# What the allocators keep and use again may differ by this much between two moments.
HEAP_NOISE = 4096
# Programs of one run that the emulation may fail to start.
MOST_RESTARTS = 5
# Test programs, and their tests that judge by the clock when they are told to.
TIMED = {"personal_provider_test": "*OtherProcessesAreHeard*",
         "kit_test": "*UnadviseWaitsForACall*:*AJobThatDoesNotEnd*"}


class Row:
    """A line of the table."""

    def __init__(self, name):
        self.name, self.done, self.grown, self.unexpected, self.seconds = name, 0, {}, [], 0.0
        self.counts = collections.Counter()

    def note(self, kind, what):
        self.counts[kind] += 1
        self.unexpected.append(what)
        print(f"    {self.name}: {kind}: {what}", flush=True)

    def note_text(self, what):
        self.note("lost" if "lost" in what else "damaged", what)

    @property
    def growth(self):
        return {name: count for name, count in self.grown.items()
                if count > (HEAP_NOISE if name == "bytes" else 0)}

    @property
    def good(self):
        return not self.counts and not self.growth and self.done

    def line(self):
        growth = ", ".join(f"{count} {name}" for name, count in self.growth.items()) or "0"
        counts = " | ".join(str(self.counts[kind]) for kind in ("lost", "damaged", "crashed"))
        return f"| {self.name} | {self.done:,} | {counts} | {growth} | {self.seconds:.0f} s |"


class Installation:
    """What is installed, in a folder of its own; every program of it keeps what it stores apart from everything else."""

    def __init__(self, build, longest):
        self.longest = longest
        self.restarted = 0
        self.build = build
        self.wine, self.env = wine_installation.environment()
        self.bin = wine_installation.install(build, build / "soak_installation")
        shutil.copy(build / "bin" / "orv_soak.exe", self.bin)
        shutil.copy(build / "bin" / "orv_fake_provider.dll", self.bin / "xhtbusyb.dll")
        catalogue = self.bin / "XHTASVB.ini"
        text = catalogue.read_text().replace("[Services]\n", "[Services]\nNamed=Named\nBusy=Busy\nBook=Book\n", 1)
        catalogue.write_text(text + CATALOGUE)
        for number in range(3):
            (self.bin / f"soak{number}.vcf").write_text(CONTACTS.format(number))
        self.run("clear")
        self.prepared = False

    def start(self, *arguments, **streams):
        """Output goes to a file, which outlives a program that is killed."""
        output = tempfile.TemporaryFile()
        streams = {"stdin": subprocess.DEVNULL, "stdout": output, "stderr": subprocess.DEVNULL, **streams}
        process = subprocess.Popen([self.wine, self.bin / "orv_soak.exe", *map(str, arguments)], env=self.env,
                                   cwd=self.bin, **streams)
        process.output = output
        return process

    @staticmethod
    def said(process):
        """Pairs of a key and its value, so far. The position is the program's too, so it is not moved."""
        size = os.fstat(process.output.fileno()).st_size
        text = os.pread(process.output.fileno(), size, 0).decode("utf-8", "replace")
        return [tuple((line.strip() + " ").split(" ", 1)) for line in text.splitlines() if line.strip()]

    def run(self, *arguments):
        return self.finish(self.start(*arguments), *arguments)

    def finish(self, process, *arguments):
        self.wait(process)
        while self.did_not_start(process):
            process = self.start(*arguments)
            self.wait(process)
        return process

    def did_not_start(self, process):
        not_started = wine_installation.was_not_started(process.poll(), self.said(process))
        if not not_started or self.restarted == MOST_RESTARTS:
            return False
        self.restarted += 1
        return True

    def wait(self, process):
        try:
            process.wait(self.longest)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def collect(self, row, process, doing):
        """What a program said goes into the row. A crash ends it without its last line."""
        said = self.said(process)
        for key, value in said:
            if key == "done":
                row.done += int(value)
            elif key.startswith("growth:"):
                # A leak shows in every batch.
                name = key.partition(":")[2]
                row.grown[name] = min(row.grown.get(name, int(value)), int(value))
            elif key in ("unexpected", "failed"):
                row.note_text(f"{doing}: {value.strip()}")
        if process.returncode not in (0, 3) or (process.returncode == 0 and not any(key == "end" for key, _ in said)):
            row.note("crashed", f"{doing}: exit code {process.returncode}")
        return said


class Checker:
    """A program that says after each kill whether everything is whole."""

    def __init__(self, installation):
        self.installation = installation
        self.process = installation.start("serve", stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def ask(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()
        return self.process.stdout.readline().decode("utf-8", "replace").strip()

    def close(self):
        self.process.stdin.close()
        self.process.wait()


def wait_until_ready(installation, process):
    for _ in range(60_000):
        if process.poll() is not None or any(key == "ready" for key, _ in installation.said(process)):
            return process.poll() is None
        time.sleep(0.005)
    return False


def start_ready(installation, operation):
    while True:
        process = installation.start("change", operation)
        ready = wait_until_ready(installation, process)
        if ready or not installation.did_not_start(process):
            return process, ready


def kill_once(installation, checker, row, operation, dice):
    """True when the checker still answers and everything is whole."""
    process, ready = start_ready(installation, operation)
    time.sleep(dice.uniform(0, 0.25))
    ended = process.poll()
    process.kill()
    process.wait()
    if not ready or any(key == "failed" for key, _ in installation.said(process)):
        row.note("damaged", f"{operation}: could not go on: {installation.said(process)[-1:]}, exit code {ended}")
    answer = checker.ask(operation)
    row.done += 1
    if not answer:
        row.note("crashed", f"the check after {operation}")
    elif answer != "whole":
        row.note_text(f"killed in {operation}: {answer}")
    return answer


def prepare(installation, row):
    checker = Checker(installation)
    answer = checker.ask("prepare")
    while not answer and installation.did_not_start(checker.process):
        checker = Checker(installation)
        answer = checker.ask("prepare")
    if answer != "whole":
        row.note("damaged", f"cannot prepare: {answer or 'crashed'}")
    return checker


def prepare_once(installation, row):
    """What these rows use they leave as it was."""
    if not installation.prepared:
        prepare(installation, row).close()
    installation.prepared = True


def kills(installation, row, amount, seed):
    dice = random.Random(seed)
    checker = prepare(installation, row)
    installation.prepared = True
    for number in range(amount):
        answer = kill_once(installation, checker, row, OPERATIONS[number * len(OPERATIONS) // amount], dice)
        if not answer:
            checker = prepare(installation, row)
        elif answer != "whole":
            checker.ask("prepare")
    checker.close()


def members(installation, row, seconds, _):
    prepare_once(installation, row)
    installation.prepared = False  # it keeps some of what it adds
    before = {value for key, value in installation.said(installation.run("member", "found", 0, 0)) if key == "found"}
    started = [installation.start("member", "works", number, seconds) for number in range(MEMBERS)]
    expected = set(before)
    for number, process in enumerate(started):
        process = installation.finish(process, "member", "works", number, seconds)
        said = installation.collect(row, process, f"member {number}")
        expected |= {value for key, value in said if key == "kept"}
    looked = installation.run("member", "found", 0, 0)
    found = {value for key, value in installation.collect(row, looked, "listing") if key == "found"}
    for each in sorted(expected - found):
        row.note("lost", each)
    for each in sorted(found - expected):
        row.note("damaged", f"came back: {each}")


def threads(subject):
    def run(installation, row, seconds, _):
        installation.collect(row, installation.run("threads", subject, seconds), subject)
    return run


def repeats(what):
    def run(installation, row, amount, _):
        prepare_once(installation, row)
        installation.collect(row, installation.run("repeat", what, amount), what)
    return run


def damage(what):
    """After a crash it goes on behind the change that led to it."""
    def run(installation, row, amount, seed):
        prepare_once(installation, row)
        first = 0
        while first < amount:
            process = installation.run("damage", what, seed, first, amount)
            said = installation.collect(row, process, f"seed {seed}")
            if process.returncode == 0:
                break
            first = max([int(value) for key, value in said if key == "at"], default=amount) + 1
            row.done = first
            print(f"    {what}: seed {seed}, change {first - 1} ended the program", flush=True)
            prepare(installation, row).close()
    return run


def fuzzing(installation, row, seconds, seed):
    """Native programs, one a reader of foreign bytes, so many seconds each; what they find is kept beside them."""
    for target in sorted((installation.build.parent / "host-asan" / "bin").glob("fuzz_*")):
        found = installation.build.parent / "fuzz" / target.name
        found.mkdir(parents=True, exist_ok=True)
        process = subprocess.run(
            [target, f"-max_total_time={seconds}", f"-seed={seed + 1}", "-print_final_stats=1",
             f"-artifact_prefix={found}/", found, FUZZ / target.name], capture_output=True, text=True, errors="replace")
        units = re.search(r"number_of_executed_units: (\d+)", process.stderr)
        row.done += int(units.group(1)) if units else 0
        if process.returncode or not units:
            row.note("crashed", f"{target.name}: {process.stderr[-2000:]}")


def check_provider(installation, row, library, *arguments):
    folder = installation.bin
    process = subprocess.run(
        [installation.wine, folder / "orvctl.exe", "provider", "check", library, *arguments, "--json"],
        env=installation.env, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    lines = json.loads(process.stdout or b"[]")
    row.done += len(lines)
    for line in lines:
        if line["status"] == "failed":
            row.note("damaged", f"{library}: {line['check']}: {line['seen']}")
    if process.returncode or not lines:
        row.note("crashed", f"the check of {library} ended with {process.returncode}")


def checks(installation, row, seconds, _):
    """The providers that are shipped keep every rule, with so many seconds of threads."""
    threads = ["--threads-seconds", str(seconds)]
    check_provider(installation, row, "xhtsmpb.dll", "--config", "soak0.vcf", *threads)
    check_provider(installation, row, "xhtpabb.dll", "--config", "soak.orvab", "--writable", *threads)


def book_kills(installation, row, times, _):
    """Programs that add to a personal book, edit it, import into it and upgrade it are killed; what they had been told
    is done is there, and the file is whole."""
    if run_tests(installation, row, "book_test", "*Killed*:*IsKilled*", {b"ORV_KILLS": str(times).encode()}, "lost"):
        row.done = times


def timed(installation, row, _, __):
    """What has to be done in a time, on a machine that does nothing else."""
    for program, tests in TIMED.items():
        row.done += run_tests(installation, row, program, tests, {b"ORV_TIMED": b"1"}, "damaged")


def run_tests(installation, row, program, tests, variables, kind):
    """How many tests of a test program passed; a failure, or none at all, is noted."""
    process = subprocess.run(
        [installation.wine, installation.build / "bin" / f"{program}.exe", f"--gtest_filter={tests}"],
        env={**installation.env, **variables}, cwd=installation.build / "bin", stdin=subprocess.DEVNULL,
        capture_output=True, text=True, errors="replace")
    ran = re.search(r"\[  PASSED  \] (\d+) test", process.stdout)
    passed = int(ran.group(1)) if ran else 0
    if process.returncode or not passed:
        row.note(kind, f"{program}: {process.stdout[-2000:]}")
    return passed


def faulty(installation, row, _, __):
    """Every faulty provider meets every check: each is found out, and no check is brought down by another's fault."""
    process = subprocess.run([sys.executable, TESTS / "tools" / "faulty" / "check_test.py", installation.build, "--all"],
                             capture_output=True, text=True, errors="replace")
    counts = re.search(r"(\d+) passed, (\d+) failed", process.stdout)
    row.done = int(counts.group(1)) if counts else 0
    if process.returncode or not counts:
        row.note("damaged", process.stdout[-2000:])


ROWS = {"kills": ("programs killed", "kills", kills),
        **{each: (each, each, repeats(each)) for each in ("logons", "profiles", "getprops", "dialogs", "windows")},
        **{each: (f"random changes of the {each}", each, damage(each)) for each in ("registry", "catalogue")},
        **{f"threads-{each}": (f"8 threads: {each}", "threads", threads(each)) for each in SUBJECTS},
        "members": (f"services and profiles changed, {MEMBERS} programs", "members", members),
        "book-kills": ("programs killed that change a book", "book-kills", book_kills),
        "checks": ("rules that the shipped providers keep", "checks", checks),
        "timed": ("what has to be done in a time", "timed", timed),
        "faulty": ("faulty providers against every check", "faulty", faulty),
        "fuzzing": ("random bytes for every reader", "fuzzing", fuzzing)}


def run_row(installation, key, amounts, seed):
    name, amount, run = ROWS[key]
    row = Row(name)
    begin = time.monotonic()
    run(installation, row, amounts[amount], seed)
    row.seconds = time.monotonic() - begin
    print(row.line(), flush=True)
    return row


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("rows", nargs="*", metavar="ROW", help=", ".join(ROWS))
    parser.add_argument("--share", action="store_true", help="a small share of each")
    parser.add_argument("--amount", action="append", default=[], metavar="NAME=N",
                        help="that much of it: " + ", ".join(FULL))
    parser.add_argument("--seed", type=int, default=random.randrange(10_000))
    parser.add_argument("--table", type=pathlib.Path, help="the table is written there as well")
    options = parser.parse_intermixed_args()
    if unknown := set(options.rows) - set(ROWS):
        parser.error(f"no such row: {', '.join(unknown)}; there are {', '.join(ROWS)}")
    amounts = dict(SHARE if options.share else FULL)
    amounts.update((name, int(number)) for name, number in (each.split("=") for each in options.amount))
    installation = Installation(options.build.resolve(), LONGEST_OF_SHARE if options.share else LONGEST)
    print(f"seed {options.seed}\n", flush=True)
    head = "| what | done | lost | damaged | crashed | growth | time |\n|---|---|---|---|---|---|---|"
    print(head, flush=True)
    keys = options.rows or [key for key, (_, amount, _) in ROWS.items() if amounts[amount]]
    rows = [run_row(installation, key, amounts, options.seed) for key in keys]
    installation.run("clear")
    if options.table:
        options.table.write_text("\n".join([head, *(row.line() for row in rows), ""]))
    failed = sum(not row.good for row in rows)
    if installation.restarted:
        print(f"started again, since the emulation had not started them: {installation.restarted} programs")
    print(f"{len(rows) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
