"""Runs the programs of poppler-utils, on both files at once."""

import collections
import contextlib
import os
import re
import subprocess
import threading

from comparison import Trouble
from structure import broken_table

_MOST_ERRORS = 1000  # lines kept of what a program complains about
_LONGEST_ERROR = 1000  # bytes
_REBUILDING = b"try to reconstruct"

# What pdfinfo says of one file. `path` is safe to hand to poppler, `largest` is the area of the
# largest page in square points, `complaint` poppler's first syntax error, or "".
Document = collections.namedtuple("Document", "path pages largest complaint")


class Poppler:
    """One of the programs at work on one file; `output` is the stream of what it writes."""

    def __init__(self, program, *arguments, path):
        try:
            self._process = subprocess.Popen(
                [program, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.PIPE)
        except FileNotFoundError:
            raise Trouble(f"{program} not found: install the Debian package "
                          "poppler-utils") from None
        self.output = self._process.stdout
        self._path = path
        self._errors = []
        # A thread: a program whose complaints nobody reads stops once the pipe is full.
        self._listener = threading.Thread(target=self._listen, daemon=True)
        self._listener.start()

    def _listen(self):
        while line := self._process.stderr.readline(_LONGEST_ERROR):
            if len(self._errors) < _MOST_ERRORS or _REBUILDING in line:
                self._errors.append(line)

    def finish(self):
        """Waits for the end and returns (exit status, lines of complaint).

        Raises Trouble when the program had to rebuild the table of objects on its way: it notices
        an entry that leads nowhere only when it needs the object.
        """
        self.output.close()
        status = self._process.wait()
        self._listener.join()
        if any(_REBUILDING in line for line in self._errors):
            raise repaired(self._path, "its cross-reference table misses an object")
        return status, [line.decode(errors="replace").rstrip() for line in self._errors]

    def stop(self):
        self._process.kill()
        self._process.wait()
        self._listener.join()
        self._process.stderr.close()
        self.output.close()


def repaired(path, reason):
    return Trouble(f"{path!r} is damaged: {reason}; poppler repaired it to read it, and what it "
                   "shows then is a guess")


@contextlib.contextmanager
def on_both(paths, program, *options, output=()):
    """Runs a program on both files; in the end none of the two runs any more."""
    with contextlib.ExitStack() as cleanup:
        programs = []
        for path in paths:
            programs.append(Poppler(program, *options, path, *output, path=path))
            cleanup.callback(programs[-1].stop)
        yield programs


def describe(*paths):
    """Returns the Document of each path; raises Trouble for a file that cannot be trusted."""
    # Relative names get a folder: poppler takes "-x" for an option and "fd://0" for its own input.
    paths = [os.path.join(".", path) for path in paths]
    with on_both(paths, "pdfinfo", "-f", "1", "-l", "-1") as programs:
        return [parse_info(path, program) for path, program in zip(paths, programs)]


def parse_info(path, program):
    output = program.output.read().decode(errors="replace")
    status, errors = program.finish()
    if any("Incorrect password" in error for error in errors):
        raise Trouble(f"{path!r} is locked with a password")
    # The title and the author stand before the facts and may hold anything, even such lines.
    facts = output[output.rfind("\nPages:"):]
    count = re.match(r"\nPages: +([1-9]\d*)", facts)
    if status or not count:
        raise Trouble(f"poppler cannot read {path!r}: {(errors or ['it has no pages'])[0]}")
    if reason := broken_table(path):
        raise repaired(path, reason)
    sizes = re.findall(r"^Page +\d+ size: +(\S+) x (\S+) pts", facts, re.MULTILINE)
    largest = max((float(width) * float(height) for width, height in sizes), default=0)
    complaint = next((error for error in errors if error.startswith("Syntax Error")), "")
    return Document(path, int(count[1]), largest, complaint)
