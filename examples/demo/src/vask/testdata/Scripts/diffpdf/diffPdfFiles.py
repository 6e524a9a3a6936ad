#!/usr/bin/env python3
"""Compares two PDF files by what a reader sees.

These layers are compared in turn, and the first one that differs is reported:

  structure  poppler finds syntax errors in one file, and none in the other
  pages      the number of pages
  text       the words of each page, line by line as they stand there
  picture    each page drawn as a viewer shows it (crop box, annotations included)

By default every pixel must be the same. Shifts below about a quarter of a pixel can escape; --dpi
makes the pixels smaller. Fonts that a file does not embed are drawn with substitutes, so two of
them may look alike here and differ elsewhere.

Not compared are the document properties (title, producer, dates, file identifiers), compression and
the order of objects, and what the page does not show: bookmarks, link targets, attachments.

A file whose cross-reference table is missing or wrong is refused, because poppler repairs it by
guessing. A pair that takes longer than the time limit (60 s by default) is given up, and every
program that was started is killed.

Exit status: 0 equal, 1 different, 2 trouble (unreadable, locked or repaired file, time limit
reached, poppler missing).
"""

import argparse
import collections
import itertools
import os
import re
import sys

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

from comparison import (DIFFERENT, EQUAL, Trouble, excerpts, head, parse_arguments, run,
                        run_within, same_bytes)

_LARGEST_TEXT = 256 << 20  # bytes of pdftotext's output
_LARGEST_PICTURE = 100_000_000  # pixels; a page of 3.5 by 3.5 metres at 72 dpi

# One page's text, and the boxes (left, top, right, bottom, in points) of the words it leaves out.
Page = collections.namedtuple("Page", "lines masks")

# One page drawn; `pixels` holds red, green and blue of every pixel, row by row from the top.
Picture = collections.namedtuple("Picture", "width height pixels")

# The first difference: the layer and the place in it, and what each side has there.
Difference = collections.namedtuple("Difference", "place master actual")


def main(argv):
    options, master, actual = parse_arguments(option_parser(), argv)
    identical = same_bytes(master, actual)
    for path in (master, actual):
        if b"%PDF-" not in head(path, 1024):
            raise Trouble(f"{path!r} is not a PDF file")
    if identical:
        return EQUAL
    return run_within(options.timeout, lambda: report(compare(master, actual, options)))


def report(difference):
    if not difference:
        return EQUAL
    print(f"different: {difference.place}\n"
          f"  master: {difference.master}\n  actual: {difference.actual}")
    return DIFFERENT


def option_parser():
    parser = argparse.ArgumentParser(
        usage="%(prog)s [options] MASTER ACTUAL", allow_abbrev=False, description=__doc__,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="Options stand before the files.")
    parser.add_argument(
        "--dpi", type=number_within(10, 600), default=72,
        help="resolution of the drawn pages, 10 to 600 (default: %(default)s)")
    parser.add_argument(
        "--tolerance", type=number_within(0, 255), default=0, metavar="N",
        help="how far a colour channel of a pixel, 0 to 255, may differ (default: %(default)s)")
    parser.add_argument(
        "--ignore-text", type=regular_expression, metavar="REGEX",
        help="leave out matching text, and its place on the drawn page; a match stays within one "
             "line, whose words are separated by one blank each")
    parser.add_argument(
        "--timeout", type=number_within(0, 86400), default=60, metavar="SECONDS",
        help="give up after this time and kill what was started; 0 for never "
             "(default: %(default)s)")
    return parser


def number_within(least, most):
    def number(text):
        value = int(text)
        if not least <= value <= most:
            raise argparse.ArgumentTypeError(f"{text} is not within {least} and {most}")
        return value
    return number


def regular_expression(text):
    try:
        return re.compile(text)
    except re.error as error:
        raise argparse.ArgumentTypeError(f"not a regular expression: {error}") from None


def compare(master, actual, options):
    """Returns the first Difference, or None."""
    from poppler import describe  # Late: identical files need none of what it loads.
    documents = describe(master, actual)
    left, right = documents
    if bool(left.complaint) != bool(right.complaint):
        sides = excerpts(left.complaint or "sound", right.complaint or "sound")
        return Difference("structure", *sides)
    if left.pages != right.pages:
        return Difference("pages", left.pages, right.pages)
    texts = read_pages(documents, options.ignore_text)
    difference = compare_texts(*texts)
    if difference:
        return difference
    masks = [ours.masks + theirs.masks for ours, theirs in zip(*texts)]
    return compare_pictures(documents, masks, options)


# Text ---------------------------------------------------------------------------------------------

def read_pages(documents, ignored):
    """Returns, for each document, the list of its Pages; `ignored` is a pattern or None."""
    from poppler import on_both
    layout = ("-bbox-layout", "-cropbox") if ignored else ("-layout",)
    paths = [document.path for document in documents]
    with on_both(paths, "pdftotext", *layout, "-enc", "UTF-8", output=["-"]) as programs:
        texts = [read_text(path, program) for path, program in zip(paths, programs)]
    if ignored:
        return [pages_without(ignored, text) for text in texts]
    return [[Page(words_of_lines(page), []) for page in text.split("\f")] for text in texts]


def words_of_lines(text):
    """Returns the lines that hold words, with one blank between words.

    One longer word makes pdftotext space the whole page anew; where words stand is for the pictures
    to compare.
    """
    lines = (" ".join(line.split()) for line in text.split("\n"))
    return [line for line in lines if line]


def read_text(path, program):
    text = program.output.read(_LARGEST_TEXT + 1)
    if len(text) > _LARGEST_TEXT:
        raise Trouble(f"{path!r} holds more than {_LARGEST_TEXT >> 20} MB of text")
    status, _ = program.finish()
    if status:
        raise Trouble(f"pdftotext cannot read {path!r} (exit status {status})")
    return text.decode(errors="replace")


def pages_without(ignored, markup):
    """Parses the page, line and word boxes of pdftotext and leaves out what `ignored` matches."""
    import xml.etree.ElementTree as ElementTree  # Late: few calls ignore text.
    markup = re.sub(r"[\x00-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]", "\ufffd", markup)
    pages = []
    for page in ElementTree.fromstring(markup).iterfind(".//{*}page"):
        lines, masks = [], []
        for line in page.iterfind(".//{*}line"):
            text = " ".join(word.text or "" for word in line)
            spans = [match.span() for match in ignored.finditer(text)]
            masks += [box for box, start, end in placed_words(line)
                      if any(start < last and first < end for first, last in spans)]
            lines.append(ignored.sub("", text))
        pages.append(Page(lines, masks))
    return pages


def placed_words(line):
    """Yields (box, start, end) of each word, as offsets into the line joined by blanks."""
    start = 0
    for word in line:
        end = start + len(word.text or "")
        yield tuple(float(word.get(side)) for side in ("xMin", "yMin", "xMax", "yMax")), start, end
        start = end + 1


def compare_texts(left, right):
    for number, pages in enumerate(itertools.zip_longest(left, right, fillvalue=Page([], [])), 1):
        ours, theirs = (page.lines for page in pages)
        if ours == theirs:
            continue
        for line, texts in enumerate(itertools.zip_longest(ours, theirs, fillvalue=""), 1):
            if texts[0] != texts[1]:
                return Difference(f"text, page {number}, line {line}", *excerpts(*texts))
    return None


# Pictures -----------------------------------------------------------------------------------------

def compare_pictures(documents, masks, options):
    """Draws both documents side by side, one page of each in memory, up to the first difference."""
    from poppler import on_both
    for document in documents:
        if document.largest * (options.dpi / 72) ** 2 > _LARGEST_PICTURE:
            raise Trouble(f"{document.path!r} has a page too large to draw at {options.dpi} dpi")
    paths = [document.path for document in documents]
    with on_both(paths, "pdftoppm", "-cropbox", "-r", str(options.dpi)) as programs:
        drawn = [pictures(*pair) for pair in zip(documents, programs)]
        for number, (left, right) in enumerate(zip(*drawn), 1):
            boxes = masks[number - 1] if number <= len(masks) else []
            difference = compare_pixels(left, right, boxes, options)
            if difference:
                return difference._replace(place=f"picture, page {number}, {difference.place}")
        for program in programs:
            program.finish()
    return None


def pictures(document, program):
    """Yields a Picture for each page of the document; raises Trouble when one is missing."""
    for number in range(1, document.pages + 1):
        header = b"".join(program.output.readline() for _ in range(3)).split()
        if len(header) == 4 and header[0] == b"P6":
            width, height = int(header[1]), int(header[2])
            pixels = program.output.read(width * height * 3)
            if len(pixels) == width * height * 3:
                yield Picture(width, height, pixels)
                continue
        raise Trouble(f"poppler cannot draw page {number} of {document.path!r}")


def compare_pixels(left, right, boxes, options):
    if left == right:
        return None
    if (left.width, left.height) != (right.width, right.height):
        sizes = [f"{picture.width} x {picture.height} pixels" for picture in (left, right)]
        return Difference("size", *sizes)
    left, right = (blank(picture, boxes, options.dpi) for picture in (left, right))
    spots = differing_pixels(left, right, options.tolerance)
    if not spots:
        return None
    columns, rows = zip(*spots)
    place = (f"{len(spots)} pixels within x {min(columns)} to {max(columns)}, "
             f"y {rows[0]} to {rows[-1]} at {options.dpi} dpi")
    return Difference(place, *(colour_at(picture, *spots[0]) for picture in (left, right)))


def blank(picture, boxes, dpi):
    """Returns the picture with the boxes, given in points, painted black, a pixel beyond each."""
    if not boxes:
        return picture
    pixels = bytearray(picture.pixels)
    for box in boxes:
        left, top, right, bottom = (int(edge * dpi / 72) for edge in box)
        left, right = max(0, left - 1), min(picture.width, right + 2)
        for row in range(max(0, top - 1), min(picture.height, bottom + 2)):
            start = (row * picture.width + left) * 3
            length = max(0, right - left) * 3
            pixels[start:start + length] = bytes(length)
    return picture._replace(pixels=pixels)


def differing_pixels(left, right, tolerance):
    """Returns the (column, row) of every pixel that differs beyond the tolerance, top to bottom."""
    spots = []
    length = left.width * 3
    for row in range(left.height):
        ours, theirs = (picture.pixels[row * length:(row + 1) * length]
                        for picture in (left, right))
        if ours != theirs:
            columns = {i // 3 for i, (a, b) in enumerate(zip(ours, theirs))
                       if abs(a - b) > tolerance}
            spots += [(column, row) for column in sorted(columns)]
    return spots


def colour_at(picture, column, row):
    start = (row * picture.width + column) * 3
    return f"#{picture.pixels[start:start + 3].hex()} at x {column}, y {row}"


if __name__ == "__main__":
    run(main)
