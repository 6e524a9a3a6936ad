"""Runs the comparison scripts the way a verifying program does, and makes the files they read.

The tests run with: python3 -m unittest discover -s tests/scripts
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPTS = ROOT / "examples/demo/src/vask/testdata/Scripts"
DATA = ROOT / "tests/scripts/data"
EQUAL, DIFFERENT, TROUBLE = 0, 1, 2


class ScriptTest(unittest.TestCase):
    """Gives each test an empty folder, which is the working directory of the script."""

    script = None

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def put(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path

    def run_script(self, *arguments, **environment):
        """Returns (exit status, output and errors)."""
        # A standard input that stays open and silent: a script that reads it never ends.
        reading, writing = os.pipe()
        try:
            done = subprocess.run(
                [sys.executable, self.script, *arguments], cwd=self.folder, stdin=reading,
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60,
                env={**os.environ, **environment})
        finally:
            os.close(reading)
            os.close(writing)
        return done.returncode, done.stdout

    def check(self, arguments, status, words, **environment):
        self.judge(self.run_script(*arguments, **environment), status, words)

    def check_all(self, rows):
        """Checks (arguments, exit status, words of the output), several rows at a time."""
        with concurrent.futures.ThreadPoolExecutor() as pool:
            results = pool.map(lambda row: self.run_script(*row[0]), rows)
            for (arguments, status, words), result in zip(rows, results):
                with self.subTest(arguments):
                    self.judge(result, status, words)

    def judge(self, result, status, words):
        got, output = result
        self.assertEqual((status, True), (got, words in output), output)
        self.assertNotIn("internal error", output)
        if status == EQUAL and not words:
            self.assertEqual("", output)
