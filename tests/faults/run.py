#!/usr/bin/env python3
"""Makes system calls and allocations of `orvdiff verify` fail, one per run, and compares each run
with the same one undisturbed: status 0 only when everything was compared, no wrong verdict, no
crash, no file that looks complete and is not. Groups what it finds, and exits with 1 if that is
anything but the findings that judging.py tolerates."""

import argparse
import collections
import concurrent.futures
import errno
import functools
import itertools
import math
import os
import pathlib
import queue
import subprocess
import sys
import tempfile

import judging
import suites

# How the calls fail, and for how long: "lasts" is the disk that stays full, "once" the error that
# comes only once and is easily overlooked.
ERRORS = {
    "open": ("EMFILE", "EIO", "ENOMEM", "ENOSPC"), "read": ("EIO", "ENOMEM"), "seek": ("EIO",),
    "write": ("ENOSPC", "EIO"), "close": ("EIO", "ENOSPC"), "stat": ("EIO", "ENOMEM"),
    "name": ("EIO", "ENOSPC"), "spawn": ("ENOMEM",), "alloc": ("ENOMEM",),
}
ERRORS.update({f"worker-{call}": errors for call, errors in ERRORS.items()})
SPANS = ("once", "lasts")
SUITES = ("same", "other")
LIMIT = 30  # seconds for one run

Fault = collections.namedtuple("Fault", "call at error span suite")


class Bench:
    """Runs the program on suites of its own. One thread at a time."""

    def __init__(self, arguments, root, formats):
        self.program = arguments.program
        self.shim = arguments.shim
        self.root = pathlib.Path(root)
        self.suites = suites.Suites(self.root / "suites", formats)
        self.report = self.root / "report"
        # One worker at a time: with more, which of them makes the N-th call is a matter of luck.
        self.command = [self.program, "verify", "-v", "-j", "1", "--summary", "../summary.xml",
                        "--harness-log", "../harness.log", "--record", "../record",
                        "--save-normalized", *suites.OPTIONS]

    def run(self, suite, fault=None):
        """Returns the outcome and the lines of the injector's report."""
        self.report.unlink(missing_ok=True)
        self.suites.touch_folders()
        environment = {**os.environ, "LD_PRELOAD": self.shim, "TZ": "UTC0",
                       "ORVDIFF_FAULT_REPORT": str(self.report),
                       "PATH": f"{self.suites.root}/bin:{os.environ['PATH']}"}
        if fault:
            number = getattr(errno, fault.error)
            environment["ORVDIFF_FAULT"] = f"{fault.call}:{fault.at}:{number}:{fault.span}"
        try:
            done = subprocess.run([*self.command, "../" + suite], cwd=self.suites.work,
                                  env=environment, capture_output=True, timeout=LIMIT, check=False,
                                  stdin=subprocess.DEVNULL)
        except subprocess.TimeoutExpired as expired:
            done = subprocess.CompletedProcess([], None, expired.stdout or b"",
                                               expired.stderr or b"")
        outcome = judging.Outcome(done.returncode, done.stdout.decode(errors="replace"),
                                  done.stderr.decode(errors="replace"), self.suites.take_new())
        report = self.report.read_text().splitlines() if self.report.exists() else []
        return outcome, report


def undisturbed_run(bench, suite, formats):
    """The outcome to compare others with, and for each kind of call the places in the code that the
    calls come from, in order."""
    outcome, report = bench.run(suite)
    places = {call: [] for call in ERRORS}
    for line in report:
        _, call, place = line.split()
        places[call].append(place)
    wanted = {"same": (0, {"passed"}), "other": (1, {"differs"})}[suite]
    if (outcome.status, set(outcome.verdicts.values())) != wanted:
        sys.exit(f"the suite '{suite}' is not as it should be:\n{outcome.out}{outcome.err}")
    if len(outcome.verdicts) < len(formats) or not all(
            places[call] for call in ("read", "write", "spawn", "alloc", "worker-open", "worker-read",
                                      "worker-write", "worker-close", "worker-stat")):
        sys.exit(f"the suite '{suite}' lacks formats, or calls are not caught")
    return outcome, places


def faults_of(places, calls, every):
    """Lets the first call from each place in the code fail, or every call, in every way."""
    for suite, call in itertools.product(places, calls):
        numbers = range(1, len(places[suite][call]) + 1)
        if not every:
            first = {place: at for at, place in zip(reversed(numbers), reversed(places[suite][call]))}
            numbers = sorted(first.values())
        for at, error, span in itertools.product(numbers, ERRORS[call], SPANS):
            yield Fault(call, at, error, span, suite)


def sample(faults, size):
    """About `size` of the faults, the same ones each time: of every kind of call the first, the last
    and some between. Kinds with more faults get more, but not in proportion, or allocations would
    crowd out the rest."""
    groups = [list(group) for _, group in itertools.groupby(
        faults, lambda fault: (fault.suite, fault.call))]
    total = sum(math.sqrt(len(group)) for group in groups)
    for group in groups:
        points = min(len(group), 1 + round(size * math.sqrt(len(group)) / total))
        for point in range(points):
            yield group[point * (len(group) - 1) // max(1, points - 1)]


def callers(report):
    """Where the failing call came from: module and offset of functions of this project's own."""
    return tuple(tuple(line.split()[1:]) for line in report if line.startswith("hit "))


@functools.lru_cache(maxsize=None)
def lines_of(frame):
    """The source lines of a frame, inlined ones first, without those in other projects' headers."""
    module, offset = frame
    text = subprocess.run(["addr2line", "-i", "-e", module, "0x" + offset], capture_output=True,
                          text=True, check=False).stdout
    return [line.rpartition("/")[2].partition(" ")[0] for line in text.splitlines()
            if "/usr/" not in line and "?" not in line]


def describe(frames):
    """The innermost lines, as "File.cpp:12 < Caller.cpp:34"."""
    return " < ".join(itertools.islice((line for frame in frames for line in lines_of(frame)), 5))


def to_text(fault):
    return ":".join(map(str, fault))


def to_fault(text):
    call, at, error, span, suite = text.split(":")
    return Fault(call, int(at), error, span, suite)


class Findings:
    """What was found, grouped by finding, call and place."""

    def __init__(self):
        self._groups = collections.defaultdict(list)
        self.runs = 0
        self.idle = 0  # runs in which the call was not reached

    def add(self, fault, faults, report):
        self.runs += 1
        self.idle += not report
        for what in faults:
            self._groups[what, fault.call, callers(report)].append(fault)

    def print(self):
        """Shows them all; True when there are any that are not tolerated."""
        groups = collections.defaultdict(lambda: collections.defaultdict(list))
        tolerated = collections.Counter()
        for (what, call, frames), faults in self._groups.items():
            where = describe(frames)
            for fault in faults:
                reason = judging.toleration(what, f"{call}:{fault.span}", where)
                if reason:
                    tolerated[reason] += 1
                else:
                    groups[what, call][where].append(fault)
        for (what, call), places in sorted(groups.items()):
            print(f"{call}: {what}")
            for where, faults in sorted(places.items()):
                errors = sorted({f"{fault.error} {fault.span}" for fault in faults})
                print(f"    {len(faults):5} x {', '.join(errors)}: {where}\n"
                      f"          --only {to_text(faults[0])}")
        for reason, count in tolerated.items():
            print(f"tolerated: {count} x {reason}")
        print(f"{self.runs} faults injected, {self.idle} of them not reached; "
              f"{sum(map(len, groups.values()))} findings")
        return bool(groups)


def inject(faults, benches, undisturbed, findings):
    free = queue.SimpleQueue()
    for bench in benches:
        free.put(bench)

    def one(fault):
        bench = free.get()
        try:
            outcome, report = bench.run(fault.suite, fault)
        finally:
            free.put(bench)
        wrong = judging.faults_of(outcome, undisturbed[fault.suite], fault)
        return fault, wrong, report

    with concurrent.futures.ThreadPoolExecutor(len(benches)) as pool:
        for batch in iter(lambda: list(itertools.islice(faults, 1000)), []):
            for result in pool.map(one, batch):
                findings.add(*result)
            if sys.stderr.isatty():
                print(f"\r{findings.runs} runs", end="", file=sys.stderr, flush=True)


def show(bench, fault, undisturbed):
    """Prints one run in full. Returns 1 when something is wrong with it, else 0."""
    outcome, report = bench.run(fault.suite, fault)
    print(f"at {describe(callers(report))}\n{outcome.out}{outcome.err}")
    for path in sorted(outcome.files.keys() | undisturbed.files.keys()):
        content = outcome.files.get(path)
        if content is None:
            print(f"--- no {path}")
        elif content != undisturbed.files.get(path):
            print(f"--- {path}, which differs from the undisturbed run's:\n{content.decode(errors='replace')}")
    wrong = judging.faults_of(outcome, undisturbed, fault)
    print(f"status {outcome.status}; {'; '.join(wrong) or 'nothing wrong'}")
    return 1 if wrong else 0


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--shim", required=True, help="the library that injects faults")
    parser.add_argument("--all", action="store_true",
                        help="every call, not only the first from each place in the code")
    parser.add_argument("--sample", type=int, metavar="COUNT", help="about so many places only")
    parser.add_argument("--calls", nargs="+", choices=ERRORS, default=list(ERRORS))
    parser.add_argument("--only", type=to_fault, metavar="CALL:N:ERROR:SPAN:SUITE",
                        help="show this run")
    parser.add_argument("-j", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    arguments.program = os.path.realpath(arguments.program)
    arguments.shim = os.path.realpath(arguments.shim)
    return arguments


def main():
    arguments = parse_arguments()
    formats = suites.formats_of(arguments.program)
    with tempfile.TemporaryDirectory(prefix="orvdiff-faults-") as root:
        benches = [Bench(arguments, f"{root}/{number}", formats) for number in range(arguments.j)]
        runs = {suite: undisturbed_run(benches[0], suite, formats) for suite in SUITES}
        undisturbed = {suite: outcome for suite, (outcome, _) in runs.items()}
        places = {suite: of_suite for suite, (_, of_suite) in runs.items()}
        if arguments.only:
            return show(benches[0], arguments.only, undisturbed[arguments.only.suite])
        faults = faults_of(places, arguments.calls, arguments.all)
        if arguments.sample:
            faults = sample(faults, arguments.sample)
        findings = Findings()
        inject(faults, benches, undisturbed, findings)
        return 1 if findings.print() else 0


if __name__ == "__main__":
    sys.exit(main())
