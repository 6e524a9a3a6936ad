"""An XLSX file as the ZIP package it is: its parts, how they are related, and their XML.

The files come from programs under test, so nothing is taken on trust: sizes are limited before a
part is unpacked, XML is parsed piece by piece, and document types, which could declare entities
that grow, are refused.
"""

import posixpath
import xml.parsers.expat
import zipfile
import zlib

from comparison import Trouble, head, same_streams

_CHUNK = 1 << 16
_DEEPEST_NESTING = 256
_LARGEST_PACKAGE = 1 << 30  # unpacked bytes
_LARGEST_RATIO = 500  # unpacked to packed; repetitive sheets reach 100, bombs 1000
_SMALL_PART = 16 << 20  # unpacked bytes up to which any ratio will do

# What reading a damaged package, or values that are none, can raise.
_DAMAGE = (zipfile.BadZipFile, zlib.error, EOFError, NotImplementedError, RuntimeError, OSError,
           ValueError, KeyError, IndexError, xml.parsers.expat.ExpatError)


class Package:
    """One package; its operations raise Trouble when it is not what it should be."""

    def __init__(self, path):
        self.path = path
        if head(path, 8) == b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1":
            raise Trouble(f"{path!r} is encrypted, or an old binary XLS file")
        try:
            self._zip = zipfile.ZipFile(path)
        except _DAMAGE as error:
            raise Trouble(f"{path!r} is not a readable ZIP file: {error}") from None
        self._parts = {}
        for info in self._zip.infolist():
            if self._parts.setdefault(_part_name(info.filename), info) is not info:
                raise Trouble(f"{path!r} holds the part {info.filename!r} twice")
        if sum(info.file_size for info in self._parts.values()) > _LARGEST_PACKAGE:
            raise Trouble(f"{path!r} unpacks to more than {_LARGEST_PACKAGE >> 20} MB")

    def close(self):
        self._zip.close()

    def _open(self, part):
        info = self._parts.get(part)
        if info is None:
            raise Trouble(f"{self.path!r} lacks the part {part!r}")
        if info.file_size > max(_SMALL_PART, info.compress_size * _LARGEST_RATIO):
            raise Trouble(f"{self.path!r} looks like a ZIP bomb: {part!r} unpacks to "
                          f"{info.file_size >> 20} MB")
        return self._zip.open(info)

    def same_part(self, part, other, other_part):
        """Tells whether a part of this package and one of another hold the same bytes.

        Parts that both packages lack, named "", are the same. Damaged parts are not: parsing them
        tells whose the damage is.
        """
        if not part or not other_part:
            return part == other_part
        try:
            with self._open(part) as ours, other._open(other_part) as theirs:
                return same_streams(ours, theirs)
        except _DAMAGE:
            return False

    def relations(self, source):
        """Returns {identifier: (kind, part)} of what a part refers to; "" is the package."""
        folder, name = posixpath.split(source)
        part = posixpath.join(folder, "_rels", f"{name}.rels")
        found = {}

        def relationship(attributes):
            if attributes.get("TargetMode") != "External":
                target = posixpath.join("/", folder, attributes["Target"])
                kind = attributes["Type"].rpartition("/")[2]
                found[attributes["Id"]] = (kind, _part_name(posixpath.normpath(target)))

        if part in self._parts:
            self.parse(part, {"Relationship": relationship})
        return found

    def related(self, source, wanted):
        """Returns the name of the stored part of the wanted kind that `source` refers to, or "".

        Some producers refer to a table of texts or styles that they had no need to store.
        """
        return next((part for kind, part in self.relations(source).values()
                     if kind == wanted and part in self._parts), "")

    def parse(self, part, starts, ends=None):
        """Parses a part to its end; see parse_piecewise."""
        for _ in self.parse_piecewise(part, starts, ends or {}):
            pass

    def parse_piecewise(self, part, starts, ends):
        """Calls starts[tag](attributes) and ends[tag](text), and yields now and then in between.

        Tags stand without their namespaces, and those not listed are skipped; `text` is what
        stands behind the last start tag.
        """
        parser = _parser(starts, ends)
        try:
            with self._open(part) as stream:
                while chunk := stream.read(_CHUNK):
                    parser.Parse(chunk, False)
                    yield
                parser.Parse(b"", True)
                yield
        except _DAMAGE as error:
            reason = f"no entry {error}" if isinstance(error, LookupError) else error
            raise Trouble(f"{self.path!r} is damaged in {part!r}: {reason}") from None


def _part_name(name):
    return name.replace("\\", "/").lstrip("/").lower()


def _parser(starts, ends):
    parser = xml.parsers.expat.ParserCreate(namespace_separator=" ")
    parser.buffer_text = True
    handlers = {}  # (on start, on end) by the name with its namespace, as far as names have come up
    pieces = []
    depth = 0

    def on_start(name, attributes):
        nonlocal depth
        depth += 1
        if depth > _DEEPEST_NESTING:
            raise ValueError("nested too deeply")
        if name not in handlers:
            tag = name.rpartition(" ")[2]
            handlers[name] = (starts.get(tag), ends.get(tag))
        pieces.clear()
        handler = handlers[name][0]
        if handler:
            handler(attributes)

    def on_end(name):
        nonlocal depth
        depth -= 1
        handler = handlers[name][1]
        if handler:
            handler("".join(pieces))

    def on_doctype(*_):
        raise ValueError("document types are not allowed")

    parser.StartElementHandler = on_start
    parser.EndElementHandler = on_end
    parser.CharacterDataHandler = pieces.append
    parser.StartDoctypeDeclHandler = on_doctype
    return parser
