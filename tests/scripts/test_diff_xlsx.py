"""The XLSX comparison, on files that LibreOffice, openpyxl and XlsxWriter made."""

import os
import re
import shutil
import sys
import unittest
import zipfile

from running import DATA, DIFFERENT, EQUAL, SCRIPTS, TROUBLE, ScriptTest

sys.path.insert(0, str(SCRIPTS / "DiffXlsx"))
from DiffXlsx import Findings, compare  # noqa: E402
from comparison import Trouble  # noqa: E402
from references import moved, position  # noqa: E402

XLSX = DATA / "xlsx"
BOOK, STYLES, STRINGS = "xl/workbook.xml", "xl/styles.xml", "xl/sharedStrings.xml"
RELATIONS = "xl/_rels/workbook.xml.rels"
REVENUE = "xl/worksheets/sheet1.xml"


def compared(master, actual):
    """What the script says and exits with, from a call in this process, a hundred times as fast."""
    findings = Findings()
    try:
        compare(str(master), str(actual), findings)
    except Trouble as trouble:
        return TROUBLE, str(trouble)
    return DIFFERENT if findings.count else EQUAL, findings.text(findings.count)


def parts_of(base):
    with zipfile.ZipFile(XLSX / f"{base}.xlsx") as source:
        return {name: source.read(name) for name in source.namelist()}


class DiffXlsxTest(ScriptTest):
    script = SCRIPTS / "DiffXlsx/DiffXlsx.py"

    def variant(self, part, old, new, base="calc_report", encoding="utf-8", name="actual.xlsx"):
        """Writes a copy of a workbook in which one text of one part is replaced."""
        parts = parts_of(base)
        content = parts[part].decode()
        self.assertIn(old, content)
        parts[part] = content.replace(old, new).replace("UTF-8", encoding).encode(encoding)
        return self.package(parts, name)

    def package(self, parts, name="actual.xlsx", compression=zipfile.ZIP_DEFLATED):
        path = self.folder / name
        with zipfile.ZipFile(path, "w", compression) as target:
            for part, content in parts.items():
                target.writestr(part, content)
        return path

    def test_changes(self):
        """Every change of a workbook that data/xlsx/changes.tsv lists, and some that it cannot."""
        shared = self.folder / "shared"
        self.variant(REVENUE, '<f aca="false">SUM(B3:E3)',
                     '<f t="shared" ref="F3:F7" si="0">SUM(B3:E3)', name="shared.xlsx")
        lines = (XLSX / "changes.tsv").read_text(encoding="utf-8").splitlines()[1:]
        sums = '<f aca="false">SUM(B6:E6)</f>'
        for verdict, base, part, old, new, *words in [
                *(line.split("\t") for line in lines),
                ("EQUAL", shared, REVENUE, sums, '<f t="shared" si="0"/>'),
                ("TROUBLE", "calc_report", STRINGS, "<si><t", "<a>" * 300, "nested too deeply"),
                ("TROUBLE", "calc_report", STRINGS, "<sst ", "<sst" + " " * (5 << 20), "4 MB")]:
            with self.subTest(part=part, old=old, new=new[:99]):
                status = ("EQUAL", "DIFFERENT", "TROUBLE").index(verdict)
                master, actual = XLSX / f"{base}.xlsx", self.variant(part, old, new, base)
                self.judge(compared(master, actual), status, "".join(words).replace("\\n", "\n"))
                if status == DIFFERENT:
                    self.assertEqual(status, compared(actual, master)[0])

    def test_producers_and_spellings(self):
        parts = parts_of("calc_report")
        namespace = rb"schemas\.openxmlformats\.org/(spreadsheetml|officeDocument)/2006/"
        self.package({name: re.sub(namespace, rb"purl.oclc.org/ooxml/\1/", content)
                      for name, content in parts.items()}, "strict.xlsx")
        prefixed = (parts[REVENUE].replace(b"<", b"<x:").replace(b"<x:/", b"</x:")
                    .replace(b"<x:?", b"<?").replace(b' xmlns="', b' xmlns:x="'))
        strings = parts.pop(STRINGS)
        self.package({**parts, REVENUE: prefixed, "XL/SharedStrings.xml": strings}, "prefixed.xlsx")
        self.variant(STRINGS, "Region<", "Region<", encoding="UTF-16", name="wide.xlsx")
        self.variant(
            RELATIONS, "</Relationships>", '<Relationship Id="none" Type="http://schemas.openxml'
            'formats.org/officeDocument/2006/relationships/sharedStrings" '
            'Target="sharedStrings.xml"/></Relationships>', "openpyxl_report", name="unstored.xlsx")
        for master, actual in [
                ("openpyxl_report", "openpyxl_redated"), ("xlsxwriter_report", "calc_report"),
                ("calc_report", "xlsxwriter_report"), ("xlsxwriter_dressed", "openpyxl_dressed"),
                ("calc_dressed", "calc_dressed_again"),
                *(("calc_report", self.folder / name) for name in ("strict", "prefixed", "wide")),
                ("openpyxl_report", self.folder / "unstored")]:
            with self.subTest(master=master, actual=actual):
                self.judge(compared(XLSX / f"{master}.xlsx", XLSX / f"{actual}.xlsx"), EQUAL, "")

    def test_unreadable_files(self):
        whole = (XLSX / "calc_report.xlsx").read_bytes()
        middle = whole.index(b"xl/styles.xml") + 400
        with zipfile.ZipFile(self.variant(BOOK, "<", "<"), "a") as package:
            package.writestr("XL/workbook.xml", "<workbook/>")
        twice = (self.folder / "actual.xlsx").read_bytes()
        bomb = self.variant(STRINGS, "<sst ", "<sst " + " " * (20 << 20)).read_bytes()
        lzma = self.package({BOOK: "<workbook/>"}, compression=zipfile.ZIP_LZMA).read_bytes()
        wide = self.variant(STRINGS, "<sst ", '<!DOCTYPE sst [<!ENTITY a "a">]><sst ',
                            encoding="UTF-16").read_bytes()
        rows = [
            (b"Region;Q1;Q2", "not an XLSX file"), (whole[:-100], "not a readable ZIP file"),
            (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), "encrypted"),
            (whole[:middle] + bytes([whole[middle] ^ 255]) + whole[middle + 1:],
             "damaged in 'xl/styles.xml'"),
            (twice, "twice"), (bomb, "ZIP bomb"), (lzma, "compression"), (wide, "document types"),
        ]
        for content, words in rows:
            with self.subTest(words):
                self.judge(compared(XLSX / "calc_report.xlsx", self.put("actual.xlsx", content)),
                           TROUBLE, words)

    def test_report(self):
        master = XLSX / "calc_report.xlsx"
        actual = self.variant(REVENUE, ' t="n"><v>', ' t="n"><v>1')
        report = self.folder / "a report.mxr"
        for other, status, words, foreign in [
                (XLSX / "xlsxwriter_report.xlsx", EQUAL, "verdict: equal\n", "cell"),
                (actual, DIFFERENT, "cell E7, value\n", "more"),
                ("absent.xlsx", TROUBLE, "verdict: trouble: cannot read 'absent.xlsx'", "cell")]:
            with self.subTest(other):
                self.check(["-o", report, master, other], status, "")
                content = report.read_text(encoding="utf-8")
                self.assertIn(f"actual:  {other}\n", content)
                self.assertIn(words, content)
                self.assertNotIn(foreign, content)
                self.assertEqual(["a report.mxr", "actual.xlsx"], sorted(os.listdir(self.folder)))
        self.check([master, actual], DIFFERENT, "... and 10 more\n")
        self.check([master, self.variant(STRINGS, "Łódź", "Łódz")], DIFFERENT,
                   r"\u0141\xf3d\u017a", PYTHONIOENCODING="ascii")

    def test_arguments(self):
        master = XLSX / "calc_report.xlsx"
        usage = "usage: DiffXlsx.py [-o REPORTFILE] MASTER ACTUAL"
        names = ("two words.xlsx", "-o", "--", "Umsätze.xlsx")
        for name in names:
            shutil.copy(XLSX / "openpyxl_report.xlsx", self.folder / name)
        before = (self.folder / "-o").read_bytes()
        self.check_all([
            (["--help"], EQUAL, usage), (["one.xlsx"], TROUBLE, usage),
            (["-o", "missing/report.mxr", master, "-o"], TROUBLE, "its folder does not exist"),
            (["-o", ".", master, "-o"], TROUBLE, "not a regular file"),
            (["-o", "./-o", master, "-o"], TROUBLE, "would overwrite"),
            *(([master, name], DIFFERENT, "cell F3") for name in names),
            *((["-o", "report.mxr", name, master], DIFFERENT, "cell F3") for name in names)])
        self.assertEqual(before, (self.folder / "-o").read_bytes())


class ReferencesTest(unittest.TestCase):
    def test_moved(self):
        rows = [  # formula, moved from, to, result
            ("SUM(B3:E3)", "F3", "F7", "SUM(B7:E7)"), ("A1048576+XFD1", "A1", "B2", "B1+A2"),
            ("$B3+B$3+$B$3+AZ9", "F3", "G4", "$B4+C$3+$B$3+BA10"),
            ("SUM(B:D)+SUM($B:D)+SUM(2:5)+SUM($2:5)", "A1", "B3",
             "SUM(C:E)+SUM($B:E)+SUM(4:7)+SUM($2:7)"),
            ('"B3 ""B3"""&B3', "A1", "A2", '"B3 ""B3"""&B4'),
            ("'Q1 B3'!B3+Q1!B3+Table1[B3]", "A1", "A2", "'Q1 B3'!B4+Q1!B4+Table1[B3]"),
            ("LOG10(B3)+RATE_B3+B3.x+1.5E3", "A1", "A2", "LOG10(B4)+RATE_B3+B3.x+1.5E3")]
        for formula, source, target, expected in rows:
            with self.subTest(formula):
                self.assertEqual(expected, moved(formula, position(source), position(target)))
