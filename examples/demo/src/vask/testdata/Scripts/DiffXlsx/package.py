"""An XLSX file as the ZIP package it is: its parts, how they are related, and their XML.

The files come from programs under test, so nothing is taken on trust: sizes are limited before a
part is unpacked, XML is parsed piece by piece, and document types, which could declare entities
that grow, are refused.
"""

import collections
import posixpath
import xml.parsers.expat
import zipfile
import zlib

from comparison import Trouble, head, same_streams
from markup import RELATIONSHIPS, SPREADSHEET, Handler, Parser, handler_tree, relation_kind

# What a part refers to: a `part` of the package, or the `address` of something outside.
Relation = collections.namedtuple("Relation", "kind part address")

_CHUNK = 1 << 16
_LARGEST_PACKAGE = 1 << 30  # unpacked bytes
_LARGEST_RATIO = 500  # unpacked to packed; repetitive sheets reach 100, bombs 1000
_SMALL_PART = 16 << 20  # unpacked bytes up to which any ratio will do

# What reading a damaged package, or values that are none, can raise. A LookupError also comes from
# XML in an unknown encoding.
_DAMAGE = (zipfile.BadZipFile, zlib.error, EOFError, NotImplementedError, RuntimeError, OSError,
           ValueError, LookupError, xml.parsers.expat.ExpatError)


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
            if info.compress_type not in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
                raise Trouble(f"{path!r} holds {info.filename!r} in a compression that workbooks "
                              "do not use")
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

    def same_sheet_part(self, part, other, other_part):
        """Tells the same of parts and of what they refer to."""
        return (self.same_part(part, other, other_part)
                and self.same_part(self._relations_part(part), other,
                                   other._relations_part(other_part)))

    def _relations_part(self, source):
        folder, name = posixpath.split(source)
        part = posixpath.join(folder, "_rels", f"{name}.rels")
        return part if part in self._parts else ""

    def relations(self, source):
        """Returns {identifier: Relation} of what a part refers to; "" is the package."""
        folder = posixpath.dirname(source)
        found = {}

        def relationship(attributes):
            target, mode = attributes["Target"], attributes.get("TargetMode", "Internal")
            kind = relation_kind(attributes["Type"])
            if attributes["Id"] in found:
                raise ValueError(f"identifier {attributes['Id']!r} twice")
            if mode == "External":
                found[attributes["Id"]] = Relation(kind, "", target)
            else:
                path = posixpath.normpath(posixpath.join("/", folder, target))
                found[attributes["Id"]] = Relation(kind, _part_name(path), "")

        part = self._relations_part(source)
        if part:
            self.parse(part, "Relationships", {"Relationship": Handler(relationship)},
                       RELATIONSHIPS)
        return found

    def related(self, source, wanted):
        """Returns the name of the stored part of the wanted kind that `source` refers to, or "".

        Some producers refer to a table of texts or styles that they had no need to store.
        """
        return next((relation.part for relation in self.relations(source).values()
                     if relation.kind == wanted and relation.part in self._parts), "")

    def parse(self, part, root, handlers, namespaces=SPREADSHEET):
        """Parses a part to its end; see parse_piecewise."""
        for _ in self.parse_piecewise(part, root, handlers, namespaces):
            pass

    def parse_piecewise(self, part, root, handlers, namespaces=SPREADSHEET):
        """Parses a part with this root, as markup.handler_tree describes it, and yields now and
        then in between."""
        try:
            parser = Parser(handler_tree(root, handlers, namespaces))
            with self._open(part) as stream:
                while chunk := stream.read(_CHUNK):
                    parser.feed(chunk)
                    yield
                parser.close()
                yield
        except _DAMAGE as error:
            reason = f"no {error}" if isinstance(error, KeyError) else error
            raise Trouble(f"{self.path!r} is damaged in {part!r}: {reason}") from None


def _part_name(name):
    return name.replace("\\", "/").lstrip("/").lower()
