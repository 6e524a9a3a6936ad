"""The example programs and the page on formats, which quotes one of them: run as their readers
would run them, on copies of the demo suite and on files of a test's own."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BIN = pathlib.Path(os.environ["ORVDIFF_BIN_DIR"])
SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
PAGE = (SOURCE / "docs/formats.md").read_text()


class Examples(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        demo = shutil.copytree(SOURCE / "examples/demo", self.folder / "demo")
        self.work = demo / "server/work"
        (self.folder / "python").symlink_to(sys.executable)  # what scripts are run with

    def output_of(self, program, *arguments):
        path = f"{self.folder}:{os.environ['PATH']}"
        return subprocess.run([BIN / program, *arguments], cwd=self.work, check=True, text=True,
                              capture_output=True, env={**os.environ, "PATH": path}).stdout

    def test_failing_page_in_memory_is_told_logged_and_written_out(self):
        log = self.folder / "summary.xml"
        outputs = "../webcontent/bi/v5DebugHTML/"
        self.assertEqual(self.output_of("orvdiff_embedding", log),
                         f"right  {outputs}Revenue.html\n"
                         f"WRONG  {outputs}Revenue_2.html\n"
                         f"right  {outputs}Revenue_1.png\n")
        self.assertEqual([line[1:line.index(">")] for line in log.read_text().splitlines()],
                         ["TestSummary", "TestCasePassDiff", "TestCaseFailureDiff",
                          "TestCasePassDiff", "/TestSummary"])
        self.assertEqual((self.work / outputs / "Revenue_2.html").read_text(),
                         "<html><body>Page 2 was rendered without its table.</body></html>")

    def test_the_demos_scripts_find_its_documents_right(self):
        self.assertIn(" 2 passed, 0 differ",
                      self.output_of("orvdiff", "verify", "-f", "pdf,xlsx", "../suite"))

    def test_own_engine_verifies_server_logs(self):
        for name, text in {"suite/Masters/ServerLog/R_1.log": "07:00:00 up\r\n",
                           "suite/Masters/ServerLog/R_2.log": "07:00:01 up\n",
                           "webcontent/bi/serverLog/R_1.log": "09:30:00 up\n",
                           "webcontent/bi/serverLog/R_2.log": "09:30:01 down\n"}.items():
            path = self.work.parent / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, newline="")
        self.assertEqual(self.output_of("orvdiff_custom_engine", "../suite/R.xml"),
                         "right  ../webcontent/bi/serverLog/R_1.log\n"
                         "WRONG  ../webcontent/bi/serverLog/R_2.log\n")

    def test_page_quotes_the_example_and_says_what_the_program_says(self):
        quoted = re.search(r"```cpp\n(class .*?)```", PAGE, re.DOTALL)[1]
        self.assertIn(quoted, (SOURCE / "examples/custom_engine.cpp").read_text())
        rows = re.findall(r"^\| `(.*?)` \| (.*?) \| `(.*?)` \| (.*?) \|", PAGE, re.MULTILINE)
        listed = [re.sub("--.*?(  +)", r"given by the host\1", line)
                  for line in self.output_of("orvdiff", "formats", "--no-config").splitlines()[1:]]
        self.assertEqual([[name, re.sub("^--.*", "given by the host", folder.strip("`")), *more]
                          for name, folder, *more in rows],
                         [re.split("  +", line) for line in listed])
