"""The plugin of pytest, in pytest: records by hand for all that can stand in one, and real runs."""

import os
import pathlib
import shutil
import subprocess
import sys
import unittest
from xml.etree import ElementTree

SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
sys.path += [str(SOURCE / "tests/cli"), str(SOURCE / "tests/browser")]

from records import difference, line, pair, span, text_hunk, value_hunk, write_record  # noqa: E402
from suite import PROGRAM, SuiteTest  # noqa: E402

PYTHONS = [sys.executable, "/usr/bin/python3"]  # Debian's is the one that has Debian's pytest


def setUpModule():
    global PYTHON
    for PYTHON in PYTHONS:
        probe = subprocess.run([PYTHON, "-c", "import pytest, xdist"], stderr=subprocess.DEVNULL)
        if probe.returncode == 0:
            return
    if "ORVDIFF_REQUIRE_TOOLS" in os.environ:
        raise AssertionError("needs python3-pytest and python3-pytest-xdist")
    raise unittest.SkipTest("needs python3-pytest and python3-pytest-xdist")


class Plugin(SuiteTest):
    def pytest(self, *arguments, status=1):
        command = [PYTHON, "-m", "pytest", "-p", "pytest_orvdiff", "-p", "no:cacheprovider", "-rA",
                   f"--orvdiff-program={PROGRAM}", "--junitxml=junit.xml", *arguments]
        environment = {**os.environ, "PYTHONPATH": str(SOURCE / "cli/pytest"), "TMPDIR": str(self.work),
                       "PYTHONDONTWRITEBYTECODE": "1"}
        run = subprocess.run(command, cwd=self.work, env=environment, capture_output=True, text=True)
        self.assertEqual(run.returncode, status, run.stdout + run.stderr)
        return run.stdout + run.stderr

    def outcomes(self):
        """What became of each test, and the text of what did not pass."""
        cases = ElementTree.parse(self.work / "junit.xml").iter("testcase")
        found = {}
        for case in cases:
            element = next((each for each in case if each.tag in ("failure", "error", "skipped")), None)
            found[case.get("name")] = ("passed", "") if element is None else (element.tag, element.text)
        return found


class Records(Plugin):
    def test_each_verdict_has_its_outcome(self):
        expected = {"passed": "passed", "differs": "failure", "missing": "failure", "failed": "failure",
                    "stale": "failure", "error": "error", "timed-out": "error", "crashed": "error",
                    "partly": "error", "not run": "skipped", "known": "skipped", "invented": "error"}
        known = {"verdict": "differs", "reasons": [{"why": "rounding", "until": "2027-01-31", "link": "", "place": ""}]}
        pairs = [pair(f"P{index}", verdict=verdict, known=known, message="why\x1b", printed="said\nso\t")
                 for index, verdict in enumerate(expected)]
        write_record(self.work / "night", pairs, unverified=["../suite/R.xml"], status=2,
                     findings=[{"kind": "orphans", "count": 3}])
        output = self.pytest("night")
        self.assertIn("OrvdiffWarning: not accounted for: orphans 3;", output)
        outcomes = self.outcomes()
        self.assertEqual(outcomes.pop("run")[0], "passed")
        self.assertEqual(outcomes.pop("report[../suite/R.xml]")[0], "skipped")
        self.assertEqual({name: outcome for name, (outcome, _) in outcomes.items()},
                         {f"html[../suite/sales/Masters/P{index}.html]": outcome
                          for index, outcome in enumerate(expected.values())})
        for verdict, (outcome, text) in zip(expected, outcomes.values()):
            if outcome in ("failure", "error"):
                self.assertIn(f"{verdict}  ../suite/sales/Masters/", text)
                self.assertIn("\nwhy\\x1B", text)
        self.assertEqual(output.count("said\nso\\t"), len(expected) - 2)  # not of what was skipped or expected

    def test_difference_is_shown(self):
        lines = [line("removed", 9, 0, span("a", "changed"), cutBefore=True, omitted=2),
                 line("added", 0, 10, span("\u5024 "), span("b\\", "changed"), span({"hex": "ff"}), cutAfter=True)]
        hunks = [text_hunk("g", 9, "12", "21", ("Id", "x")), {"place": "", "groups": ["h"], "lines": lines},
                 value_hunk("i", "$.a\n", "1", None), value_hunk("j", "$.b", "1", "2")]
        write_record(self.work / "night", [pair("R", verdict="differs", difference=difference(
            "text", hunks, ["a note"], 5) | {"coarse": True})])
        expected = [
            "a note",
            " 8  8   <tr>",
            " 9    - <td>Total</td><td>12</td>⟨Id⟩",
            "                          ^^",
            "    9 + <td>Total</td><td>21</td>⟨Id⟩",
            "                          ^^",
            "10 10   </tr>",
            "--",
            "9    - …a",
            "9    - … 2 more",
            "  10 + \u5024 b\\\\\\xFF…",
            "          ^^^",
            "$.a\\n",
            "3 - 1",
            "2 more differences (-v)",
            "too large or too different to be compared in every detail"]
        self.assertIn("\n".join(expected), self.pytest("night"))
        self.assertIn("$.b\n3   - 1\n  3 + 2\n1 more difference\n", self.pytest("night", "-v"))

    def test_names_choose_tests_whatever_they_hold(self):
        hostile = "a::b]/[c\n\x1b"
        write_record(self.work / "night", [pair(hostile), pair({"hex": "ff2e"}, "csv"), pair("R", "csv")])
        name = r"html[../suite/sales/Masters/a::b]/[c\n\x1B.html]"
        for count, arguments in {1: [f"night/pairs.jsonl::{name}"], 2: ["night/pairs.jsonl::csv"],
                                 3: ["-n1", "night", "-k", "not run and Masters"]}.items():
            self.assertIn(f" {count} passed", self.pytest(*arguments, status=0))
        self.assertEqual(set(self.outcomes()) - {name},
                         {r"csv[../suite/sales/Masters/\xFF.]", "csv[../suite/sales/Masters/R.csv]"})

    def test_run_that_is_not_whole_is_an_error(self):
        passed = [pair("R")]
        shards = {"indices": [1, 2], "count": 3}
        cases = {"interrupted": ("the run was interrupted", passed, {"complete": False}),
                 "cut": ("holds 1 pairs, and run.json counts 0", passed, {}),
                 "shards": ("only 2 of 3 shards", passed, {"shards": shards}),
                 "empty": ("nothing was verified", [], {}),
                 "strict": ("ended with status 2;", passed, {"status": 2}),
                 "no_script": ("ended with status 2;", [pair("R", verdict="not run")], {"status": 2}),
                 "notes": ("a \\x1Bnote", passed, {"notes": ["a \x1bnote"]})}
        for name, (_, pairs, run) in cases.items():
            write_record(self.work / name, pairs, **run)
        shutil.copy(self.work / "empty/run.json", self.work / "cut/run.json")
        output = self.pytest(*cases)
        for name, (reason, _, _) in cases.items():
            self.assertIn(f"ERROR {name}/pairs.jsonl::run\n", output)
            self.assertIn(reason, output)

    def test_what_is_no_record_is_no_pass(self):
        cases = {"version": ("run.json", '{"version": 2}', "a record of version 2; this plugin reads version 1"),
                 "line": ("pairs.jsonl", '{"report"\n', "Expecting ':' delimiter"),
                 "member": ("pairs.jsonl", "{}\n", "there is no 'verdict'"),
                 "empty": ("run.json", "", "Expecting value")}
        for name, (file, content, _) in cases.items():
            write_record(self.work / name, [pair("R")])
            (self.work / name / file).write_text(content)
        output = self.pytest(*cases, status=2)
        for name, (_, _, reason) in cases.items():
            self.assertIn(f"/{name}/pairs.jsonl cannot be read as part of a record: {reason}", output)

    def test_record_beside_other_tests_is_left_alone(self):
        write_record(self.work / "old", [pair("R", verdict="differs")])
        (self.work / "test_other.py").write_text("def test_other(): pass\n")
        self.assertIn(" 1 passed", self.pytest(".", status=0))


class Runs(Plugin):
    def test_suite_is_verified_once_and_its_names_stay(self):
        self.report("Wrong", "<p>1", "<p>2")
        self.report("Right", "x", "x")
        names = []
        for workers in ((), ("-n", "2")):
            output = self.pytest("--orvdiff-verify=--newer-than 2001-01-01T00:00 ../suite", *workers)
            self.assertIn("FAILED orvdiff-verify::html[../suite/Masters/Wrong.html]", output)
            self.assertIn("- <p>1", output)
            self.assertEqual([*self.work.glob("pytest-orvdiff-*")], [])
            names.append(self.outcomes().keys())
        self.assertEqual(*names)

    def test_no_record_ends_with_the_reason(self):
        for arguments, reason in {("../nowhere",): "../nowhere does not exist", ("--record r ..",): "of its own",
                                  ("..", "--orvdiff-program=gone"): "cannot run gone: No such file"}.items():
            self.assertIn(reason, self.pytest("--orvdiff-verify", *arguments, status=4))
