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
DEMO = pathlib.Path(__file__).parents[2] / "examples/demo"
EXPECTED = {"same": (0, {"passed"}), "other": (1, {"differs"})}  # of the suites
NEVER_ABSENT = {"read", "write", "spawn", "alloc", "worker-open", "worker-read", "worker-write",
                "worker-close", "worker-stat"}
LIMIT = 30  # seconds for one run

Fault = collections.namedtuple("Fault", "call at error span suite")
Finding = collections.namedtuple("Finding", "what call where")


class Bench:
    """Runs the program on suites of its own. One thread at a time."""

    def __init__(self, arguments, root):
        self.root = pathlib.Path(root)
        self.suites = suites.Suites(self.root / "suites", DEMO)
        self.report = self.root / "report"
        self.environment = {**os.environ, "LD_PRELOAD": arguments.shim, "TZ": "UTC0",
                            "ORVDIFF_FAULT_REPORT": str(self.report),
                            "PATH": f"{self.suites.root}/bin:{os.environ['PATH']}"}
        # One worker at a time: with more, which of them makes the N-th call is a matter of luck.
        self.command = [arguments.program, "verify", "-v", "-j", "1", "--no-groups",
                        "--summary", "../summary.xml",
                        "--harness-log", "../harness.log", "--record", "../record",
                        "--save-normalized", *suites.LOCATIONS]

    def run(self, suite, fault=None):
        """Returns the outcome and the lines of the injector's report."""
        self.report.unlink(missing_ok=True)
        self.suites.touch_folders(suite)
        injected = {"ORVDIFF_FAULT": ":".join(map(str, (
            fault.call, fault.at, getattr(errno, fault.error), fault.span)))} if fault else {}
        try:
            done = subprocess.run(self.command, cwd=self.suites.work(suite),
                                  env={**self.environment, **injected}, capture_output=True,
                                  timeout=LIMIT, check=False, stdin=subprocess.DEVNULL)
        except subprocess.TimeoutExpired as expired:
            done = subprocess.CompletedProcess([], None, expired.stdout or b"", expired.stderr or b"")
        outcome = judging.Outcome(done.returncode, done.stdout.decode(errors="replace"),
                                  done.stderr.decode(errors="replace"), self.suites.take_new(suite))
        report = self.report.read_text().splitlines() if self.report.exists() else []
        return outcome, report

    def undisturbed(self, suite):
        """The outcome to compare others with, and for each kind of call the places in the code that
        the calls come from, in order."""
        outcome, report = self.run(suite)
        places = collections.defaultdict(list)
        for line in report:
            _, call, place = line.split()
            places[call].append(place)
        if (outcome.status, set(outcome.verdicts.values())) != EXPECTED[suite]:
            sys.exit(f"the suite '{suite}' is not as it should be:\n{outcome.out}{outcome.err}")
        if not NEVER_ABSENT <= places.keys():
            sys.exit(f"calls of these kinds are not caught: {NEVER_ABSENT - places.keys()}")
        return outcome, places

    def judge(self, faults, undisturbed):
        """Each fault with what is found, and whether the call was reached."""
        for fault in faults:
            outcome, report = self.run(fault.suite, fault)
            wrong = judging.faults_of(outcome, undisturbed[fault.suite][0], fault)
            yield fault, [Finding(what, fault.call, describe(report)) for what in wrong], bool(report)


def faults_of(undisturbed, arguments):
    """The first call from each place in the code, or every call, failing in every way; or a sample
    of those, the same one each time, with the first and the last of every kind of call. Kinds with
    more faults get more of it, but not in proportion, or allocations would crowd out the rest."""
    for suite, call in itertools.product(undisturbed, arguments.calls):
        places = undisturbed[suite][1][call]
        numbers = range(1, len(places) + 1)
        if not arguments.all:
            numbers = sorted(dict(zip(reversed(places), reversed(numbers))).values())
        faults = [Fault(call, *how, suite)
                  for how in itertools.product(numbers, ERRORS[call], SPANS)]
        points = int(min(len(faults), 1 + arguments.sample * math.sqrt(len(faults))))
        yield from (faults[i * (len(faults) - 1) // max(1, points - 1)] for i in range(points))


@functools.lru_cache(maxsize=None)
def lines_of(module, offset):
    """The source lines of a frame, inlined ones first, without those in other projects' headers."""
    text = subprocess.run(["addr2line", "-i", "-e", module, "0x" + offset], capture_output=True,
                          text=True, check=False).stdout
    return [line.rpartition("/")[2].partition(" ")[0] for line in text.splitlines()
            if "/usr/" not in line and "?" not in line]


def describe(report):
    """Where the failing call came from, innermost first, as "File.cpp:12 < Caller.cpp:34"."""
    frames = (line.split()[1:] for line in report if line.startswith("hit "))
    return " < ".join(itertools.islice((line for frame in frames for line in lines_of(*frame)), 5))


def inject(faults, benches, undisturbed):
    """Prints what comes of the faults; returns whether something is wrong."""
    shares = [faults[i::len(benches)] for i in range(len(benches))]
    with concurrent.futures.ThreadPoolExecutor() as pool:
        judged = [*itertools.chain(*pool.map(
            lambda bench, share: list(bench.judge(share, undisturbed)), benches, shares))]
    groups = collections.defaultdict(list)
    for fault, findings, _ in judged:
        for finding in findings:
            groups[finding].append(fault)
    wrong = 0
    for finding, causes in sorted(groups.items()):
        reason = judging.toleration(*finding)
        wrong += not reason
        print(f"{finding.call}: {finding.what}\n    {len(causes):5} x {finding.where}\n    "
              + (f"tolerated: {reason}" if reason else f"--only {':'.join(map(str, causes[0]))}"))
    print(f"{len(judged)} faults injected, {sum(not hit for _, _, hit in judged)} of them not "
          f"reached; {wrong} findings")
    return wrong > 0


def show(bench, fault, undisturbed):
    """Prints one run in full; returns whether something is wrong with it."""
    outcome, report = bench.run(fault.suite, fault)
    print(f"at {describe(report)}\n{outcome.out}{outcome.err}")
    for path in sorted(outcome.files.keys() | undisturbed.files.keys()):
        if outcome.files.get(path) != undisturbed.files.get(path):
            content = outcome.files.get(path, b"(none)").decode(errors="replace")
            print(f"--- {path}, which differs from the undisturbed run's:\n{content}")
    wrong = judging.faults_of(outcome, undisturbed, fault)
    print(f"status {outcome.status}; {'; '.join(sorted(wrong)) or 'nothing wrong'}")
    return bool(wrong)


def to_fault(text):
    call, at, error, span, suite = text.split(":")
    return Fault(call, int(at), error, span, suite)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", type=os.path.realpath, required=True)
    parser.add_argument("--shim", type=os.path.realpath, required=True,
                        help="the library that injects faults")
    parser.add_argument("--all", action="store_true",
                        help="every call, not only the first from each place in the code")
    parser.add_argument("--sample", type=float, metavar="DENSITY", default=math.inf,
                        help="of N faults of a kind, only DENSITY times the square root of N")
    parser.add_argument("--calls", nargs="+", choices=ERRORS, default=list(ERRORS))
    parser.add_argument("--only", type=to_fault, metavar="CALL:N:ERROR:SPAN:SUITE",
                        help="show this run")
    parser.add_argument("-j", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="orvdiff-faults-") as root:
        benches = [Bench(arguments, f"{root}/{number}") for number in range(arguments.j)]
        undisturbed = {suite: benches[0].undisturbed(suite) for suite in EXPECTED}
        if arguments.only:
            return show(benches[0], arguments.only, undisturbed[arguments.only.suite][0])
        return inject(list(faults_of(undisturbed, arguments)), benches, undisturbed)


if __name__ == "__main__":
    sys.exit(main())
