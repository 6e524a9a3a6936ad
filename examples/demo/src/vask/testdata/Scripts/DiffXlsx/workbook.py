"""Reads what is compared of a workbook: its sheets, their cells and their merged ranges.

Cells are handed out one by one in the order of the file, so a sheet of a million rows takes no more
memory than a small one. Producers store the same thing in several ways, and these come out alike:
text in the shared table or in the cell, a number written 1 or 1.0, a formula shared by a range or
repeated in each cell, a number format built in or spelled out, part names in any case, XML with or
without prefixes.
"""

import collections
import functools
import math
import re

from comparison import Trouble
from package import Package
from references import cell_name, moved, position

# One sheet: `kind` is worksheet, chartsheet or the like, `part` its name in the package.
Sheet = collections.namedtuple("Sheet", "name state kind part")


# The number formats that files name by their identifier without spelling them out.
_BUILT_IN_FORMATS = {
    0: "General", 1: "0", 2: "0.00", 3: "#,##0", 4: "#,##0.00", 9: "0%", 10: "0.00%",
    11: "0.00E+00", 12: "# ?/?", 13: "# ??/??", 14: "mm-dd-yy", 15: "d-mmm-yy", 16: "d-mmm",
    17: "mmm-yy", 18: "h:mm AM/PM", 19: "h:mm:ss AM/PM", 20: "h:mm", 21: "h:mm:ss",
    22: "m/d/yy h:mm", 37: "#,##0 ;(#,##0)", 38: "#,##0 ;[Red](#,##0)",
    39: "#,##0.00;(#,##0.00)", 40: "#,##0.00;[Red](#,##0.00)", 45: "mm:ss", 46: "[h]:mm:ss",
    47: "mmss.0", 48: "##0.0E+0", 49: "@"}

# Characters that a format code shows as they are, whether escaped or not; quoted text is skipped.
_NEEDLESS_ESCAPE = re.compile(r'("[^"]*")|\\([-+/():!^&\'~{}<>= $])')


class Cell(collections.namedtuple("Cell", "at value formula format")):
    """A cell that holds something: `at` is its (row, column), counted from 1.

    `value` is a pair (kind, value), or None for a formula that its producer did not compute;
    `formula` is the text behind "=", or "".
    """

    __slots__ = ()

    @property
    def name(self):
        return cell_name(self.at)


class Workbook:
    """One XLSX file; its operations raise Trouble when the file is not what it should be."""

    def __init__(self, path):
        self.date_system = "1900"
        self.sheets = []
        self._package = Package(path)
        main = self._package.related("", "officeDocument")
        if not main:
            raise Trouble(f"{path!r} is a ZIP file but not a workbook")
        self._strings_part = self._package.related(main, "sharedStrings")
        self._styles_part = self._package.related(main, "styles")
        self._read_sheets(main)

    def _read_sheets(self, main):
        relations = self._package.relations(main)

        def properties(attributes):
            if attributes.get("date1904") in ("1", "true"):
                self.date_system = "1904"

        def sheet(attributes):
            key = next((attributes[name] for name in attributes if name.endswith(" id")), None)
            state = attributes.get("state", "visible")
            self.sheets.append(Sheet(attributes["name"], state, *relations[key]))

        self._package.parse(main, {"workbookPr": properties, "sheet": sheet})
        if not self.sheets or len({sheet.name for sheet in self.sheets}) < len(self.sheets):
            raise Trouble(f"{self._package.path!r} has no sheets, or two of one name")

    def same_tables(self, other):
        """Tells whether both files store their shared texts and their styles in the same bytes."""
        return (self._package.same_part(self._strings_part, other._package, other._strings_part)
                and self._package.same_part(self._styles_part, other._package, other._styles_part))

    def same_sheet(self, sheet, other, other_sheet):
        """Tells whether two sheets are stored in the same bytes; they are equal where the tables
        are too."""
        return self._package.same_part(sheet.part, other._package, other_sheet.part)

    def open_sheet(self, sheet):
        return SheetReader(self._package, sheet.part, self._strings, self._formats)

    @functools.cached_property
    def _strings(self):
        """The shared texts, by index, without their formatting and their phonetic hints."""
        strings = []
        item = _GatheredText()
        if self._strings_part:
            self._package.parse(self._strings_part, item.starts,
                                {**item.ends, "si": lambda _: strings.append(item.take())})
        return strings

    @functools.cached_property
    def _formats(self):
        """The number-format code of each cell style, by index."""
        codes = {}
        styles = []  # identifiers of the formats in the list that is being read
        cell_styles = []

        def number_format(attributes):
            # The first one counts: conditional formats further down repeat identifiers.
            codes.setdefault(int(attributes["numFmtId"]), _plain_code(attributes["formatCode"]))

        if self._styles_part:
            self._package.parse(self._styles_part, {
                "numFmt": number_format,
                "cellXfs": lambda _: styles.clear(),
                "xf": lambda attributes: styles.append(int(attributes.get("numFmtId", 0))),
            }, {"cellXfs": lambda _: cell_styles.extend(styles)})
        codes = {**_BUILT_IN_FORMATS, **codes}
        return [codes.get(number, f"built-in {number}") for number in cell_styles or [0]]

    def close(self):
        self._package.close()


def _plain_code(code):
    code = _NEEDLESS_ESCAPE.sub(lambda match: match[1] or match[2], code)
    return "General" if code.lower() == "general" else code


class SheetReader:
    """Reads one sheet: `cells` in their order, and then `merged`, the names of merged ranges."""

    def __init__(self, package, part, strings, formats):
        self.merged = set()
        self._package = package
        self._part = part
        self._strings = strings
        self._formats = formats
        self._found = []
        self._shared = {}  # index of a shared formula: (text, place of the cell it stands in)
        # The row, the cell and the formula that are being read.
        self._row = 0
        self._at = (0, 0)
        self._cell = {}
        self._text = None
        self._formula = ""
        self._formula_attributes = {}
        self._inline = _GatheredText()

    def cells(self):
        """Yields every Cell that holds something, row by row and from left to right."""
        starts = {"row": self._start_row, "c": self._start_cell, "f": self._start_formula,
                  "mergeCell": lambda attributes: self.merged.add(attributes["ref"]),
                  **self._inline.starts}
        ends = {"c": self._end_cell, "f": self._end_formula, "v": self._end_value,
                **self._inline.ends}
        for _ in self._package.parse_piecewise(self._part, starts, ends):
            yield from self._found
            self._found.clear()

    def _start_row(self, attributes):
        self._row = int(attributes.get("r", self._row + 1))
        self._at = max(self._at, (self._row, 0))

    def _start_cell(self, attributes):
        name = attributes.get("r")
        at = position(name) if name else (self._row, self._at[1] + 1)
        if at <= self._at:
            raise ValueError(f"cell {cell_name(at)} is out of order")
        self._at = at
        self._cell = attributes
        self._text = None
        self._formula = ""

    def _end_cell(self, _):
        value = self._value(self._cell.get("t", "n"))
        if value or self._formula:
            style = self._formats[int(self._cell.get("s", 0))]
            self._found.append(Cell(self._at, value, self._formula, style))

    def _end_value(self, text):
        self._text = text

    def _start_formula(self, attributes):
        self._formula_attributes = attributes

    def _end_formula(self, text):
        """Notes the formula of the current cell in full, whatever way it is stored."""
        attributes = self._formula_attributes
        kind = attributes.get("t", "normal")
        if kind == "shared" and text:
            self._shared[attributes["si"]] = (text, self._at)
        elif kind == "shared":
            base, source = self._shared[attributes["si"]]
            text = moved(base, source, self._at)
        elif kind != "normal":
            text += "".join(f" {name}={value}" for name, value in sorted(attributes.items())
                            if name not in ("ca", "aca"))
        self._formula = text

    def _value(self, kind):
        text = self._text
        if kind == "inlineStr":
            return ("text", self._inline.take() or text or "")
        if text is None or (not text and kind != "str"):
            return None
        if kind == "n":
            return _number(text)
        if kind == "s":
            return ("text", self._strings[int(text)])
        return ({"str": "text", "b": "boolean", "e": "error", "d": "date"}.get(kind, kind), text)


def _number(text):
    """Numbers compare by value, as spreadsheet programs hold them; what is none, as its text."""
    try:
        value = math.nan if "_" in text else float(text)
    except ValueError:
        value = math.nan
    return ("number", value if math.isfinite(value) else text)


class _GatheredText:
    """Gathers the text of an item that may be cut into differently formatted runs.

    `starts` and `ends` are the handlers to parse with; `take` returns the text of one item.
    """

    def __init__(self):
        self._pieces = []
        self._phonetic = False
        self.starts = {"rPh": lambda _: self._set_phonetic(True)}
        self.ends = {"rPh": lambda _: self._set_phonetic(False), "t": self._end_text}

    def _set_phonetic(self, phonetic):
        self._phonetic = phonetic

    def _end_text(self, text):
        if not self._phonetic:
            self._pieces.append(text)

    def take(self):
        text = "".join(self._pieces)
        self._pieces.clear()
        return text
