#!/usr/bin/env python3
"""Edit real pages in known places, and count in how many of them each edit is one hunk.

Every page is taken as one line. It gets words replaced and deleted, and a table row inserted where
it has a table, far enough from each other. Says too how many inserted rows are one insertion that
starts at its tag.

    bench/peers/known_edits.py build/ci/bin/orvdiff
"""

import glob
import pathlib
import random
import re
import subprocess
import sys
import tempfile

from inputs import PAGE_FOLDERS

PAGES = 200
APART = 1500  # characters between two edits
SEPARATOR = "          --\n"


def pages(chance):
    """Texts of pages, in one line each."""
    files = [path for folder in PAGE_FOLDERS for found in sorted(glob.glob(folder))
             for path in sorted(pathlib.Path(found).rglob("*.html"))
             if 5_000 < path.stat().st_size < 300_000]
    chance.shuffle(files)
    for path in files:
        yield " ".join(path.read_text(errors="replace").replace("\r", "").split("\n"))


def edit(text, chance):
    """The text edited, the number of edits, and the marks of the rows inserted."""
    rows = [row for row in re.finditer(r"<tr\b.*?</tr>", text) if row[0].count("<tr") == 1]
    words = [word for word in re.finditer(r"(?<=[ >])[a-z]{4,10}(?=[ <.])", text)
             if text.rfind("<", 0, word.start()) <= text.rfind(">", 0, word.start())]
    edits, marks = [], []
    for kind in ["word"] * 3 + ["deletion"] + ["row"] * (len(rows) > 2):
        place = chance.choice(rows if kind == "row" else words) if words else None
        if place is None or any(abs(place.start() - other[0]) < APART for other in edits):
            continue
        mark = f"new{chance.randint(1000, 9999)}"
        if kind == "row":
            row = re.sub(r">([^<>]{2,})<", f">{mark}<", place[0], count=1)
            marks += [mark] if mark in row else []
            edits.append((place.start(), place.start(), row))
        else:
            edits.append((*place.span(), mark if kind == "word" else ""))
    for begin, end, new in sorted(edits, reverse=True):
        text = text[:begin] + new + text[end:]
    return text, len(edits), marks


def is_one_insertion(hunk):
    added = re.findall(r"(?m)^ *1 \+ (.*)", hunk)
    return re.match("\u2026?<tr", added[0]) and not re.search(r"(?m)^ *1 +- ", hunk)


def main():
    chance = random.Random(5)
    exact = compared = rows = good_rows = 0
    with tempfile.TemporaryDirectory() as folder:
        pair = [pathlib.Path(folder, name) for name in ("master", "actual")]
        for text in pages(chance):
            edited, count, marks = edit(text, chance)
            if count < 3:
                continue
            pair[0].write_text(text)
            pair[1].write_text(edited)
            hunks = subprocess.run([sys.argv[1], "diff", "xml", *pair, "--max-diffs", "0",
                                    "--context", "1", "--width", "1000"], capture_output=True,
                                   text=True, check=False).stdout.split(SEPARATOR)
            compared += 1
            exact += len(hunks) == count
            rows += len(marks)
            good_rows += sum(any(mark in hunk and is_one_insertion(hunk) for hunk in hunks)
                             for mark in marks)
            if compared == PAGES:
                break
    print(f"{compared} pages, in {exact} each edit is one hunk; "
          f"{rows} inserted rows, {good_rows} are one insertion from their tag")


if __name__ == "__main__":
    sys.exit(main())
