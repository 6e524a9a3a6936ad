#!/usr/bin/env python3
"""Draw what a program printed on a terminal as an SVG picture.

    orvdiff verify --color always ... | tools/terminal_picture.py "the command" > picture.svg

Reads text with ANSI colours from standard input. The argument is shown as the command typed.
"""

import html
import re
import sys

COLUMNS = 104
CHARACTER = 8.4
LINE = 19
COLORS = {"31": "#f47067", "32": "#8ddb8c", "33": "#daaa3f", "1": "#ffffff", "2": "#768390"}
PLAIN = "#adbac7"
ESCAPE = re.compile(r"\x1b\[([0-9;]*)m")


def fold(line):
    """The line as a terminal of COLUMNS columns wraps it; escapes take no room."""
    folded, width = "", 0
    for piece in re.split(r"(\x1b\[[0-9;]*m)", line):
        if ESCAPE.fullmatch(piece):
            folded += piece
            continue
        for character in piece:
            if width == COLUMNS:
                folded += "\n"
                width = 0
            folded += character
            width += 1
    return folded.split("\n")


def spans(line, color):
    """The line as coloured SVG text, and the colour in force at its end."""
    drawn = ""
    position = 0
    for match in ESCAPE.finditer(line + "\x1b[m"):
        text = line[position:match.start()]
        if text:
            drawn += f'<tspan fill="{color}">{html.escape(text)}</tspan>'
        codes = [code for code in match.group(1).split(";") if code in COLORS]
        if match.end() <= len(line):
            color = COLORS[codes[-1]] if codes else PLAIN
        position = match.end()
    return drawn, color


def main():
    lines = [f"\x1b[2m$\x1b[0m \x1b[1m{' '.join(sys.argv[1:])}\x1b[0m"]
    for line in sys.stdin.read().rstrip("\n").split("\n"):
        lines += fold(line)
    height = LINE * len(lines) + 30
    width = round(COLUMNS * CHARACTER + 32)
    print(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}">')
    print(f'<rect width="{width}" height="{height}" rx="8" fill="#22272e"/>')
    print('<g font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="14" '
          'xml:space="preserve">')
    color = PLAIN
    for number, line in enumerate(lines):
        drawn, color = spans(line, color)
        print(f'<text x="16" y="{LINE * number + 28}">{drawn}</text>')
    print("</g>\n</svg>")


if __name__ == "__main__":
    main()
