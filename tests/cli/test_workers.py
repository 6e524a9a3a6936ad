"""Runs in several processes: the same output for every number of them, and a process that dies,
hangs or is killed costs one pair."""

import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import unittest

from suite import SuiteTest

COUNTS = (1, 2, 7)
SANITIZED = bool(os.environ.get("ORVDIFF_SANITIZE"))

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
        kept = {path: timeless(path.read_text())
                for path in self.work.rglob("*") if path.is_file()}
        shutil.rmtree(self.work)
        self.work.mkdir()
        self.assertNotIn("orvdiff:", run.err)
        return run.status, timeless(run.out), kept


class Order(WorkersTest):
    def test_any_number_of_workers_gives_the_same_bytes(self):
        self.suite()
        one, *others = (self.outcome("-j", str(count)) for count in COUNTS)
        self.assertEqual(one[0], 1)
        for other in others:
            self.assertEqual(other, one)

    def test_the_demo_too(self):
        demo = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"]) / "examples/demo"
        shutil.copytree(demo, self.server.parent, dirs_exist_ok=True)
        (self.work / "README.md").unlink()
        one, *others = (self.outcome("-j", str(count)) for count in COUNTS)
        self.assertIn("65 pairs", one[1])
        for other in others:
            self.assertEqual(other, one)


class Losses(WorkersTest):
    def test_a_crash_costs_its_pair(self):
        self.suite(4)
        for name in ("R2", "R2_next"):
            self.pair("R2", "PDF", name + ".pdf")
        path = self.interpreter("""case "$3" in
            *R2.pdf) kill -ABRT $(cut -d' ' -f4 /proc/$PPID/stat);;  # the worker: parent's parent
            esac
            """)
        for count in COUNTS:
            record = self.work / f"r{count}"
            run = self.verify("-v", "-j", str(count), "--record", record, PATH=path)
            self.expect(run, 2, "signal 6", err="...")
            pairs = map(json.loads, (record / "pairs.jsonl").read_text().splitlines())
            self.assertEqual([pair["outputFile"]["evidence"] for pair in pairs
                              if pair["verdict"] == "crashed"], ["kept"])
            self.assertEqual(len(run.lines("crashed")), 1, run.out)
            self.assertEqual(len(run.lines("passed", "differs")), 6, run.out)

    def test_what_takes_too_long_is_ended_with_all_it_has_started(self):
        self.suite(3)
        self.pair("R1", "PDF", "R1.pdf")
        path = self.interpreter("setsid sleep 60 & echo $! > pid; sleep 8\n")
        run = self.verify("-v", "--timeout", "0.5", PATH=path)
        self.expect(run, 2, "took longer than 0.5 s (--timeout)", err="...")
        self.assertEqual(run.lines("timed-out"), [
            "timed-out ../suite/Masters/PDF/R1.pdf -> ../webcontent/bi/v5DebugPDF/R1.pdf"])
        self.assertEqual(len(run.lines("passed", "differs")), 4)
        self.wait_until(lambda: not is_running(int((self.work / "pid").read_text())))
        for options in ("verify", "-j", "1", "../suite"), ("compare", "pdf", "pid", "pid"):
            run = self.run_program(*options, "--timeout", "0.5", PATH=path)
            self.expect(run, 2, "took longer than 0.5 s (--timeout)", err="...")
            self.wait_until(lambda: not is_running(int((self.work / "pid").read_text())))

    @unittest.skipIf(SANITIZED, "a sanitizer's own memory breaks the limit")
    def test_memory_is_limited(self):
        self.report("Small", "x", "y")
        self.report("Large", b"<p>" + b"x" * 90_000_000, b"<p>" + b"y" * 90_000_000)
        run = self.verify("-v", "--memory", "200", "-f", "html")
        self.expect(run, 2, "out of memory", err="...")
        self.assertEqual([len(run.lines("differs")), len(run.lines("error"))], [1, 1])

    def test_a_parent_that_dies_takes_workers_and_scripts_along(self):
        self.report("A", "x", "y")
        self.pair("R", "PDF", "R.pdf")
        path = self.interpreter("echo $$ > pid; sleep 20\n")
        for number, status in ((signal.SIGKILL, -9), (signal.SIGTERM, 143), (signal.SIGINT, 130)):
            process = self.popen("verify", "-j", "1", "--record", f"r{number}", "../suite",
                                 stderr=None, stdout=subprocess.DEVNULL,
                                 env={**os.environ, "PATH": path})
            pid, pairs = self.work / "pid", self.work / f"r{number}/pairs.jsonl"
            # Until the pair before it is recorded.
            self.wait_until(lambda: pid.exists() and pid.read_text() and pairs.stat().st_size)
            children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text()
            started = int(pid.read_text()), int(children.split()[0])
            pid.unlink()
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=20), status)
            self.wait_until(lambda: not any(map(is_running, started)))
            record = json.loads((self.work / f"r{number}/run.json").read_text())
            self.assertFalse(record["complete"])
            self.assertRegex(self.run_program("show", f"r{number}").out,
                             r"(?s)^differs .*A\.html.*Interrupted")
