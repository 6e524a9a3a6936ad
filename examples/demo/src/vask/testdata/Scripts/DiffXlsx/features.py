"""What a sheet holds besides its cells: hidden rows and columns, frozen panes, protection, filters,
conditional formats, validation, hyperlinks, headers and footers.

Each becomes a line of text under the name of its place. What has no effect is left out: attributes
that spell out their defaults, identifiers (what they stand for is put in their place), scroll
positions, extensions. So workbooks that show the same have the same lines.
"""

import re

from markup import Handler, entry, flag, number, relation_id, unsigned
from references import (LAST_COLUMN, LAST_ROW, Ranges, column_name, overlapping_places,
                        unquoted)

# What an attribute means that is not there.
_VIEW_DEFAULTS = {"showFormulas": False, "showGridLines": True, "showRowColHeaders": True,
                  "showZeros": True, "rightToLeft": False}
_DEFAULTS = {
    "sheetProtection": {
        **dict.fromkeys(("sheet", "content", "objects", "scenarios", "selectLockedCells",
                         "selectUnlockedCells"), False),
        **dict.fromkeys(("formatCells", "formatColumns", "formatRows", "insertColumns",
                         "insertRows", "insertHyperlinks", "deleteColumns", "deleteRows", "sort",
                         "autoFilter", "pivotTables"), True)},
    "workbookProtection": {"lockStructure": False, "lockWindows": False, "lockRevision": False},
    "filterColumn": {"hiddenButton": False, "showButton": True},
    "filters": {"blank": False, "calendarType": "none"},
    "customFilters": {"and": False},
    "customFilter": {"operator": "equal"},
    "colorFilter": {"cellColor": True},
    "top10": {"top": True, "percent": False},
    "sortState": {"columnSort": False, "caseSensitive": False, "sortMethod": "none"},
    "sortCondition": {"descending": False, "sortBy": "value"},
    "cfRule": {"stopIfTrue": False, "aboveAverage": True, "percent": False, "bottom": False,
               "equalAverage": False, "stdDev": "0"},
    "cfvo": {"gte": True},
    "dataBar": {"minLength": "10", "maxLength": "90", "showValue": True},
    "iconSet": {"iconSet": "3TrafficLights1", "showValue": True, "percent": True,
                "reverse": False},
    "dataValidation": {
        "type": "none", "errorStyle": "stop", "imeMode": "noControl", "operator": "between",
        "allowBlank": False, "showDropDown": False, "showInputMessage": False,
        "showErrorMessage": False},
    "headerFooter": {"differentOddEven": False, "differentFirst": False, "scaleWithDoc": True,
                     "alignWithMargins": True},
    "u": {"val": "single"},
    **dict.fromkeys(("b", "i", "strike", "outline", "shadow"), {"val": True}),
}

# Salts and the like change with every run, so that hashes of one password differ.
_PASSWORD = re.compile("(?:workbook|revisions)?(?:password|hashValue)", re.IGNORECASE)
_HASHING = re.compile("(?:workbook|revisions)?(?:algorithmName|saltValue|spinCount)", re.IGNORECASE)

# The kinds of conditional format that an attribute belongs to; some programs write it to all.
_TEXT_RULES = ("containsText", "notContainsText", "beginsWith", "endsWith")
_RULE_ATTRIBUTES = {
    **dict.fromkeys(("aboveAverage", "equalAverage", "stdDev"), ("aboveAverage",)),
    **dict.fromkeys(("rank", "percent", "bottom"), ("top10",)),
    "timePeriod": ("timePeriod",), "text": _TEXT_RULES, "operator": ("cellIs", *_TEXT_RULES)}

# Children that mean nothing while they are empty.
_TEXTS = {"formula", "formula1", "formula2", "oddHeader", "oddFooter", "evenHeader", "evenFooter",
          "firstHeader", "firstFooter"}


class SheetFeatures:
    """Gathers the features of one sheet while it is read; `lines` has them afterwards.

    `relations` are those of the sheet's part; `formats` is the list of what conditional formats
    and filters by colour refer to.
    """

    def __init__(self, relations, formats):
        self._relations, self._formats = relations, formats
        self._found = {}
        self._hidden_columns, self._hidden_rows, self._shown_rows = Ranges(), Ranges(), Ranges()
        self._rows_hidden_unless_listed = False
        self._rules = []  # (priority, range, text) of conditional formats
        self.handlers = {
            "sheetViews/sheetView": Handler(whole=self._view),
            "sheetFormatPr": Handler(self._row_default),
            "cols/col": Handler(self._column),
            "sheetProtection": Handler(whole=self._protection),
            "protectedRanges/protectedRange": Handler(whole=self._protected_range),
            "autoFilter": Handler(whole=self._filter),
            "conditionalFormatting": Handler(whole=self._conditional_format),
            "dataValidations/dataValidation": Handler(whole=self._validation),
            "hyperlinks/hyperlink": Handler(self._hyperlink),
            "headerFooter": Handler(whole=self._header),
        }

    def row(self, at, attributes):
        """Notes whether the row `at` is hidden."""
        (self._hidden_rows if _hidden(attributes, "ht") else self._shown_rows).add(at, at)

    def lines(self):
        """Returns {place: text}; complete once the sheet has been read to its end."""
        lines = {place: "; ".join(sorted(texts)) for place, texts in self._found.items()}
        hidden_rows = (self._shown_rows.complement(LAST_ROW) if self._rows_hidden_unless_listed
                       else self._hidden_rows)
        lines["hidden rows"] = hidden_rows.text(str)
        lines["hidden columns"] = self._hidden_columns.text(column_name)
        lines.update(self._rule_lines())
        return {place: text for place, text in lines.items() if text}

    def _rule_lines(self):
        """Yields the conditional formats of each range by priority, and then the order of the
        ranges, which matters only where they overlap."""
        self._rules.sort(key=lambda rule: rule[0])
        rules = {}
        for _, place, text in self._rules:
            rules.setdefault(place, []).append(text)
        for place, texts in rules.items():
            yield f"conditional formats of {place}", "; ".join(texts)
        overlapping = overlapping_places(list(rules))
        yield "order of conditional formats", ", ".join(
            place for _, place, _ in self._rules if place in overlapping)

    def _add(self, place, text):
        if text:
            self._found.setdefault(place, []).append(text)

    def _view(self, element):
        attributes = element.attributes
        changed = [f"{name}={int(not default)}" for name, default in _VIEW_DEFAULTS.items()
                   if name in attributes and flag(attributes[name]) != default]
        self._add("view", " ".join(changed))
        for pane in element.children:
            if pane.tag != "pane":
                continue
            state = pane.attributes.get("state", "split")
            columns, rows = (number(pane.attributes.get(name, "0"))
                             for name in ("xSplit", "ySplit"))
            if state in ("frozen", "frozenSplit"):
                self._add("frozen panes", f"{rows:g} rows, {columns:g} columns")
            elif rows or columns:
                self._add("split panes", f"at {columns:g}, {rows:g}")

    def _row_default(self, attributes):
        self._rows_hidden_unless_listed = flag(attributes.get("zeroHeight", "0"))

    def _column(self, attributes):
        first, last = (unsigned(attributes[name]) for name in ("min", "max"))
        if not 1 <= first <= last <= LAST_COLUMN:
            raise ValueError(f"no columns: {first} to {last}")
        if _hidden(attributes, "width"):
            self._hidden_columns.add(first, last)

    def _protection(self, element):
        if flag(element.attributes.get("sheet", element.attributes.get("content", "0"))):
            self._add("protection", described(element))

    def _protected_range(self, element):
        self._add("protected ranges", described(element))

    def _filter(self, element):
        self._add("autofilter", described(element, self._formats))

    def _conditional_format(self, element):
        place = _area(element.attributes.get("sqref", ""))
        for rule in element.children:
            if rule.tag == "cfRule":
                priority = unsigned(rule.attributes.pop("priority"))
                kind = rule.attributes.get("type", "none")
                rule.attributes = {name: value for name, value in rule.attributes.items()
                                   if kind in _RULE_ATTRIBUTES.get(name, (kind,))}
                self._rules.append((priority, place, described(rule, self._formats)))

    def _validation(self, element):
        attributes = element.attributes
        kind = attributes.get("type", "none")
        # Programs write operators and formulas even where there is nothing to compare.
        meant = 0 if kind == "none" else 1
        if kind in ("none", "list", "custom"):
            attributes.pop("operator", None)
        elif attributes.get("operator", "between") in ("between", "notBetween"):
            meant = 2
        element.children = [child for child in element.children
                            if child.tag in ("formula1", "formula2")[:meant]]
        self._add(f"validation of {_area(attributes.pop('sqref'))}", described(element))

    def _hyperlink(self, attributes):
        identifier = relation_id(attributes)
        target = self._relations[identifier] if identifier else None
        text = (target.address or target.part) if target else ""
        if attributes.get("location"):
            text += f"#{unquoted(attributes['location'])}"
        if attributes.get("tooltip"):
            text += f" ({attributes['tooltip']})"
        self._add(f"hyperlink of {attributes['ref']}", text)

    def _header(self, element):
        text = described(element)
        self._add("header and footer", text if text != element.tag else "")


def _hidden(attributes, size):
    return flag(attributes.get("hidden", "0")) or (
        size in attributes and number(attributes[size]) == 0)


def _area(ranges):
    """Returns a list of ranges such as "B3:B7 A1" in one order."""
    return " ".join(sorted(ranges.split()))


def described(element, formats=()):
    """Returns an element in one line; `formats` is what its dxfId attributes refer to."""
    words = [element.tag]
    for name, value in sorted(element.attributes.items()):
        if name == "dxfId":
            words.append(f"format=({entry(formats, unsigned(value))})")
        elif " " not in name:
            words += _described_attribute(element.tag, name, value)
    if any(map(_PASSWORD.fullmatch, element.attributes)):
        words.append("with a password")
    children = [described(child, formats) for child in element.children
                if child.tag and child.tag != "extLst"
                and (child.pieces or child.tag not in _TEXTS)]
    if element.text and not element.children:
        words.append(unquoted(element.text))
    if children:
        words.append(f"[{', '.join(children)}]")
    return " ".join(words)


def _described_attribute(tag, name, value):
    default = _DEFAULTS.get(tag, {}).get(name)
    if _PASSWORD.fullmatch(name) or _HASHING.fullmatch(name):
        return []
    if isinstance(default, bool):
        value = flag(value)
    elif name == "rgb":
        value = value[-6:].upper()  # Programs disagree on what the first byte, opacity, holds.
    elif name == "sqref":
        value = _area(value)
    return [] if value == default else [f"{name}={value}"]
