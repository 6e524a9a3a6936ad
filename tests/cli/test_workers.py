"""Runs in several processes: the same output for every number of them, and a process that dies,
hangs or is killed costs one pair."""

import json
import os
import pathlib
import random
import re
import signal
import subprocess
import time
import unittest

from suite import PROGRAM, SuiteTest

COUNTS = (1, 2, 7)
# A schema whose pattern Xerces matches by recursion: a long text overflows the stack.
DEEP_SCHEMA = """<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" targetNamespace="urn:deep">
<xs:element name="a"><xs:simpleType><xs:restriction base="xs:string">
<xs:pattern value="([a-z]|[0-9])*x"/></xs:restriction></xs:simpleType></xs:element></xs:schema>"""


def timeless(text):
    """A text of the program without the times in it."""
    text = re.sub(r'"(seconds|cpuSeconds)":[-+.e0-9]+', r'"\1":0', text)
    text = re.sub(r"\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\dZ?", "TIME", text)
    return re.sub(r"\d+\.\d+ ?s|\d+ ms|\d\d:\d\d:\d\d(\.\d+)?", "TIME", text)


def is_running(pid):
    """Whether a process is there and no mere zombie, which is whoever adopted it to bury."""
    try:
        stat = pathlib.Path(f"/proc/{pid}/stat").read_text()
    except FileNotFoundError:
        return False
    return stat.rpartition(") ")[2][0] != "Z"


def children(pid):
    return [int(child) for child in
            pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]


class WorkersTest(SuiteTest):
    def suite(self, reports=12):
        for i in range(reports):
            self.report(f"R{i}", f"<p>{i}</p>", f"<p>{i if i % 4 else i + 1}</p>")
        self.report("R1_2", "<p>a</p>", "<p>b</p>")
        self.report("Lonely")

    def outcome(self, *options):
        """Everything that a run leaves, times aside."""
        run = self.verify("-v", *options, "--summary", "s.xml", "--harness-log", "h.log",
                          "--save-normalized", "--record", "record")
        kept = {}
        for path in sorted((self.server / "work").rglob("*")):
            if path.is_file():
                kept[str(path)] = timeless(path.read_text())
                path.unlink()
        for folder in ("record/evidence", "record"):
            (self.server / "work" / folder).rmdir()
        self.assertNotIn("orvdiff:", run.err)
        return run.status, timeless(run.out), kept

    def dying(self):
        """A suite in which one output kills the XML parser, and options to verify it."""
        self.suite(4)
        schema = self.write("work/deep.xsd", DEEP_SCHEMA)
        text = '<a xmlns="urn:deep">' + "y" * 400_000 + "x</a>"
        self.pair("R2", "DataXML", "v5DebugDataXML", "R2.xml", text, text)
        text = '<a xmlns="urn:deep">yx</a>'
        self.pair("R2", "DataXML", "v5DebugDataXML", "R2_next.xml", text, text)
        return ("--layout-schema", os.fsdecode(schema), "--layout-namespace", "urn:deep")


class Order(WorkersTest):
    def test_any_number_of_workers_gives_the_same_bytes(self):
        self.suite()
        one, *others = (self.outcome("-j", str(count)) for count in COUNTS)
        self.assertEqual(one[0], 1)
        for other in others:
            self.assertEqual(other, one)

    def test_a_pair_counts_once_for_the_report_with_the_longer_name(self):
        self.report("A", "x", "y")
        self.report("A_x", "x", "y")
        # Begins with the name A_x, which does not find it: with the suffix that is "A_x*_x.cgs".
        self.pair("A", "", "c", "A_x.cgs", "x", "y")
        run = self.verify("-v", "--cgs-output-dir", "c", "--cgs-suffix", "x")
        self.assertEqual(len(run.lines("differs")), 3, run.out)


class Losses(WorkersTest):
    def test_a_crash_costs_its_pair(self):
        options = self.dying()
        for count in COUNTS:
            run = self.verify("-v", "-j", str(count), *options)
            self.assertEqual(run.status, 2, run.out)
            self.assertEqual(len(run.lines("crashed")), 1, run.out)
            self.assertIn("signal 11", run.out)
            self.assertEqual(len(run.lines("passed", "differs")), 6, run.out)

    def test_what_takes_too_long_is_ended_with_all_it_has_started(self):
        self.suite(3)
        self.pair("R1", "PDF", "v5DebugPDF", "R1.pdf", "x", "y")
        marker = self.server / "left"
        path = self.interpreter(f"(setsid sleep 9 && touch {marker}) & echo $! > pid; sleep 8\n")
        run = self.verify("-v", "--timeout", "0.5", PATH=path)
        self.assertEqual(run.status, 2)
        self.assertEqual(run.lines("timed-out"), [
            "timed-out ../suite/Masters/PDF/R1.pdf -> ../webcontent/bi/v5DebugPDF/R1.pdf"])
        self.assertIn("took longer than 0.5 s (--timeout)", run.out)
        self.assertEqual(len(run.lines("passed", "differs")), 4)
        left = int((self.server / "work/pid").read_text())
        self.assertFalse(is_running(left), "a process is left")

    def test_memory_is_limited(self):
        self.report("Small", "x", "y")
        self.report("Large", b"<p>" + b"x" * 90_000_000, b"<p>" + b"y" * 90_000_000)
        run = self.verify("-v", "--memory", "200", "-f", "html")
        self.assertEqual(run.status, 2)
        self.assertEqual(len(run.lines("differs")), 1, run.out)
        self.assertEqual(len(run.lines("error")), 1, run.out)
        self.assertIn("out of memory", run.out)

    def test_workers_that_are_killed_cost_a_pair_each_and_no_verdict(self):
        self.suite(30)
        whole = set(self.verify("-v").lines("passed", "differs"))
        randomly = random.Random(1)
        for _ in range(12):
            process = subprocess.Popen([PROGRAM, "verify", "-v", "-j", "3", "../suite"],
                                       cwd=self.server / "work", stdout=subprocess.PIPE)
            time.sleep(randomly.uniform(0, 0.06))
            try:
                os.kill(randomly.choice(children(process.pid)), signal.SIGKILL)
            except (IndexError, ProcessLookupError, FileNotFoundError):
                pass  # it had not started any, or was done
            lines = process.communicate()[0].decode().splitlines()
            found = {line for line in lines if line.startswith(("passed", "differs"))}
            crashed = {line.split(maxsplit=1)[1] for line in lines if line.startswith("crashed")}
            self.assertLessEqual(found, whole)
            self.assertEqual({line.split(maxsplit=1)[1] for line in whole - found}, crashed)
            self.assertEqual(process.returncode, 2 if crashed else 1)

    def test_a_parent_that_dies_takes_workers_and_scripts_along(self):
        self.report("A", "x", "y")
        self.pair("R", "PDF", "v5DebugPDF", "R.pdf", "x", "y")
        path = self.interpreter("echo $$ > pid; sleep 20\n")
        for number, status in ((signal.SIGKILL, -9), (signal.SIGTERM, 143), (signal.SIGINT, 130)):
            process = subprocess.Popen([PROGRAM, "verify", "-j", "1", "--record", f"r{number}",
                                        "../suite"],
                                       cwd=self.server / "work", stdout=subprocess.DEVNULL,
                                       env={**os.environ, "PATH": path})
            pid = self.server / "work/pid"
            while not pid.exists() or not pid.read_text():
                time.sleep(0.01)
            for _ in range(500):  # until the pair before it is recorded
                if (self.server / f"work/r{number}/pairs.jsonl").stat().st_size:
                    break
                time.sleep(0.01)
            script = int(pid.read_text())
            worker = children(process.pid)[0]
            pid.unlink()
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=20), status)
            for _ in range(200):
                if not any(is_running(it) for it in (worker, script)):
                    break
                time.sleep(0.01)
            else:
                self.fail("a process is left")
            record = json.loads((self.server / f"work/r{number}/run.json").read_text())
            self.assertFalse(record["complete"])
            shown = self.run_program("show", f"r{number}").out
            self.assertRegex(shown, r"(?s)^differs .*A\.html.*Interrupted")


if __name__ == "__main__":
    unittest.main()
