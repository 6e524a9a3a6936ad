"""Builds small suites in a temporary folder and runs the real program on them."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.path.join(os.environ["ORVDIFF_BIN_DIR"], "orvdiff")


class Run:
    """What one run of the program left behind."""

    def __init__(self, status, out, err):
        self.status = status
        self.out = out.decode("utf-8")  # an excerpt that is no UTF-8 is a fault
        self.err = err.decode("utf-8")

    def lines(self, *verdicts):
        """The lines that start with one of these verdicts."""
        return [line for line in self.out.splitlines() if line.split(" ")[0] in verdicts]


class SuiteTest(unittest.TestCase):
    """A server folder with work/, suite/ and webcontent/bi/, and comparison scripts where they are
    looked for; gone after the test."""

    def setUp(self):
        root = pathlib.Path(tempfile.mkdtemp(prefix="orvdiff-test-"))
        self.addCleanup(shutil.rmtree, root)
        root.chmod(0o755)
        self.server = root / "server"
        self.work, self.outputs = self.server / "work", self.server / "webcontent/bi/v5DebugHTML"
        self.scripts = root / "src/vask/testdata/Scripts"
        for folder in ("work", "suite/Masters", "webcontent/bi/v5DebugHTML"):
            (self.server / folder).mkdir(parents=True)
        for script in ("diffpdf/diffPdfFiles.py", "DiffXlsx/DiffXlsx.py"):
            self.write(self.scripts / script)

    def write(self, path, content=b""):
        """Writes a file below the server folder and returns its path."""
        if isinstance(content, str):
            content = content.encode()
        target = os.path.join(os.fsencode(self.server), os.fsencode(path))
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "wb") as file:
            file.write(content)
        return target

    def report(self, name, master=None, actual=None, folder="suite", xls=False):
        """A report; with a master and an output, unless they are None, as a page of HTML, or as a
        spreadsheet in HTML, which keeps its lines when it is normalised."""
        name = os.fsdecode(name)
        self.write(f"{folder}/{name}.xml", "a report")
        if master is not None:
            self.write(f"{folder}/Masters/{'XLS/' if xls else ''}{name}.html", master)
        if actual is not None:
            self.write(f"webcontent/bi/v5Debug{'XLS' if xls else 'HTML'}/{name}.html", actual)

    def pair(self, report, folder, name, master="x", actual="x"):
        """A report and a pair of files of another format."""
        self.write(f"suite/{report}.xml", "a report")
        self.write(f"suite/Masters/{folder}/{name}", master)
        self.write(f"webcontent/bi/v5Debug{folder.replace('vmd', 'VMD')}/{name}", actual)

    def interpreter(self, commands):
        """Has `python` run shell commands instead of a comparison script; returns the PATH."""
        program = self.write("bin/python", "#!/bin/sh\n" + commands)
        os.chmod(program, 0o755)
        return f"{self.server}/bin:{os.environ['PATH']}"

    def popen(self, *arguments, **options):
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
        return subprocess.Popen([PROGRAM, *arguments], cwd=self.work, **options)

    def finished(self, process):
        with process:
            out, err = process.communicate(timeout=60)
        return Run(process.returncode, out or b"", err or b"")

    def program(self, *arguments, **options):
        return self.finished(self.popen(*arguments, **options))

    def run_program(self, *arguments, preexec_fn=None, **environment):
        clean = {k: v for k, v in os.environ.items() if k != "NO_COLOR"}
        return self.program(*arguments, env={**clean, **environment}, preexec_fn=preexec_fn)

    def run_as_nobody(self, *arguments):
        """Runs the program as a user who may not read everything, as root may."""
        try:
            return self.program(*arguments, **({"user": 65534} if os.geteuid() == 0 else {}))
        except (OSError, subprocess.SubprocessError):
            self.skipTest("nobody else may run the program")

    def verify(self, *arguments, locations=("../suite",), **environment):
        return self.run_program("verify", *arguments, *locations, **environment)

    def wait_until(self, condition):
        """Waits for what is to happen soon."""
        for _ in range(2000):
            if condition():
                return
            time.sleep(0.01)
        self.fail("waited in vain")

    def harness_log(self, name="h.mxr"):
        return (self.work / name).read_bytes().decode()

    def expect(self, run, status, *texts, err="", out=None):
        """Checks the exit status, texts in standard output, and all of standard error, of which
        "..." leaves out the rest; all of standard output too if `out` is given."""
        self.assertEqual(run.status, status, run.out + run.err)
        if err.endswith("..."):
            self.assertIn(err[:-3], run.err)
        else:
            self.assertEqual(run.err, err)
        for text in texts:
            self.assertIn(text, run.out)
        if out is not None:
            self.assertEqual(run.out, out)
