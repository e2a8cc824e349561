#!/usr/bin/env python3
"""Lays out one help file of one language for the help compiler: project, contents, index and pages.

Context help has one topic a help identifier, named by its decimal number, and the window type "Popup"; the main
help has the language's pages and the window type "main".
"""
import argparse
import html
import re
import shutil
import sys
from dataclasses import dataclass
from html.parser import HTMLParser
from pathlib import Path

_FACTS = {"popup": ("language", "codepage", "popup_caption"),
          "main": ("language", "codepage", "main_caption", "pages")}
_TOPIC = re.compile(r"\[(0x[0-9A-F]+)\] (.+)")

# Window types: name, window properties, buttons, rectangle. Context help has neither panes nor toolbar.
_POPUP = 'Popup="{caption}",,,"{start}",,,,,,0x0,,0x0,[0,0,299,178],,,,,,,0'
_MAIN = 'main="{caption}","{name}.hhc","{name}.hhk","{start}","{start}",,,,,0x2520,220,0x304e,[80,60,880,660],,,,,,,0'

_PROJECT = """[OPTIONS]
Compatibility=1.1 or later
Compiled file={name}.chm
Contents file={name}.hhc
Index file={name}.hhk
Default Window={window}
Default topic={start}
Full-text search=Yes
Language={language}
Title={caption}

[WINDOWS]
{window_type}

[FILES]
{files}
"""

_POPUP_PAGE = """<!DOCTYPE html>
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<title>{title}</title>
<link rel="stylesheet" href="popup.css">
</head>
<body>
<h1>{title}</h1>
{body}
</body>
</html>
"""


class Refused(Exception):
    """The sources cannot become a help file; the text says why."""


@dataclass
class Topic:
    file: str
    title: str
    keywords: list


class _PageReader(HTMLParser):
    """Title, keywords and links of a page."""

    def __init__(self):
        super().__init__()
        self.title, self.keywords, self.links = "", [], []
        self._in_title = False

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self._in_title = tag == "title"
        if tag == "meta" and values.get("name") == "keywords":
            self.keywords = [word.strip() for word in values["content"].split(",")]
        if tag in ("a", "link"):
            self.links.append(values["href"])

    def handle_data(self, data):
        if self._in_title:
            self.title += data

    def handle_endtag(self, tag):
        self._in_title = False


def read_facts(source, kind):
    facts = dict(line.split(" = ", 1) for line in source.splitlines() if " = " in line)
    missing = [name for name in _FACTS[kind] if not facts.get(name)]
    if missing:
        raise Refused(f"project.txt: {', '.join(missing)} missing")
    return facts


def read_popup_topics(source):
    """(help identifier, title, body) of every topic, in the order of the file."""
    topics, body = [], []
    for number, line in enumerate(source.splitlines(), 1):
        start = _TOPIC.fullmatch(line)
        if start:
            body = []
            topics.append((int(start[1], 16), start[2], body))
        elif line.startswith("[") or (line.strip() and not topics and not line.startswith("#")):
            raise Refused(f"popup.txt:{number}: a topic starts with [0x<identifier>] and a title")
        elif topics and line.strip():
            body.append(line)
    seen = [identifier for identifier, _, _ in topics]
    for identifier, title, body in topics:
        if not body:
            raise Refused(f"popup.txt: {title} has no text")
        if seen.count(identifier) > 1:
            raise Refused(f"popup.txt: 0x{identifier:X} stands twice")
    return topics


def write_popup(source, output):
    topics = []
    for identifier, title, body in read_popup_topics((source / "popup.txt").read_text(encoding="utf-8")):
        name = f"{identifier}.htm"
        page = _POPUP_PAGE.format(title=html.escape(title), body="\n".join(body))
        (output / name).write_text(page, encoding="utf-8")
        topics.append(Topic(name, title, []))
    shutil.copy(Path(__file__).parent / "popup.css", output)
    return topics


def write_main(source, output, pages):
    topics = []
    for name in pages:
        page = (source / name).read_text(encoding="utf-8")
        reader = _PageReader()
        reader.feed(page)
        for link in reader.links:
            if link not in pages and link != "main.css":
                raise Refused(f"{name}: there is no page {link}")
        if not reader.title or not reader.keywords:
            raise Refused(f"{name}: a page needs a title and keywords")
        (output / name).write_text(page, encoding="utf-8")
        topics.append(Topic(name, reader.title, reader.keywords))
    shutil.copy(source.parent / "main.css", output)
    return topics


def _site_map(entries):
    items = "".join(
        f'<li><object type="text/sitemap"><param name="Name" value="{html.escape(text)}">'
        f'<param name="Local" value="{file}"></object>\n' for text, file in entries)
    return f"<html><head></head><body>\n<ul>\n{items}</ul>\n</body></html>\n"


def write_project(output, name, kind, facts, topics):
    """Contents and index are read in the language's code page, pages in the encoding that they name."""
    codepage = facts["codepage"]
    contents = [(topic.title, topic.file) for topic in topics]
    index = sorted((word, topic.file) for topic in topics for word in (topic.keywords or [topic.title]))
    (output / f"{name}.hhc").write_text(_site_map(contents), encoding=codepage)
    (output / f"{name}.hhk").write_text(_site_map(index), encoding=codepage)
    values = {"name": name, "start": topics[0].file, "caption": facts[f"{kind}_caption"]}
    project = _PROJECT.format(
        window="Popup" if kind == "popup" else "main",
        window_type=(_POPUP if kind == "popup" else _MAIN).format(**values),
        language=facts["language"],
        files="\n".join(topic.file for topic in topics) + f"\n{kind}.css",
        **values)
    (output / f"{name}.hhp").write_text(project, encoding=codepage)


def make(source, kind, name, output):
    shutil.rmtree(output, ignore_errors=True)
    output.mkdir(parents=True)
    facts = read_facts((source / "project.txt").read_text(encoding="utf-8"), kind)
    topics = write_popup(source, output) if kind == "popup" else write_main(source, output, facts["pages"].split())
    if not topics:
        raise Refused("there are no topics")
    write_project(output, name, kind, facts, topics)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--source", type=Path, required=True, help="folder of the language")
    parser.add_argument("--kind", choices=("popup", "main"), required=True)
    parser.add_argument("--name", required=True, help="name of the help file without extension")
    parser.add_argument("--output", type=Path, required=True, help="folder, made anew")
    arguments = parser.parse_args()
    try:
        make(arguments.source, arguments.kind, arguments.name, arguments.output)
    except (Refused, OSError, UnicodeError) as fault:
        print(f"{arguments.source}: {fault}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
