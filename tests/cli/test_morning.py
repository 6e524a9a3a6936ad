"""A tester's morning: a night in which a tenth of all pages got a new footer, and five of these a
fault. As a test with a small suite; "./dev morning" runs it with 3000 reports made from a real
manual, and tells how many keys and seconds each step takes."""

import glob
import os
import pathlib
import time
import unittest

from suite import PROGRAM, SuiteTest
from terminal import Terminal

REPORTS = int(os.environ.get("ORVDIFF_MORNING", "100"))
MANUALS = "/usr/share/doc/postgresql-doc-*/html/*.html"
FAULTS = [  # what went wrong in a page, and what the tester writes about it
    (b"</p>", b" Total: -1</p>", "negative total"),
    (b"<p>", b"<p>the the ", "word twice"),
    (b"</h2>", b" (draft)</h2>", "draft in the heading"),
    (b"</title>", b" \xe4</title>", "Latin-1 in a title"),
    (b"<body", b"<body dir=\"rtl\"", "runs from right to left"),
]


def pages():
    """Real pages; made ones where there is no manual."""
    files = sorted(glob.glob(MANUALS)) if "ORVDIFF_MORNING" in os.environ else []
    texts = [pathlib.Path(file).read_bytes() for file in files]
    real = [text for text in texts if b"</h2>" in text and 8_000 < len(text) < 100_000]
    return real or [b"<html><title>T</title><body><h2>H</h2>\n<p>%d</p>\n</body></html>" % n
                    for n in range(50)]


class Morning(SuiteTest):
    def build(self):
        sources, wrong = pages(), iter(FAULTS)
        for number in range(REPORTS):
            page = sources[number % len(sources)]
            page = page.replace(b"</body>", b"\n<p>Release 11.1, page %d</p>\n</body>" % number)
            output = page
            if number % 10 == 3:
                output = output.replace(b"Release 11.1", b"Release 11.2")
                old, new, _ = next(wrong, (b"", b"", "")) if number > REPORTS // 3 else ("", "", "")
                output = output.replace(old, new, 1) if old else output
            self.report(f"R{number:04}", page, output)
        for number in range(2):
            self.report(f"New{number}")
            self.write(f"webcontent/bi/v5DebugHTML/New{number}.html", sources[number])
        for number in range(3):
            self.write(f"suite/Masters/Deleted{number}.html", sources[number])

    def tree(self):
        return {path.relative_to(self.server): path.read_bytes()
                for path in self.server.rglob("*") if path.is_file()
                and not {".orvdiff", "night"} & set(path.parts)}

    def step(self, what, action, keys=0):
        start = time.monotonic()
        result = action()
        if "ORVDIFF_MORNING" in os.environ:
            print(f"{what}: {time.monotonic() - start:.2f} s" + (f", {keys} keys" if keys else ""))
        return result

    def review(self):
        """What the tester types; returns what the program said at its end."""
        notes = [f"r{note}\n" for _, _, note in FAULTS]
        with Terminal([PROGRAM, "review", "night"], self.work) as terminal:
            for number, keys in enumerate(notes + ["a", "y"]):
                terminal.wait_for(f"Group {number + 1} of 6" if number < 6 else "Summary")
                terminal.press(keys)
            self.assertEqual(terminal.status(), 1)
            return terminal.text(), len("".join(notes)) + 2

    def run_to(self, status, *arguments):
        run = self.run_program(*arguments)
        self.assertEqual(run.status, status, run.out + run.err)
        return run.out

    def test_from_the_mail_to_done(self):
        changed = REPORTS // 10
        self.build()
        start = self.tree()
        night = self.step("verify", lambda: self.run_to(1, "verify", "--record", "night", "../suite"))
        self.assertIn(f"{changed} differ", night)
        shown, keys = self.step("review, typed without a pause", self.review)
        print(f"{keys} keys") if "ORVDIFF_MORNING" in os.environ else None
        for text in (f"Accepted {changed - 5} outputs", "5 faults:", "negative total",
                     "2 outputs without a master", "3 masters of no report"):
            self.assertIn(text, shown)
        stored = self.step("accept --new", lambda: self.run_to(0, "accept", "--new", "-y", "../suite"))
        self.assertIn("Stored 2 new masters", stored)
        gone = self.step("remove --orphans",
                         lambda: self.run_to(0, "remove", "--orphans", "-y", "../suite"))
        self.assertIn("Removed 3", gone)
        again = self.step("verify again", lambda: self.run_to(1, "verify", "../suite"))
        self.assertIn(f"{REPORTS - 3} passed, 5 differ, 0 missing", again)
        self.assertNotIn("without a master", again)
        for _ in range(3):
            self.step("undo", lambda: self.run_to(0, "undo"))
        self.assertEqual(self.tree(), start)


if __name__ == "__main__":
    unittest.main()
