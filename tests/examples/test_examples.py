"""The example programs, run as their readers would run them: on a copy of the demo suite."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

BIN = pathlib.Path(os.environ["ORVDIFF_BIN_DIR"])
DEMO = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"]) / "examples/demo"


class Embedding(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.work = shutil.copytree(DEMO, self.folder / "demo") / "server/work"

    def test_failing_page_in_memory_is_told_logged_and_written_out(self):
        log = self.folder / "summary.xml"
        run = subprocess.run([BIN / "orvdiff_embedding", log], cwd=self.work, check=True,
                             capture_output=True, text=True)
        outputs = "../webcontent/bi/v5DebugHTML/"
        self.assertEqual(run.stdout, f"right  {outputs}Revenue.html\n"
                                     f"WRONG  {outputs}Revenue_2.html\n"
                                     f"right  {outputs}Revenue_1.png\n")
        summary = log.read_text().splitlines()
        self.assertEqual([line[1:line.index(">")] for line in summary],
                         ["TestSummary", "TestCasePassDiff", "TestCaseFailureDiff",
                          "TestCasePassDiff", "/TestSummary"])
        written = (self.work / outputs / "Revenue_2.html").read_text()
        self.assertEqual(written,
                         "<html><body>Page 2 was rendered without its table.</body></html>")


if __name__ == "__main__":
    unittest.main()
