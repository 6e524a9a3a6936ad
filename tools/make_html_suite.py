#!/usr/bin/env python3
"""Make a report suite out of any folder of HTML pages.

Every page becomes one report: its master is the page with volatile parts added (script blocks,
generated ids, event handlers, generator tags), its actual output the same page with other values in
those parts and other line ends. So every pair passes, except the pages in which one visible word is
changed on request; their names go to changed.tsv, with the old and the new word.

    tools/make_html_suite.py --pages 500 --change-words 20 /usr/share/doc/some-doc/html SUITE
    orvdiff verify -C SUITE/server/work --format html ../suite
"""

import argparse
import pathlib
import random
import re
import sys

WORD = re.compile(rb">[^<>]*?\b([A-Za-z]{5,})\b")
INVISIBLE = re.compile(rb"<(script|style|head)\b.*?</\1>", re.S | re.I)
TAG_END = re.compile(rb"<(p|div|td|li|tr|table)>")


def decorate(page, values):
    """The page as a report server would have rendered it in one run: volatile parts included.

    Where they stand depends on the page's length alone, so two runs agree; `values` fills them.
    """
    places = random.Random(len(page))

    def number(digits):
        return values.randrange(10 ** digits)

    def volatile(match):
        tag = match.group(1)
        if places.randrange(3) != 0:
            return match.group(0)
        return places.choice((
            b'<%s id="rt_%d" onclick="go(%d)">' % (tag, number(6), number(4)),
            b'<%s ctx="%d:%d" name="n%d">' % (tag, number(2), number(2), number(5)),
            b'<%s><script type="text/javascript">var t=%d;\n run(t);</script>' % (tag, number(9)),
            b'<%s aria-labelledby="lbl%d" coords="%d,%d">' % (tag, number(5), number(3), number(3)),
        ))

    meta = b'<meta name="GeneratorID" content="%d">\r\n' % number(9)
    return meta + TAG_END.sub(volatile, page)


def other_line_ends(page, rng):
    return re.sub(rb"\r?\n", lambda m: rng.choice((b"\n", b"\r\n")), page)


def change_word(page, rng):
    """Changes the last letter of one visible word, so that the length stays; None without a word."""
    hidden = [m.span() for m in INVISIBLE.finditer(page)]
    words = [m for m in WORD.finditer(page)
             if not any(start <= m.start() < end for start, end in hidden)]
    if not words:
        return None
    word = rng.choice(words)
    old = word.group(1)
    new = old[:-1] + (b"q" if old[-1:] != b"q" else b"z")
    return page[:word.start(1)] + new + page[word.end(1):], old, new


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("source", type=pathlib.Path, nargs="+", help="folders of HTML pages")
    parser.add_argument("suite", type=pathlib.Path, help="folder to create the suite in")
    parser.add_argument("--pages", type=int, default=500, help="how many pages at the most")
    parser.add_argument("--change-words", type=int, default=0, metavar="N",
                        help="in how many pages one visible word is changed")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    if options.suite.exists():
        sys.exit(f"{options.suite} exists already: name a new folder")
    rng = random.Random(options.seed)
    pages = sorted({p for folder in options.source for p in folder.rglob("*.htm*") if p.is_file()})
    pages = pages[:options.pages]
    if not pages:
        sys.exit("no HTML pages found in " + ", ".join(map(str, options.source)))
    reports = options.suite / "server/suite"
    masters = reports / "Masters"
    outputs = options.suite / "server/webcontent/bi/v5DebugHTML"
    for folder in (masters, outputs, options.suite / "server/work"):
        folder.mkdir(parents=True)
    to_change = set(rng.sample(range(len(pages)), min(options.change_words, len(pages))))
    changed = []
    size = 0
    for number, path in enumerate(pages):
        page = path.read_bytes().replace(b"\0", b"")
        actual = page
        name = f"page{number:05}"
        if number in to_change and (change := change_word(page, rng)):
            actual, old, new = change
            changed.append(f"{name}\t{old.decode()}\t{new.decode()}\n")
        master = decorate(page, random.Random(rng.random()))
        actual = other_line_ends(decorate(actual, random.Random(rng.random())), rng)
        (masters / f"{name}.html").write_bytes(master)
        (outputs / f"{name}.html").write_bytes(actual)
        (reports / f"{name}.xml").write_text(f"<report source='{path.name}'/>\n")
        size += len(master) + len(actual)
    (options.suite / "changed.tsv").write_text("".join(changed))
    print(f"{len(pages)} reports, {size / 1e6:.1f} MB, {len(changed)} with a changed word")


if __name__ == "__main__":
    main()
