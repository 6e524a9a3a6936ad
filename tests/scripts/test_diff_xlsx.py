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
    "number in other digits": (REVENUE, "<v>842</v>", "<v>\uff1842</v>", 'actual: number "'),
    "cell of another namespace": (REVENUE, '<c r="C4"', '<c xmlns="urn:other" r="C4"',
                                  "cell C4\n  master: number 866.5\n  actual: empty"),
    "date system": (BOOK, "<workbookPr ", '<workbookPr date1904="1" ', "date system"),
}

# The same for XlsxWriter's workbook that has one of everything besides cells.
NEXT_NAME = '</definedName><definedName name="'
DRESSED_SAME = {
    "row of no height": (REVENUE, ' hidden="1"><c r="A4"', ' ht="0"><c r="A4"'),
    "columns one by one": (REVENUE, '<col min="7" max="9" width="0" hidden="1" customWidth="1"/>',
                           '<col min="8" max="9" hidden="true"/><col min="7" max="7" width="0"/>'),
    "scrolled": (REVENUE, 'topLeftCell="B2" activePane="bottomRight"', 'topLeftCell="B4"'),
    "selection": (REVENUE, 'activeCell="B1" sqref="B1"', 'activeCell="D1" sqref="D1"'),
    "defaults": (REVENUE, 'sheet="1" objects="1"', 'sheet="true" objects="1" formatCells="1"'),
    "protection off": ("xl/worksheets/sheet2.xml", "</sheetData>",
                       '</sheetData><sheetProtection sheet="0" objects="1"/>'),
    "password salted": (REVENUE, 'password="DAA7"', 'algorithmName="SHA-512" hashValue="Zm9v" '
                        'saltValue="YmFy" spinCount="100000"'),
    "priorities": (REVENUE, 'priority="2"', 'priority="8"'),
    "identifier of a link": (REVENUE, 'r:id="rId1" tooltip', 'r:id="rId1" display="x" tooltip'),
    "needless quotes": (REVENUE, "$B2&gt;Rates!$A$1", "$B2&gt;'Rates'!$A$1"),
    "operator of a list": (REVENUE, '<dataValidation type="list"',
                           '<dataValidation type="list" operator="equal"'),
    "extension": (REVENUE, "</worksheet>", '<extLst><ext uri="{1}"><row r="x"/></ext></extLst>'
                  "</worksheet>"),
    "extension of a condition": (REVENUE, "</dataBar>", "</dataBar><extLst><ext/></extLst>"),
    "opacity": (STYLES, "FFFFC7CE", "00ffc7ce"),
    "range kept with a filter": (BOOK, f"'Q1 sales'!$A$1:$E$6{NEXT_NAME}Limit",
                                 f"'Q1 sales'!$A$1:$E$9{NEXT_NAME}Limit"),
}
DRESSED_OTHER = {
    "row hidden": (REVENUE, '<row r="3"', '<row hidden="1" r="3"',
                   'sheet "Q1 sales", hidden rows\n  master: 4\n  actual: 3:4'),
    "other rows hidden": (REVENUE, '<sheetFormatPr ', '<sheetFormatPr zeroHeight="1" ',
                          "actual: 4, 7:8, 11:1048576"),
    "column hidden": (REVENUE, '<col min="7" max="9"', '<col min="6" max="9"',
                      "hidden columns\n  master: G:I\n  actual: F:I"),
    "panes": (REVENUE, '<pane xSplit="1" ySplit="1"', '<pane ySplit="1"',
              "frozen panes\n  master: 1 rows, 1 columns\n  actual: 1 rows, 0 columns"),
    "gridlines": ("xl/worksheets/sheet2.xml", 'showGridLines="0"', "", "view\n  master: showGrid"),
    "protection": (REVENUE, ' sort="0"', "", "protection\n"),
    "no password": (REVENUE, ' password="DAA7"', "", "with a password"),
    "workbook protection": (BOOK, "<bookViews>",
                            '<workbookProtection lockStructure="1"/><bookViews>',
                            "protection of the workbook\n  master: none\n  actual: lockStruct"),
    "filter": (REVENUE, 'filter val="Americas"', 'filter val="Europe"', "autofilter"),
    "condition": (REVENUE, "<formula>900<", "<formula>901<", "conditional formats of B2:E6"),
    "format of a condition": (STYLES, "FFFFC7CE", "FFFFC7CF", "conditional formats of B2:E6"),
    "kind of condition": (REVENUE, 'type="cellIs"', 'type="aboveAverage" stdDev="2"', "stdDev=2"),
    "order of conditions": (REVENUE, 'priority="1"', 'priority="9"',
                            "master: B2:E6, B2:B6\n  actual: B2:B6, B2:E6"),
    "validation": (REVENUE, "open,closed", "open,shut", "validation of F2:F6"),
    "link": ("xl/worksheets/_rels/sheet1.xml.rels", "example/7", "example/8",
             "hyperlink of A9\n  master: https://reports.example/7 (Run 7)"),
    "link within": (REVENUE, 'location="Rates!A1"', 'location="Rates!A2"', "hyperlink of A10"),
    "header": (REVENUE, "&amp;LRevenue", "&amp;RRevenue", "header and footer"),
    "name": (BOOK, ">Rates!$A$1<", ">Rates!$A$2<", 'defined name "Limit"\n  master: Rates!$A$1'),
    "print area": (BOOK, f"'Q1 sales'!$A$1:$E$6{NEXT_NAME}_xlnm.Print_T",
                   f"'Q1 sales'!$A$1:$E$9{NEXT_NAME}_xlnm.Print_T",
                   'defined name "_xlnm.Print_Area" of sheet "Q1 sales"'),
}

DRESSED_DAMAGE = {
    "element in a formula": (REVENUE, "<formula>900<", "<formula>9<x/>00<", "text between"),
    "no such format": (REVENUE, 'dxfId="1"', 'dxfId="2"', "no entry 2 among 2"),
    "no such link": (REVENUE, 'r:id="rId1"', 'r:id="rId2"', "no 'rId2'"),
    "name of no sheet": (BOOK, 'localSheetId="0"', 'localSheetId="2"', "no entry 2 among 2"),
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
    "index below zero": (REVENUE, "<v>7</v>", "<v>-1</v>", "no unsigned number: '-1'"),
    "index in other digits": (REVENUE, "<v>7</v>", "<v>\uff17</v>", "no unsigned number"),
    "element in a value": (REVENUE, "<v>842</v>", "<v>84<x/>2</v>", "'x' within a text"),
    "two values": (REVENUE, "<v>842</v>", "<v>842</v><v>842</v>", "cell B4 has two values"),
    "text beside a value": (REVENUE, "<v>842</v>", "<v>842</v>842", "text between elements"),
    "rows exchanged": (REVENUE, '<row r="4"', '<row r="2"', "row 2 is out of order"),
    "column that does not exist": (REVENUE, '<c r="F7"', '<c r="XFE7"', "no column: 'XFE'"),
    "neither true nor false": (REVENUE, 'hidden="false"', 'hidden="maybe"', "neither true nor"),
    "other namespace": (REVENUE, '"http://schemas.openxmlformats.org/spreadsheetml/2006/main"',
                        '"urn:other"', "not the root of such a part: 'urn:other worksheet'"),
    "unknown encoding": (REVENUE, 'encoding="UTF-8"', 'encoding="klingon"', "unknown encoding"),
    "endless tag": (STRINGS, "<sst ", "<sst " + " " * (5 << 20), "a tag of more than 4 MB"),
    "sheet not stored": (RELATIONS, "sheet2.xml", "sheet9.xml", "lacks the part"),
    "sheet not related": (BOOK, 'r:id="rId3"', 'r:id="rId9"', "damaged in 'xl/workbook.xml'"),
    "sheet name twice": (BOOK, 'name="Notes"', 'name="Revenue"', "two of one name"),
    "no workbook": ("_rels/.rels", "/officeDocument", "/other", "not a workbook"),
}


def compared(master, actual):
    """What the script says and exits with, from a call in this process: a hundred times as fast."""
    findings = Findings()
    try:
        compare(str(master), str(actual), findings)
    except Trouble as trouble:
        return TROUBLE, str(trouble)
    return DIFFERENT if findings.count else EQUAL, findings.text(findings.count)


class DiffXlsxTest(ScriptTest):
    script = SCRIPTS / "DiffXlsx/DiffXlsx.py"

    def variant(self, part, old, new, base="calc_report.xlsx", encoding="utf-8"):
        """Writes a copy of a workbook in which one text of one part is replaced."""
        with zipfile.ZipFile(XLSX / base) as source:
            parts = {name: source.read(name) for name in source.namelist()}
        content = parts[part].decode()
        self.assertIn(old, content)
        parts[part] = content.replace(old, new).replace("UTF-8", encoding).encode(encoding)
        return self.package(parts)

    def package(self, parts, compression=zipfile.ZIP_DEFLATED):
        path = self.folder / "actual.xlsx"
        with zipfile.ZipFile(path, "w", compression) as target:
            for name, content in parts.items():
                target.writestr(name, content)
        return path

    def test_changes(self):
        shared = self.folder / "shared.xlsx"
        self.variant(REVENUE, '<f aca="false">SUM(B3:E3)',
                     '<f t="shared" ref="F3:F7" si="0">SUM(B3:E3)').rename(shared)
        calc, dressed = "calc_report.xlsx", "xlsxwriter_dressed.xlsx"
        for base, status, table in ((calc, EQUAL, SAME_CONTENT), (calc, DIFFERENT, OTHER_CONTENT),
                                    (calc, TROUBLE, DAMAGE), (dressed, EQUAL, DRESSED_SAME),
                                    (dressed, DIFFERENT, DRESSED_OTHER),
                                    (dressed, TROUBLE, DRESSED_DAMAGE)):
            for name, (part, old, new, *words) in table.items():
                with self.subTest(name):
                    actual = self.variant(
                        part, old, new, base=shared if name == "shared formula" else base,
                        encoding="UTF-16" if "another encoding" in name else "UTF-8")
                    self.judge(compared(XLSX / base, actual), status, "".join(words))
                    if status == DIFFERENT:
                        self.assertEqual(status, compared(actual, XLSX / base)[0])

    def test_producers_and_spellings(self):
        with zipfile.ZipFile(XLSX / "calc_report.xlsx") as source:
            parts = {name: source.read(name) for name in source.namelist()}
        strict = {
            name: re.sub(rb"schemas\.openxmlformats\.org/(spreadsheetml|officeDocument)/2006/",
                         rb"purl.oclc.org/ooxml/\1/", content) for name, content in parts.items()}
        self.package(strict).rename(self.folder / "strict.xlsx")
        prefixed = (parts[REVENUE].replace(b"<", b"<x:").replace(b"<x:/", b"</x:")
                    .replace(b"<x:?", b"<?").replace(b' xmlns="', b' xmlns:x="'))
        strings = parts.pop(STRINGS)
        self.package({**parts, REVENUE: prefixed, "XL/SharedStrings.xml": strings}).rename(
            self.folder / "prefixed.xlsx")
        self.variant(STRINGS, "Region<", "Region<", encoding="UTF-16").rename(
            self.folder / "wide.xlsx")
        self.variant(
            RELATIONS, "</Relationships>", '<Relationship Id="none" Type="http://schemas.openxml'
            'formats.org/officeDocument/2006/relationships/sharedStrings" '
            'Target="sharedStrings.xml"/></Relationships>', base="openpyxl_report.xlsx").rename(
                self.folder / "unstored.xlsx")
        rows = [
            ("openpyxl_report", "openpyxl_redated", EQUAL, ""),
            ("calc_report", "xlsxwriter_report", EQUAL, ""),
            ("xlsxwriter_report", "calc_report", EQUAL, ""),
            ("calc_report", "openpyxl_report", DIFFERENT, "cell F3, value"),
            ("xlsxwriter_dressed", "openpyxl_dressed", EQUAL, ""),
            ("calc_dressed", "calc_dressed_again", EQUAL, ""),
            ("calc_report", self.folder / "strict", EQUAL, ""),
            ("calc_report", self.folder / "prefixed", EQUAL, ""),
            ("calc_report", self.folder / "wide", EQUAL, ""),
            ("openpyxl_report", self.folder / "unstored", EQUAL, ""),
        ]
        for master, actual, status, words in rows:
            with self.subTest(master=master, actual=actual):
                self.judge(compared(XLSX / f"{master}.xlsx", XLSX / f"{actual}.xlsx"), status,
                           words)

    def test_unreadable_files(self):
        whole = (XLSX / "calc_report.xlsx").read_bytes()
        middle = whole.index(b"xl/styles.xml") + 400
        with zipfile.ZipFile(self.variant(BOOK, "<", "<"), "a") as package:
            package.writestr("XL/workbook.xml", "<workbook/>")
        twice = (self.folder / "actual.xlsx").read_bytes()
        bomb = self.variant(STRINGS, "<sst ", "<sst " + " " * (20 << 20)).read_bytes()
        lzma = self.package({BOOK: "<workbook/>"}, zipfile.ZIP_LZMA).read_bytes()
        rows = [
            (b"Region;Q1;Q2", "not an XLSX file"), (whole[:-100], "not a readable ZIP file"),
            (b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(600), "encrypted"),
            (whole[:middle] + bytes([whole[middle] ^ 255]) + whole[middle + 1:],
             "damaged in 'xl/styles.xml'"),
            (twice, "twice"), (bomb, "ZIP bomb"), (lzma, "compression"),
        ]
        for content, words in rows:
            with self.subTest(words):
                self.judge(compared(XLSX / "calc_report.xlsx", self.put("actual.xlsx", content)),
                           TROUBLE, words)

    def test_report(self):
        master = XLSX / "calc_report.xlsx"
        actual = self.variant(REVENUE, ' t="n"><v>', ' t="n"><v>1')
        rows = [  # actual, exit status, what the report holds, what it does not
            (XLSX / "xlsxwriter_report.xlsx", EQUAL, "verdict: equal\n", "cell"),
            (actual, DIFFERENT, "cell E7, value\n", "more"),
            ("absent.xlsx", TROUBLE, "verdict: trouble: cannot read 'absent.xlsx'", "cell"),
        ]
        report = self.folder / "a report.mxr"
        for compared_file, status, words, foreign in rows:
            with self.subTest(compared_file):
                self.check(["-o", report, master, compared_file], status, "")
                content = report.read_text(encoding="utf-8")
                self.assertIn(f"actual:  {compared_file}\n", content)
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
