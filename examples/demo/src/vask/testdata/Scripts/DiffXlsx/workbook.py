"""Reads what is compared of a workbook: its sheets, their cells and what else they hold.

Cells are handed out one by one in the order of the file, so a sheet of a million rows takes no more
memory than a small one. Producers store the same thing in several ways, and these come out alike:
text in the shared table or in the cell, a number written 1 or 1.0, a formula shared by a range or
repeated in each cell, a number format built in or spelled out, part names in any case, XML with or
without prefixes.
"""

import collections
import functools
import re

from comparison import Trouble
from features import SheetFeatures, described
from markup import Handler, entry, flag, number, relation_id, unsigned
from package import Package
from references import cell_name, moved, position, row_number, unquoted

# One sheet: `kind` is worksheet, chartsheet or the like, `part` its name in the package.
Sheet = collections.namedtuple("Sheet", "name state kind part")

# The number-format codes of cells, and the formats that conditions and filters refer to; by index.
Styles = collections.namedtuple("Styles", "numbers differences")

# A name that programs keep for themselves; it repeats the range of the autofilter.
_FILTER_NAME = "_xlnm._FilterDatabase"

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
        self.lines = {}  # what else the workbook holds: {place: text}
        self._package = Package(path)
        main = self._package.related("", "officeDocument")
        if not main:
            raise Trouble(f"{path!r} is a ZIP file but not a workbook")
        self._strings_part = self._package.related(main, "sharedStrings")
        self._styles_part = self._package.related(main, "styles")
        self._read_main(main)

    def _read_main(self, main):
        relations = self._package.relations(main)

        def properties(attributes):
            self.date_system = "1904" if flag(attributes.get("date1904", "0")) else "1900"

        def protection(element):
            if len(words := described(element).split(" ", 1)) > 1:
                self.lines["protection of the workbook"] = words[1]

        def sheet(attributes):
            target = relations[relation_id(attributes)]
            state = attributes.get("state", "visible")
            self.sheets.append(Sheet(attributes["name"], state, target.kind, target.part))

        def defined_name(element):
            name, index = (element.attributes.get(key) for key in ("name", "localSheetId"))
            scope = f' of sheet "{entry(self.sheets, unsigned(index)).name}"' if index else ""
            if name != _FILTER_NAME:
                self.lines[f'defined name "{name}"{scope}'] = unquoted(element.text)

        self._package.parse(main, "workbook", {
            "workbookPr": Handler(properties), "workbookProtection": Handler(whole=protection),
            "sheets/sheet": Handler(sheet),
            "definedNames/definedName": Handler(whole=defined_name)})
        if not self.sheets or len({sheet.name for sheet in self.sheets}) < len(self.sheets):
            raise Trouble(f"{self._package.path!r} has no sheets, or two of one name")

    def same_tables(self, other):
        """Tells whether both files store their shared texts and their styles in the same bytes."""
        return (self._package.same_part(self._strings_part, other._package, other._strings_part)
                and self._package.same_part(self._styles_part, other._package, other._styles_part))

    def same_sheet(self, sheet, other, other_sheet):
        """Tells whether two sheets are stored in the same bytes; they are equal where the tables
        are too."""
        return self._package.same_sheet_part(sheet.part, other._package, other_sheet.part)

    def open_sheet(self, sheet):
        return SheetReader(self._package, sheet, self._strings, self._styles)

    @functools.cached_property
    def _strings(self):
        """The shared texts, by index, without their formatting and their phonetic hints."""
        strings = []
        pieces = []

        def end_item():
            strings.append("".join(pieces))
            pieces.clear()

        if self._strings_part:
            self._package.parse(self._strings_part, "sst", {
                "si": Handler(end=end_item), **text_handlers("si", pieces)})
        return strings

    @functools.cached_property
    def _styles(self):
        """The Styles of the workbook."""
        codes = dict(_BUILT_IN_FORMATS)
        cell_formats, differences = [], []

        def number_format(attributes):
            codes[unsigned(attributes["numFmtId"])] = _plain_code(attributes["formatCode"])

        def cell_format(attributes):
            cell_formats.append(unsigned(attributes.get("numFmtId", "0")))

        def difference(element):
            differences.append(described(element).removeprefix("dxf").strip())

        if self._styles_part:
            self._package.parse(self._styles_part, "styleSheet", {
                "numFmts/numFmt": Handler(number_format), "cellXfs/xf": Handler(cell_format),
                "dxfs/dxf": Handler(whole=difference)})
        formats = [codes.get(format, f"built-in {format}") for format in cell_formats or [0]]
        return Styles(formats, differences)

    def close(self):
        self._package.close()


def _plain_code(code):
    code = _NEEDLESS_ESCAPE.sub(lambda match: match[1] or match[2], code)
    return "General" if code.lower() == "general" else code


class SheetReader:
    """Reads one sheet: `cells` in their order; and then `merged`, the names of merged ranges, and
    `lines`, {place: text} of what else it holds."""

    def __init__(self, package, sheet, strings, styles):
        self.merged = set()
        self._package = package
        self._sheet = sheet
        self._strings = strings
        self._formats = styles.numbers
        self._features = SheetFeatures(package.relations(sheet.part), styles.differences)
        self._found = []
        self._shared = {}  # index of a shared formula: (text, place of the cell it stands in)
        # The row, the cell, its value and its formula that are being read.
        self._row = 0
        self._at = (0, 0)
        self._cell = {}
        self._text = None
        self._inline = []
        self._formula = None
        self._formula_attributes = {}

    def cells(self):
        """Yields every Cell that holds something, row by row and from left to right."""
        cell = "sheetData/row/c"
        handlers = {
            "sheetData/row": Handler(self._start_row),
            cell: Handler(self._start_cell, end=self._end_cell),
            f"{cell}/f": Handler(self._start_formula, text=self._end_formula),
            f"{cell}/v": Handler(text=self._end_value),
            **text_handlers(f"{cell}/is", self._inline),
            "mergeCells/mergeCell": Handler(lambda attributes: self.merged.add(attributes["ref"])),
            **self._features.handlers}
        for _ in self._package.parse_piecewise(self._sheet.part, self._sheet.kind, handlers):
            yield from self._found
            self._found.clear()

    def lines(self):
        return self._features.lines()

    def _start_row(self, attributes):
        row = row_number(attributes.get("r", str(self._row + 1)))
        if row <= self._row:
            raise ValueError(f"row {row} is out of order")
        self._row = row
        self._at = (row, 0)
        self._features.row(row, attributes)

    def _start_cell(self, attributes):
        name = attributes.get("r")
        at = position(name) if name else (self._row, self._at[1] + 1)
        if at <= self._at or at[0] != self._row:
            raise ValueError(f"cell {cell_name(at)} is out of order")
        self._at = at
        self._cell = attributes
        self._text = self._formula = None
        self._inline.clear()

    def _end_cell(self):
        value = self._value(self._cell.get("t", "n"))
        style = unsigned(self._cell.get("s", "0"))
        if value or self._formula:
            self._found.append(Cell(self._at, value, self._formula or "",
                                    entry(self._formats, style)))

    def _end_value(self, text):
        if self._text is not None:
            raise ValueError(f"cell {cell_name(self._at)} has two values")
        self._text = text

    def _start_formula(self, attributes):
        if self._formula is not None:
            raise ValueError(f"cell {cell_name(self._at)} has two formulas")
        self._formula_attributes = attributes

    def _end_formula(self, text):
        """Notes the formula of the current cell in full, whatever way it is stored."""
        attributes = self._formula_attributes
        kind = attributes.get("t", "normal")
        if kind == "shared" and text:
            self._shared[attributes["si"]] = (text, self._at)
        elif kind == "shared":
            if attributes["si"] not in self._shared:
                raise ValueError(f"cell {cell_name(self._at)} shares a formula that is not there")
            base, source = self._shared[attributes["si"]]
            text = moved(base, source, self._at)
        elif kind != "normal":
            text += "".join(f" {name}={value}" for name, value in sorted(attributes.items())
                            if name not in ("ca", "aca"))
        self._formula = unquoted(text)

    def _value(self, kind):
        text = self._text
        if kind == "inlineStr":
            return ("text", "".join(self._inline) or text or "")
        if text is None or (not text and kind != "str"):
            return None
        if kind == "n":
            return _number(text)
        if kind == "s":
            return ("text", entry(self._strings, unsigned(text)))
        return ({"str": "text", "b": "boolean", "e": "error", "d": "date"}.get(kind, kind), text)


def _number(text):
    """Numbers compare by value, as spreadsheet programs hold them; what is none, as its text."""
    try:
        return ("number", number(text))
    except ValueError:
        return ("number", text)


def text_handlers(path, pieces):
    """Handlers that gather the text of an item, which may be cut into runs, in `pieces`; phonetic
    hints (rPh) are left out."""
    return {f"{path}/t": Handler(text=pieces.append), f"{path}/r/t": Handler(text=pieces.append)}
