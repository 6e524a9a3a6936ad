"""Cell references of spreadsheets: names such as B7, and formulas moved to another cell."""

import functools
import re

_LAST_COLUMN, _LAST_ROW = 16384, 1048576

# Text, quoted sheet names and bracketed names are matched first so that nothing in them is taken
# for a reference; neither are functions such as LOG10( or sheets such as Q1!.
_REFERENCE = re.compile(
    r""" "(?:[^"]|"")*" | '(?:[^']|'')*' | \[[^]]*\]
       | (?<![\w.$]) (?: (\$?)([A-Z]{1,3}) (\$?)([0-9]{1,7})        # B7
                       | (\$?)([A-Z]{1,3}) : (\$?)([A-Z]{1,3})      # B:D
                       | (\$?)([0-9]{1,7}) : (\$?)([0-9]{1,7})      # 2:5
                     ) (?![\w.(!]) """, re.VERBOSE)


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


def position(name):
    """Returns (row, column) of a name such as "B7"; raises ValueError for anything else."""
    letters = name.rstrip("0123456789")
    return int(name[len(letters):]), column_number(letters)


def cell_name(at):
    row, column = at
    return f"{column_name(column)}{row}"


def moved(formula, source, target):
    """Returns the formula as it reads after copying it from one (row, column) to another."""
    rows, columns = target[0] - source[0], target[1] - source[1]

    def column(fixed, letters):
        if fixed:
            return fixed + letters
        return column_name((column_number(letters) + columns - 1) % _LAST_COLUMN + 1)

    def row(fixed, digits):
        return fixed + digits if fixed else str((int(digits) + rows - 1) % _LAST_ROW + 1)

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
