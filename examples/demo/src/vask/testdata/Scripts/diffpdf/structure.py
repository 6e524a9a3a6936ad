"""Tells whether the cross-reference tables of a PDF file lead a reader to its objects.

Poppler reads a file without usable tables all the same: it collects whatever looks like an object
and says nothing. What it then shows is a guess; objects of an earlier revision come back, and other
viewers guess otherwise. So the tables are followed here, by the rules that poppler goes by.
"""

import mmap
import re

_SEARCHED_HEAD = 1024
_SEARCHED_TAIL = 24576

_START = re.compile(rb"startxref\s+(\d{1,15})")
_SUBSECTION = re.compile(rb"\s*(\d{1,10})\s+(\d{1,10})(?=\s)")
_ENTRY = re.compile(rb"\s*\d{1,20}\s+\d{1,10}\s+[nf](?!\w)")
_TRAILER = re.compile(rb"\s*trailer\s*<<")
_STREAM = re.compile(rb"\s*\d{1,10}\s+\d{1,5}\s+obj\s*<<(.*?)\bstream\b", re.DOTALL)
_BEHIND_TRAILER = re.compile(rb"startxref|\bobj\b")
_FURTHER = re.compile(rb"/(?:Prev|XRefStm)\s+(\d{1,15})")


def broken_table(path):
    """Returns what is wrong with the first table that cannot be followed, or "" if all can."""
    with open(path, "rb") as stream, \
            mmap.mmap(stream.fileno(), 0, access=mmap.ACCESS_READ) as content:
        # Offsets count from the header, which mail gateways and the like put lines before.
        origin = max(0, content.find(b"%PDF-", 0, _SEARCHED_HEAD))
        at = content.rfind(b"startxref", max(0, len(content) - _SEARCHED_TAIL))
        start = _START.match(content, at) if at >= 0 else None
        if not start:
            return "it does not say where its cross-reference table is (no startxref)"
        pending, seen = [int(start[1])], set()
        while pending:
            offset = pending.pop()
            if offset in seen:
                continue
            seen.add(offset)
            trailer = _trailer_at(content, origin + offset)
            if trailer is None:
                return f"there is no cross-reference table at offset {offset}"
            pending += map(int, _FURTHER.findall(trailer))
    return ""


def _trailer_at(content, at):
    """Returns the dictionary behind the table, or of the table stream, at `at`; None if neither."""
    stream = _STREAM.match(content, at)
    if stream:
        return stream[1] if b"/XRef" in stream[1] else None
    table = re.compile(rb"\s*xref\b").match(content, at)
    if not table:
        return None
    at = table.end()
    while subsection := _SUBSECTION.match(content, at):
        at = subsection.end()
        for _ in range(int(subsection[2])):
            entry = _ENTRY.match(content, at)
            if not entry:
                return None
            at = entry.end()
    trailer = _TRAILER.match(content, at)
    if not trailer:
        return None
    end = _BEHIND_TRAILER.search(content, trailer.end())
    return content[trailer.end():end.start() if end else len(content)]
