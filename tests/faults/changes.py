#!/usr/bin/env python3
"""Stop `orvdiff accept`, `remove` and `undo` everywhere.

Kills the program before each of its system calls, and makes each of them fail, one per run, while it
changes three masters. After each run every master must be as it was or as it was to be, the log must
tell, and a repeated command and `undo` must bring everything to its end."""

import argparse
import errno
import itertools
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

# The kinds of calls that fail, and how.
ERRORS = {
    "open": ("EACCES", "EMFILE"), "read": ("EIO",), "write": ("ENOSPC", "EIO"), "close": ("EIO",),
    "stat": ("EACCES",), "name": ("EACCES", "EIO", "ENOSPC"),
}
SPANS = ("once", "lasts")
REPORTS = ("one/A", "one/B", "two/C")
LIMIT = 30  # seconds for one run


class Suite:
    """Three masters and what they are to become: another content, or nothing at all."""

    def __init__(self, root, arguments, verb):
        self.root, self.program, self.shim = pathlib.Path(root), arguments.program, arguments.shim
        self.report = self.root / "calls"
        removes = verb == "remove"
        self.command = ["remove", "--orphans", "-y", "../suite"] if removes else \
                       ["accept", "-y", "--from", "../record"]
        for name in ("work", "webcontent/bi/v5DebugHTML", "suite/one/Masters", "suite/two/Masters"):
            (self.root / name).mkdir(parents=True)
        for report in REPORTS:
            folder, name = report.split("/")
            (self.root / f"suite/{folder}/{'Other' if removes else name}.xml").write_text("a report")
            self.master(report).write_text(f"<p>old {name}</p>")
            (self.root / f"webcontent/bi/v5DebugHTML/{name}.html").write_text(f"<p>new {name}</p>")
        self.old = self.masters()
        self.new = {report: None if removes else text.replace("old", "new")
                    for report, text in self.old.items()}
        self.run("verify", "--allow-none", "--record", "../record", "../suite")

    def master(self, report):
        folder, name = report.split("/")
        return self.root / f"suite/{folder}/Masters/{name}.html"

    def masters(self):
        return {report: path.read_text() if (path := self.master(report)).exists() else None
                for report in REPORTS}

    def run(self, *command, fault=None):
        environment = {**os.environ, "TZ": "UTC0"}
        if fault is not None:
            environment.update(LD_PRELOAD=self.shim, ORVDIFF_FAULT_REPORT=str(self.report))
            environment.update({"ORVDIFF_FAULT": fault} if fault else {})
        return subprocess.run([self.program, *command], cwd=self.root / "work", env=environment,
                              capture_output=True, text=True, errors="replace", timeout=LIMIT,
                              check=False, stdin=subprocess.DEVNULL)

    def reset(self):
        """Everything as it was at first, without a journal."""
        shutil.rmtree(self.root / "suite/.orvdiff", ignore_errors=True)
        for left in self.leftovers():
            left.unlink()
        for report, text in self.old.items():
            self.master(report).write_text(text)

    def leftovers(self):
        return [*self.root.glob("suite/*/Masters/.*")]

    def undo_all(self):
        """Takes back what the log lists; returns the last run, which found nothing more to undo."""
        for _ in range(5):
            done = self.run("undo")
            if done.status_is_end:
                break
        return done


def is_end(run):
    return run.returncode == 2 and ("nothing to undo" in run.stderr or "no journal" in run.stderr)


subprocess.CompletedProcess.status_is_end = property(is_end)


def is_tolerated(plan, sentence, command):
    """The audit takes a folder of masters that it cannot look at for one that is not there, after
    the search for reports has read it: it may miss orphans, and never makes any."""
    return command[0] == "remove" and plan.startswith("stat:") and sentence.startswith("ends with 0")


def faults_after(suite, done, command, is_mute):
    """What is wrong after a command that was killed, or one of whose calls failed."""
    masters = suite.masters()
    wanted = suite.new if command == suite.command else suite.old
    changed = [report for report in REPORTS if masters[report] == wanted[report]]
    if any(masters[report] not in (suite.old[report], suite.new[report]) for report in REPORTS):
        yield f"a master is neither old nor new: {masters}"
    if done.returncode == 0 and len(changed) < len(REPORTS):
        yield "ends with 0, and not all masters are changed"
    if done.returncode > 0 and not (done.stderr.strip() or ": " in done.stdout or is_mute):
        yield f"ends with {done.returncode} and no word why"
    if done.returncode not in (0, 1, 2, -9):
        yield f"ends with {done.returncode}"
    log = suite.run("log")
    if changed and (log.returncode != 0 or command[0] not in log.stdout):
        yield f"the log does not know: {log.stdout}{log.stderr}"


def faults_of_ending(suite, repeats):
    """Brings a command to its end: by repeating it, or by taking it back."""
    if repeats:
        again = suite.run(*suite.command)
        if again.returncode != 0 or suite.masters() != suite.new:
            yield f"a repeated command does not complete it: {again.stdout}{again.stderr}"
    last = suite.undo_all()
    if not last.status_is_end or suite.masters() != suite.old:
        yield f"undo does not restore everything: {last.stdout}{last.stderr}"
    if suite.leftovers():
        yield f"leaves {[path.name for path in suite.leftovers()]}"


def calls_of(suite, command):
    """How many calls of each kind a command makes when nothing fails."""
    suite.report.unlink(missing_ok=True)
    done = suite.run(*command, fault="")
    kinds = [line.split()[1] for line in suite.report.read_text().splitlines()
             if line.startswith("call ") and "alloc" not in line]
    if done.returncode != 0:
        sys.exit(f"{command} fails undisturbed:\n{done.stdout}{done.stderr}")
    return kinds


def plans_of(kinds, every):
    """Every kill, then every failing call; or one in `every`, and the last of each kind."""
    def sampled(count):
        return (n for n in range(1, count + 1) if n % every == 0 or n == count or every == 1)
    yield from (f"kill:{number}" for number in sampled(len(kinds)))
    for kind, errors in ERRORS.items():
        for number, error, span in itertools.product(sampled(kinds.count(kind)), errors, SPANS):
            yield f"{kind}:{number}:{getattr(errno, error)}:{span}"


def try_all(suite, prepare, command, every):
    """Returns how many runs there were, and what is wrong, as pairs of plan and sentence."""
    suite.reset()
    prepare()
    wrong = []
    plans = [*plans_of(calls_of(suite, command), every)]
    for number, plan in enumerate(plans):
        suite.reset()
        prepare()
        done = suite.run(*command, fault=plan)
        is_mute = plan.startswith("write") and plan.endswith("lasts")  # as standard error is, too
        found = [*faults_after(suite, done, command, is_mute), *faults_of_ending(suite, number % 2 == 0)]
        wrong += [(plan, sentence) for sentence in found
                  if not is_tolerated(plan, sentence, command)]
    return len(plans), wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", type=os.path.realpath, required=True)
    parser.add_argument("--shim", type=os.path.realpath, required=True)
    parser.add_argument("--every", type=int, default=1, metavar="N", help="only every N-th call")
    arguments = parser.parse_args()
    failed = False
    memory = "/dev/shm" if os.path.isdir("/dev/shm") else None  # spares waiting for a disk
    with tempfile.TemporaryDirectory(prefix="orvdiff-changes-", dir=memory) as root:
        for verb in ("accept", "remove"):
            suite = Suite(f"{root}/{verb}", arguments, verb)
            for command in (suite.command, ["undo"]):
                prepare = (lambda: None) if command == suite.command else (
                    lambda suite=suite: suite.run(*suite.command))
                count, wrong = try_all(suite, prepare, command, arguments.every)
                print(f"{' '.join(command)}: {count} runs, {len(wrong)} findings")
                for plan, sentence in wrong:
                    print(f"    {plan}: {sentence}")
                failed = failed or bool(wrong)
    return failed


if __name__ == "__main__":
    sys.exit(main())
