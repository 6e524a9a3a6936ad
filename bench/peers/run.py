#!/usr/bin/env python3
"""Run us and our peers in turn on the same inputs, and print who is how fast.

Times are medians of the runs, by the wall clock. The ratio is that of the medians, in brackets the
least and the greatest of a single turn, then that of processor time (user and system), which says
more when other programs keep the machine busy.

    bench/peers/run.py --build build/bench
    bench/peers/run.py --build build/bench --only P3,P5 --runs 9
"""

import argparse
import os
import pathlib
import platform
import sys

from inputs import Inputs
from rows import ROWS, Programs


def shown(value, unit):
    if unit == "B":
        return f"{value / 1e6:.3g} MB"
    if unit == "":
        return f"{value:g}"
    return f"{value * 1e3:.1f} ms" if value < 1 else f"{value:.2f} s"


def machine():
    model = next((line.split(":")[1].strip() for line in open("/proc/cpuinfo")
                  if line.startswith("model name")), platform.machine())
    system = platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    return f"{os.cpu_count()} cores, {model}; {system}; load {os.getloadavg()[0]:.1f}"


def line_of(row, figures, quick):
    cpu = "" if figures.cpu_ratio is None else f"{figures.cpu_ratio:.2f}"
    met = "" if quick or row.target is None else "yes" if row.is_met(figures) else "no"
    return (f"| {row.name} | {row.work} | {row.against} | {shown(figures.us, figures.unit)} | "
            f"{shown(figures.peer, figures.unit)} | {figures.ratio:.2f} "
            f"({figures.least:.2f}–{figures.most:.2f}) | {cpu} | {row.target_text()} | {met} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", type=pathlib.Path, required=True, help="folder of the build")
    parser.add_argument("--only", default=",".join(ROWS), metavar="P1,P2",
                        help="the rows to measure (default: all)")
    parser.add_argument("--runs", type=int, help="how often each side runs (default: 5)")
    parser.add_argument("--quick", action="store_true",
                        help="tiny inputs, one run: shows that everything works, measures nothing")
    parser.add_argument("--pages-from", type=pathlib.Path, metavar="FOLDER",
                        help="HTML pages to use instead of Debian's documentation")
    options = parser.parse_args()
    names = options.only.split(",")
    unknown = [name for name in names if name not in ROWS]
    if unknown:
        parser.error(f"no such row: {', '.join(unknown)}; there are {', '.join(ROWS)}")
    build = options.build.resolve()
    inputs = Inputs(build / "peers", options.quick, options.pages_from)
    programs = Programs(build, inputs)
    sources = dict.fromkeys(ROWS[name] for name in names)
    rows = [row for source in sources for row in source(programs) if row.name in names]
    inputs.settle()
    runs = options.runs or (1 if options.quick else 5)
    print(f"{runs} runs; {machine()}\n")
    print("| | work | compared with | ours | theirs | ratio | processor time | target | met |")
    print("|---|---|---|---:|---:|---:|---:|---|---|", flush=True)
    for row in rows:
        print(line_of(row, row.measure(runs), options.quick), flush=True)


if __name__ == "__main__":
    sys.exit(main())
