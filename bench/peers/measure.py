"""Runs commands in turn and says how long each took."""

import dataclasses
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time


@dataclasses.dataclass(frozen=True)
class Command:
    argv: list
    cwd: pathlib.Path = pathlib.Path(".")
    says: str = ""  # what its output must contain: proof that it did the work
    status: int = 0


@dataclasses.dataclass(frozen=True)
class Sample:
    wall: float  # seconds
    cpu: float  # seconds of processor time, user and system
    own_cpu: float  # of that, without the processes that it started
    peak: int  # bytes of memory
    output: str


def own_processor_time(pid):
    """Seconds that a process took itself, which has ended and was not waited for yet."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return sum(int(ticks) for ticks in fields[11:13]) / os.sysconf("SC_CLK_TCK")


def run(command):
    """Runs a command to its end; the program ends when it does not do its work."""
    with tempfile.TemporaryFile() as output:
        start = time.perf_counter()
        process = subprocess.Popen([str(arg) for arg in command.argv], cwd=command.cwd,
                                   stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT)
        os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
        wall = time.perf_counter() - start
        own_cpu = own_processor_time(process.pid)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read().decode(errors="replace")
    if process.returncode != command.status or command.says not in text:
        shown = " ".join(str(arg) for arg in command.argv)[:500]
        sys.exit(f"in {command.cwd}: {shown}\n{text[-2000:]}\nended with {process.returncode}, "
                 f"expected was {command.status} and the words \"{command.says}\"")
    return Sample(wall, usage.ru_utime + usage.ru_stime, own_cpu, usage.ru_maxrss * 1024, text)


def proportional_memory(pid):
    """Bytes that a process holds, of shared pages its share; 0 for one that has ended."""
    try:
        with open(f"/proc/{pid}/smaps_rollup") as rollup:
            return sum(int(line.split()[1]) * 1024 for line in rollup if line.startswith("Pss:"))
    except OSError:
        return 0


def tree_of(pid):
    """A process and all that it has started, as far as they live."""
    try:
        children = pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()
    except OSError:
        children = []
    return [pid, *(each for child in children for each in tree_of(int(child)))]


def peak_of_tree(command):
    """The most bytes that a command and what it starts held at a time, looked at again and again."""
    process = subprocess.Popen([str(arg) for arg in command.argv], cwd=command.cwd,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    peak = 0
    while process.poll() is None:
        peak = max(peak, sum(map(proportional_memory, tree_of(process.pid))))
    if process.returncode != command.status:
        sys.exit(f"in {command.cwd}: {command.argv} ended with {process.returncode}")
    return peak


def in_turn(commands, runs):
    """Samples of each command, `runs` times one after the other, every other time backwards."""
    samples = [[] for _ in commands]
    for number in range(runs):
        places = range(len(commands))
        for place in places if number % 2 == 0 else reversed(places):
            samples[place].append(run(commands[place]))
    return samples


def median(samples, what):
    return statistics.median(getattr(sample, what) for sample in samples)
