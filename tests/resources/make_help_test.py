"""What the maker of help and the check of its topics refuse."""
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "resources" / "help"))
import check_help  # noqa: E402
import make_help  # noqa: E402

HEADER = "constexpr HelpIdPair kOne[] = {\n  {5, 0xD01},  // list\n  {6, 0xD02},\n  {0, 0},\n};\n"


class PopupTopics(unittest.TestCase):
    def test_topics_are_read_in_order(self):
        topics = make_help.read_popup_topics("# note\n\n[0xD01] One\n<p>a</p>\n<p>b</p>\n\n[0x80650418] Two\n<p>c</p>\n")
        self.assertEqual(topics, [(0xD01, "One", ["<p>a</p>", "<p>b</p>"]), (0x80650418, "Two", ["<p>c</p>"])])

    def test_refusals(self):
        for text, reason in [
            ("[0xD01] One\n[0xD02] Two\n<p>x</p>\n", "has no text"),
            ("[0xD01] One\n<p>x</p>\n[0xD01] Two\n<p>x</p>\n", "stands twice"),
            ("[D01] One\n<p>x</p>\n", "starts with"),
            ("<p>x</p>\n", "starts with"),
        ]:
            with self.subTest(reason=reason), self.assertRaisesRegex(make_help.Refused, reason):
                make_help.read_popup_topics(text)


class MainPages(unittest.TestCase):
    def write(self, page):
        with tempfile.TemporaryDirectory() as folder:
            language, output = Path(folder) / "XX", Path(folder) / "output"
            language.mkdir()
            output.mkdir()
            (Path(folder) / "main.css").write_text("")
            (language / "a.htm").write_text(page)
            return make_help.write_main(language, output, ["a.htm"])

    def test_dead_link_and_missing_title_are_refused(self):
        head = '<title>A</title><meta name="keywords" content="a, b">'
        self.assertEqual(self.write(head)[0].keywords, ["a", "b"])
        with self.assertRaisesRegex(make_help.Refused, "no page b.htm"):
            self.write(head + '<a href="b.htm">b</a>')
        with self.assertRaisesRegex(make_help.Refused, "title and keywords"):
            self.write("<title>A</title>")


class TopicCheck(unittest.TestCase):
    def test_identifiers_of_the_tables(self):
        self.assertEqual(check_help.identifiers_of(HEADER), {0xD01, 0xD02})
        for broken in ("", HEADER.replace("  {0, 0},\n", "")):
            with self.subTest(broken=broken), self.assertRaises(ValueError):
                check_help.identifiers_of(broken)

    def test_differences_both_ways(self):
        header = "inline constexpr kit::HelpTopic kOne[] = {\n    {IDC_A, 0x10},\n    {IDOK, 0x11},\n};\n"
        self.assertEqual(check_help.named_topics_of(header), {("IDC_A", 0x10), ("IDOK", 0x11)})
        controls = check_help.controls_of('// IDC_C\n    EDITTEXT IDC_A, 1, 2\n    PUSHBUTTON "x", IDC_B, 1\n')
        self.assertEqual(check_help.control_differences("t", controls, {"IDC_A", "IDOK"}),
                         ["t: IDC_B has no topic", "t: there is no control IDOK"])
        self.assertEqual(check_help.differences("f", {"1.htm"}, {"1.htm"}), [])
        self.assertEqual(check_help.differences("f", {"1.htm", "2.htm"}, {"1.htm", "3.htm"}),
                         ["f: no topic 2.htm", "f: topic 3.htm is asked for by nothing"])


if __name__ == "__main__":
    unittest.main()
