"""The XLSX comparison, on files that LibreOffice, openpyxl and XlsxWriter made."""

import os
import shutil
import sys
import unittest
import zipfile

from running import DATA, DIFFERENT, EQUAL, SCRIPTS, TROUBLE, ScriptTest

sys.path.insert(0, str(SCRIPTS / "DiffXlsx"))
from references import moved, position  # noqa: E402

XLSX = DATA / "xlsx"
BOOK, STYLES, STRINGS = "xl/workbook.xml", "xl/styles.xml", "xl/sharedStrings.xml"
RELATIONS = "xl/_rels/workbook.xml.rels"
REVENUE, NOTES = "xl/worksheets/sheet1.xml", "xl/worksheets/sheet2.xml"
XML = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>'

# Changes to LibreOffice's workbook that keep what it holds: part, old text, new text.
SAME_CONTENT = {
    "number written otherwise": (REVENUE, "<v>842</v>", "<v>8.420E2</v>"),
    "type of numbers left out": (REVENUE, ' t="n"', ""),
    "places left out": (REVENUE, '<c r="C4"', "<c"),
    "text in the cell": (REVENUE, 't="s"><v>7</v>', 't="inlineStr"><is><t>Americas</t></is>'),
    "text in runs": (STRINGS, '<t xml:space="preserve">Americas</t>', "<r><t>Ame</t></r><r><t>ricas"
                     '</t></r><rPh sb="0" eb="1"><t>reading</t></rPh>'),
    "shared formula": (REVENUE, '<f aca="false">SUM(B6:E6)</f>', '<f t="shared" si="0"/>'),
    "empty cell with a style": (REVENUE, '<c r="F1" s="1"/>', '<c r="F1" s="2"/><c r="G1" s="2"/>'),
    "format escaped otherwise": (STYLES, r"yyyy\-mm\-dd", "yyyy-mm-dd"),
    "format built in": (STYLES, '<xf numFmtId="165"', '<xf numFmtId="4"'),
    "font": (STYLES, "DejaVu Sans", "Liberation Sans"),
}

# Changes that a reader of the workbook sees: the same, and where they are reported.
OTHER_CONTENT = {
    "number": (REVENUE, "<v>702.5</v>", "<v>702.05</v>",
               'sheet "Revenue", cell D5, value\n  master: number 702.5\n  actual: number 702.05'),
    "text": (STRINGS, "Asia Pacific", "Asia", 'cell A7, value\n  master: text "Asia Pacific"'),
    "text in place of a number": (REVENUE, 't="n"><v>842</v>', 't="str"><v>842</v>',
                                  'master: number 842\n  actual: text "842"'),
    "error": (REVENUE, 't="n"><v>842</v>', 't="e"><v>#N/A</v>', 'actual: error "#N/A"'),
    "formula": (REVENUE, "SUM(B3:E3)", "SUM(B3:D3)", "cell F3, formula\n  master: SUM(B3:E3)"),
    "computed value": (REVENUE, "<v>5306.5</v>", "", "actual: not computed"),
    "array formula": (REVENUE, '<f aca="false">SUM(B3', '<f t="array" ref="F3">SUM(B3',
                      "cell F3, formula"),
    "number format": (STYLES, "#,##0.00", "#,##0.0", "cell B3, format\n  master: #,##0.00"),
    "style of one cell": (REVENUE, '<c r="C5" s="2"', '<c r="C5" s="0"', "actual: General"),
    "cell gone": (NOTES, '<c r="A2" s="0" t="s"><v>13</v></c>', "", "cell A2\n  master: text"),
    "cell more": (NOTES, '<v>13</v></c>', '<v>13</v></c><c r="XFD2"><v>1</v></c>',
                  "cell XFD2\n  master: empty\n  actual: number 1"),
    "merged range": (REVENUE, 'mergeCell ref="A1:F1"', 'mergeCell ref="A1:E1"',
                     "cells A1:E1\n  master: not merged\n  actual: merged"),
    "sheet name": (BOOK, 'name="Notes"', 'name="Remarks"', 'sheet "Notes"\n  master: present\n'),
    "sheets exchanged": (BOOK, '<sheet name="Revenue" sheetId="1" state="visible" r:id="rId2"/>'
                         '<sheet name="Notes" sheetId="2" state="visible" r:id="rId3"/>',
                         '<sheet name="Notes" sheetId="2" r:id="rId3"/>'
                         '<sheet name="Revenue" sheetId="1" r:id="rId2"/>',
                         "order of sheets\n  master: Revenue, Notes\n  actual: Notes, Revenue"),
    "hidden sheet": (BOOK, 'sheetId="2" state="visible"', 'sheetId="2" state="hidden"',
                     'sheet "Notes", state'),
    "date system": (BOOK, "<workbookPr ", '<workbookPr date1904="1" ', "date system"),
}

# Changes that make it no workbook any more.
DAMAGE = {
    "unclosed tag": (REVENUE, "</sheetData>", "", "damaged in 'xl/worksheets/sheet1.xml'"),
    "entities": (STRINGS, XML, XML + '<!DOCTYPE sst [<!ENTITY a "aaaa">]>', "document types"),
    "entities in another encoding": (STRINGS, XML, '<!DOCTYPE sst [<!ENTITY a "a">]>', "document"),
    "deep nesting": (STRINGS, "<si><t", "<a>" * 300, "nested too deeply"),
    "text that is not there": (REVENUE, "<v>7</v>", "<v>700</v>", "no entry"),
    "cell twice": (REVENUE, '<c r="C4"', '<c r="B4"', "cell B4 is out of order"),
    "formula shared by none": (REVENUE, '<f aca="false">SUM(B3', '<f t="shared" si="9"/><f>SUM(B3',
                               "damaged"),
    "sheet not stored": (RELATIONS, "sheet2.xml", "sheet9.xml", "lacks the part"),
    "sheet not related": (BOOK, 'r:id="rId3"', 'r:id="rId9"', "damaged in 'xl/workbook.xml'"),
    "sheet name twice": (BOOK, 'name="Notes"', 'name="Revenue"', "two of one name"),
    "no workbook": ("_rels/.rels", "/officeDocument", "/other", "not a workbook"),
}


class DiffXlsxTest(ScriptTest):
    script = SCRIPTS / "DiffXlsx/DiffXlsx.py"

    def variant(self, part, old, new, base="calc_report.xlsx", encoding="utf-8"):
        """Writes a copy of a workbook in which one text of one part is replaced."""
        path = self.folder / "actual.xlsx"
        with zipfile.ZipFile(XLSX / base) as source, \
                zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as target:
            for name in source.namelist():
                content = source.read(name).decode()
                if name == part:
                    self.assertIn(old, content)
                    content = content.replace(old, new)
                    content = content.replace("UTF-8", encoding)
                target.writestr(name, content.encode(encoding if name == part else "utf-8"))
        return path

    def test_producers(self):
        rows = [
            ("openpyxl_report", "openpyxl_redated", EQUAL, ""),
            ("calc_report", "xlsxwriter_report", EQUAL, ""),
            ("xlsxwriter_report", "calc_report", EQUAL, ""),
            ("calc_report", "openpyxl_report", DIFFERENT, "cell F3, value"),
        ]
        for master, actual, status, words in rows:
            with self.subTest(master=master, actual=actual):
                self.check([XLSX / f"{master}.xlsx", XLSX / f"{actual}.xlsx"], status, words)

    def test_changes(self):
        master = XLSX / "calc_report.xlsx"
        shared = self.variant(REVENUE, "<f aca=\"false\">SUM(B3:E3)",
                              '<f t="shared" ref="F3:F7" si="0">SUM(B3:E3)')
        shutil.move(shared, self.folder / "shared.xlsx")
        for name, change in SAME_CONTENT.items():
            with self.subTest(name):
                base = self.folder / "shared.xlsx" if name == "shared formula" else master
                self.check([master, self.variant(*change, base=base)], EQUAL, "")
        for status, table in ((DIFFERENT, OTHER_CONTENT), (TROUBLE, DAMAGE)):
            for name, (*change, words) in table.items():
                with self.subTest(name):
                    encoding = "UTF-16" if "another encoding" in name else "UTF-8"
                    actual = self.variant(*change, encoding=encoding)
                    self.check([master, actual], status, words)
                    self.assertEqual(status, self.run_script(actual, master)[0])

    def test_other_spellings(self):
        prefixed = self.variant(REVENUE, "<", "<x:")
        with zipfile.ZipFile(prefixed) as package:
            parts = {name: package.read(name).decode() for name in package.namelist()}
        parts[REVENUE] = (parts[REVENUE].replace("<x:/", "</x:").replace("<x:?", "<?")
                          .replace(' xmlns="', ' xmlns:x="'))
        parts["XL/SharedStrings.xml"] = parts.pop(STRINGS)
        with zipfile.ZipFile(prefixed, "w") as package:
            for name, content in parts.items():
                package.writestr(name, content.encode())
        self.check([XLSX / "calc_report.xlsx", prefixed], EQUAL, "")
        wide = self.variant(STRINGS, "Region<", "Region<", encoding="UTF-16")
        self.check([XLSX / "calc_report.xlsx", wide], EQUAL, "")
        unstored = self.variant(
            RELATIONS, "</Relationships>", '<Relationship Id="none" Type="x/sharedStrings" '
            'Target="sharedStrings.xml"/></Relationships>', base="openpyxl_report.xlsx")
        self.check([XLSX / "openpyxl_report.xlsx", unstored], EQUAL, "")

    def test_unreadable_files(self):
        whole = (XLSX / "calc_report.xlsx").read_bytes()
        middle = whole.index(b"xl/styles.xml") + 400
        rows = {
            "text": (b"Region;Q1;Q2", "not an XLSX file"),
            "encrypted": (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), "encrypted"),
            "cut off": (whole[:-100], "not a readable ZIP file"),
            "one byte changed": (whole[:middle] + bytes([whole[middle] ^ 255]) + whole[middle + 1:],
                                 "damaged in 'xl/styles.xml'"),
        }
        for name, (content, words) in rows.items():
            with self.subTest(name):
                (self.folder / "actual.xlsx").write_bytes(content)
                self.check([XLSX / "calc_report.xlsx", "actual.xlsx"], TROUBLE, words)
        with self.subTest("bomb"):
            bomb = self.variant(STRINGS, "<sst ", "<sst " + " " * (20 << 20))
            self.check([XLSX / "calc_report.xlsx", bomb], TROUBLE, "ZIP bomb")
        with self.subTest("part twice"):
            with zipfile.ZipFile(self.variant(BOOK, "<", "<"), "a") as package:
                package.writestr("XL/workbook.xml", "<workbook/>")
            self.check([XLSX / "calc_report.xlsx", "actual.xlsx"], TROUBLE, "twice")

    def test_report(self):
        master = XLSX / "calc_report.xlsx"
        actual = self.variant(REVENUE, ' t="n"><v>', ' t="n"><v>1')
        rows = [
            # actual, exit status, what the report holds, what it does not
            (XLSX / "xlsxwriter_report.xlsx", EQUAL, "verdict: equal\n", "cell"),
            (actual, DIFFERENT, "cell E7, value\n", "more"),
            ("absent.xlsx", TROUBLE, "verdict: trouble: cannot read 'absent.xlsx'", "cell"),
        ]
        report = self.folder / "a report.mxr"
        for compared, status, words, foreign in rows:
            with self.subTest(compared=compared):
                self.check(["-o", report, master, compared], status, "")
                content = report.read_text(encoding="utf-8")
                self.assertIn(f"actual:  {compared}\n", content)
                self.assertIn(words, content)
                self.assertNotIn(foreign, content)
                self.assertEqual(["a report.mxr", "actual.xlsx"], sorted(os.listdir(self.folder)))
        self.check([master, actual], DIFFERENT, "... and 10 more\n")
        self.check([master, self.variant(STRINGS, "Łódź", "Łódz")], DIFFERENT,
                   r"\u0141\xf3d\u017a", PYTHONIOENCODING="ascii")

    def test_report_refused(self):
        shutil.copy(XLSX / "calc_report.xlsx", self.folder / "master.xlsx")
        before = (self.folder / "master.xlsx").read_bytes()
        rows = [("missing/report.mxr", "its folder does not exist"), (".", "not a regular file"),
                ("./master.xlsx", "would overwrite")]
        for report, words in rows:
            with self.subTest(report):
                self.check(["-o", report, "master.xlsx", "master.xlsx"], TROUBLE, words)
        self.assertEqual(before, (self.folder / "master.xlsx").read_bytes())

    def test_awkward_names(self):
        for name in ("two words.xlsx", "-o", "--", "Umsätze.xlsx"):
            with self.subTest(name):
                shutil.copy(XLSX / "xlsxwriter_report.xlsx", self.folder / name)
                self.check([XLSX / "calc_report.xlsx", name], EQUAL, "")
                self.check(["-o", "report.mxr", name, XLSX / "calc_report.xlsx"], EQUAL, "")

    def test_usage(self):
        for arguments, status in ((["--help"], EQUAL), (["one.xlsx"], TROUBLE)):
            with self.subTest(arguments):
                self.check(arguments, status, "usage: DiffXlsx.py [-o REPORTFILE] MASTER ACTUAL")


class ReferencesTest(unittest.TestCase):
    def test_moved(self):
        rows = [
            # formula, moved from, to, result
            ("SUM(B3:E3)", "F3", "F7", "SUM(B7:E7)"),
            ("$B3+B$3+$B$3+AZ9", "F3", "G4", "$B4+C$3+$B$3+BA10"),
            ("SUM(B:D)+SUM($B:D)+SUM(2:5)+SUM($2:5)", "A1", "B3",
             "SUM(C:E)+SUM($B:E)+SUM(4:7)+SUM($2:7)"),
            ('"B3 ""B3"""&B3', "A1", "A2", '"B3 ""B3"""&B4'),
            ("'Q1 B3'!B3+Q1!B3+Table1[B3]", "A1", "A2", "'Q1 B3'!B4+Q1!B4+Table1[B3]"),
            ("LOG10(B3)+RATE_B3+B3.x+1.5E3", "A1", "A2", "LOG10(B4)+RATE_B3+B3.x+1.5E3"),
            ("A1048576+XFD1", "A1", "B2", "B1+A2"),
        ]
        for formula, source, target, expected in rows:
            with self.subTest(formula):
                self.assertEqual(expected, moved(formula, position(source), position(target)))


if __name__ == "__main__":
    unittest.main()
