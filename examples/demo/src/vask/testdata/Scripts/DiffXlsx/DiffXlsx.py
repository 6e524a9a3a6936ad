#!/usr/bin/env python3
"""Compares two XLSX workbooks by what they hold.

Compared are
  - the sheets: names, order, hidden or not; defined names, print areas and print titles;
  - of every cell that holds something: value, formula, number format; numbers compare by value, so
    1 and 1.0 are equal;
  - merged ranges, hidden rows and columns (those without any height or width are hidden, too),
    frozen and split panes, whether gridlines, headings, zeros or formulas show;
  - autofilters, conditional formats, data validation, hyperlinks, headers and footers;
  - the protection of the workbook, its sheets and ranges: what it allows and whether there is a
    password, but not which;
  - the date system, which says what day a number means.

Not compared are
  - document properties (dates, author, application), macros, calculation settings;
  - fonts, colours, borders, alignment and sizes, other than those in conditional formats; the
    formats of parts of a text; the number formats of empty cells; which cells are locked;
  - charts, pictures, shapes, comments, tables, pivot tables, sparklines, form controls;
  - groups of rows and columns, page set-up, margins and page breaks; zoom, scroll positions,
    selections; custom views and scenarios; the files that links such as [1]Sheet1!A1 stand for;
  - what only an extension (extLst) or alternate content holds, such as validation against a list on
    another sheet as some programs store it.

Exit status: 0 equal, 1 different, 2 trouble (unreadable or encrypted file, damaged package, report
file that cannot be written). The report file gets the verdict and the differences, and is replaced
in one step, so that whoever reads it never sees half of it.
"""

import argparse
import contextlib
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

from comparison import (DIFFERENT, EQUAL, Trouble, excerpts, head, parse_arguments, run,
                        same_bytes)

_PRINTED = 10
_REPORTED = 1000
_VERDICTS = {EQUAL: "equal", DIFFERENT: "different"}


class Findings:
    """The differences found: all are counted, the first ones are kept as lines to show."""

    def __init__(self):
        self.count = 0
        self.kept = []

    def add(self, place, master, actual):
        self.count += 1
        if len(self.kept) < _REPORTED:
            master, actual = excerpts(str(master), str(actual))
            self.kept.append(f"{place}\n  master: {master}\n  actual: {actual}\n")

    def text(self, limit):
        shown = self.kept[:limit]
        more = self.count - len(shown)
        return "".join(shown) + (f"... and {more} more\n" if more else "")


def main(argv):
    options, master, actual = parse_arguments(option_parser(), argv)
    report = Report(options.report, master, actual)
    findings = Findings()
    try:
        compare(master, actual, findings)
    except Trouble as trouble:
        report.write(f"trouble: {trouble}", findings)
        raise
    verdict = DIFFERENT if findings.count else EQUAL
    report.write(_VERDICTS[verdict], findings)
    print(findings.text(_PRINTED), end="")
    return verdict


def option_parser():
    parser = argparse.ArgumentParser(
        usage="%(prog)s [-o REPORTFILE] MASTER ACTUAL", allow_abbrev=False, description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="Options stand before the files.")
    parser.add_argument("-o", dest="report", metavar="REPORTFILE",
                        help="write the verdict and the differences to this file")
    return parser


class Report:
    """The report file, or nothing where `path` is None."""

    def __init__(self, path, master, actual):
        """Raises Trouble, before the long work begins, when the file could not be written."""
        self._path = path and os.path.realpath(path)
        self._heading = f"master:  {master}\nactual:  {actual}\n"
        if path is None:
            return
        if not os.path.isdir(os.path.dirname(self._path)):
            raise Trouble(f"cannot write the report {path!r}: its folder does not exist")
        if os.path.exists(self._path) and not os.path.isfile(self._path):
            raise Trouble(f"cannot write the report {path!r}: it is not a regular file")
        for compared in (master, actual):
            if os.path.realpath(compared) == self._path:
                raise Trouble(f"the report {path!r} would overwrite a file that is compared")

    def write(self, verdict, findings):
        if self._path is None:
            return
        text = f"{self._heading}verdict: {verdict}\n"
        if findings.count:
            text += f"\n{findings.text(_REPORTED)}"
        draft = f"{self._path}.{os.getpid()}.tmp"
        try:
            with open(draft, "w", encoding="utf-8", errors="backslashreplace") as stream:
                stream.write(text)
            os.replace(draft, self._path)
        except OSError as error:
            with contextlib.suppress(OSError):
                os.unlink(draft)
            raise Trouble(f"cannot write the report {self._path!r}: {error.strerror}") from None


def compare(master, actual, findings):
    identical = same_bytes(master, actual)
    for path in (master, actual):
        if head(path, 2) not in (b"PK", b"\xd0\xcf"):
            raise Trouble(f"{path!r} is not an XLSX file")
    if identical:
        return
    from workbook import Workbook  # Late: identical files need none of what it loads.
    with contextlib.closing(Workbook(master)) as left, \
            contextlib.closing(Workbook(actual)) as right:
        compare_workbooks(left, right, findings)


def compare_workbooks(left, right, findings):
    if left.date_system != right.date_system:
        findings.add("date system", left.date_system, right.date_system)
    ours, theirs = ({sheet.name: sheet for sheet in book.sheets} for book in (left, right))
    compare_sheet_lists(ours, theirs, findings)
    compare_lines("", left.lines, right.lines, findings)
    same_tables = left.same_tables(right)
    for name in [name for name in ours if name in theirs]:
        if same_tables and left.same_sheet(ours[name], right, theirs[name]):
            continue
        compare_sheets(f'sheet "{name}"', left.open_sheet(ours[name]),
                       right.open_sheet(theirs[name]), findings)


def compare_lines(place, ours, theirs, findings):
    """Compares what two files say at each place, {place: text}."""
    for line in [*ours, *(line for line in theirs if line not in ours)]:
        texts = [lines.get(line, "none") for lines in (ours, theirs)]
        if texts[0] != texts[1]:
            findings.add(f"{place}{line}", *texts)


def compare_sheet_lists(ours, theirs, findings):
    common = [name for name in ours if name in theirs]
    for name in [*ours, *(name for name in theirs if name not in ours)]:
        if name not in common:
            sides = ["present" if name in sheets else "missing" for sheets in (ours, theirs)]
            findings.add(f'sheet "{name}"', *sides)
            continue
        for aspect in ("kind", "state"):
            values = [getattr(sheets[name], aspect) for sheets in (ours, theirs)]
            if values[0] != values[1]:
                findings.add(f'sheet "{name}", {aspect}', *values)
    reordered = [name for name in theirs if name in ours]
    if common != reordered:
        findings.add("order of sheets", ", ".join(common), ", ".join(reordered))


def compare_sheets(place, left, right, findings):
    for ours, theirs in paired(left.cells(), right.cells()):
        if ours == theirs:
            continue
        cell = f"{place}, cell {(ours or theirs).name}"
        if not ours or not theirs:
            findings.add(cell, content(ours), content(theirs))
            continue
        for aspect in ("value", "formula", "format"):
            values = [getattr(side, aspect) for side in (ours, theirs)]
            if values[0] != values[1]:
                findings.add(f"{cell}, {aspect}", *map(shown, values))
    for merged in sorted(left.merged ^ right.merged):
        findings.add(f"{place}, cells {merged}",
                     *("merged" if merged in side.merged else "not merged"
                       for side in (left, right)))
    compare_lines(f"{place}, ", left.lines(), right.lines(), findings)


def paired(left, right):
    """Yields (ours, theirs) for every cell in order; a side that has no such cell gives None."""
    ours, theirs = next(left, None), next(right, None)
    while ours or theirs:
        if not theirs or (ours and ours.at < theirs.at):
            yield ours, None
            ours = next(left, None)
        elif not ours or theirs.at < ours.at:
            yield None, theirs
            theirs = next(right, None)
        else:
            yield ours, theirs
            ours, theirs = next(left, None), next(right, None)


def content(cell):
    if not cell:
        return "empty"
    return f"formula {cell.formula}" if cell.formula else shown(cell.value)


def shown(value):
    """Describes a cell's value, which is a pair, or its formula or number format."""
    if value is None:
        return "not computed"
    if isinstance(value, str):
        return value or "none"
    kind, data = value
    if isinstance(data, float):
        return f"{kind} {data!r}".removesuffix(".0")
    return f'{kind} "{data}"'


if __name__ == "__main__":
    run(main)
