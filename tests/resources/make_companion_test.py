"""What the maker of companions refuses, and what it writes."""
import sys
import unittest
from pathlib import Path

RESOURCES = Path(__file__).resolve().parents[2] / "resources"
sys.path.insert(0, str(RESOURCES))
import make_companion  # noqa: E402

TEMPLATE = """
// a comment may name a @key@ that is no text
LANGUAGE $(LANGUAGE)
10 DIALOGEX 0, 0, 200, 60
EXSTYLE $(EXSTYLE)
CAPTION "@dialog.caption@"
BEGIN
    LTEXT "@dialog.label@", 11, 7, 7, 100, 8
    LISTBOX 12, 7, 17, 100, 30, WS_TABSTOP
    PUSHBUTTON "@dialog.add@", 13, 120, 17, 50, 14
    DEFPUSHBUTTON "@dialog.ok@", IDOK, 120, 35, 50, 14
END
STRINGTABLE
BEGIN
    266 "@string.question@"
    270 "@string.failed@"
    286 "@string.filter@"
END
"""

TEXTS = {
    "dialog.caption": "Services",
    "dialog.label": "&Services:",
    "dialog.add": "&Add",
    "dialog.ok": "OK",
    "string.question": "Question",
    "string.failed": "%s failed",
    "string.filter": "All files|*.*|",
}


def source(changes=None, head="@language 0x0409\n@direction ltr\n", comment="# where it stands\n"):
    texts = {**TEXTS, **(changes or {})}
    return head + "".join(f"{comment}{key} = {text}\n" for key, text in texts.items() if text is not None)


def make(messages, template=TEMPLATE):
    return make_companion.make(template, messages, "XX", source(), "1.2.3")


class Refusals(unittest.TestCase):
    def refused(self, messages, reason, template=TEMPLATE):
        with self.assertRaises(make_companion.Refused) as caught:
            make(messages, template)
        self.assertIn(reason, str(caught.exception))

    def test_texts(self):
        cases = [
            ({"dialog.add": None}, "dialog.add is missing"),
            ({"dialog.other": "Other"}, "dialog.other is used nowhere"),
            ({"dialog.ok": ""}, "dialog.ok is empty"),
            ({"string.failed": "failed"}, "directives"),
            ({"string.failed": "%d failed"}, "directives"),
            ({"string.failed": "%s failed %s"}, "directives"),
            ({"dialog.add": "Add"}, "must have an access key"),
            ({"dialog.ok": "&OK"}, "must have an access key"),
            ({"dialog.add": "Add &service"}, "share the access key s"),
            ({"dialog.label": "Dien&Ste:", "dialog.add": "&s"}, "share the access key s"),
            ({"dialog.add": "&Add one more service"}, "dialog.add takes about"),
            ({"dialog.label": "&" + "サービスの一覧とその設定を示す"}, "dialog.label takes about"),
            ({"dialog.caption": "A caption that is far too long for its dialog"}, "caption is too wide"),
            ({"string.question": "q" * 80}, "at most 79"),
            ({"string.failed": "%s" + "f" * 158}, "at most 159"),
            ({"string.filter": "All files|*.*"}, "names and patterns in turn"),
            ({"string.filter": "All files|*.*|More|"}, "names and patterns in turn"),
            ({"dialog.ok": "O\\x"}, "unknown escape"),
            ({"string.question": "Vraiment ?"}, "a no-break space holds"),
            ({"string.question": "Le «\u00a0nom »"}, "a no-break space holds"),
        ]
        for changes, reason in cases:
            with self.subTest(reason=reason, changes=changes):
                self.refused(source(changes), reason)

    def test_form_of_the_file(self):
        cases = [
            (source(comment=""), "no comment for the translator"),
            (source() + "# twice\ndialog.ok = Okay\n", "stands twice"),
            (source() + "loose line\n", "neither a comment"),
            (source(head="@direction ltr\n"), "no @language"),
            (source(head="@language 0x409\n@direction ltr\n"), "no @language"),
            (source(head="@language 0x0409\n@direction up\n"), "@direction must be"),
        ]
        for messages, reason in cases:
            with self.subTest(reason=reason):
                self.refused(messages, reason)

    def test_layout(self):
        cases = [
            ("13, 120, 17, 50, 14", "13, 100, 17, 70, 14", "control 12 overlaps 13"),
            ("13, 120, 17, 50, 14", "13, 160, 17, 50, 14", "control 13 leaves its dialog"),
            ("    LTEXT \"@dialog.label@\", 11", "    PUSHBUTTON \"@dialog.label@\", 11",
             "control 12 does not follow a label"),
            ("    LISTBOX 12", "    SCROLLBAR 12", "not a control"),
        ]
        for before, after, reason in cases:
            with self.subTest(reason=reason):
                self.assertIn(before, TEMPLATE)
                self.refused(source(), reason, TEMPLATE.replace(before, after))

    def test_pages(self):
        frame = TEMPLATE.replace('    PUSHBUTTON "@dialog.add@", 13, 120, 17, 50, 14',
                                 '    CONTROL "", IDC_TABS, "SysTabControl32", WS_TABSTOP, 110, 7, 80, 26')
        page = ('IDD_PAGE DIALOGEX 0, 0, 72, 6\nSTYLE DS_CONTROL | WS_CHILD\nBEGIN\n'
                '    LTEXT "@dialog.add@", -1, 0, 0, 50, 6\nEND\nSTRINGTABLE\n')
        good = frame.replace("STRINGTABLE\n", page)
        make(source(), good)
        cases = [
            (source({"dialog.add": "&Same"}), good, "share the access key s"),
            (source(), good.replace("0, 0, 72, 6", "0, 0, 73, 6"), "IDD_PAGE does not fit into IDC_TABS"),
            (source(), TEMPLATE.replace("STRINGTABLE\n", page), "no dialog before this page"),
            (source(), good.replace("-1, 0, 0, 50, 6", "IDC_LIST, 0, 0, 50, 6").replace(
                'LTEXT "@dialog.add@", IDC_LIST', 'CONTROL "", IDC_LIST, "SysListView32", WS_BORDER'),
             "IDC_LIST does not follow a label"),
        ]
        for messages, template, reason in cases:
            with self.subTest(reason=reason):
                self.refused(messages, reason, template)

    def test_numbers_that_two_strings_share(self):
        template = TEMPLATE.replace("266", "IDS_QUESTION").replace("270", "IDS_FAILED")
        header = "#define IDS_QUESTION 5\n#define IDS_FAILED {}\n"
        make_companion.make(template, source(), "XX", source(), "1.2.3", None, header.format(6))
        with self.assertRaisesRegex(make_companion.Refused, "string.failed and string.question share the number 5"):
            make_companion.make(template, source(), "XX", source(), "1.2.3", None, header.format(5))
        self.refused(source(), "share the number 270", TEMPLATE.replace("266", "270"))

    def test_every_fault_is_told_at_once(self):
        with self.assertRaises(make_companion.Refused) as caught:
            make(source({"dialog.ok": "", "string.failed": "failed"}))
        self.assertEqual(len(str(caught.exception).splitlines()), 2)


class Script(unittest.TestCase):
    def test_texts_and_facts_are_filled_in(self):
        script = make(source({"dialog.caption": 'A "b" \\\\ c', "string.failed": "%s\\nfailed"}))
        self.assertIn('CAPTION "A ""b"" \\\\ c"', script)
        self.assertIn('270 "%s\\nfailed"', script)
        self.assertIn("LANGUAGE 0x09, 0x01", script)
        self.assertIn("EXSTYLE 0\n", script)
        self.assertNotRegex(script, r"@[a-z]|\$\(")

    def test_right_to_left_mirrors_and_keeps_the_order_of_lines(self):
        script = make(source({"string.failed": "End.\\n%s failed."}, head="@language 0x0401\n@direction rtl\n"))
        self.assertIn("EXSTYLE WS_EX_LAYOUTRTL | WS_EX_RTLREADING", script)
        self.assertIn('"&Services:\u200f"', script)
        self.assertIn('"&Add"', script)
        self.assertIn('"End.\u200f\\n\u202b%s failed.\u202c"', script)
        self.assertIn('"All files|*.*|"', script)


class Delivered(unittest.TestCase):
    def test_numbers_of_the_template(self):
        dialogs, strings = make_companion.parse_template(
            make_companion.without_comments((RESOURCES / "companion.rc.in").read_text(encoding="utf-8")))
        self.assertEqual([dialog.identifier for dialog in dialogs],
                         ["192", "255", "256", "257", "259", "260", "261", "262"])
        unnamed = {267, 268, 275}
        self.assertEqual({number for number, _ in strings}, set(range(266, 323)) - unnamed)


if __name__ == "__main__":
    unittest.main()
