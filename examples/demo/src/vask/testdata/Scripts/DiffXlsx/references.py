"""Cell references of spreadsheets: names such as B7, formulas moved to another cell, and areas."""

import functools
import re

LAST_COLUMN, LAST_ROW = 16384, 1048576

# Text, quoted sheet names and bracketed names are matched first so that nothing in them is taken
# for a reference; neither are functions such as LOG10( or sheets such as Q1!.
_REFERENCE = re.compile(
    r""" "(?:[^"]|"")*" | '(?:[^']|'')*' | \[[^]]*\]
       | (?<![\w.$]) (?: (\$?)([A-Z]{1,3}) (\$?)([0-9]{1,7})        # B7
                       | (\$?)([A-Z]{1,3}) : (\$?)([A-Z]{1,3})      # B:D
                       | (\$?)([0-9]{1,7}) : (\$?)([0-9]{1,7})      # 2:5
                     ) (?![\w.(!]) """, re.VERBOSE)


_QUOTED_SHEET = re.compile(r"""("(?:[^"]|"")*")|'(\w+)'!""")


@functools.lru_cache(maxsize=None)
def column_number(letters):
    """Returns 1 for "A", 27 for "AA"; raises ValueError for anything but up to 3 capitals."""
    if not 0 < len(letters) <= 3:
        raise ValueError(f"no column: {letters!r}")
    number = 0
    for letter in letters:
        if not "A" <= letter <= "Z":
            raise ValueError(f"no column: {letters!r}")
        number = number * 26 + ord(letter) - ord("A") + 1
    return number


def column_name(number):
    name = ""
    while number:
        number, letter = divmod(number - 1, 26)
        name = chr(ord("A") + letter) + name
    return name


def row_number(digits):
    """Returns 12 for "12"; raises ValueError for anything but a number of a row."""
    number = int(digits) if digits.isdigit() and digits.isascii() and len(digits) < 8 else 0
    if not 1 <= number <= LAST_ROW or digits[0] == "0":
        raise ValueError(f"no row: {digits[:20]!r}")
    return number


def position(name):
    """Returns (row, column) of a name such as "B7"; raises ValueError for anything else."""
    letters = name.rstrip("0123456789")
    column = column_number(letters)
    if column > LAST_COLUMN:
        raise ValueError(f"no column: {letters!r}")
    return row_number(name[len(letters):]), column


def cell_name(at):
    row, column = at
    return f"{column_name(column)}{row}"


def unquoted(formula):
    """Returns the formula without the quotes that some programs put around every sheet's name."""
    if "'" not in formula:
        return formula
    return _QUOTED_SHEET.sub(lambda match: match[1] or f"{match[2]}!", formula)


def moved(formula, source, target):
    """Returns the formula as it reads after copying it from one (row, column) to another."""
    rows, columns = target[0] - source[0], target[1] - source[1]

    def column(fixed, letters):
        if fixed:
            return fixed + letters
        return column_name((column_number(letters) + columns - 1) % LAST_COLUMN + 1)

    def row(fixed, digits):
        return fixed + digits if fixed else str((int(digits) + rows - 1) % LAST_ROW + 1)

    def move(match):
        parts = match.groups()
        if parts[1]:
            return column(*parts[0:2]) + row(*parts[2:4])
        if parts[5]:
            return f"{column(*parts[4:6])}:{column(*parts[6:8])}"
        if parts[9]:
            return f"{row(*parts[8:10])}:{row(*parts[10:12])}"
        return match[0]

    return _REFERENCE.sub(move, formula)


# Areas --------------------------------------------------------------------------------------------

_MOST_PLACES = 300  # compared pair by pair


class Ranges:
    """A set of row or column numbers, kept as ranges; cheap where they arrive in order."""

    def __init__(self):
        self._ranges = []

    def add(self, first, last):
        if self._ranges and self._ranges[-1][1] + 1 == first:
            self._ranges[-1][1] = last
        else:
            self._ranges.append([first, last])

    def complement(self, last):
        """Returns the numbers from 1 to `last` that are not in this set."""
        rest = Ranges()
        start = 1
        for begin, end in [*sorted(self._ranges), (last + 1, last + 1)]:
            if start < begin:
                rest.add(start, begin - 1)
            start = max(start, end + 1)
        return rest

    def text(self, name):
        """Lists the ranges, each number as `name` words it."""
        joined = Ranges()
        for first, last in sorted(self._ranges):
            known = joined._ranges[-1][1] if joined._ranges else 0
            if last > known:
                joined.add(max(first, known + 1), last)
        return ", ".join(name(first) if first == last else f"{name(first)}:{name(last)}"
                         for first, last in joined._ranges)


def overlapping_places(places):
    """Returns those of the places, lists of ranges such as "A1:B5 D7", that share a cell with
    another one; where that is too much work, all of them."""
    if len(places) > _MOST_PLACES:
        return set(places)
    areas = {place: [_rectangle(area) for area in place.split()] for place in places}
    return {place for place in places
            if any(_meet(one, other) for rival in places if rival != place
                   for one in areas[place] for other in areas[rival])}


def _rectangle(area):
    """Returns (top, left, bottom, right); the whole sheet for what is not a range of cells."""
    first, _, last = area.partition(":")
    try:
        return (*position(first), *position(last or first))
    except ValueError:
        return (1, 1, LAST_ROW, LAST_COLUMN)


def _meet(one, other):
    return all(one[edge] <= other[edge + 2] and other[edge] <= one[edge + 2] for edge in (0, 1))
