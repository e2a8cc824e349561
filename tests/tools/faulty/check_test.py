#!/usr/bin/env python3
"""Runs `orvctl provider check` on a correct provider, on copies of it that break one rule each, and on the provider
that we ship. Argument: build folder. Prints what failed and "N passed, N failed".

--all: every faulty provider meets every check, so that the check itself is tried over damage."""
import concurrent.futures
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "scripts"))
import wine_installation

WRITING = {"write.read-only", "write.create", "write.abandoned", "write.conflict", "write.delete", "write.durable",
           "write.list", "write.twins", "write.copy", "notify.events", "notify.locks", "notify.after"}
# File name of the copy, the check that must fail, what it must say.
FAULTS = [
    ("noload", "image.loads", "ERROR_DLL_INIT_FAILED"), ("pinned", "image.unloads", "it stays"),
    ("longer_than_fifteen", "image.name", "23 characters"),
    ("keepsec", "entry.contexts", "kept the section"), ("anyctx", "entry.unknown-context", "answered"),
    ("nullsec", "entry.null-section", "access violation"), ("storebad", "entry.refused-value", "something was stored"),
    ("noconfig", "entry.config", "MAPI_E_NO_SUPPORT"), ("needsconf", "entry.create-then-logon", "MAPI_E_UNCONFIGURED"),
    ("nullobj", "logon.object", "no provider object"), ("nouid", "logon.uid", "registers none"),
    ("keepsup", "logon.failure", "keeps the support object"), ("throws", "logon.exceptions", "exception left ABProviderOpen"),
    ("leakobj", "logon.gives-back", "support object is still held"), ("roworder", "row.columns", "PR_DEPTH"),
    ("rootdead", "row.root", "MAPI_E_NOT_FOUND"), ("hiershort", "hierarchy.columns", "4 values"),
    ("idflags", "id.layout", "four zero bytes"), ("idtwo", "id.same", "GetProps"),
    ("iddead", "id.opens", "MAPI_E_NOT_FOUND"), ("idclock", "id.same", "in the next process it is"),
    ("idshort", "id.truncated", "opens an object"), ("idalign", "id.unaligned", "answered"),
    ("idnull", "id.null", "access violation"), ("idforeign", "id.foreign", "opens an object"),
    ("idwild", "id.mutated", "opens the entry"), ("proporder", "props.order", "in the place of"),
    ("missok", "props.missing", "the result was"), ("nulltag", "props.null-tag", "PR_NULL"),
    ("ansi", "props.unicode", "answered"), ("listless", "props.all", "not the same"),
    ("nullargs", "props.arguments", "access violation"), ("noname", "props.required", "PR_OBJECT_TYPE"),
    ("rownoid", "props.required", "of the 300 read of the contents of 'Fixed' without PR_ENTRYID"),
    ("rowless", "props.required", "read without PR_DISPLAY_NAME"),
    ("tellswhy", "props.all", "the tag list is worn out"),
    ("queryany", "props.interfaces", "does not clear"), ("count", "table.count", "600 rows"),
    ("endless", "table.ends", "gives 1 row"), ("seekends", "table.seeks", "moved by"),
    ("zerorows", "table.extremes", "reading 0 rows"), ("advances", "table.no-advance", "in the place of"),
    ("backwards", "table.backward", "in the place of"), ("seekfar", "table.random-access", "sought for row"),
    ("position", "table.position", "QueryPosition says"), ("walks", "table.cost", "microseconds"),
    ("columns", "table.columns", "2 values"), ("nullcol", "table.null-column", "both columns"),
    ("bookmark", "table.bookmarks", "that was freed"), ("findrow", "table.find-row", "found"),
    ("resall", "table.restrict", "it shows 'Entry"), ("resback", "table.restrict", "with the restriction taken back"),
    ("unsorted", "table.sort", "stands before"), ("sortloses", "table.sort", "not show the same rows"),
    ("shared", "table.independent", "a new table"), ("failing", "memory.failing", "less than there is"),
    ("leaks", "memory.leaks", "left"), ("freetwice", "memory.free", "freed twice"),
    ("chains", "memory.chaining", "another root"), ("ownptr", "memory.pointers", "points elsewhere"),
    ("overrun", "memory.bounds", "behind the end"), ("recipnone", "recips.empty", "MAPI_E_INVALID_PARAMETER"),
    ("recipall", "recips.foreign", "was changed"), ("reciptype", "recips.types", "PR_RECIPIENT_TYPE"),
    ("resolves", "names.resolve", "resolved already was changed"), ("liststays", "write.list", "taken out the list has 2 members"),
    ("twins", "write.twins", "one more row"), ("copynone", "write.copy", "no entry of that name"),
    ("writable", "write.read-only", "both succeed"), ("lostnumber", "write.create", "PR_EMAIL_ADDRESS"),
    ("eager", "write.abandoned", "one more row"), ("conflict", "write.conflict", "stored is"),
    ("lastwins", "write.conflict", "the first change is lost"),
    ("undelete", "write.delete", "still listed"), ("memory", "write.durable", "MAPI_E_NOT_FOUND"),
    ("keepsink", "notify.released", "still held"), ("silent", "notify.events", "nobody was told"),
    ("locks", "notify.locks", "does not return"), ("talks", "notify.after", "after Unadvise"),
    ("races", "threads.together", "answers for"), ("threadown", "threads.release", "MAPI_E_CALL_FAILED"),
]

# What never returns is waited for so many seconds; whatever else takes long does so on a busy machine.
HANGING = {"locks": 8}
# So many are tried side by side: much of what they take is waiting for processes to start and end.
AT_ONCE = 4


class Run:
    def __init__(self, build):
        self.passed = self.failed = 0
        self.lock = threading.Lock()
        self.wine, self.env = wine_installation.environment()
        self.bin = build / "bin"
        self.folder = build / "provider_check_test"
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()

    def copy(self, source, name):
        return shutil.copy(self.bin / source, self.folder / name)

    def patched(self, name, old, new):
        """A copy with the first occurrence of some bytes replaced by as many others."""
        data = (self.bin / "faulty.dll").read_bytes()
        assert old in data and len(old) == len(new)
        (self.folder / name).write_bytes(data.replace(old, new, 1))
        return self.folder / name

    def check(self, library, *arguments, config=None, json_out=True, step=60):
        """Exit code and what was said; output goes to files, as services of the emulation keep pipes open."""
        command = [self.wine, self.bin / "orvctl.exe", "provider", "check", library, "--threads-seconds", "1",
                   "--step-seconds", str(step), *arguments]
        command += ["--json"] if json_out else []
        command += ["--config", config] if config else []
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            code = subprocess.run(command, env=self.env, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=out,
                                  stderr=err, timeout=900).returncode
            out.seek(0), err.seek(0)
            text, errors = (each.read().decode("utf-8", "replace") for each in (out, err))
        if wine_installation.was_not_started(code, text, errors):
            return self.check(library, *arguments, config=config, json_out=json_out, step=step)
        return code, (json.loads(text) if json_out and text else text), errors

    def book(self, name):
        """A file of entries of a test's own, since checks write."""
        path = self.folder / (name + ".txt")
        path.write_bytes("1\tAda\t+49 40 1\n2\tBo\t+49 40 2\n".encode("utf-16-le"))
        return path.name

    def note(self, good, *what):
        with self.lock:
            self.passed += bool(good)
            self.failed += not good
            if not good:
                print("FAILED", *what, sep="\n    ", flush=True)


def broken(lines):
    return [f"{each['check']}: {each['seen']}" for each in lines if each["status"] == "failed"]


def one_fault(run, library, check, said):
    arguments = ["--only", check] + (["--writable"] if check in WRITING else [])
    code, lines, errors = run.check(library.name, *arguments, config=run.book(library.stem), step=HANGING.get(library.stem, 60))
    seen = lines[0]["seen"] if lines else ""
    good = code == 11 and len(lines) == 1 and lines[0]["status"] == "failed" and said in seen and lines[0]["guide"]
    run.note(good, f"{library.name} --only {check}", f"exit code {code}", lines, errors)


def faults(run):
    made = [(pathlib.Path(run.copy("faulty.dll", name + ".dll")), check, said) for name, check, said in FAULTS]
    made += [(pathlib.Path(run.copy("faulty_decorated.dll", "decorated.dll")), "image.exports", "exported decorated"),
             (pathlib.Path(run.copy("faulty_thread_local.dll", "threadlocal.dll")), "image.thread-locals", "it stays"),
             (run.patched("missing.dll", b"KERNEL32.dll", b"KERNEL77.dll"), "image.imports", "KERNEL77.dll: not found"),
             (run.patched("lacking.dll", b"\0CreateFileW\0", b"\0CreateFileQ\0"), "image.imports", "CreateFileQ of KERNEL32.dll"),
             (run.patched("machine.dll", b"PE\0\0\x64\x86", b"PE\0\0\x64\xaa"), "image.machine", "ARM64")]
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(lambda each: one_fault(run, *each), made))
    return {check for _, check, _ in made}


def correct(run, covered):
    library = pathlib.Path(run.copy("faulty.dll", "correct.dll"))
    code, lines, errors = run.check(library.name, "--writable", config=run.book("correct"))
    run.note(code == 0 and not errors, "the correct provider passes", broken(lines), errors)
    run.note(all(each["status"] == "ok" for each in lines), "and offers everything", [each for each in lines if each["status"] != "ok"])
    missed = {each["check"] for each in lines} - covered
    run.note(not missed, "every check can fail", missed)
    guide = (ROOT / "docs" / "provider-guide.md").read_text(encoding="utf-8")
    titles = {line.lstrip("# ") for line in guide.splitlines() if line.startswith("#")}
    unknown = {each["guide"] for each in lines} - titles
    run.note(not unknown, "the guide has every section that a rule names", unknown)
    document = (ROOT / "docs" / "provider-check.md").read_text(encoding="utf-8")
    untold = [each["check"] for each in lines if f"| `{each['check']}` | {each['rule']} |" not in document]
    run.note(not untold, "the document has every check with its rule", untold)
    code, lines, _ = run.check(library.name)
    run.note(code == 0 and not broken(lines), "the correct provider passes without a configuration", broken(lines))
    run.note(all(each["status"] == "not offered" for each in lines if each["check"] in WRITING), "nothing is written without leave")
    code, text, _ = run.check(library.name, "--only", "image.exports", "--entry", "NoSuchEntry", json_out=False)
    run.note(code == 11 and "NoSuchEntry is not exported" in text, "an entry function of another name", code, text)


def misuse(run):
    run.copy("faulty.dll", "misused.dll")
    code, text, errors = run.check("misused.dll", "--only", "no.such", json_out=False)
    run.note(code == 2 and not text and "there is no check 'no.such'" in errors and "table.seeks" in errors, "an unknown check", code, errors)
    code, _, errors = run.check("nowhere.dll", json_out=False)
    run.note(code == 4 and "nowhere.dll" in errors, "a file that is not there", code, errors)
    code, lines, _ = run.check("machine.dll")
    run.note(code == 11 and lines[-1]["status"] == "not offered" and "cannot be loaded" in lines[-1]["seen"],
             "one that cannot be loaded", code, broken(lines))


def told_once(run):
    """What keeps the other checks from being made is one failure, whatever was asked."""
    run.copy("faulty.dll", "whole.dll")
    (run.folder / "text.dll").write_text("no library at all")
    whole = (run.bin / "faulty.dll").read_bytes()
    (run.folder / "cut.dll").write_bytes(whole[:len(whole) // 2])
    (run.folder / "head.dll").write_bytes(whole[:0x120])
    # Library, arguments, configuration, the only failure and what it says, what the others say that were not made.
    for library, arguments, config, check, said, others in [
            ("whole.dll", ["--entry", "NoSuch"], None, "image.exports", "NoSuch is not exported", "needs the entry function, NoSuch"),
            ("noconfig.dll", [], "nowhere.txt", "entry.config", "provider_check_test\\nowhere.txt, where there is no file", "was refused"),
            ("text.dll", [], None, "image.machine", "no library", "the library cannot be loaded"),
            ("cut.dll", [], None, "image.machine", "shorter than its own header says", "the library cannot be loaded"),
            ("head.dll", [], None, "image.machine", "shorter than its own header says", "the library cannot be loaded"),
            (run.bin / "orvctl.exe", [], None, "image.machine", "a program, not a library", "the library cannot be loaded")]:
        code, lines, errors = run.check(library, *arguments, config=config)
        failed = [each for each in lines if each["status"] == "failed"]
        run.note(code == 11 and [each["check"] for each in failed] == [check] and said in failed[0]["seen"] and others in lines[-1]["seen"]
                 and lines[-1]["status"] == "not offered" and len(lines) > 60, f"{library} is one failure", code, broken(lines), lines[-1:], errors)
    for library, said in [("nofile.dll", "nor one of that name in"), (run.folder, "is a folder")]:
        code, _, errors = run.check(library, json_out=False)
        run.note(code == 4 and said in errors, f"{library} is no file", code, errors)


def catalogued(run):
    """An installation whose catalogue names another function than the only one there is."""
    place = run.folder / "installed"
    place.mkdir()
    for source, name in [("orvctl.exe", "orvctl.exe"), ("xhtaba.dll", "xhtaba.dll"), ("faulty.dll", "two.dll")]:
        shutil.copy(run.bin / source, place / name)
    (place / "XHTASVA.ini").write_text("[Services]\nTWO=Two\n[TWO]\nPR_DISPLAY_NAME=Two\nPR_SERVICE_DLL_NAME=two.dll\n"
                                       "PR_SERVICE_ENTRY_NAME=Elsewhere\nPR_SERVICE_SUPPORT_FILES=two.dll\n")
    here, run.bin = run.bin, place
    code, lines, errors = run.check("two.dll", "--only", "image.exports")
    run.bin = here
    run.note(code == 11 and "Elsewhere is not exported" in lines[0]["seen"], "the catalogue's entry function", lines, errors)


def shipped(run):
    library = pathlib.Path(run.copy("sample_provider.dll", "xhtsmpa.dll"))
    shutil.copy(ROOT / "data" / "contacts.vcf", run.folder)
    code, lines, errors = run.check(library.name, config="contacts.vcf")
    run.note(code == 0, "the sample provider passes", broken(lines), errors)
    library = pathlib.Path(run.copy("xhtpaba.dll", "xhtpaba.dll"))
    made = subprocess.run([run.wine, run.bin / "book_maker.exe", "people.orvab", "600"], env=run.env, cwd=run.folder,
                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=900)
    run.note(made.returncode == 0, "a personal book is made")
    code, lines, errors = run.check(library.name, "--entry", "PersonalServiceEntry", "--writable", config="people.orvab")
    run.note(code == 0, "the personal address book passes", broken(lines), errors)
    rest = [each["check"] for each in lines if each["status"] == "not offered"]
    run.note(set(rest) <= {"write.read-only"}, "and offers everything", rest)


def everything(run):
    """Each fault is told by its own check, as a failure or as what another failure tells already; which ones failed is
    said for whoever reads it."""
    def one(fault, check, said):
        code, lines, errors = run.check(fault + ".dll", "--writable", config=run.book(fault), step=HANGING.get(fault, 60))
        failed = [each for each in lines or [] if each["status"] == "failed"]
        own = [each["seen"] for each in lines or [] if each["check"] == check]
        told = code == 11 and own and said in own[0] and any(each["check"] == check or each["seen"] == own[0] for each in failed)
        run.note(told, f"{fault} against every check", code, errors, own, broken(lines or []))
        print(f"{fault}: {', '.join(each['check'] for each in failed)}", flush=True)
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        list(pool.map(lambda each: one(*each), FAULTS))


def main():
    run = Run(pathlib.Path(sys.argv[1]).resolve())
    covered = faults(run)
    with concurrent.futures.ThreadPoolExecutor(AT_ONCE) as pool:
        parts = [pool.submit(correct, run, covered), *(pool.submit(part, run) for part in (misuse, told_once, shipped))]
    for part in parts:
        part.result()
    catalogued(run)
    if "--all" in sys.argv:
        everything(run)
    print(f"{run.passed} passed, {run.failed} failed")
    return 1 if run.failed else 0


if __name__ == "__main__":
    sys.exit(main())
