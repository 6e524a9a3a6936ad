"""Reads the XML of a package's parts, element by element, and the values in it.

Elements count by their namespace and by where they stand; others are skipped with all they hold.
SpreadsheetML has two namespaces, of its transitional and its strict form. They say the same, so
both are read alike, and a strict workbook can equal a transitional one.
"""

import math
import xml.parsers.expat

SPREADSHEET = ("http://schemas.openxmlformats.org/spreadsheetml/2006/main",
               "http://purl.oclc.org/ooxml/spreadsheetml/main")
RELATIONSHIPS = ("http://schemas.openxmlformats.org/package/2006/relationships",)

_OFFICE = ("http://schemas.openxmlformats.org/officeDocument/2006/relationships",
           "http://purl.oclc.org/ooxml/officeDocument/relationships")

_BLANKS = " \t\r\n"
_DEEPEST_NESTING = 256
_LONGEST_TAG = 4 << 20  # bytes; a longer one would be scanned again for every chunk


class Handler:
    """What is called for one kind of element: start(attributes) and, if it holds elements, end();
    if it holds nothing but text, text(characters). Or only whole(element), an Element."""

    __slots__ = ("start", "end", "text", "whole", "children")

    def __init__(self, start=None, *, end=None, text=None, whole=None):
        self.start, self.end, self.text, self.whole = start, end, text, whole
        self.children = {}


class Element:
    """An element that was read as a whole; `name` is "namespace tag", as are those of attributes
    that have a namespace."""

    __slots__ = ("name", "attributes", "pieces", "children")

    def __init__(self, name, attributes):
        self.name, self.attributes = name, attributes
        self.pieces, self.children = [], []

    @property
    def tag(self):
        """The name without its namespace if that is SpreadsheetML, else None."""
        namespace, _, tag = self.name.rpartition(" ")
        return tag if namespace in SPREADSHEET else None

    @property
    def text(self):
        return "".join(self.pieces)


_SKIPPED = Handler()


def handler_tree(root, handlers, namespaces):
    """Returns the handler of a document whose root has this tag; `handlers` are those of elements
    below it by their path, such as "sheetData/row/c", parents before their children."""
    document = Handler()
    _insert(document, root, Handler(), namespaces)
    for path, handler in handlers.items():
        _insert(document, f"{root}/{path}", handler, namespaces)
    return document


def _insert(parent, path, handler, namespaces):
    tag, _, rest = path.partition("/")
    names = [f"{namespace} {tag}" for namespace in namespaces]
    node = handler if not rest else parent.children.get(names[0]) or Handler()
    parent.children.update(dict.fromkeys(names, node))
    if rest:
        _insert(node, rest, handler, namespaces)


class Parser:
    """Parses one part that is fed to it piece by piece; errors in it raise ValueError or
    ExpatError.

    It works in two ways: elements are either handled one by one, or gathered until the one that a
    handler wants as a whole is complete.
    """

    def __init__(self, document):
        self._open = [document]  # handlers of the elements that are open
        self._elements = []  # those that are open within the one to gather, and that one
        self._pieces = []
        self._fed = 0
        self._expat = xml.parsers.expat.ParserCreate(namespace_separator=" ")
        self._expat.buffer_text = True
        self._expat.StartDoctypeDeclHandler = self._on_doctype
        self._handle_one_by_one()

    def feed(self, chunk):
        self._expat.Parse(chunk, False)
        self._fed += len(chunk)
        if self._fed - self._expat.CurrentByteIndex > _LONGEST_TAG:
            raise ValueError(f"a tag of more than {_LONGEST_TAG >> 20} MB")

    def close(self):
        self._expat.Parse(b"", True)

    @staticmethod
    def _on_doctype(*_):
        raise ValueError("document types are not allowed")

    # One by one

    def _handle_one_by_one(self):
        self._expat.StartElementHandler = self._on_start
        self._expat.EndElementHandler = self._on_end
        self._expat.CharacterDataHandler = self._on_text

    def _on_start(self, name, attributes):
        parent = self._open[-1]
        handler = parent.children.get(name) or self._unlisted(parent, name)
        self._open.append(handler)
        if handler.start:
            handler.start(attributes)
        elif handler.whole:
            self._gather(name, attributes)

    def _unlisted(self, parent, name):
        if parent.text:
            raise ValueError(f"{name.rpartition(' ')[2]!r} within a text")
        if len(self._open) == 1:
            raise ValueError(f"not the root of such a part: {name!r}")
        if len(self._open) > _DEEPEST_NESTING:
            raise ValueError("nested too deeply")
        return _SKIPPED

    def _on_end(self, _):
        handler = self._open.pop()
        if handler.text:
            text = "".join(self._pieces)
            self._pieces.clear()
            handler.text(text)
        elif handler.end:
            handler.end()

    def _on_text(self, text):
        handler = self._open[-1]
        if handler.text:
            self._pieces.append(text)
        elif handler is not _SKIPPED and text.strip(_BLANKS):
            raise ValueError(f"text between elements: {text.strip(_BLANKS)[:20]!r}")

    # As a whole

    def _gather(self, name, attributes):
        self._elements.append(Element(name, attributes))
        self._expat.StartElementHandler = self._on_inner_start
        self._expat.EndElementHandler = self._on_inner_end
        self._expat.CharacterDataHandler = self._on_inner_text

    def _on_inner_start(self, name, attributes):
        if len(self._elements) > _DEEPEST_NESTING:
            raise ValueError("nested too deeply")
        element = Element(name, attributes)
        self._elements[-1].children.append(element)
        self._elements.append(element)

    def _on_inner_end(self, _):
        element = self._elements.pop()
        if element.children and element.text.strip(_BLANKS):
            raise ValueError(f"text between elements: {element.text.strip(_BLANKS)[:20]!r}")
        if not self._elements:
            self._handle_one_by_one()
            self._open.pop().whole(element)

    def _on_inner_text(self, text):
        self._elements[-1].pieces.append(text)


# Values -------------------------------------------------------------------------------------------

def number(text):
    """Returns the value of a decimal number; raises ValueError for anything else.

    Python itself would take digits of other scripts, underscores and "infinity" as well.
    """
    value = float(text) if text.isascii() and "_" not in text else math.nan
    if not math.isfinite(value):
        raise ValueError(f"no number: {text[:20]!r}")
    return value


def unsigned(text):
    """Returns the value of an index or identifier; raises ValueError for what has a sign, say."""
    digits = text.strip(_BLANKS)
    if not (digits.isdigit() and digits.isascii() and len(digits) <= 10):
        raise ValueError(f"no unsigned number: {text[:20]!r}")
    return int(digits)


def flag(text):
    if text not in ("0", "1", "false", "true"):
        raise ValueError(f"neither true nor false: {text[:20]!r}")
    return text in ("1", "true")


def entry(table, index):
    """Returns table[index], and raises ValueError where there is none."""
    if index >= len(table):
        raise ValueError(f"no entry {index} among {len(table)}")
    return table[index]


def relation_id(attributes):
    """Returns the identifier in an r:id attribute, or None."""
    return next((attributes[f"{namespace} id"] for namespace in _OFFICE
                 if f"{namespace} id" in attributes), None)


def relation_kind(name):
    """Returns what a relationship's type stands for, such as "worksheet"."""
    namespace, _, kind = name.rpartition("/")
    return kind if namespace in _OFFICE else name
