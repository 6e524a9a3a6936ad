#!/usr/bin/env python3
"""Draw what a program printed on a terminal as an SVG picture.

    orvdiff verify --color always ... | tools/terminal_picture.py "the command" > picture.svg

Reads text with ANSI colours from standard input. The arguments are shown as the command line.

Browsers disagree about white space in SVG and about the width of a monospaced character, so nothing
depends on either: every run of text has its own position and length.
"""

import html
import re
import sys

MOST_COLUMNS = 132
INDENT = 17  # of what was wrapped
CHARACTER = 8.4
MARGIN = 16
LINE = 19
COLORS = {"31": "#f47067", "32": "#8ddb8c", "33": "#daaa3f", "1": "#ffffff", "2": "#768390"}
PLAIN = "#adbac7"
ESCAPE = re.compile(r"\x1b\[([0-9;]*)m")


def fold(line):
    """The line, wrapped between words within MOST_COLUMNS columns; escapes take no room."""
    folded, width = "", 0
    for word in re.findall(r"\s*(?:\x1b\[[0-9;]*m|[^\s])+|\s+$", line):
        if width > 0 and width + columns(word) > MOST_COLUMNS:
            folded += "\n" + " " * INDENT
            width, word = INDENT, word.lstrip()
        folded += word
        width += columns(word)
    return folded.split("\n")


def columns(line):
    return len(ESCAPE.sub("", line))


def draw(line, y, color):
    """Returns the line as SVG text, and the colour in force at its end."""
    drawn = line_below = ""
    column = 0
    for piece in re.split(r"(\x1b\[[0-9;]*m|  +)", line):
        escape = ESCAPE.fullmatch(piece)
        if escape:
            codes = escape.group(1).split(";")
            colors = [code for code in codes if code in COLORS]
            color = COLORS[colors[-1]] if colors else PLAIN
            line_below = ' text-decoration="underline"' if "4" in codes else ""
            continue
        text = piece.strip(" ")
        if text:
            x = MARGIN + CHARACTER * (column + piece.index(text))
            drawn += (f'<text x="{x:.1f}" y="{y}" textLength="{CHARACTER * len(text):.1f}" '
                      f'fill="{color}"{line_below}>{html.escape(text)}</text>\n')
        column += len(piece)
    return drawn, color


def main():
    lines = [f"\x1b[2m$\x1b[0m \x1b[1m{' '.join(sys.argv[1:])}\x1b[0m"]
    for line in sys.stdin.read().rstrip("\n").split("\n"):
        lines += fold(line)
    height = LINE * len(lines) + 30
    width = round(max(map(columns, lines)) * CHARACTER + 2 * MARGIN)
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
          f'viewBox="0 0 {width} {height}">')
    print(f'<rect width="{width}" height="{height}" rx="8" fill="#22272e"/>')
    print('<g font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="14">')
    color = PLAIN
    for number, line in enumerate(lines):
        drawn, color = draw(line, LINE * number + 28, color)
        print(drawn, end="")
    print("</g>\n</svg>")


if __name__ == "__main__":
    main()
