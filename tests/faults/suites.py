"""Two small suites with a report for every format: "same" passes, in "other" every pair differs."""

import os
import re
import shutil
import subprocess

LAYOUT_NAMESPACE = "urn:test:layout"
SCHEMA = f"""<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified"
  targetNamespace="{LAYOUT_NAMESPACE}"><xs:element name="document"><xs:complexType><xs:sequence>
  <xs:element name="item" type="xs:string" maxOccurs="unbounded"/>
  </xs:sequence></xs:complexType></xs:element></xs:schema>"""
# The text of an output, in which only the number varies.
CONTENTS = {
    "layout-data": f'<document xmlns="{LAYOUT_NAMESPACE}">\n<item>%d</item>\n</document>\n',
    "vmd": """Report: virtual object mapping and paging
written by process 79497
Mapping Mode - paged, 4096 objects

Mapping Statistics - Virtual Objects (Current/Max/Cumulative): 239/554/%d
Paging Statistics - Page Ins: 23, Page Outs: 6, Pages Resident: 60
Total Objects with reference count > 0 : 37
"""}
PAGE = "<p>\n%d,\u00e9</p>\n"
# Stands in for the interpreter of the comparison scripts; a real one is too slow for so many runs.
COMPARER = """#!/bin/sh
while [ $# -gt 2 ]; do shift; done
exec cmp -s "$1" "$2"
"""
OPTIONS = ["--cgs-output-dir", "v5DebugCGS", "--prp-output-dir", "v5DebugPRP",
           "--layout-namespace", LAYOUT_NAMESPACE]


class Suites:
    """A folder `root` with server/work, the suites and their outputs."""

    def __init__(self, root, program):
        self.root = root
        self.work = root / "server/work"
        self._write("server/schemas/layoutDataXMLV3.xsd", SCHEMA)
        self._write("bin/python", COMPARER)
        os.chmod(root / "bin/python", 0o755)
        for script in ("diffpdf/diffPdfFiles.py", "DiffXlsx/DiffXlsx.py"):
            self._write("src/vask/testdata/Scripts/" + script, "")
        self.work.mkdir()
        (root / "server/temp/vask/testResults").mkdir(parents=True)
        for report in ("same/Same", "same/Alike", "other/Other"):
            self._write(f"server/{report}.xml", "a report")
        table = subprocess.run([program, "formats"], capture_output=True, text=True, check=True).stdout
        self.formats = [re.split("  +", line) for line in table.splitlines()[1:]]
        for format_ in self.formats:
            self._add_pairs(*format_)
        self.files = self.present()
        self._masters = list((root / "server").glob("*/Masters/**/"))

    def _add_pairs(self, name, folder, masters, how):
        folder = {"cgs": "v5DebugCGS", "prp": "v5DebugPRP"}.get(name, folder)
        text = CONTENTS.get(name, PAGE)
        rows = {"same/Same": text % 1284, "other/Other": text % 1248}
        if how not in ("byte identity", "external script"):
            rows["same/Alike"] = (text % 1290 if name == "vmd" else
                                  (text % 1284).replace("\n", "\r\n"))
        for report, actual in rows.items():
            suite, _, report = report.partition("/")
            path = masters.replace("REPORT", report).replace("*", "")
            self._write(f"server/{suite}/{path}", text % 1284)
            self._write(f"server/webcontent/bi/{folder}/{os.path.basename(path)}", actual)

    def _write(self, path, content):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_bytes(content.encode())

    def touch_folders(self):
        """Makes folders look changed, so that no run reuses a listing and all make the same calls."""
        for folder in self._masters:
            os.utime(folder)

    def present(self):
        """The path of every file, below the root."""
        return {str(path.relative_to(self.root)) for path in self.root.rglob("*") if path.is_file()}

    def take_new(self):
        """Removes the files that a run has left, and returns them as path and content."""
        new = {}
        for path in self.present() - self.files:
            new[path] = (self.root / path).read_bytes()
            (self.root / path).unlink()
        shutil.rmtree(self.root / "server/record", ignore_errors=True)
        return new
