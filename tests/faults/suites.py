"""The demo suite, twice: in "same" it is as it is, in "other" every output differs from its master."""

import os
import shutil

# Stands in for the interpreter of the comparison scripts; a real one is too slow for so many runs.
COMPARER = """#!/bin/sh
while [ $# -gt 2 ]; do shift; done
grep -q '<!-- more -->' "$2"
test $? = 1
"""
# Those reports of the demo of which every pair passes, once the server has its former version.
LOCATIONS = ("../suite/sales", "../suite/operations")


class Suites:
    """A folder `root` with the two suites."""

    def __init__(self, root, demo):
        self.root = root
        for suite in ("same", "other"):
            shutil.copytree(demo, root / suite, ignore=shutil.ignore_patterns("orvdiff.toml"))
        for path in (root / "same/server/webcontent/bi/v5DebugHTML").glob("*.html"):
            path.write_bytes(path.read_bytes().replace(b"server 16.20", b"server 15.20"))
        for path in (root / "other/server/webcontent").rglob("*.*"):
            # Most formats take a comment; statistics are compared line by line.
            path.write_bytes(path.read_bytes().replace(b"Mapping Mode - ", b"Mapping Mode - not ")
                             + b"<!-- more -->")
        (root / "bin").mkdir()
        (root / "bin/python").write_text(COMPARER)
        (root / "bin/python").chmod(0o755)
        self.files = {suite: self.present(suite) for suite in ("same", "other")}

    def work(self, suite):
        return self.root / suite / "server/work"

    def touch_folders(self, suite):
        """Makes folders look changed, so that no run reuses a listing and all make the same calls."""
        for folder in (self.root / suite).glob("server/suite/*/Masters/**/"):
            os.utime(folder)

    def present(self, suite):
        """The path of every file of a suite."""
        top = self.root / suite
        return {os.path.relpath(os.path.join(folder, name), top)
                for folder, _, names in os.walk(top) for name in names}

    def take_new(self, suite):
        """Removes the files that a run has left, and returns them as path and content."""
        new = {}
        for path in self.present(suite) - self.files[suite]:
            new[path] = (self.root / suite / path).read_bytes()
            (self.root / suite / path).unlink()
        shutil.rmtree(self.root / suite / "server/record", ignore_errors=True)
        return new
