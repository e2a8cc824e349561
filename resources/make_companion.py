#!/usr/bin/env python3
"""Makes the resource script of one language from a template and the language's messages.

The template holds every dialog once; the messages hold every text once. What would reach a user as a defect is
refused here: a missing, surplus or empty text, a lost directive, a doubled access key, controls that overlap,
a text that its control or its message box cannot hold. A dialog with WS_CHILD is a page of the tab control of the
last dialog before it that has one.
"""
import argparse
import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

from text_width import text_width

REFERENCE_CODE = "US"
_KEY = re.compile(r"@([a-z][a-z0-9_.]*)@")
_DIRECTIVE = re.compile(r"%(?:[0-9]+|[a-z])")
_DEFINITION = re.compile(r"^#define (\w+) (\d+)$", re.MULTILINE)
_ACCESS_KEY = re.compile(r"&(.)", re.DOTALL)
_TORN = re.compile(" [:;?!»]|« ")

# Longest text of a string, by what the library reads it into; the terminator is not counted.
_STRING_LIMIT = 159
_STRING_LIMITS = {266: 79, 288: 79, 287: 5, 286: 259}
_FILTER_STRING = 286
_FILTER_SEPARATOR = "|"

# Room that a control's frame, mark or closing button takes from its text, in dialog units.
_PADDING = {"PUSHBUTTON": 8, "DEFPUSHBUTTON": 8, "AUTORADIOBUTTON": 12, "AUTOCHECKBOX": 12, "GROUPBOX": 14, "LTEXT": 0}
_CAPTION_PADDING = 50
_LINE_HEIGHT = 8
_RIGHT_TO_LEFT_MARK, _RIGHT_TO_LEFT, _END_OF_DIRECTION = "\u200f", "\u202b", "\u202c"
_CLOSED_COMBO_HEIGHT = 14
_NAMED_BY_LABEL = ("LISTBOX", "COMBOBOX", "EDITTEXT", "SysListView32")
# What a tab control's frame and its row of tabs take from its page.
_TAB_WIDTH, _TAB_HEIGHT = 8, 20


class Refused(Exception):
    """The sources cannot become a companion; the text says why, one fault a line."""


@dataclass
class Messages:
    code: str
    language: int
    direction: str
    texts: dict


@dataclass
class Control:
    kind: str
    key: str
    identifier: str
    left: int
    top: int
    width: int
    height: int

    def overlaps(self, other):
        return (self.left < other.left + other.width and other.left < self.left + self.width
                and self.top < other.top + other.height and other.top < self.top + self.height)

    def frames(self, other):
        return (self.kind == "GROUPBOX" and self.left < other.left and self.top < other.top
                and other.left + other.width < self.left + self.width
                and other.top + other.height < self.top + self.height)


@dataclass
class Dialog:
    identifier: str
    width: int
    height: int
    caption: str = ""
    controls: list = field(default_factory=list)
    frame: "Dialog" = None  # of a page: whose tab control shows it

    def tab_control(self):
        return next((control for control in self.controls if control.kind == "SysTabControl32"), None)


# ---- reading ------------------------------------------------------------------------------------------------


def _unescape(text, where, faults):
    def replace(match):
        known = {"n": "\n", "\\": "\\"}
        if match[1] not in known:
            faults.append(f"{where}: unknown escape \\{match[1]}")
        return known.get(match[1], "")
    return re.sub(r"\\(.?)", replace, text)


def parse_messages(code, source):
    """Messages of one language; every text must have the comment that its translator needs."""
    texts, facts, faults = {}, {}, []
    commented = False
    for number, line in enumerate(source.splitlines(), 1):
        where = f"{code}:{number}"
        if line.startswith("#"):
            commented = True
            continue
        fact = re.fullmatch(r"@(language|direction) (\S+)", line)
        text = re.fullmatch(r"([a-z][a-z0-9_.]*) =(.*)", line)
        if fact:
            facts[fact[1]] = fact[2]
        elif text:
            if text[1] in texts:
                faults.append(f"{where}: {text[1]} stands twice")
            if not commented:
                faults.append(f"{where}: {text[1]} has no comment for the translator")
            texts[text[1]] = _unescape(text[2].strip(), where, faults)
        elif line.strip():
            faults.append(f"{where}: neither a comment nor 'key = text'")
        commented = False
    if not re.fullmatch(r"0x[0-9A-Fa-f]{4}", facts.get("language", "")):
        faults.append(f"{code}: no @language with four hexadecimal digits")
    if facts.get("direction") not in ("ltr", "rtl"):
        faults.append(f"{code}: @direction must be ltr or rtl")
    if faults:
        raise Refused("\n".join(faults))
    return Messages(code, int(facts["language"], 16), facts["direction"], texts)


_DIALOG_LINE = re.compile(r"(\w+) DIALOGEX \d+, \d+, (\d+), (\d+)")
_CAPTION_LINE = re.compile(r'CAPTION "@(.+)@"')
_TEXT_CONTROL = re.compile(
    r'(LTEXT|PUSHBUTTON|DEFPUSHBUTTON|AUTORADIOBUTTON|AUTOCHECKBOX|GROUPBOX) "(?:@(.+?)@)?", ([\w-]+), '
    r"(\d+), (\d+), (\d+), (\d+)(?:, .*)?")
_COMMON_CONTROL = re.compile(
    r'CONTROL "", (\w+), "(SysListView32|SysTabControl32)", [^,]+, (\d+), (\d+), (\d+), (\d+)(?:, .*)?')
_PLAIN_CONTROL = re.compile(r"(LISTBOX|COMBOBOX|EDITTEXT) (\w+), (\d+), (\d+), (\d+), (\d+)(?:, .*)?")
_STRING_LINE = re.compile(r'(\w+) "@(.+)@"')


def parse_template(template):
    """Dialogs with their controls, and the strings as (number or name, key), in the template's order."""
    dialogs, strings, faults = [], [], []
    block = None
    for number, raw in enumerate(template.splitlines(), 1):
        line = raw.strip()
        start = _DIALOG_LINE.fullmatch(line)
        if start:
            dialogs.append(Dialog(start[1], int(start[2]), int(start[3])))
            block = "dialog"
        elif line == "STRINGTABLE":
            block = "strings"
        elif line == "END" and block:
            block = None
        elif block == "dialog" and line.startswith("CAPTION"):
            dialogs[-1].caption = _CAPTION_LINE.fullmatch(line)[1]
        elif block == "dialog" and line.startswith("STYLE") and "WS_CHILD" in line:
            dialogs[-1].frame = next((each for each in reversed(dialogs) if each.tab_control()), None)
            if dialogs[-1].frame is None:
                faults.append(f"template:{number}: no dialog before this page has a tab control")
        elif block == "dialog" and not line.startswith(("STYLE", "EXSTYLE", "FONT", "BEGIN")):
            control = _parse_control(line)
            if control is None:
                faults.append(f"template:{number}: not a control that this generator can judge")
            else:
                dialogs[-1].controls.append(control)
        elif block == "strings" and _STRING_LINE.fullmatch(line):
            match = _STRING_LINE.fullmatch(line)
            strings.append((int(match[1]) if match[1].isdecimal() else match[1], match[2]))
    if faults:
        raise Refused("\n".join(faults))
    return dialogs, strings


def without_comments(template):
    """Line by line, so that faults still name the template's own line numbers."""
    return re.sub(r"^\s*//.*$", "", template, flags=re.MULTILINE)


def _parse_control(line):
    text = _TEXT_CONTROL.fullmatch(line)
    if text:
        return Control(text[1], text[2] or "", text[3], *(int(n) for n in text.groups()[3:7]))
    common = _COMMON_CONTROL.fullmatch(line)
    if common:
        return Control(common[2], "", common[1], *(int(n) for n in common.groups()[2:6]))
    plain = _PLAIN_CONTROL.fullmatch(line)
    if not plain:
        return None
    control = Control(plain[1], "", plain[2], *(int(n) for n in plain.groups()[2:6]))
    if control.kind == "COMBOBOX":
        control.height = _CLOSED_COMBO_HEIGHT
    return control


# ---- checks -------------------------------------------------------------------------------------------------


def access_key(text):
    match = _ACCESS_KEY.search(text.replace("&&", ""))
    return match[1].casefold() if match else ""


def check_layout(dialogs):
    """Faults of the template alone."""
    for dialog in dialogs:
        if dialog.frame:
            tabs = dialog.frame.tab_control()
            if dialog.width > tabs.width - _TAB_WIDTH or dialog.height > tabs.height - _TAB_HEIGHT:
                yield f"dialog {dialog.identifier} does not fit into {tabs.identifier}"
        for index, control in enumerate(dialog.controls):
            name = f"dialog {dialog.identifier}: control {control.identifier}"
            if control.left + control.width > dialog.width or control.top + control.height > dialog.height:
                yield f"{name} leaves its dialog"
            for other in dialog.controls[index + 1:]:
                if control.overlaps(other) and not control.frames(other):
                    yield f"{name} overlaps {other.identifier}"
            if control.kind in _NAMED_BY_LABEL and (
                    index == 0 or dialog.controls[index - 1].kind != "LTEXT"):
                yield f"{name} does not follow a label that names it"


def check_keys(messages, wanted):
    for key in sorted(wanted - messages.texts.keys()):
        yield f"{messages.code}: {key} is missing"
    for key in sorted(messages.texts.keys() - wanted):
        yield f"{messages.code}: {key} is used nowhere"
    for key, text in messages.texts.items():
        if not text:
            yield f"{messages.code}: {key} is empty"


def check_numbers(strings, names):
    """Of two strings with one number the resource compiler takes one without a word."""
    owners = {}
    for name, key in strings:
        number = names.get(name, name)
        if number in owners:
            yield f"template: {key} and {owners[number]} share the number {number}"
        owners[number] = key


def check_spaces(messages):
    """A mark that has a space before it would begin the next line of a text that is broken there."""
    for key, text in messages.texts.items():
        if _TORN.search(text):
            yield f"{messages.code}: {key} has a space at a mark where a line may break; a no-break space holds"


def check_against_reference(messages, reference):
    """A translation keeps every directive and has an access key exactly where the reference has one."""
    for key in sorted(messages.texts.keys() & reference.texts.keys()):
        text, original = messages.texts[key], reference.texts[key]
        if sorted(_DIRECTIVE.findall(text)) != sorted(_DIRECTIVE.findall(original)):
            yield f"{messages.code}: {key} does not hold the directives of the {reference.code} text"
        if bool(access_key(text)) != bool(access_key(original)):
            yield f"{messages.code}: {key} must have an access key where {reference.code} has one, and only there"


def check_access_keys(messages, dialogs):
    for dialog in dialogs:
        owners = {}
        for control in (dialog.frame.controls if dialog.frame else []) + dialog.controls:
            key = access_key(messages.texts.get(control.key, ""))
            if key and key in owners:
                yield (f"{messages.code}: dialog {dialog.identifier}: {control.key} and {owners[key]} "
                       f"share the access key {key}")
            elif key:
                owners[key] = control.key


def check_widths(messages, dialogs):
    for dialog in dialogs:
        caption = text_width(messages.texts.get(dialog.caption, ""))
        if caption > dialog.width - _CAPTION_PADDING:
            yield f"{messages.code}: dialog {dialog.identifier}: the caption is too wide"
        for control in dialog.controls:
            if not control.key:
                continue
            lines = max(1, control.height // _LINE_HEIGHT) if control.kind == "LTEXT" else 1
            room = (control.width - _PADDING[control.kind]) * lines
            width = text_width(messages.texts.get(control.key, ""))
            if width > room:
                yield (f"{messages.code}: dialog {dialog.identifier}: {control.key} takes about {width:.0f} units, "
                       f"its control has {room}")


def _directed_line(line):
    if _DIRECTIVE.search(line):
        return _RIGHT_TO_LEFT + line + _END_OF_DIRECTION
    closing = line and not line[-1].isalnum() and line[-1] != _FILTER_SEPARATOR
    return line + _RIGHT_TO_LEFT_MARK if closing else line


def directed(text, messages):
    """Lines that read from the right whatever draws them.

    A line that something is put into is embedded, since a name or number in it reads from the left; elsewhere a mark
    after closing punctuation keeps it at the end. The file filter stays as it is: its last character is its separator.
    """
    return "\n".join(map(_directed_line, text.split("\n"))) if messages.direction == "rtl" else text


def check_strings(messages, strings, most):
    for number, key in strings:
        text = directed(messages.texts.get(key, ""), messages)
        units = len(text.encode("utf-16-le")) // 2
        limit = most or _STRING_LIMITS.get(number, _STRING_LIMIT)
        if units > limit:
            yield f"{messages.code}: {key} has {units} characters, at most {limit} are read"
        if number == _FILTER_STRING and (not text.endswith(_FILTER_SEPARATOR) or text.count(_FILTER_SEPARATOR) % 2):
            yield f"{messages.code}: {key} must be names and patterns in turn, each ended by {_FILTER_SEPARATOR}"


def check(template, messages, reference, longest_string, names):
    """All faults of a language, each in one line."""
    dialogs, strings = parse_template(template)
    wanted = set(_KEY.findall(template))
    return [
        *check_layout(dialogs),
        *check_numbers(strings, names),
        *check_keys(messages, wanted),
        *check_spaces(messages),
        *check_against_reference(messages, reference),
        *check_access_keys(messages, dialogs),
        *check_widths(messages, dialogs),
        *check_strings(messages, strings, longest_string),
    ]


# ---- writing ------------------------------------------------------------------------------------------------


def _quoted(text):
    return text.replace("\\", "\\\\").replace('"', '""').replace("\n", "\\n")


def _facts(messages, version):
    primary, sub = messages.language & 0x3FF, messages.language >> 10
    numbers = (version.split(".") + ["0"] * 4)[:4]
    return {
        "LANGUAGE": f"0x{primary:02x}, 0x{sub:02x}",
        "LANGUAGE_HEX": f"{messages.language:04x}",
        "EXSTYLE": "WS_EX_LAYOUTRTL | WS_EX_RTLREADING" if messages.direction == "rtl" else "0",
        "CODE": messages.code,
        "VERSION": version,
        "VERSION_NUMBERS": ",".join(numbers),
    }


def render(template, messages, version):
    facts = _facts(messages, version)
    script = re.sub(r"\$\((\w+)\)", lambda match: facts[match[1]], template)
    return _KEY.sub(lambda match: _quoted(directed(messages.texts[match[1]], messages)), script)


def make(template, source, code, reference_source, version, longest_string=None, header=""):
    """The resource script of a language; raises Refused with every fault found.

    `longest_string` holds for every string; without it, what the library reads each of its own into.
    `header` defines the names that strings of the template have in the place of numbers.
    """
    template = without_comments(template)
    reference = parse_messages(REFERENCE_CODE, reference_source)
    messages = parse_messages(code, source)
    names = {name: int(number) for name, number in _DEFINITION.findall(header)}
    faults = check(template, messages, reference, longest_string, names)
    if faults:
        raise Refused("\n".join(faults))
    return render(template, messages, version)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--template", type=Path, required=True)
    parser.add_argument("--messages", type=Path, required=True, help="folder with one folder a language")
    parser.add_argument("--code", required=True, help="two letters of the language")
    parser.add_argument("--version", required=True)
    parser.add_argument("--longest-string", type=int, help="characters of any string, for other than the library's")
    parser.add_argument("--header", type=Path, help="defines the names of strings, where they have names")
    parser.add_argument("--output", type=Path, required=True)
    arguments = parser.parse_args()

    def source(code):
        return (arguments.messages / code / "messages.txt").read_text(encoding="utf-8")
    try:
        script = make(arguments.template.read_text(encoding="utf-8"), source(arguments.code), arguments.code,
                      source(REFERENCE_CODE), arguments.version, arguments.longest_string,
                      arguments.header.read_text(encoding="utf-8") if arguments.header else "")
    except (Refused, OSError, UnicodeDecodeError) as fault:
        print(fault, file=sys.stderr)
        return 1
    arguments.output.write_text(script, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
