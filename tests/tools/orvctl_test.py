#!/usr/bin/env python3
"""Runs every command of orvctl in an installation of its own, under the second model's name, whose part of the
registry nothing else uses. Arguments: build folder. Prints what failed and "N passed, N failed"."""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import wine_installation

LIBRARY = "xhtabb.dll"
REGISTRY = "HKCU\\Software\\Tovan\\Velmora\\VX200 series"
BOOK = "Büro 東"
LONGEST = 300  # seconds; a program that runs longer hangs
# With control characters.
HONEST = "honest\x1b[2J\n"  # as the lying provider calls it
# Combining and wide characters; the control character that the file has is no part of the name.
PERSON, GROUP = "Ju\u0308rgen Weiß", "Alle!"
CONTACTS = """BEGIN:VCARD
VERSION:3.0
UID:one
FN:Ju\u0308rgen Weiß
TEL;TYPE=FAX:+49 40 1
END:VCARD
BEGIN:VCARD
VERSION:3.0
UID:two
FN:佐藤 健
EMAIL:sato@kowan.example
END:VCARD
BEGIN:VCARD
VERSION:4.0
KIND:group
UID:three
FN:Alle\x9b!
MEMBER:one
MEMBER:two
END:VCARD
"""


class Case:
    """Runs programs of the installation and counts what was as expected."""

    def __init__(self, build):
        self.passed, self.failed, self.restarted = 0, 0, 0
        self.objects = {}  # words of a command: arguments and the fields that it told
        self.wine, self.env = wine_installation.environment()
        self.build = build
        self.folder = build / "orvctl_test"
        self.bin = wine_installation.install(build, self.folder)
        # Under a name that lets a test close its windows and nobody else's.
        shutil.copy(self.bin / "orvctl.exe", self.bin / "orvctl_windows.exe")

    def start(self, *arguments, program="orvctl.exe", output=None):
        """Output goes to files: services of the emulation that a program starts keep its streams open, and whoever
        reads them from a pipe waits for those."""
        files = tempfile.TemporaryFile(), tempfile.TemporaryFile()
        command = [self.wine, self.bin / program, *arguments]
        process = subprocess.Popen(command, env=self.env, cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=output or files[0], stderr=files[1])
        process.files = files
        process.again = lambda: self.start(*arguments, program=program, output=output)
        return process

    @staticmethod
    def streams_of(process):
        process.wait(timeout=LONGEST)
        texts = []
        for file in process.files:
            file.seek(0)
            texts.append(file.read().decode("utf-8", "replace").replace("\r\n", "\n"))
            file.close()
        return texts

    def wine_tool(self, *arguments):
        return subprocess.run([self.wine, *arguments], env=self.env, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=LONGEST)

    def registry(self, key, *arguments):
        with tempfile.TemporaryFile() as file:
            subprocess.run([self.wine, "reg", "query", key, *arguments], env=self.env, stdin=subprocess.DEVNULL,
                           stdout=file, stderr=subprocess.DEVNULL, timeout=LONGEST)
            file.seek(0)
            return file.read().decode("utf-8", "replace")

    def finish(self, process, arguments, code, out, err):
        """`out` and `err`: a text that has to be in the stream, several, or "" for an empty stream."""
        streams = self.streams_of(process)
        if wine_installation.was_not_started(process.returncode, *streams):
            self.restarted += 1
            process = process.again()
            streams = self.streams_of(process)
        wrong = [] if process.returncode == code else [f"exit code {process.returncode}, not {code}"]
        for name, text, wanted in (("output", streams[0], out), ("messages", streams[1], err)):
            if wanted == "" and text:
                wrong.append(f"{name} should be empty")
            for each in [wanted] if isinstance(wanted, str) else wanted or []:
                if each not in text:
                    wrong.append(f"no {each!r} in the {name}")
        self.note(not wrong, " ".join(map(str, arguments)), "; ".join(wrong), *streams)
        return streams[0]

    def note(self, good, what, *why):
        self.passed += bool(good)
        self.failed += not good
        if not good:
            print("FAILED", what, *why, sep="\n    ", flush=True)

    def run(self, *arguments, code=0, out=None, err=None):
        if err is None and code == 0:
            err = ""
        if out is None and code != 0:
            out = ""
        return self.finish(self.start("--library", LIBRARY, *arguments), arguments, code, out, err)

    def json(self, *arguments, code=0, err=None):
        text = self.run("--json", *arguments, code=code, out=[] if code else None, err=err)
        try:
            told = json.loads(text)
            if isinstance(told, dict) and "result" in told:
                words = arguments[:3 if arguments[1] == "group" else 1 if arguments[0] in ("import", "export") else 2]
                self.objects.setdefault(words, (arguments, set()))[1].update(told)
            return told
        except ValueError as error:
            self.note(False, " ".join(arguments), error, text)
            return []

    def close_window(self, *arguments, code, out=None, err=None):
        """Asks the program's windows to close until it has ended."""
        process = self.start("--library", LIBRARY, *arguments, program="orvctl_windows.exe")
        for _ in range(600):
            self.wine_tool("taskkill", "/IM", "orvctl_windows.exe")
            try:
                process.wait(timeout=0.2)
                break
            except subprocess.TimeoutExpired:
                pass
        else:
            process.kill()
        return self.finish(process, arguments, code, out, err)

    def press_ok(self, *arguments, code, out=None, err=None):
        """Presses OK in the program's dialog as it comes up."""
        caption = "orvctl test"
        process = self.start("--library", LIBRARY, *arguments, "--caption", caption)
        pressed = self.wine_tool(self.build / "bin" / "orvctl_press_ok.exe", caption)
        self.note(pressed.returncode == 0, "OK was pressed for", arguments)
        return self.finish(process, arguments, code, out, err)

    def windows_path(self, path):
        return "Z:" + str(path).replace("/", "\\")


def command_line(t):
    for arguments, said in [
            ([], "A subcommand is required"), (["profile"], "A subcommand is required"),
            (["profil", "list"], "did you mean 'profile'?"), (["profile", "list", "surplus"], "'surplus' is not understood here\n"),
            (["book", "lsit", "P"], "did you mean 'list'?"), (["book", "list", "P", "--limt", "1"], "did you mean '--limit'?"),
            (["help", "book", "lits"], "did you mean 'list'?"), (["profile", "create", " \u3000"], "blanks alone"),
            (["profile", "create", "a\u202eb"], "'a\\u202Eb' has characters"), (["profile", "rename", "P", "x" * 32], "has 32 characters"),
            (["contact", "add", "P", "--name", "N", "--fax", "1:nix"], "business, home, other, preferred"),
            (["contact", "add", "P", "--fax", "1"], "--name"), (["contact", "add", "P", "--name", "N", "--fax", "abc"], "'abc' has no digit"),
            (["contact", "add", "P", "--name", "N", "--fax", "1:mobile"], "kinds business, home, other, preferred"),
            (["export", "P", "all.xyz"], ".ldif, .ldi, or give --format with one of vcard, vcard30"), (["file", "convert", "A", "B"], "--to"),
            (["profile", "export", "P", "--fields", "a"], "profile show"), (["contact", "edit", "P", "E"], "--phone"),
            (["import", "P", "F", "--format", "nix"], "vcard30"), 
            *(([*words, "--dry-run"], "beforehand") for words in (
                ["service", "add", "P", "S"], ["service", "set", "P", "--dialog"], ["profile", "configure", "P"], ["pick", "P"],
                ["profile", "create", "P", "--dialog"], ["book", "repair", "A", "B"], ["doctor", "--fix"], ["provider", "check", "A"])),
            (["profile", "list", "book", "tree", "P"], "orvctl: "),
            (["profile", "default", "P", "--none"], "excludes"),
            (["profile", "create", "-"], "stands for the default profile"),
            (["profile", "rename", "P", "-"], "stands for the default profile"),
            (["profile", "default", ""], "must not be empty"), (["service", "remove", "P", ""], "must not be empty"),
            (["service", "set", "P"], "--config, --property or --dialog"),
            (["service", "set", "P", "--property", "0x6600001F"], "is not TAG=VALUE"),
            (["service", "set", "P", "--property", "PR_NULL=x"], "is not TAG=VALUE"),
            (["book", "show", "P"], "--first"), (["book", "show", "P", "E", "--first"], "excludes"),
            (["--library", "..\\other.dll", "profile", "list"], "without folder"),
            (["--library", "c:other.dll", "profile", "list"], "without folder")]:
        t.finish(t.start(*arguments), arguments, 2, "", [said, "--help"])
    t.finish(t.start("--json", "profil"), ["usage"], 2, "", ['"error": "', "'profil'", '"exitCode": 2'])
    with open("/dev/full", "wb") as full:
        t.finish(t.start("--help", output=full), ["a full disk"], 12, "", "")
        t.finish(t.start("service", "available", output=full), ["a full disk"], 12, "", "cannot write the output\n")
        t.finish(t.start("--library", LIBRARY, "profile", "create", "voll", output=full), ["a full disk"], 12, "",
                 "cannot write the output, but this was done: Created profile 'voll'.")
    t.run("profile", "delete", "voll")
    t.finish(t.start("help", "contact", "group", "add"), ["help of a command"], 0, ["orvctl contact group add", "MEMBER"], "")
    for arguments, said in [(["--help"], "profile"), (["help"], "profile"), (["book", "show", "--help"], "ENTRY")]:  # without a library
        t.finish(t.start(*arguments), arguments, 0, ["Exit codes", said], "")


def libraries(t):
    for name, spoil, said in [
            ("nix.dll", None, "there is no file"), ("text.dll", lambda file: file.write_text("text"), "no library, or damaged"),
            ("x86.dll", other_machine, "made for x86, not x64"), ("xhtsmpb.dll", None, "does not export OrvOpen"),
            ("cut.dll", lambda file: file.write_bytes(file.read_bytes()[:8192]), "shorter than its own header")]:
        if spoil:
            shutil.copy(t.bin / "xhtabb.dll", t.bin / name)
            spoil(t.bin / name)
        found = json.loads(t.finish(t.start("--json", "doctor", "--library", name), ["doctor", name], 11, None, "problems") or "[]")
        t.note(found and found[0]["check"] == "library" and found[0]["status"] == "error" and said in found[0]["detail"] and
               found[0]["fix"], "the doctor about " + name, found)
        if spoil:
            (t.bin / name).unlink()
    for name, arguments, said in [
            ("nix.dll", ["profile", "list"], ["\\nix.dll", "ERROR_MOD_NOT_FOUND"]),
            ("xhtsmpb.dll", ["profile", "list"], "xhtsmpb.dll is not the address book library"),
            ("nix.dll", ["service", "available"], ["\\nix.dll", "ERROR_MOD_NOT_FOUND"])]:
        t.finish(t.start(*arguments, "--library", name), arguments, 3, "", said)
    for name, spoil, said in [
            ("XHTFCBUS.chm", lambda file: file.write_text("text"), "it is no help file"),
            ("XHTFCBUS.dll", lambda file: shutil.copy(t.bin / "XHTFCBDE.dll", file), "made as 'XHTFCDE', not as 'XHTFCUS'"),
            ("XHTFCBUS.dll", lambda file: shutil.copy(t.bin / "xhtsmpb.dll", file), "it has no dialog 192")]:
        whole = (t.bin / name).read_bytes()
        spoil(t.bin / name)
        found = [each for each in t.json("doctor", code=11, err="problems") if each["status"] == "error"]
        t.note(found and found[0]["subject"] == name and said in found[0]["detail"], "the doctor about " + name, found)
        (t.bin / name).write_bytes(whole)
    said = t.finish(t.start("provider", "check", "xhtsmpb.dll", "--only", "image.exports"), ["one check"], 0, "ok", "")
    t.note(max(map(len, said.splitlines())) <= 120 and "It exports ABProviderOpen" in " ".join(said.split()), "lines of a check", said)
    t.finish(t.start("provider", "check", "xhtsmpb.dll", "--only", "image.exports", "--problems"), ["only problems"], 0,
             "Nothing is broken", "")
    t.finish(t.start("profile", "list", "--library=XHTABB.DLL"), ["other case"], 0, "There are no profiles.\n", "")
    t.finish(t.start("service", "available"), ["default library"], 0, "xhtsmpA.dll", "")


def profiles(t):
    t.note(t.json("profile", "list") == [], "an empty list is an array")
    t.run("profile", "default", out="There is no default profile.\n")
    t.run("book", "list", "-", code=4, err="there is no default profile")
    t.run("service", "list", "-", code=4, err="there is no default profile")
    t.run("profile", "create", BOOK, out=f"Created profile '{BOOK}'.\n")
    t.run("profile", "create", BOOK.replace("B", "b"), code=7, err=[f"'{BOOK}', the same but for the case", "MAPI_E_NO_ACCESS"])
    for name in ("a\\b", "x" * 65):
        t.run("profile", "create", name, code=1, err=[name, "1 to 31 characters and no backslash"])
    t.run("profile", "copy", BOOK, "--", "--json", out="to '--json'.\n")
    t.run("profile", "rename", "--", "--json", "Ümzug", out="to 'Ümzug'.\n")
    t.run("profile", "rename", "Ümzug", BOOK, code=7, err=f"there is one called '{BOOK}' already")
    for arguments in (["copy", "nix", "neu"], ["rename", "nix", "neu"], ["delete", "nix"], ["default", "nix"],
                      ["configure", "nix"]):
        t.run("profile", *arguments, code=4, err="there is no profile 'nix'")
    t.run("profile", "default", "Ümzug", out="The default is now profile 'Ümzug'.\n")
    t.note(t.json("profile", "default") == [{"profile": "Ümzug"}], "the default profile")
    t.note(sorted(t.json("profile", "list"), key=str) == sorted(
        [{"profile": BOOK, "default": False}, {"profile": "Ümzug", "default": True}], key=str), "both profiles")
    t.run("profile", "list", out=["Profile", "Ümzug    yes\n", BOOK + "\n"])
    t.run("profile", "delete", "-", out="Deleted profile 'Ümzug'.\n")
    long = "a name that is longer than 31 characters"
    t.wine_tool("reg", "add", f"{REGISTRY}\\Orv Profiles\\{long}", "/f")
    t.run("profile", "default", long, err=["orvctl: warning:", "never recognised"])
    for stored, said in ((long, "too long to be recognised"), ("weg", "'weg', and there is none of that name")):
        t.wine_tool("reg", "add", f"{REGISTRY}\\Orv Profiles", "/v", "DefaultProfile", "/d", stored, "/f")
        t.note(any(each["subject"] == "the default" and each["status"] == "warning" and said in each["detail"] and each["fix"]
                   for each in t.json("doctor")), "a default that is none: " + said)
    t.run("profile", "default", "--none", out="There is no default profile now.\n")
    t.run("profile", "delete", long)
    t.run("--json", "profile", "delete", "nix", code=4, err=[
        '"error": "there is no profile \'nix\'"', '"exitCode": 4', '"code": "MAPI_E_NOT_FOUND (0x8004010F)"'])


def services(t, contacts):
    path = t.windows_path(contacts)
    available = t.json("service", "available")
    t.note(available[:1] == [{"service": "PersonalBook", "name": "Personal address book", "displayName": "Personal address book", "provider":
                              "Personal address book", "library": "xhtpabB.dll", "flags": "", "default": True}] and
           available[1:] == [{"service": "ContactFile", "name": "Contact file", "displayName": "Contact file", "provider":
                              "Contact file (vCard, CSV, LDIF)", "library": "xhtsmpB.dll", "flags": "", "default": False}],
           "the catalogue", available)
    t.run("service", "list", "nix", code=4, err="there is no profile 'nix'")
    t.run("service", "list", BOOK, out="The profile has no services.\n")
    t.run("service", "set", BOOK, "--config", path, code=4, err=["there is no service in profile", BOOK])
    t.run("service", "add", BOOK, "Personalbok", code=4, err="did you mean 'PersonalBook'?")
    t.run("service", "add", BOOK, "Nix", code=4, err=["'Nix'", "service available"])
    t.run("service", "add", BOOK, "ContactFile", "--config", "C:\\nix.vcf", code=1, err=["C:\\nix.vcf' (there is no such file)", "MAPI_E_NOT_FOUND"])
    for wrong, code, said in [("C:\\nix\\a.orvab", 1, "there is no such folder"), (t.windows_path(t.folder), 8, "a folder"),
                              (path, 8, "a file of another kind")]:
        t.run("service", "add", BOOK, "PersonalBook", "--config", wrong, code=code, err=[f"'{wrong}'", said])
    t.run("service", "add", BOOK, "ContactFile", out=f"Added service 'ContactFile' to profile '{BOOK}'.\n")
    t.run("service", "set", BOOK, "nix", "--config", path, code=4, err="there is no service 'nix'")
    t.close_window("service", "set", BOOK, "ContactFile", "--dialog", code=5, err="MAPI_E_USER_CANCEL")
    # The service's own function is asked, and nothing is stored of what it refuses.
    t.run("service", "set", BOOK, "Contact file", "--config", "nix.vcf", "--property", "0x67010003=8", code=1,
          err=["cannot configure service 'ContactFile'", t.windows_path(t.folder / "nix.vcf"), "(there is no such file)",
               "'SampleServiceEntry' of xhtsmpB.dll", "MAPI_E_NOT_FOUND"])
    # A relative path is meant from here, not from where the book is read.
    t.run("service", "set", BOOK, "--config", contacts.name, "--property", "0x67010003=7", out="Configured")
    t.run("service", "add", BOOK, "ContactFile", "--config", path, "--display", "Büro")
    t.note(sorted(each["displayName"] for each in t.json("service", "list", BOOK)) == ["Büro", "Contact file"], "the name given")
    first, second = (t.json("service", "list", BOOK) + [{}, {}])[:2]
    t.note(first.get("library") == "xhtsmpB.dll" and first.get("entryPoint") == "SampleServiceEntry" and
           re.fullmatch("[0-9A-F]{32}", first.get("uid", "")), "the service", first)
    t.run("service", "remove", BOOK, "ContactFile", code=6, err=["2 services fit", "UID"])
    t.run("service", "remove", BOOK, "Büro", out="Removed service 'ContactFile'")
    t.note(len(t.json("service", "list", BOOK)) == 1, "one service is left")


def profile_files(t):
    """What is exported, applied where it is not, is there; applied again nothing changes."""
    t.run("profile", "create", BOOK.lower(), "--if-missing", out="There is profile")
    t.run("profile", "delete", "nix", "--if-exists", out="There is no such profile.\n")
    t.run("profile", "delete", BOOK, "--dry-run", out=f"Would delete profile '{BOOK}'.\n")
    again = t.json("service", "add", BOOK, "ContactFile", "--if-missing")
    first = t.json("service", "list", BOOK)
    t.note(len(first) == 1 and again.get("uid") == first[0]["uid"] and again["changed"] is False, "a service that is there", again)
    t.run("service", "set", BOOK, "--property", "0x67F0001F=geheim")
    t.run("service", "show", BOOK, out=["PR_ORV_BOOK_FILE_W", "(secret)"])
    told = t.json("profile", "export", BOOK, err="0x67F0001F of service 'ContactFile' is left out, it is secret")
    t.note(told["services"][0]["settings"].get("0x67010003") == 7 and "geheim" not in str(told) and
           told["defaultContainer"]["name"] == told["searchPath"][0]["name"], "a profile as a file", told)
    for name, path in (("profile", "Zwilling"), ("default", True)):
        told[name] = path
    file = t.folder / "profil.json"
    file.write_text(json.dumps(told))
    t.run("profile", "apply", file.name, "--dry-run", out=["would have created", "would have added service 'ContactFile'"], err="once the rest is done")
    applied = t.json("profile", "apply", file.name)
    t.note(applied["changes"][:1] == ["created the profile"] and "made it the default profile" in applied["changes"], "what was applied", applied)
    again = t.json("profile", "apply", file.name)
    t.note((again["changes"], again["changed"], again["result"][:17]) == ([], False, "Nothing to change"), "nothing to apply again", again)
    told["services"][0]["displayName"] = "Anders"
    file.write_text(json.dumps(told))
    t.note(t.json("profile", "apply", file.name)["changes"] == ["named service 'ContactFile' 'Anders'"] and
           t.json("service", "list", "-")[0]["displayName"] == "Anders", "a display name")
    twin = t.json("profile", "show", "-")
    t.note(twin["profile"] == "Zwilling" and twin["services"][0]["settings"] == told["services"][0]["settings"], "the twin", twin)
    t.run("book", "default", "-", twin["defaultContainer"]["name"], out="is now")
    t.note(t.json("book", "default", "-", twin["defaultContainer"]["name"])["changed"] is False, "a default that is set already")
    t.note([t.json("book", "path", "-", twin["defaultContainer"]["id"])["changed"] for _ in range(2)] == [False, False], "a path that is set already")
    t.note([each["id"] for each in t.json("book", "path", "-")] == [twin["defaultContainer"]["id"]], "a search path")
    for change, code, said in [({"servces": []}, 8, 'did you mean "services"?'),
                               ({"services": [{"service": "ContactFile"}, {"service": "Nix"}]}, 4, "the new profile 'Halb' was taken back"),
                               ({"services": [{"service": "ContactFile", "settings": {"PR_NIX": 1}}]}, 1, "there is no setting 'PR_NIX'; give its tag, such as 0x6600001F; nothing was changed"),
                               ({"default": "ja"}, 8, "'orvctl profile export': type must be boolean, but is string; the new profile")]:
        file.write_text(json.dumps({"format": "orvctl-profile-1", "profile": "Halb", **change}))
        t.run("profile", "apply", file.name, code=code, err=said)
    t.run("profile", "show", "Halb", code=4, err="there is no profile")
    file.write_text("{}")
    t.run("profile", "apply", file.name, code=8, err="is no file of 'orvctl profile export'")
    t.run("profile", "apply", "nix.json", code=4, err="there is no file 'nix.json'")
    t.run("profile", "delete", "-")
    t.run("profile", "default", "--none")
    two_of_a_kind(t, file)
    foreign_profile(t, file)
    lists_of_one_name(t)
    t.run("service", "set", BOOK, "--property", "0x67F0001F=")
    t.run("userinfo", "set", BOOK, "--name", "Ich Selbst", "--fax", "+49 40 77:home", "--property", "0x3A17001F=Chef", out="Set 3")
    t.run("userinfo", "get", BOOK, out=["Ich Selbst", "PR_HOME_FAX_NUMBER_W (0x3A25001F)", "Chef"])
    t.run("userinfo", "get", "nix", code=4, err="there is no profile 'nix'")


def two_of_a_kind(t, file):
    """Services of one kind go by their books, whatever the keys that they are stored under."""
    books = [{"service": "PersonalBook", "displayName": "Buch", "settings": {"PR_ORV_BOOK_FILE_W": t.windows_path(t.folder / (name + ".orvab")), **more}}
             for name, more in (("a", {}), ("b", {"0x6700001F": "Name von b"}))]
    for attempt in range(3):
        told = {"format": "orvctl-profile-1", "profile": f"Paar{attempt}", "services": books[::1 - attempt % 2 * 2]}
        file.write_text(json.dumps(told))
        first, second = t.json("profile", "apply", file.name), t.json("profile", "apply", file.name)
        names = {each["settings"]["PR_ORV_BOOK_FILE_W"][-7:]: each["settings"].get("0x6700001F") for each in
                 t.json("profile", "export", told["profile"])["services"]}
        t.note(len(first["changes"]) == 4 and second["changes"] == [] and names == {"a.orvab": None, "b.orvab": "Name von b"},
               "two books applied", first, second, names)
        t.run("profile", "delete", told["profile"])


def foreign_profile(t, file):
    """A file of another profile takes nobody's book out of this one; what it names and there is not, it says beforehand."""
    for profile, book, name in (("Dort", "firma", "Firma"), ("Hier", "sek", "Eigenes")):
        t.run("profile", "create", profile)
        t.run("service", "add", profile, "PersonalBook", "--config", book + ".orvab", "--display", name)
    told = {**t.json("profile", "export", "Dort"), "profile": "Hier"}
    mistaken = [({**told, "defaultContainer": {"name": "Nix"}, "services": []}, 4, "no container 'Nix' in profile 'Hier'; nothing was changed"),
                ({**told, "services": [told["services"][0], {"service": "PersonalBook", "settings": {"PR_NIX": 1}}]}, 1, "'PR_NIX'")]
    for spoilt, code, said in mistaken:
        file.write_text(json.dumps(spoilt))
        t.run("profile", "apply", file.name, code=code, err=said)
    file.write_text(json.dumps(told))
    first, second = (t.json("profile", "apply", file.name, err="1 of service 'PersonalBook' that the file does not name stay") for _ in range(2))
    books = {each["container"] for each in t.json("book", "tree", "Hier") if each["depth"] or each["entries"] is not None}
    t.note(first["changes"][:1] and first["changes"][0].startswith("added service 'PersonalBook'") and second["changes"] == [] and
           {"sek", "firma"} <= books and len(t.json("service", "list", "Hier")) == 2, "a book beside a book", first, second, books)
    # A service that never had a book becomes that of the file.
    t.run("profile", "create", "Leer")
    t.run("service", "add", "Leer", "PersonalBook")
    file.write_text(json.dumps({**told, "profile": "Leer"}))
    t.json("profile", "apply", file.name)
    t.note([each["displayName"] for each in t.json("service", "list", "Leer")] == ["Firma"], "a fresh service")
    shown = t.json("profile", "show", "Leer")
    t.note(shown["newContacts"] == {key: t.json("book", "default", "Leer")[0][key] for key in ("name", "id")}, "where new contacts go", shown)
    t.run("profile", "show", "Leer", out=["  name", "Firma\n", shown["services"][0]["uid"]])
    for profile in ("Hier", "Dort", "Leer"):
        t.run("profile", "delete", profile)


def lists_of_one_name(t):
    """Reading looks where changing does, and takes no list for another; what would be added is told truly."""
    t.run("profile", "create", "Listen")
    for book, member in (("g1", "Alpha"), ("g2", "Beta")):
        (t.folder / (book + ".orvab")).unlink(missing_ok=True)
        t.run("service", "add", "Listen", "PersonalBook", "--config", book + ".orvab")
        t.run("contact", "add", "Listen", "--name", member, "--fax", "+1 5", "--fax", "+1 6:home", "--container", book)
        t.run("contact", "group", "add", "Listen", "L", member, "--container", book)
    t.run("book", "default", "Listen", "g1")
    members = ["contact", "group", "members", "Listen", "L", "--fields", "name,container"]
    found = [t.json(*members, *more) for more in ([], ["--container", "g2"])]
    t.note(found == [[{"name": f"{name} (business fax)", "container": book}] for name, book in (("Alpha", "g1"), ("Beta", "g2"))], "members of lists of one name", found)
    for words in (["book", "expand", "Listen", "L"], ["book", "show", "Listen", "L"], ["book", "list", "Listen", "--container", "L"]):
        t.run(*words, code=6, err=["'L' fits 2; name one by its identifier", "is 'L'"])
    t.run("book", "show", "Listen", "Alpha", out="Alpha")
    t.run("book", "expand", "Listen", "L", "--container", "g1", "--missing", out="Nobody is missing: 1 recipient, each with an address.\n")
    for words, said, changed in [
            (["contact", "group", "add", "Listen", "L", "Alpha"], "Would add 0 members to 'L'. 1 member was in it already.", False),
            (["contact", "group", "add", "Listen", "M", "Alpha", "Alpha (home fax)"], "Would add 2 members to the new list 'M'.", True),
            (["contact", "group", "remove", "Listen", "L", "Alpha"], "Would remove 1 member of 'L'.", True),
            (["contact", "add", "Listen", "--name", "N"], "Would add 'N'", True), (["contact", "edit", "Listen", "L", "--note", "n"], "Would change", True),
            (["contact", "remove", "Listen", "L"], "Would remove", True), (["book", "default", "Listen", "g1"], "Would make", False),
            (["book", "default", "Listen", "g2"], "Would make", True), (["profile", "create", "Listig"], "Would create", True),
            (["profile", "delete", "Listen"], "Would delete", True)]:
        told = t.json(*words, "--dry-run")
        t.note((told["dryRun"], told["changed"], told["result"][:len(said)]) == (True, changed, said), "foretold", words, told)
    again = t.json("contact", "group", "add", "Listen", "L", "Alpha")
    t.note((again["members"], again["changed"], again["dryRun"]) == (0, False, False), "nothing was changed", again)
    t.run("profile", "delete", "Listen")


def book(t, contacts):
    root, file = (t.json("book", "tree", BOOK) + [{}, {}])[:2]
    t.note(root.get("depth") == 0 and root.get("entries") is None, "the provider's container", root)
    t.note({**file, "id": ""} == {"container": contacts.stem, "depth": 1, "entries": 3, "unreadable": 0,
                                       "status": "S_OK (0x00000000)", "flags": 9, "id": "",
                                       "file": t.windows_path(contacts)}, "the file's container", file)
    t.run("book", "tree", BOOK, out=["\n  " + contacts.stem, "read"])
    entries = t.json("book", "list", BOOK)
    t.note([(each["name"], each["type"], each["address"]) for each in entries] == [
        (GROUP, "list", ""), (PERSON, "user", "+49 40 1"), ("佐藤 健", "user", "sato@kowan.example")],
        "the entries", entries)
    group, person, other = (each["id"] for each in entries[:3])
    # Wide characters take two columns, so what stands behind them is aligned.
    t.run("book", "list", BOOK, "--container", contacts.stem,
          out=[f"\n{PERSON}  user  FAX           +49 40 1 ", "\n佐藤 健      user  ",
               "\nAlle!        list  "])
    t.note(t.json("book", "list", BOOK, "--container", file.get("id", "?")) == entries, "a container by identifier")
    for which in (GROUP, group):
        t.note([each["name"] for each in t.json("book", "list", BOOK, "--container", which)] == [PERSON, "佐藤 健"], "members of " + which)
    t.run("book", "list", BOOK, "--container", person, code=4, err="neither a container nor a distribution list")
    t.run("book", "list", BOOK, "--container", "nix", code=4, err="there is no container 'nix', nor a distribution list")
    # For reading a part of a name is enough.
    for part, code in (("rgen W", 0), ("E", 6), ("nix", 4)):
        t.run("book", "show", BOOK, part, code=code, out=None if code == 0 else "", err=None if code != 6 else [group, person])
    t.note([each["name"] for each in t.json("book", "find", BOOK, "sato@")] == ["佐藤 健"], "a search")
    t.note(t.json("book", "list", BOOK, "--limit", "1", "--fields", "address,name") == [{"address": "", "name": GROUP}], "fields")
    t.run("book", "list", BOOK, "--csv", "--fields", "name,type", out=f"name,type\n{GROUP},list\n{PERSON},user\n")
    t.run("book", "list", BOOK, "--fields", "nix", code=2, err="there is no field 'nix'")
    t.run("book", "expand", BOOK, GROUP, "--count", out="2 recipients, 0 of them without an address.\n")
    t.run("contact", "add", BOOK, "--name", "N", code=1, err=["can be changed", "service add"])
    t.run("book", "show", BOOK, "nix", code=4, err="there is no entry 'nix'")
    shown = t.json("book", "show", BOOK, "佐藤 健")
    t.note({"property": "PR_DISPLAY_NAME_W (0x3001001F)", "value": "佐藤 健"} in shown, "properties", shown)
    t.note(t.json("book", "show", BOOK, other) == shown, "an entry by identifier")
    t.run("book", "show", BOOK, "--first", out="PR_OBJECT_TYPE (0x0FFE0003)")
    t.run("book", "show", BOOK, "00" * 20, code=4, err=["00" * 20, "MAPI_E_NOT_FOUND"])
    members = [("to", PERSON, "+49 40 1", "user"), ("to", "佐藤 健", "sato@kowan.example", "user")]
    for which in ("--first", GROUP, group):
        expanded = t.json("book", "expand", BOOK, which)
        t.note(sorted((each["type"], each["name"], each["address"], each["objectType"]) for each in expanded) ==
               sorted(members), "members of " + repr(which), expanded)


def people(t):
    """A personal book from nothing: people, lists, files in and out, what is removed and comes back."""
    t.run("profile", "create", "Leute")
    t.run("service", "add", "Leute", "PersonalBook", "--config", "leute.orvab", out=["There was no file", "leute.orvab; a personal book begins"])
    jane = t.json("contact", "add", "Leute", "--name", "Jane Doe", "--fax", "+49 40 1", "--fax", "+49 40 2:home", "--fax",
                  "+49 40 3", "--company", "Acme", "--note", "x")
    rows = t.json("book", "list", "Leute", "--fields", "name,address,id,company")
    t.note([each["address"] for each in rows] == ["+49 40 1", "+49 40 2", "+49 40 3"] and jane["id"] in [each["id"] for each in rows] and
           sorted(jane["ids"]) == sorted(each["id"] for each in rows) and rows[0]["company"] == "Acme", "a contact with three numbers", jane, rows)
    for text, found in (("49 (40)", [0, 1, 2]), ("0049 40", [0, 1, 2]), ("040 2", [1]), ("40-3", [2]), ("940", [])):
        t.note([each["id"] for each in t.json("book", "find", "Leute", text)] == [rows[i]["id"] for i in found], "the digits " + text)
    for name in ("John Roe", "John Roe", "Ana Gómez"):
        t.run("contact", "add", "Leute", "--name", name, "--fax", "+1 " + str(len(name)) + name[:1], out=f"Added '{name}'")
    johns = t.json("book", "find", "Leute", "roe")
    t.run("contact", "edit", "Leute", "John Roe", "--company", "X", code=6, err=[each["id"] for each in johns])
    t.run("contact", "edit", "Leute", "Gómez", "--company", "X", code=4, err="called exactly 'Gómez'")
    t.run("contact", "edit", "Leute", johns[0]["id"], "--name", "John A. Roe", "--fax", "+1 99", "--fax", "+1 98", out="Changed")
    t.note([each["address"] for each in t.json("book", "find", "Leute", "john a")] == ["+1 99", "+1 98"], "both numbers are kept")
    t.note([each["address"] for each in t.json("book", "find", "Leute", "gomez")] == ["+1 9A"], "a search without accents")
    t.run("contact", "edit", "Leute", "Ana Gómez", "--fax", ":business", "--email", "ana@x.example", out="Changed")
    group = t.json("contact", "group", "add", "Leute", "Alle", "Jane Doe", "John A. Roe", "Ana Gómez")
    t.note(len(t.json("contact", "group", "members", "Leute", "lle")) == 3, "members")
    t.note(t.json("book", "expand", "Leute", group["id"], "--count")["missing"] == 1, "a member without a number")
    t.run("contact", "group", "remove", "Leute", "Alle", "John A. Roe", out="Removed 1 member of 'Alle'.")
    t.run("service", "add", "Leute", "PersonalBook", "--config", "drei.orvab", "--display", "Drei")
    copied = t.run("contact", "copy", "Leute", "Ana Gómez", "--to", "drei", "--csv", "--fields", "copied,id", out="copied,id\n1,")
    t.note([each["id"] for each in t.json("book", "list", "Leute", "--container", "drei")] == [copied.split(",")[-1].strip()], "a copy", copied)
    here = t.json("book", "list", "Leute", "--container", "leute")
    t.run("contact", "edit", "Leute", copied.split(",")[-1].strip(), "--fax", "+2 1:home", "--fax", "+2 2:home", "--note", "n", out="Changed")
    t.note([[each[field] for field in ("address", "email", "note")] for each in
            t.json("book", "list", "Leute", "--container", "drei", "--fields", "address,email,note")] ==
           [["+2 1", "ana@x.example", "n"], ["+2 2", "ana@x.example", "n"]] and
           t.json("book", "list", "Leute", "--container", "leute") == here, "several numbers change nothing else, and no other book")
    t.note(len(t.json("contact", "copy", "Leute", "Jane Doe", "--to", "drei")["ids"]) == 3, "a name means all rows of a contact")
    for name, text in (("m.map", "Dings=nix"), ("m.csv", "Dings,Faxnr\nA,12")):
        (t.folder / name).write_text(text)
    t.run("import", "Leute", "m.csv", "--map", "m.map", code=2, err="line 1 of 'm.map', 'Dings=nix', does not fit: --map takes COLUMN=FIELD with a field of ignore, name")
    t.run("import", "Leute", "m.csv", "--charset", "utf8x", code=2, err="its character set is not known")
    t.run("book", "list", "Leute", "--limit", "0", code=2, err="not in range 1 to")
    t.run("service", "remove", "Leute", "Drei")
    t.run("contact", "group", "remove", "Leute", "Nix", "X", code=4, err="no distribution list 'Nix'")
    t.run("contact", "remove", "Leute", "Jane Doe", "--dry-run", out="Would remove")
    t.note(len(t.json("contact", "remove", "Leute", "Jane Doe")["removed"]) == 1, "a contact with all its rows")
    t.run("book", "show", "Leute", "Jane Doe", code=4, err="there is no entry")
    t.run("contact", "restore", "Leute", "Jane Doe", out="Restored 'Jane Doe'.")
    t.note([each["address"] for each in t.json("book", "find", "Leute", "doe")] == [each["address"] for each in rows], "all its numbers are back")
    t.run("contact", "restore", "Leute", "Jane Doe", code=4, err="no entry 'Jane Doe' was removed")
    before = t.json("book", "list", "Leute")
    t.run("export", "Leute", "leute.vcf", out="Exported")
    written = (t.folder / "leute.vcf").read_bytes()
    t.note(t.run("export", "Leute", "-", out="FN:Jane Doe").encode() == written.replace(b"\r\n", b"\n"), "the same bytes on standard output")
    t.run("service", "set", "Leute", "--config", "zwei.orvab")
    (t.folder / "leer.vcf").write_text("BEGIN:VCARD\r\nVERSION:3.0\r\nNOTE:x\r\nEND:VCARD\r\n")
    t.note(t.json("import", "Leute", "leute.vcf", "--dry-run")["added"] == 5 and t.json("book", "list", "Leute") == [], "a dry run")
    told = t.json("import", "Leute", "leute.vcf", "leer.vcf", "--report", "r.csv", "--strict", code=10, err="line 1")
    t.note([told.get(key) for key in ("added", "updated", "equal", "rejected", "lists")] == [5, 0, 0, 1, 1], "an import", told)
    t.note("leer.vcf,1," in (t.folder / "r.csv").read_text(), "the report of an import")
    (t.folder / "kopf.csv").write_text("name,fax\r\n")
    t.run("import", "Leute", "kopf.csv", code=1, err="nothing was imported: 'kopf.csv' holds no contact")
    t.run("file", "check", "kopf.csv", code=11, out="0 records", err="holds no contact")
    t.note(t.json("import", "Leute", "leute.vcf", "kopf.csv", err="warning")["equal"] == 5, "all of it is known")
    t.note([(each["name"], each["address"]) for each in t.json("book", "list", "Leute")] == [(each["name"], each["address"]) for each in before],
           "what went out came in")
    t.run("export", "Leute", "zwei.vcf")
    t.note((t.folder / "zwei.vcf").read_bytes() == written, "the same bytes again")
    t.run("file", "check", "leute.vcf", out="'leute.vcf' is vcard: 5 records, 1 of them lists, 6 fax numbers, 0 rejected.\n")
    t.run("file", "check", "leer.vcf", code=11, out="1 rejected", err=["line 1", "cannot be read"])
    (t.folder / "offen.vcf").write_text("BEGIN:VCARD\nVERSION:4.0\nFN:Uta Offen\nTEL;TYPE=fax:1\nBEGIN:VCARD\nVERSION:4.0\nFN:Ute Zu\nEND:VCARD\n")
    told = [t.json("file", "check", "offen.vcf", "--report", "r.csv", code=11, err="line 1 ('Uta Offen'): the record has no end"),
            t.json("import", "Leute", "offen.vcf", "--dry-run", err="line 1 ('Uta Offen')")]
    t.note([(each["read"], each["rejected"]) for each in told] == [(2, 1)] * 2 and ",1,Uta Offen," in (t.folder / "r.csv").read_text(), "a card without an end", told)
    t.run("file", "convert", "leute.vcf", "leute.csv", out="as csv")
    t.run("file", "check", "leute.orvab", code=8, err="it is no contact file")
    for wrong in ("leute.orvab", "nix.vcf"):
        t.run("import", "Leute", wrong, code=4 if wrong == "nix.vcf" else 8, out=None, err=wrong)
    t.run("book", "check", "leute.orvab", out=["whole", "contacts and lists  5"])
    t.run("book", "repair", "leute.orvab", "neu.orvab", out="Saved 5 entries into 'neu.orvab', 0 were lost.\n")
    t.run("book", "repair", "leute.orvab", "neu.orvab", code=7, err="is there already")
    t.run("book", "repair", "leute.orvab", "nix/neu.orvab", code=12, err="its folder is not there")
    t.run("--quiet", "book", "find", "Leute", "niemand", out="")
    t.run("book", "check", "leute.vcf", code=8, out=["leute.vcf", "not an address book"], err="INVALID_OBJECT")
    t.run("book", "check", "nix.orvab", code=4, err="there is no file 'nix.orvab'")
    foretold_and_broken(t)
    watch = t.start("--library", LIBRARY, "--json", "book", "watch", "Leute", "--limit", "1")
    for turn in range(100):
        t.run("contact", "add", "Leute", "--name", f"Neu {turn}", "--fax", f"+2 {turn}")
        if watch.poll() is not None:
            break
    t.finish(watch, ["watch"], 0, ['"event": "created"', '"name": "Neu '], "")
    long = t.start("--library", LIBRARY, "--trace", "file", "book", "list", "Leute", "--sort", "name:desc", "--from", "John", "--fields", "name")
    t.finish(long, ["sorted"], 0, "Name\n", "")
    t.run("book", "tree", "Leute", "--trace", "nix", code=2, err="--trace")
    t.run("profile", "delete", "Leute")


def names(t):
    """Names as they are listed mean their entries, names are stored as they can be found, and nothing is promised twice."""
    t.run("profile", "create", "Namen")
    t.run("service", "add", "Namen", "PersonalBook", "--config", "namen.orvab", out="Added")
    added = t.json("contact", "add", "Namen", "--name", "  Kim \x01\n Nguyễn ", "--fax", "+1 1", "--fax", "+1 2:home")
    t.note(added["name"] == "Kim Nguyễn" and len(added["ids"]) == 2, "a name is stored as it can be found", added)
    t.run("contact", "add", "Namen", "--name", "Strauß")
    for name, said in (("   ", "give the name"), ("x" * 501, "at most 500"), ("a\u202eb", "turn the direction")):
        t.run("contact", "add", "Namen", "--name", name, code=2, err=said)
    t.run("contact", "add", "Namen", "--name", "N", "--fax", "1" * 3000, code=2, err="at most 500")
    for shown in ("Kim Nguyễn (home fax)", "Strauß (no fax number)", "strauss"):
        t.run("book", "show", "Namen", shown, out="PR_ENTRYID")
    t.run("contact", "group", "add", "Namen", "Team", "Kim Nguyễn (home fax)", out="Added 1 member to the new list 'Team'.")
    again = t.json("contact", "group", "add", "Namen", "Team", "Kim Nguyễn (home fax)")
    t.note((again["members"], again["changed"]) == (0, False), "a member is one once", again)
    t.run("contact", "group", "add", "Namen", "Team", "Team", code=1, err="cannot be a member of itself")
    gone = t.json("contact", "remove", "Namen", "Kim Nguyễn (home fax)")
    t.note([each["number"] for each in gone["numbers"]] == ["+1 2"] and "restore" not in gone["result"], "one number is removed", gone)
    t.run("export", "Namen", "namen.vcf", out="Exported")
    t.run("file", "convert", "namen.vcf", "NAMEN.vcf", code=2, err="cannot be written over")
    t.run("profile", "delete", "Namen")


def foretold_and_broken(t):
    """What is only foretold is not done; a book that cannot be used says why, whatever its container is called then."""
    for words, said in [(["export", "Leute", "nie.vcf"], "Would export 5 entries"), (["export", "Leute", "-"], "Would export 5"),
                        (["file", "convert", "leute.vcf", "nie.csv"], "Would convert"), (["book", "default", "Leute", "zwei"], "Would make"),
                        (["contact", "group", "add", "Leute", "Neue"], "Would add 0 members to the new list 'Neue'")]:
        t.run(*words, "--dry-run", out=said)
    t.run("export", "Leute", "nix/nie.vcf", "--dry-run", code=12, err="its folder is not there")
    t.run("profile", "create", "a\\b", "--dry-run", code=1, err="no backslash")
    t.note(not [*t.folder.glob("nie.*")], "files of what was only foretold")
    file, kept = t.folder / "zwei.orvab", t.folder / "kept.orvab"
    file.chmod(0o444)
    t.run("contact", "add", "Leute", "--name", "N", code=1, err=["is read-only", t.windows_path(file)])
    file.chmod(0o644)
    shutil.copy(file, kept)
    for spoil, code, said in [(lambda: file.unlink(), 4, "There is no such file"),
                              (lambda: file.write_bytes(kept.read_bytes()[:100] + b"x" * 60000), 8, "'orvctl book repair FILE NEW' saves")]:
        for beside in t.folder.glob("zwei.orvab-*"):
            beside.unlink()
        spoil()
        for container in ("zwei", "Personal address book"):
            t.run("book", "list", "Leute", "--container", container, code=1, out="", err=[t.windows_path(file), said])
        t.run("contact", "add", "Leute", "--name", "N", "--container", "zwei", code=code, err=[said, t.windows_path(file)])
    t.run("book", "repair", "zwei.orvab", "nie.orvab", code=8, err=["nothing of 'zwei.orvab' can be read"])
    t.note(not [*t.folder.glob("nie.*")], "a repair that saved nothing leaves nothing")
    shutil.move(kept, file)


def details(t):
    """What people give with a contact, two books in one profile, tables with columns of their own, a book and its copies."""
    book, copy = t.folder / "fein.orvab", t.folder / "fein.orvab.20261101.bak"
    t.run("profile", "create", "Fein")
    t.run("service", "add", "Fein", "PersonalBook", "--config", book.name)
    ida = t.json("contact", "add", "Fein", "--given", "Ida", "--surname", "Ohm", "--title", "Chefin", "--department", "Einkauf",
                 "--phone", "+49 170 1:mobile", "--fax", "+49 40 7")
    fields = {"name": "Ida Ohm", "given": "Ida", "surname": "Ohm", "title": "Chefin", "department": "Einkauf", "mobile": "+49 170 1"}
    t.note(t.json("book", "list", "Fein", "--fields", ",".join(fields)) == [fields], "what was given with a contact")
    t.run("contact", "edit", "Fein", "Ida Ohm", "--note", "n", "--csv", "--fields", "name,nmae", code=2, err="no field 'nmae'; did you mean 'name'?")
    t.run("contact", "edit", "Fein", "Ida Ohm", "--note", "n", "--csv", "--fields", "name,changed", out="name,changed\nIda Ohm,\n")
    t.note(t.json("contact", "edit", "Fein", "Ida Ohm", "--note", "m", "--fields", "id") == {"id": ida["id"]}, "fields of a change")
    t.run("contact", "restore", "Fein", out="Nothing was removed from 'fein'")
    t.run("contact", "remove", "Fein", "Ida Ohm")
    removed = t.json("contact", "restore", "Fein")
    t.note([(each["name"], each["type"], bool(each["deleted"])) for each in removed] == [("Ida Ohm", "user", True)], "what was removed", removed)
    t.run("contact", "restore", "Fein", removed[0]["id"], out="Restored 'Ida Ohm'.")
    second = t.json("service", "add", "Fein", "PersonalBook", "--config", "zweit.orvab", "--display", "Zweites Buch")
    t.note(second["newContacts"] == "fein" and "New contacts still go to 'fein'." in second["result"], "a second book", second)
    other = t.json("contact", "add", "Fein", "--name", "Uwe", "--container", "zweit")
    t.note(t.json("contact", "edit", "Fein", other["id"], "--note", "n")["container"] == "zweit", "an identifier means one of any book")
    t.run("book", "list", "Fein", "--sort", "nmae", code=2, err="there is no field 'nmae'; did you mean 'name'?")
    t.run("book", "list", "Fein", "--sort", "name:dsec", code=2, err="'name:dsec' is not FIELD, FIELD:asc or FIELD:desc")
    t.run("service", "show", "Fein", "zweites", out="Zweites Buch")
    t.run("service", "show", "Fein", "PersonalBook", code=6, err=["2 services fit", "is 'Zweites Buch'"])
    (t.folder / "fremd.csv").write_text("Anrede;Vorname;Nachname;Faxnr;Kd-Nr\nHerr;Jan;Bo;+49 40 8;4711\n")
    told = t.json("import", "Fein", "fremd.csv", err=["1 column of 'fremd.csv' was not understood: 'Kd-Nr'", "--map"])
    t.note((told["added"], told["unknownColumns"]) == (1, ["Kd-Nr"]), "a column that nobody knows", told)
    t.run("export", "Fein", "-", out=["FN:Jan Bo\n", "X-CSV-COLUMN;X-ORV-NAME=Kd-Nr:4711\n"])
    (t.folder / "voll.vcf").write_text("BEGIN:VCARD\nVERSION:4.0\nUID:voll\nFN:Eva Voll\nORG:Kontor\nTEL;TYPE=fax,work:+49 40 9\n"
                                       "TEL;TYPE=cell:+49 170 9\nBDAY:1970-01-01\nURL:http://x\nEND:VCARD\n")
    (t.folder / "schmal.csv").write_text('Name,Fax,Company\nEva Voll,+49 40 9,Neu\n"Eva Quer,1\nUli Rest,+49 40 10\n')
    t.run("import", "Fein", "voll.vcf", out="1 added")
    told = t.json("import", "Fein", "schmal.csv", err="schmal.csv, line 3")
    t.note([told[each] for each in ("added", "updated", "rejected")] == [1, 1, 1], "a narrow file, one stray quotation mark", told)
    t.run("export", "Fein", "-", out=["ORG:Neu\n", "\nTEL;TYPE=fax,work;X-ORV-KEY=", ":+49 40 9\n", ":+49 170 9\n", "BDAY:1970-01-01\n", "URL:http://x\n"])
    (t.folder / "gleich.vcf").write_text("".join("BEGIN:VCARD\nVERSION:4.0\nUID:same\nFN:%s\nTEL;TYPE=fax:%s\nEND:VCARD\n" % each
                                                 for each in (("Eins", "+49 40 1"), ("Zwei", "+49 40 2"), ("Eins", "+49 40 3"), ("Drei", "+49 40 1"))))
    for outcome in ("updated", "equal"):
        told = t.json("import", "Fein", "gleich.vcf", "--report", "gleich.csv", err="2 records have the UID of an earlier record with another name, the first one gleich.vcf, line 7 ('Zwei')")
        t.note((told["sharedUids"], told["rejected"], told[outcome] >= 2) == (2, 0, True), "one UID, two names", told)
    t.note((t.folder / "gleich.csv").read_text().count("the UID of an earlier") == 2, "one UID, two names: the report")
    t.note(t.json("file", "check", "gleich.vcf", err="2 records have the UID")["sharedUids"] == 2, "one UID, two names: a check")
    t.run("book", "default", "Fein", "zweit", out="is now")
    t.run("book", "path", "Fein", "zweit", "fein", "zweit", out="are looked up in 'zweit', 'fein'.")
    settings = [t.json("profile", "show", "Fein")[each] for each in ("defaultContainer", "searchPath")]
    t.run("profile", "copy", "Fein", "Feiner", out="Copied")
    t.run("profile", "rename", "Feiner", "FEINER", out="Renamed profile 'Feiner' to 'FEINER'.")
    shown = t.json("profile", "show", "FEINER")
    t.note([shown[each] for each in ("defaultContainer", "searchPath")] == settings and settings[0]["name"] == "zweit",
           "what a copy keeps", shown, settings)
    t.run("profile", "delete", "FEINER")
    for beside in t.folder.glob("fein.orvab?*"):
        beside.unlink()
    shutil.copy(book, copy)
    t.run("profile", "create", "Neben")
    way = [copy.name + " (", "copy it over 'fein.orvab'", "service set PROFILE --config"]
    for spoil, check, added, fix in [(lambda: book.write_bytes(copy.read_bytes()[:60]), 8, "the file is damaged", "book repair"),
                                     (lambda: book.write_text("no book"), 8, "a file of another kind", "service set"),
                                     (lambda: book.unlink(), 4, None, "service set")]:
        spoil()
        t.run("book", "check", book.name, code=check, out=[], err=way)
        t.run("book", "list", "Fein", "--container", "fein", code=1, err=way)
        t.run("book", "tree", "Fein", code=10, out="zweit", err=book.name)
        t.run("contact", "add", "Fein", "--name", "N", "--container", "fein", code=check, err=way)
        t.run("export", "Fein", "nie.vcf", "--container", "fein", code=check, err=["cannot export '", "' cannot be read (its file is ", *way])
        for words in (["book", "check", book.name], ["contact", "add", "Fein", "--name", "N", "--container", "fein"]):
            t.note('"next": "' in t.streams_of(t.start("--library", LIBRARY, "--json", *words))[1], "what to do next", words, check)
        found = [each for each in t.json("doctor", "Fein", code=11, err="problems") if each["status"] == "error"]
        t.note(len(found) == 1 and fix in found[0]["fix"] and copy.name in found[0]["fix"], "the doctor about copies", found)
        if added:
            t.run("service", "add", "Neben", "PersonalBook", "--config", book.name, code=8, err=[added, *way])
            t.run("book", "repair", book.name, "nie.orvab", code=8, err=way)
    t.note(not [*t.folder.glob("nie.*")], "a repair that fails leaves nothing")
    shutil.copy(copy, book)
    t.note(t.json("book", "check", book.name)["copies"][0]["name"] == copy.name, "copies of a book")
    t.run("profile", "delete", "Fein")
    t.run("profile", "delete", "Neben")


def several_books(t):
    """New contacts go on going where they went, whatever is added; a book that cannot be changed is not passed over."""
    files = {name: t.folder / f"wohin-{name}.orvab" for name in "abcd"}
    t.run("profile", "create", "Wohin")
    first = t.json("service", "add", "Wohin", "PersonalBook", "--config", files["a"].name)
    t.note("newContacts" not in first, "the first book", first)
    for name in "bcd":
        t.run("service", "add", "Wohin", "PersonalBook", "--config", files[name].name, out="New contacts still go to 'wohin-a'.")
        t.note(t.json("contact", "add", "Wohin", "--name", name)["container"] == "wohin-a" and
               t.json("book", "default", "Wohin")[0]["name"] == "wohin-a", "new contacts with " + name)
    # The same book is there once, however its file is called.
    again = t.json("service", "add", "Wohin", "PersonalBook", "--config", t.windows_path(files["a"]).upper(), "--if-missing")
    t.note((again["uid"], again["changed"]) == (first["uid"], False), "a book that is there", again)
    t.run("service", "add", "Wohin", "PersonalBook", "--config", files["b"].name, code=7, err=["its file is the book of service", "nothing was stored"])
    t.run("service", "set", "Wohin", first["uid"], "--config", files["b"].name, code=7, err="the file is the book of service")
    shutil.copy(files["b"], t.folder / "wohin-kopie.orvab")
    t.run("service", "add", "Wohin", "PersonalBook", "--config", "wohin-kopie.orvab", code=7, err="its file is a copy of the book of service")
    t.note(len(t.json("service", "list", "Wohin")) == 4, "a copy is no second book")
    further = t.json("service", "add", "Wohin", "PersonalBook", "--config", "wohin-e.orvab", "--if-missing")
    t.note(further["changed"] is True, "another file is another service", further)
    # What the profile keeps goes with it.
    t.run("book", "default", "Wohin", "wohin-c", out="The default container is now 'wohin-c'. New contacts go there.")
    (t.folder / "wohin.csv").write_text("Name,Fax\nCsv,+1 7\n")
    t.note(t.json("import", "Wohin", "wohin.csv")["container"] == t.json("export", "Wohin", "wohin.vcf")["container"] == "wohin-c", "import and export")
    told = t.json("profile", "export", "Wohin")
    t.note(told["newContacts"] == told["defaultContainer"] and told["newContacts"]["name"] == "wohin-c", "what a profile keeps", told)
    (t.folder / "wohin.json").write_text(json.dumps({**told, "profile": "Dorthin"}))
    applied = t.json("profile", "apply", "wohin.json")
    t.note(any("; new contacts go to 'wohin-" in each for each in applied["changes"]) and t.json("profile", "apply", "wohin.json")["changes"] == [] and
           t.json("contact", "add", "Dorthin", "--name", "x")["container"] == "wohin-c", "what is applied", applied)
    t.run("profile", "copy", "Dorthin", "Auch dort")
    t.note(t.json("contact", "add", "Auch dort", "--name", "y")["container"] == "wohin-c", "what is copied")
    files["c"].chmod(0o444)
    whole = files["c"].read_bytes()
    refused = [["contact", "add", "Wohin", "--name", "Nie"], ["import", "Wohin", "wohin.csv"]]
    for words in refused:
        t.run(*words, code=1, err=["is read-only", "name another book with --container: 'wohin-"])
    files["c"].chmod(0o644)
    for beside in t.folder.glob("wohin-c.orvab-*"):
        beside.unlink()
    files["c"].write_bytes(whole[:60])
    for words in [*refused, ["export", "Wohin", "wohin.vcf"]]:
        t.run(*words, code=8, err=["' cannot be read (its file is ", "wohin-c.orvab). The address book is damaged. ",
                                   "cannot export" if words[0] == "export" else " Name another book with --container: 'wohin-"])
    t.note((t.folder / "wohin.vcf").read_text().count("FN:Csv") == 1, "an export that fails leaves the file that was there")
    # What is stored may be damaged or gone; then a book that cannot be read is nobody's first one either.
    for arguments in (["add", "/d", "280000000100000002", "/t", "REG_BINARY"], ["delete"]):
        for tag in (0x3D060102, 0x3D070102):
            t.wine_tool("reg", arguments[0], f"{REGISTRY}\\Orv Profiles\\Wohin", "/v", str(tag), *arguments[1:], "/f")
        t.run("contact", "add", "Wohin", "--name", "Nie", code=8, err=["damaged", "--container: 'wohin-"])
        where = [t.json("profile", command, "Wohin", err="wohin-c")["newContacts"] for command in ("show", "export")]
        t.note(where[0] and where[0]["name"].startswith("wohin-c") and where[1] is None, "what is found is not stored", where)
    t.run("service", "add", "Wohin", "PersonalBook", "--config", "wohin-f.orvab", out="New contacts still go to 'wohin-c",
          err=["until that is mended new contacts need --container", "damaged"])
    t.note(t.json("contact", "add", "Wohin", "--name", "Da", "--container", "wohin-a", err="wohin-c")["container"] == "wohin-a", "a book that is named")
    for profile in ("Wohin", "Dorthin", "Auch dort"):
        t.run("profile", "delete", profile)


def lost_fields(t):
    """What a format has no place for is told; what is written stands in for the old file as a whole or not at all."""
    (t.folder / "mehr.vcf").write_text("BEGIN:VCARD\nVERSION:4.0\nUID:m\nFN:Mehr\nTEL;TYPE=fax:keins\nTEL;TYPE=fax,work:+1 5\nBDAY:1970-01-01\n"
                                       "PHOTO:data:image/png;base64,AAAA\nEND:VCARD\nBEGIN:VCARD\nVERSION:4.0\nFN:Bday\nBDAY:1971-01-01\nEND:VCARD\n")
    told = "2 contacts have fields that CSV does not hold (BDAY, PHOTO); vCard keeps everything"
    converted = t.json("file", "convert", "mehr.vcf", "mehr.csv", err=told)
    t.run("profile", "create", "Mehr")
    t.run("service", "add", "Mehr", "PersonalBook", "--config", "mehr.orvab")
    t.run("import", "Mehr", "mehr.vcf", out="2 added")
    # A fax number without a digit is kept and no address.
    t.note([(each["name"], each["address"]) for each in t.json("book", "list", "Mehr")] == [("Bday (no fax number)", ""), ("Mehr", "+1 5")] and
           ":keins\n" in t.run("export", "Mehr", "-"), "a number of words")
    exported = t.json("export", "Mehr", "mehr2.csv", err=told)
    t.note(converted["lost"] == exported["lost"] == {"BDAY": 2, "PHOTO": 1}, "what is lost", converted, exported)
    t.run("export", "Mehr", "-", "--format", "ldif", out="cn: Mehr", err="LDIF does not hold (BDAY, PHOTO)")
    t.note(t.json("export", "Mehr", "mehr3.vcf")["lost"] == {}, "cards lose nothing")
    (t.folder / "streng.csv").write_text("Name,\"Fax\nA,1\n,\n-,\nB,2\n")
    (t.folder / "nichts.vcf").write_text("BEGIN:VCARD\nVERSION:3.0\nNOTE:x\nEND:VCARD\n")
    t.run("import", "Mehr", "streng.csv", "nichts.vcf", "--strict", code=10, out="4 read, 3 added", err="1 record was rejected")
    t.note({"A", "B"} <= {each["name"] for each in t.json("book", "list", "Mehr")}, "a header with a stray quotation mark")
    # Of whom a list knows nothing but an identifier is listed and can be taken out.
    (t.folder / "wer.vcf").write_text("BEGIN:VCARD\nVERSION:4.0\nKIND:group\nFN:Wer\nMEMBER:urn:uuid:6d1b8a7e-3b7f-4f5a-9c38-0b1d6f1c0a01\n"
                                      "MEMBER:urn:uuid:m\nEND:VCARD\n")
    t.run("import", "Mehr", "wer.vcf", out="1 of them lists")
    t.note([(each["name"], each["address"]) for each in t.json("contact", "group", "members", "Mehr", "Wer")] == [("(unknown)", ""), ("Mehr", "+1 5")],
           "a member that nobody knows")
    t.run("contact", "group", "remove", "Mehr", "Wer", "(unknown)", out="Removed 1 member of 'Wer'.")
    t.run("contact", "group", "members", "Mehr", "Wer", "--fields", "name", out="Name\n----\nMehr\n")
    for name, member in (("Drei", None), ("Zwei", "Drei"), ("Eins", "Zwei")):
        t.run("contact", "group", "add", "Mehr", name, *([member] if member else []), out="new list")
    t.run("contact", "group", "add", "Mehr", "Drei", "Eins", code=1,
          err=["'Drei' cannot be a member of itself; in it would be 'Eins', in that 'Zwei', in that 'Drei'", "MAPI_E_FOLDER_CYCLE"])
    # A program that is killed while it writes leaves the file that was there.
    before = (t.folder / "mehr2.csv").read_bytes()
    process = subprocess.Popen([t.wine, t.bin / "orvctl.exe", "file", "convert", "-", "mehr2.csv"], env=t.env, cwd=t.folder,
                               stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    process.stdin.write(b"BEGIN:VCARD\nVERSION:4.0\nFN:a\nEND:VCARD\n" * 50000)
    process.stdin.flush()
    written = [*t.folder.glob("mehr2.csv.*.tmp")]
    process.kill()
    process.wait()
    t.note(written and (t.folder / "mehr2.csv").read_bytes() == before, "a conversion that was killed", written)
    for file in t.folder.glob("mehr2.csv.*.tmp"):
        file.unlink()
    t.run("profile", "delete", "Mehr")


def fields(t):
    """What a command tells is known before it runs: a field that is mistyped is refused while nothing is changed."""
    for words, (arguments, told) in t.objects.items():
        text = t.run("--json", *arguments, "--fields", "nix", code=2, err="there is no field 'nix'; there are: ") and ""
        process = t.start("--library", LIBRARY, *arguments, "--fields", "nix", "--json")
        known = set(re.findall(r"\w+", json.loads(t.streams_of(process)[1])["error"].partition("there are: ")[2].partition(";")[0]))
        t.note(told <= known, "fields of " + " ".join(words), sorted(told - known))


def broken_states(t, contacts):
    garbage = t.folder / "garbage.vcf"
    garbage.write_text("no\ncontacts\n" + CONTACTS.split("BEGIN", 2)[0] + "\x00\x01")
    t.run("service", "set", BOOK, "--config", "garbage.vcf", code=8, err=[t.windows_path(garbage), "MAPI_E_CORRUPT_DATA"])
    t.run("service", "set", BOOK, "--property", "0x6600001F=" + t.windows_path(garbage))
    t.run("book", "list", BOOK, code=1, out="", err=["garbage", "MAPI_E_CORRUPT_DATA"])
    missing = t.windows_path(t.folder / "nix.vcf")
    t.run("service", "set", BOOK, "--property", "0x6600001F=" + missing)
    lost = ["cannot read 'nix (", ")' from " + missing, "MAPI_E_NOT_FOUND"]
    t.run("book", "tree", BOOK, out=["MAPI_E_NOT_FOUND", missing])
    t.run("book", "list", BOOK, code=1, out="", err=lost)
    t.run("book", "show", BOOK, "--first", code=1, out="", err=lost)
    t.run("book", "expand", BOOK, "Alle", code=1, err=["there is no entry 'Alle'", *lost])
    t.note(t.json("book", "list", BOOK, code=1, err=['"error": "cannot read', '"code": "MAPI_E_NOT_FOUND']) == [],
           "an empty array beside the error")
    found = [each for each in t.json("doctor", BOOK, code=11, err="problems") if each["status"] == "error"]
    t.note(len(found) == 1 and found[0]["check"] == "book" and missing in found[0]["detail"] and
           "MAPI_E_NOT_FOUND" in found[0]["code"] and "--config PATH" in found[0]["fix"], "the doctor about the book", found)

    library = t.bin / "xhtsmpb.dll"
    library.rename(library.with_suffix(".away"))
    t.run("book", "list", BOOK, code=1, err=["cannot log on", "service 'ContactFile'", "its library xhtsmpB.dll is missing: ERROR_MOD_NOT_FOUND (126)"])
    t.run("service", "add", BOOK, "ContactFile", code=1, err=["its file 'xhtsmpB.dll' is not beside", "line 6, [Services]", "ERROR_FILE_NOT_FOUND"])
    library.with_suffix(".away").rename(library)
    catalogue = t.bin / "XHTASVB.ini"
    catalogue.rename(catalogue.with_suffix(".away"))
    for arguments in (["service", "available"], ["service", "add", BOOK, "ContactFile"],
                      ["profile", "create", "neu", "--default-services"]):
        t.run(*arguments, code=1, err=["cannot read the catalogue", "XHTASVB.ini", "ERROR_FILE_NOT_FOUND"])
    for make, said in [(lambda: None, "the file is not there"), (catalogue.mkdir, "it is a folder"),
                       (catalogue.touch, "it is empty")]:
        make()
        found = [each for each in t.json("doctor", BOOK, code=11, err="problems") if each["check"] == "catalogue"]
        t.note(len(found) == 1 and found[0]["subject"] == "XHTASVB.ini" and said in found[0]["detail"] and found[0]["fix"],
               "the doctor about a catalogue: " + said, found)
        if catalogue.is_dir():
            catalogue.rmdir()
        elif catalogue.exists():
            catalogue.unlink()
    catalogue.with_suffix(".away").rename(catalogue)

    t.run("profile", "create", "defekt", "--default-services")
    uid = t.json("service", "list", "defekt")[0]["uid"].lower()
    damaged = t.wine_tool("reg", "add", f"{REGISTRY}\\Orv Profiles\\defekt\\{uid}", "/v", "805371935", "/t",
                          "REG_BINARY", "/d", "28000000", "/f")
    t.note(damaged.returncode == 0, "a damaged row")
    t.wine_tool("reg", "add", f"{REGISTRY}\\Orv Profiles\\defekt\\0123", "/f")
    unread = [f"the service stored in the key '{key}' cannot be read (MAPI_E_CALL_FAILED" for key in (uid, "0123")]
    ways = [f"'orvctl doctor \"defekt\" --fix' moves it aside, 'orvctl service remove \"defekt\" {key}' takes it out" for key in ("0123", uid)]
    t.run("service", "list", "defekt", out=["(cannot be read)", uid, "0123"], err=[*unread, *ways])
    t.note([each["key"] for each in t.json("service", "list", "defekt", err=unread)] == ["0123", uid], "keys")
    for command, said in (("tree", "cannot log on to profile 'defekt'"), ("list", "cannot log on")):
        t.run("book", command, "defekt", code=8, err=[said, ways[0]])
    t.run("service", "add", "defekt", "ContactFile", code=8, err=["MAPI_E_CALL_FAILED", "orvctl doctor \"defekt\" --fix"])
    for command in ("copy", "rename"):
        t.run("profile", command, "defekt", "neu", code=8, err=[f"cannot {command} profile 'defekt' to 'neu'", ways[0]])
    found = t.json("doctor", "defekt", code=11, err="problems were found")
    t.note([(each["check"], each["code"][:18]) for each in found if each["status"] == "error"] ==
           2 * [("service", "MAPI_E_CALL_FAILED")], "what the doctor found", found)
    t.run("doctor", "nix", code=4, err="there is no profile 'nix'")
    t.run("service", "remove", "defekt", uid.upper(), out=f"Removed service '{uid}'")
    with open("/dev/full", "wb") as full:
        t.finish(t.start("--library", LIBRARY, "doctor", "--fix", "defekt", output=full), ["fix on a full disk"], 12, "",
                 "cannot write the output")
    t.note([each["key"] for each in t.json("service", "list", "defekt", err="0123")] == ["0123"], "nothing is moved unseen")
    t.run("doctor", "--fix", "defekt", out=["0123", "error", "doctor --fix"], err=["mended: the service stored in the key '0123'", "\\defekt\\0123'"])
    t.run("doctor", "defekt", out="0 services")
    kept = t.registry(f"{REGISTRY}\\Orv Damaged", "/s")
    t.note("\\defekt\\0123" in kept, "a damaged row is kept", kept)
    t.wine_tool("reg", "delete", f"{REGISTRY}\\Orv Damaged", "/f")
    t.run("service", "remove", "defekt", "0123", code=4, err="there is no service '0123'")
    t.run("service", "add", "defekt", "ContactFile")
    # A section that nobody can mean leaves out its own service, and nobody waits for it.
    text = catalogue.read_text()
    catalogue.write_text(text.replace("[Services]\n", "[Services]\nLong=Long\n", 1) +
                         "\n[Long]\nPR_DISPLAY_NAME=" + "x" * 5_000_000 + "\n")
    found = t.json("doctor", "defekt", code=11, err="problems")
    t.note([each["subject"] for each in found if each["status"] == "error"] == ["Long"], "a long section is found", found)
    t.run("service", "add", "defekt", "ContactFile")
    t.run("service", "add", "defekt", "Long", code=1, err=["1048576 characters", "MAPI_E_NOT_FOUND"])
    catalogue.write_text(text)
    t.run("doctor", "defekt", out=["catalogue", "ok", "defekt: ContactFile", "logged on alone", "its own and 1 below it"])
    # What keeps profiles from being listed is no profile.
    overlong = "x" * 65
    t.wine_tool("reg", "add", f"{REGISTRY}\\Orv Profiles\\{overlong}", "/f")
    t.run("profile", "list", code=1, err=[overlong, "more than 64 characters"])
    t.note([(each["subject"], each["code"][:22]) for each in t.json("doctor", code=11, err="problems")
            if each["status"] == "error"] == [(overlong, "MAPI_E_STRING_TOO_LONG")], "an overlong key")
    t.run("doctor", "defekt", code=11, out=[overlong, "MAPI_E_STRING_TOO_LONG"], err="problems were found")
    t.wine_tool("reg", "delete", f"{REGISTRY}\\Orv Profiles\\{overlong}", "/f")
    t.run("profile", "delete", "defekt")


def lying_provider(t, build):
    """One bad container never keeps the others from being read, and nothing that it answers ends the program."""
    shutil.copy(build / "bin" / "orvctl_liar.dll", t.bin / "xhtliarb.dll")
    catalogue = t.bin / "XHTASVB.ini"
    text = catalogue.read_text().replace("[Services]\n", "[Services]\nLiar=Liar\n", 1)
    catalogue.write_text(text + "\n[Liar]\nPR_DISPLAY_NAME=Liar\nPR_SERVICE_DLL_NAME=xhtliar%c.dll\n"
                         "PR_SERVICE_ENTRY_NAME=LiarServiceEntry\n")
    t.run("profile", "create", "Lügen")
    t.run("service", "add", "Lügen", "Liar")
    said = ["cannot list the entries of 'no set': success was answered, but nothing handed out",
            "cannot list the entries of 'false count': what was handed out is shorter",
            "cannot list the entries of 'no table': success", "MAPI_E_NETWORK_ERROR",
            "cannot list the entries of 'exception': a provider raised an exception",
            "'no end' beyond the 1 rows that the table counts",
            "'short rows' wholly: 1 rows have other columns than were asked for"]
    entries = t.json("book", "list", "Lügen", code=10, err=['"warning": ', *said])
    t.note(sorted((each["container"], each["name"], each["id"][:8]) for each in entries) ==
           [(HONEST, HONEST, "00000000"), ("no end", "no end", "00000000"), ("no values", "", ""), ("null texts", "", ""),
            ("short rows", "short rows", "")], "rows of the liar", entries)
    # What could steer a terminal or break a line is written out.
    t.run("book", "list", "Lügen", code=10, out="\nhonest\\x1B[2J\\n  container ", err="'no set'")
    tree = t.json("book", "tree", "Lügen", code=10, err="'no table'")
    t.note([each["entries"] for each in tree if each["container"] == HONEST] == [1], "tree of the liar", tree)
    t.run("book", "show", "Lügen", "short rows", code=1, err="cannot search 'short rows' wholly")
    t.run("book", "expand", "Lügen", "short rows", code=1, err="cannot search 'short rows' wholly")
    # One container that fails is all that was asked for.
    t.run("book", "list", "Lügen", "--container", "no table", code=1, out="", err="'no table'")
    stored = t.registry(f"{REGISTRY}\\Orv Profiles\\Lügen", "/s")
    t.run("service", "set", "Lügen", "--config", "x", code=1, err=[
        "'LiarServiceEntry' of xhtliarB.dll raised an exception at: MSG_SERVICE_CONFIGURE; nothing was stored"])
    t.note("REG_BINARY" in stored and t.registry(f"{REGISTRY}\\Orv Profiles\\Lügen", "/s") == stored, "what is stored stays", stored)
    t.run("profile", "delete", "Lügen")


def patched(file, old, new):
    data = file.read_bytes()
    assert data.count(old) == 1 and len(old) == len(new)
    file.write_bytes(data.replace(old, new))


def other_machine(file):
    data = bytearray(file.read_bytes())
    header = int.from_bytes(data[60:64], "little")
    data[header + 4:header + 6] = (0x014C).to_bytes(2, "little")
    file.write_bytes(data)


FAULTS = {  # service: what breaks its library, what is seen of it: check, code, text
    "gone": (lambda file: file.unlink(), "file", "ERROR_MOD_NOT_FOUND (126)", "xhtgoneB.dll is missing"),
    "text": (lambda file: file.write_text("no library"), "file", "ERROR_BAD_EXE_FORMAT (193)", "no library, or damaged"),
    "other": (other_machine, "machine", "ERROR_BAD_EXE_FORMAT (193)", "made for x86, not x64"),
    "cut": (lambda file: file.write_bytes(file.read_bytes()[:8192]), "file", "ERROR_BAD_EXE_FORMAT (193)",
            "shorter than its own header says"),
    "blind": (lambda file: patched(file, b"\0ABProviderOpen\0", b"\0XBProviderOpen\0"), "exports",
              "ERROR_PROC_NOT_FOUND (127)", "does not export 'ABProviderOpen'"),
    "lonely": (lambda file: patched(file, b"\0msvcrt.dll\0", b"\0nixcrt.dll\0"), "dependencies",
               "ERROR_MOD_NOT_FOUND (126)", "needs nixcrt.dll: not found"),
    "crash": (None, "logon", "", "crashed: access violation 0xC0000005"),
    "throw": (None, "logon", "MAPI_E_CALL_FAILED", "raises an exception in ABProviderOpen"),
    "refuse": (None, "logon", "MAPI_E_NETWORK_ERROR", "fails in ABProviderOpen"),
    "mute": (None, "logon", "MAPI_E_NOT_FOUND", "registers no MAPIUID"),
    "noend": (None, "containers", "MAPI_E_CALL_FAILED", "beyond the 1 rows")}


def crashes(t, build):
    """Foreign code that ends the process it runs in is named, and so is the step; the profile stays as it was."""
    t.run("profile", "create", "wüst")
    for name, said in (("fatal", "crashed: access violation 0xC0000005"), ("hurl", "raised an exception at: MSG_SERVICE_CREATE"),
                       ("grump", "failed: MAPI_E_CALL_FAILED")):
        shutil.copy(build / "bin" / "orvctl_liar.dll", t.bin / f"xht{name}b.dll")
        t.run("service", "add", "wüst", name, "--config", "x", code=1,
              err=[f"cannot add service '{name}'", f"'LiarServiceEntry' of xht{name}B.dll {said}"])
        t.note(t.json("service", "list", "wüst") == [], "nothing is left of " + name)
    for name, said, step in (("crash", "access violation 0xC0000005 (xhtcrashB.dll+0x", "logon"), ("abort", "it called abort()", "logon"),
                             ("later", "access violation 0xC0000005 (xhtlaterB.dll+0x", "list the entries of 'liar'")):
        shutil.copy(build / "bin" / "orvctl_liar.dll", t.bin / f"xht{name}b.dll")
        t.run("service", "add", "wüst", name)
        uid = t.json("service", "list", "wüst")[0]["key"]
        says = [f"service '{name}' of profile 'wüst', its library xht{name}B.dll crashed: {said}", f", at: {step}; 'orvctl doctor \"wüst\"'"]
        t.run("book", "list", "wüst", code=1, err=["orvctl: " + says[0], *says[1:], uid])
        t.run("--json", "book", "list", "wüst", code=1, err=['"error": "' + says[0], '"exitCode": 1'])
        t.run("service", "remove", "wüst", name)
    t.run("profile", "delete", "wüst")


def faulty_services(t, build):
    """Each way in which a service cannot be used is told by name, by the doctor and by the logon that fails."""
    catalogue = t.bin / "XHTASVB.ini"
    text = catalogue.read_text()
    names = [*FAULTS, "fatal", "hurl", "grump", "abort", "later"]
    catalogue.write_text("[Services]\n" + "".join(f"{name}={name}\n" for name in names) + "".join(
        f"[{name}]\nPR_DISPLAY_NAME={name}\nPR_SERVICE_DLL_NAME=xht{name}%c.dll\n"
        "PR_SERVICE_ENTRY_NAME=LiarServiceEntry\n" for name in names))
    crashes(t, build)
    t.run("profile", "create", "krank")
    for name, (spoil, *_) in FAULTS.items():
        file = t.bin / f"xht{name}b.dll"
        shutil.copy(build / "bin" / "orvctl_liar.dll", file)
        t.run("service", "add", "krank", name)
        if spoil:
            spoil(file)
    found = {each["subject"]: each for each in t.json("doctor", "krank", code=11, err="problems")
             if each["status"] == "error"}
    for name, (_, check, code, said) in FAULTS.items():
        each = found.get("krank: " + name, {})
        t.note(each.get("check") == check and each["code"].startswith(code) and said in each["detail"] and each["fix"],
               "the doctor about " + name, each)
    t.run("service", "remove", "krank", "crash")
    t.run("book", "list", "krank", code=1, err=["cannot log on", *(
        text for name, (*_, said) in FAULTS.items() if name != "crash" for text in (f"\n  service '{name}'", said))])
    t.run("service", "add", "krank", "blind", code=1, err=["cannot add service 'blind'", "does not export 'ABProviderOpen'"])
    for name in ("gone", "text", "other", "lonely"):
        t.run("service", "add", "krank", name, code=1, err=[f"cannot add service '{name}'", *FAULTS[name][2:]])
    t.run("profile", "delete", "krank")
    # Tables that never end are left some time; what the provider reports is shown after any command.
    t.run("profile", "create", "endlos")
    t.run("service", "add", "endlos", "noend")
    reported = ["warning: service 'noend' (xhtnoendB.dll): half of it\\u202E is lost: MAPI_E_DISK_ERROR"]
    hierarchy = ["warning: service 'noend' (xhtnoendB.dll): Its hierarchy does not end"]
    t.run("book", "tree", "endlos", code=10, out="honest", err=hierarchy + reported)
    t.run("--json", "book", "list", "endlos", code=10, out="honest\\u001b[2J\\n", err="half of it\\u202e is lost")
    t.run("book", "list", "endlos", code=10, out="honest", err=hierarchy + reported)
    t.run("book", "show", "endlos", "--first", out="PR_ENTRYID", err=reported)
    t.run("profile", "delete", "endlos")
    catalogue.write_text(text)


def refused_catalogues(t):
    """Where the library refuses what the catalogue lists, its line is named, not the profile or the service asked for."""
    catalogue = t.bin / "XHTASVB.ini"
    text = catalogue.read_text()
    services, _, others = text.partition("[Default Services]")
    for line, section, said in [
            ("Long=a", "[Long]\nPR_SERVICE_DLL_NAME=far-too-long-a-name.dll\n", "line 10, [Long]: service 'Long'"),
            ("Odd=a", "[Odd]\nPR_SERVICE_DLL_NAME=a%d.dll\n", "is neither %c nor %%"),
            ("Bare", "", "line 5, [Services]: 'Bare' is not NAME=TEXT"), ("Lost=a", "", "no section of that name"),
            ("ContactFile=again", "", "[Services]: service 'ContactFile': the name stands")]:
        catalogue.write_text(services.replace("[Services]\n", f"[Services]\n{line}\n", 1) + section +
                             "[Default Services]" + others)
        t.run("service", "available", err=["warning: ", "XHTASVB.ini", said])
        t.run("service", "add", BOOK, "ContactFile", code=1, err=["cannot add", "XHTASVB.ini is refused", said])
    catalogue.write_text(services + "[Default Services]\nPersonalBook=again\nFremd=x" + others + "\n[Fremd]\nx=1\n")
    t.run("profile", "create", "neu", "--default-services", code=1,
          err=["with the default services of the catalogue", "the name stands in this list already"])
    found = t.json("doctor", code=11, err="problems")
    t.note([(each["subject"], each["status"]) for each in found if each["check"] == "catalogue"] ==
           [("Fremd", "warning"), ("PersonalBook", "error")], "lines of the catalogue", found)
    catalogue.write_text(services + "[Default Services]\nFremd=x" + others + "\n[Fremd]\nx=1\n")
    t.run("profile", "create", "neu", "--default-services", err=["warning: ", "service 'Fremd': [Services] does not list it"])
    t.run("profile", "delete", "neu")
    catalogue.write_text(text)



def windows(t):
    t.close_window("profile", "create", "neu", "--dialog", code=5, out="", err=["'neu'", "MAPI_E_USER_CANCEL"])
    t.close_window("profile", "configure", BOOK, code=5, out="", err=[f"'{BOOK}'", "MAPI_E_USER_CANCEL"])
    t.close_window("pick", BOOK, "--cc", "--bcc", code=5, out="", err=["choose recipients, it was cancelled", "MAPI_E_USER_CANCEL"])
    t.close_window("pick", BOOK, "--to-title", "Fax", "--heading", "Who?", code=5, out="", err="MAPI_E_USER_CANCEL")
    t.press_ok("pick", BOOK, code=0, out="No recipient was chosen.", err="")
    t.press_ok("pick", BOOK, "--preselect", PERSON, code=0, out=[PERSON, "+49 40 1"], err="")
    book = t.folder / "pick.orvab"
    book.unlink(missing_ok=True)
    t.run("profile", "create", "neu")
    t.run("service", "add", "neu", "PersonalBook", "--config", t.windows_path(book))
    t.run("contact", "add", "neu", "--name", "Ohne")
    for options, code in [([], 0), (["--require-address"], 11)]:
        t.press_ok("pick", "neu", "--cc", "--preselect", "Ohne", *options, code=code, out=["cc", "Ohne"], err="has no number")
    for name, fax in [("Olga Berg", "+49 40 77"), ("Olga Tal", "+49 40 78")]:
        t.run("contact", "add", "neu", "--name", name, "--fax", fax)
    t.run("pick", "neu", "--preselect", "Olga", code=6, err=["'Olga' fits 2", "'Olga Berg' at +49 40 77", "'Olga Tal'"])
    t.run("--json", "pick", "neu", "--preselect", "Olga Nord", code=4, err="there is no entry 'Olga Nord'")
    text = t.press_ok("--json", "pick", "neu", "--to-title", "Fax", "--bcc", "--preselect", "tal", "--preselect", "Ohne",
                      "--require-address", code=11, err="'Ohne (no fax number)' has no number")
    rows = [(row["type"], row["name"], row["address"]) for row in json.loads(text)]
    t.note(rows == [("to", "Olga Tal", "+49 40 78"), ("to", "Ohne (no fax number)", "")], "pick as JSON", rows)
    t.run("profile", "delete", "neu")
    t.run("pick", BOOK, "--preselect", "nobody", code=4, err="there is no entry 'nobody'")
    t.close_window("help", "--window", code=0, out="The help was closed.\n", err="")
    for file in t.bin.glob("XHTFHB*.chm"):
        file.unlink()
    t.run("help", "--window", code=1, err=["no help file beside " + LIBRARY, "MAPI_E_NOT_FOUND"])


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    t = Case(build)
    contacts = t.folder / "Kontakte ü.vcf"
    contacts.write_text(CONTACTS, encoding="utf-8")
    for profile in t.json("profile", "list"):  # what a run that was broken off left
        t.run("profile", "delete", "--", profile["profile"])
    t.run("profile", "default", "--none")
    command_line(t)
    libraries(t)
    profiles(t)
    services(t, contacts)
    profile_files(t)
    book(t, contacts)
    people(t)
    names(t)
    details(t)
    several_books(t)
    lost_fields(t)
    fields(t)
    windows(t)
    broken_states(t, contacts)
    refused_catalogues(t)
    lying_provider(t, build)
    faulty_services(t, build)
    t.run("profile", "delete", BOOK)
    if t.restarted:
        print(f"{t.restarted} programs were started again")
        t.note(t.restarted <= 5, "starting programs", "the emulation fails too often to tell anything")
    print(f"{t.passed} passed, {t.failed} failed")
    return 1 if t.failed else 0


if __name__ == "__main__":
    sys.exit(main())
