#!/usr/bin/env python3
"""Holds the XML validation to xmllint's verdict on real files.

usage: xml_second_opinion.py VERDICTS FOLDER... [--truncated N]

VERDICTS is the program xml_verdicts of this folder. Every file below the FOLDERs whose name ends
like an XML file's is given to it and to "xmllint --noout --nonet"; with --truncated, N of them are
also tried cut short at two places and with one byte damaged. Prints how often the two agree, and
the disagreements by what each side said. Exit status: 0 no disagreement, 1 some, 2 trouble.
"""

import argparse
import collections
import pathlib
import random
import re
import subprocess
import sys
import tempfile

SUFFIXES = {".xml", ".xsl", ".xsd", ".svg", ".rng", ".xslt", ".xhtml", ".page", ".ui", ".docbook",
            ".mallard", ".gir", ".rdf", ".wadl", ".wsdl", ".xmi", ".xmp", ".xul"}


def real_files(folders):
    files = set()
    for folder in folders:
        for path in pathlib.Path(folder).rglob("*"):
            if path.suffix in SUFFIXES and path.is_file() and path.stat().st_size < 20_000_000:
                files.add(path.resolve())
    return sorted(files)


def damaged_copies(files, count, folder):
    """Copies that are cut in the middle, lack the last byte but a few, or have one byte changed."""
    chosen = random.Random(1).sample(files, min(count, len(files)))
    for number, path in enumerate(chosen):
        text = path.read_bytes()
        middle = len(text) // 2
        for kind, damaged in (("cut", text[:middle]), ("short", text[:-5]),
                              ("byte", text[:middle] + b"<" + text[middle + 1:]),
                              ("utf8", text[:middle] + b"\xe9" + text[middle + 1:])):
            copy = folder / f"{number}-{kind}{path.suffix}"
            copy.write_bytes(damaged)
            yield copy


def our_verdicts(program, files):
    """Name -> None for a pass, else the message of the failure block."""
    answer = subprocess.run([program], input="".join(f"{path}\n" for path in files).encode(),
                            stdout=subprocess.PIPE, check=True).stdout.decode(errors="replace")
    verdicts = {}
    message = "no message"
    for line in answer.split("\n"):
        if " error message: " in line:
            message = line.split(" error message: ", 1)[1]
        verdict, tab, name = line.partition("\t")
        if tab and verdict in ("pass", "fail"):
            verdicts[name] = None if verdict == "pass" else message
            message = "no message"
    return verdicts


def xmllint_verdict(path):
    done = subprocess.run(["xmllint", "--noout", "--nonet", str(path)], stderr=subprocess.PIPE,
                          check=False)
    if done.returncode == 0:
        return None
    found = re.search(r": (?:\w+ )*error : (.*)", done.stderr.decode(errors="replace"))
    return found.group(1) if found else f"status {done.returncode}"


def without_names(message):
    """The message with what varies from file to file blotted out, so that like counts with like."""
    message = re.sub(r"'[^']*'|\"[^\"]*\"", "'...'", message or "accepted")
    return re.sub(r"line \d+.*| \w+$" if "mismatch" in message else r"\d+", "N", message)[:90]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("verdicts")
    parser.add_argument("folders", nargs="+")
    parser.add_argument("--truncated", type=int, default=0, metavar="N")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        files = real_files(arguments.folders)
        if not files:
            print("no XML file in these folders", file=sys.stderr)
            return 2
        files += damaged_copies(files, arguments.truncated, pathlib.Path(folder))
        ours = our_verdicts(arguments.verdicts, files)
        disagreements = collections.defaultdict(list)
        refused = 0
        for path in files:
            second = xmllint_verdict(path)
            first = ours[str(path)]
            refused += first is not None
            if (first is None) != (second is None):
                disagreements[without_names(first), without_names(second)].append(path)
    count = sum(map(len, disagreements.values()))
    print(f"{len(files)} files, {refused} refused, {count} disagreements")
    for (first, second), paths in sorted(disagreements.items(), key=lambda item: -len(item[1])):
        print(f"{len(paths):6}  here: {first}\n        xmllint: {second}\n        e.g. {paths[0]}")
    return 1 if disagreements else 0


if __name__ == "__main__":
    sys.exit(main())
