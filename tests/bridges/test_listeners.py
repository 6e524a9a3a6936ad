"""The listeners for GoogleTest and Catch2 in their frameworks: what the example programs report of a
suite, also where their output goes on to build servers."""

import json
import os
import pathlib
import re
import subprocess
import sys
from xml.etree import ElementTree

SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
BIN = pathlib.Path(os.environ["ORVDIFF_BIN_DIR"])
sys.path.append(str(SOURCE / "tests/cli"))

from suite import SuiteTest  # noqa: E402

HOSTILE = "a]]>\x1b[2J&\n::\u202e\udcff"
SHOWN = r"a]]>\x1B[2J&\n::\u{202E}\xFF"
PAGE, MASTER = "../webcontent/bi/v5DebugHTML/", "../suite/Masters/"
DIFFERS = "{0}{2}.html differs from its master {1}{2}.html\n  1 - <p>12\n  2 + <p>21\n         ^"
EXPECTED = [DIFFERS.format(PAGE, MASTER, "Different"), DIFFERS.format(PAGE, MASTER, SHOWN),
            f"{PAGE}Missing.html does not exist or cannot be opened; it is the output to compare "
            f"with {MASTER}Missing.html"]


class Listeners(SuiteTest):
    def setUp(self):
        super().setUp()
        for name in ("Different", HOSTILE):
            self.report(name, "<p>12", "<script>1\n</script><p>21")
        self.report("Missing", "x")
        self.report("Right", "x", "x")
        self.report("NoPages")

    def run_tests(self, program, *options):
        run = subprocess.run([BIN / program, *options], cwd=self.work, capture_output=True)
        self.assertNotIn(b"\x1b[2J", run.stdout)
        return run

    def test_googletest_fails_once_for_each_pair_that_is_wrong(self):
        run = self.run_tests("orvdiff_googletest", "--gtest_output=json:out.json")
        self.assertEqual(run.returncode, 1)
        result = json.loads((self.work / "out.json").read_text())
        tests = result["testsuites"][0]["testsuite"]
        failures = [failure["failure"] for test in tests for failure in test.get("failures", [])]
        lines = [re.match("(.*?)(:[0-9]+)?\nFailed\n", failure) for failure in failures]
        self.assertCountEqual([line[2] for line in lines], [":2", ":2", None])
        self.assertCountEqual([failure[line.end():] for failure, line in zip(failures, lines)],
                              EXPECTED)
        self.assertCountEqual([test["result"] for test in tests],
                              ["COMPLETED"] * 4 + ["SKIPPED"])  # the one without pages

    def test_catch2_fails_once_for_each_pair_that_is_wrong(self):
        run = self.run_tests("orvdiff_catch2", "-r", "xml")
        self.assertEqual(run.returncode, 4)
        document = ElementTree.fromstring(run.stdout)
        failures = [failure.text.strip() for failure in document.iter("Failure")]
        self.assertCountEqual(failures, [*EXPECTED, "orvdiff compared nothing: no report with a "
                                         "master was verified in this test case"])
        self.assertEqual(document.find("OverallResults").attrib["successes"], "6")  # of them 5 by sections that find reports

    def test_catch2_can_stop_at_the_first_failure(self):
        for report in ("Different", HOSTILE, "Missing"):
            os.remove(os.path.join(os.fsencode(self.server), b"suite", os.fsencode(report) + b".xml"))
        run = self.run_tests("orvdiff_catch2", "--abort")
        self.assertEqual((run.returncode, run.stderr), (1, b""))
        self.assertIn(b"compared nothing", run.stdout)

    def test_suite_without_reports_fails(self):
        for name in (b"Different", os.fsencode(HOSTILE), b"Missing", b"Right", b"NoPages"):
            os.remove(os.path.join(os.fsencode(self.server), b"suite", name + b".xml"))
        for program in ("orvdiff_googletest", "orvdiff_catch2"):
            self.assertEqual(self.run_tests(program).returncode, 1)

    def test_page_shows_what_a_reader_of_the_demo_sees(self):
        page = (SOURCE / "docs/test-frameworks.md").read_text()
        shown = re.search(r"\n((    .*\n)+.*\^)\n", page)[1].replace("\n    ", "\n")[4:]
        self.work = SOURCE / "examples/demo/server/work"
        self.assertIn(shown.encode(), self.run_tests("orvdiff_googletest").stdout)
