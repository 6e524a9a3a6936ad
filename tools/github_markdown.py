"""Markdown as GitHub shows it: by its own converter, with the ids that links to headings lead to."""

import html
import re
import subprocess

TAGS = re.compile(r"<[^>]+>")
HEADING = re.compile(r"<h([1-6])>(.*?)</h\1>", re.DOTALL)


def slug(text):
    """The id of a heading: what is not a letter, digit, blank, hyphen or underscore is dropped."""
    return re.sub(r"[^\w\- ]", "", text.strip().lower()).replace(" ", "-")


def to_html(text):
    """The HTML of a page."""
    options = ["-e", "table", "-e", "strikethrough", "-e", "autolink", "-e", "footnotes"]
    result = subprocess.run(["cmark-gfm", *options], input=text.encode(), capture_output=True, check=True)
    uses = {}

    def with_id(match):
        name = slug(html.unescape(TAGS.sub("", match[2])))
        uses[name] = uses.get(name, -1) + 1
        name += f"-{uses[name]}" if uses[name] else ""
        return f'<h{match[1]} id="{html.escape(name)}">{match[2]}</h{match[1]}>'

    return HEADING.sub(with_id, result.stdout.decode())
