#!/usr/bin/python3
"""Makes the PDF and XLSX files that the comparison scripts are tested and shown with.

    /usr/bin/python3 tools/make_script_fixtures.py

The committed files are what the tests use; run this only to change them. Every kind of file comes
from at least two programs, because a comparison that was tried on one program's files knows only
that program's habits. Needs the Debian packages

    python3-cairo python3-openpyxl python3-xlsxwriter
    libreoffice-writer-nogui libreoffice-calc-nogui qpdf fonts-dejavu-core

and Debian's own interpreter, /usr/bin/python3, which sees them.
"""

import datetime
import math
import pathlib
import shutil
import subprocess
import tempfile
import zipfile

import cairo
import openpyxl
import xlsxwriter
from openpyxl.chart import BarChart, Reference
from openpyxl.styles import Alignment, Font, PatternFill

ROOT = pathlib.Path(__file__).resolve().parent.parent
PDF_DATA = ROOT / "tests/scripts/data/pdf"
XLSX_DATA = ROOT / "tests/scripts/data/xlsx"
DEMO = ROOT / "examples/demo/server"

MASTER_DAY = datetime.datetime(2024, 4, 2, 6, 30)
ACTUAL_DAY = datetime.datetime(2025, 1, 7, 22, 15)

QUARTERS = ("Q1", "Q2", "Q3", "Q4")
REGIONS = {
    "Americas": (1204.5, 1318.25, 1287.75, 1496),
    "Northern Europe": (842, 866.5, 851.25, 930.75),
    "Southern Europe": (615.25, 648, 702.5, 688.25),
    "Central Europe": (934.75, 951.5, 978, 1043.5),
    "Asia Pacific": (701, 764.25, 815.5, 902),
}


def main():
    for folder in (PDF_DATA, XLSX_DATA):
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
    with tempfile.TemporaryDirectory() as scratch:
        office = Office(pathlib.Path(scratch))
        make_cairo_pdfs()
        make_writer_pdfs(office)
        make_qpdf_pdfs()
        make_workbooks(office)
        make_demo(office)


class Office:
    """Converts files with LibreOffice, whose profile and work files live in a scratch folder."""

    def __init__(self, scratch):
        self.scratch = scratch

    def convert(self, source, target):
        """Writes `source` in the format that the suffix of `target` names."""
        kind = target.suffix[1:]
        subprocess.run(
            ["soffice", "--headless", f"-env:UserInstallation=file://{self.scratch}/profile",
             "--convert-to", kind, "--outdir", self.scratch / "out", source],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.move(self.scratch / "out" / f"{source.stem}.{kind}", target)


# PDF ----------------------------------------------------------------------------------------------

def make_cairo_pdfs():
    draw_report("cairo_report.pdf", day=MASTER_DAY)
    draw_report("cairo_redated.pdf", day=ACTUAL_DAY, title="Run 4711\nPages:          3")
    draw_report("cairo_taller_bar.pdf", growth=1.02)
    draw_report("cairo_recoloured.pdf", colour=(0.20, 0.40, 0.61))
    draw_report("cairo_reworded.pdf", heading="Revenue per quarter")
    draw_report("cairo_longer.pdf", pages=3)
    draw_report("cairo_landscape.pdf", size=(842, 595))
    draw_report("cairo_printed_monday.pdf", printed="Page 1, printed on Monday 03 March 2025")
    draw_report("cairo_printed_friday.pdf", printed="Page 1, printed on Friday 07 March 2025")


def draw_report(name, *, day=MASTER_DAY, title="Revenue", heading="Revenue by quarter", pages=2,
                growth=1.0, colour=(0.20, 0.40, 0.60), size=(595, 842), printed=None):
    """Draws a table page and then chart pages with cairo; every argument is one difference."""
    surface = cairo.PDFSurface(str(PDF_DATA / name), *size)
    surface.set_metadata(cairo.PDF_METADATA_TITLE, title)
    surface.set_metadata(cairo.PDF_METADATA_CREATE_DATE, day.isoformat())
    pen = cairo.Context(surface)
    pen.select_font_face("DejaVu Sans")
    draw_table(pen, printed)
    for _ in range(1, pages):
        pen.show_page()
        draw_chart(pen, heading, growth, colour)
    surface.finish()


def draw_table(pen, printed):
    write(pen, 60, 80, "Revenue by region", size=18)
    for row, (region, amounts) in enumerate(REGIONS.items()):
        write(pen, 60, 130 + 20 * row, region)
        for column, amount in enumerate(amounts):
            write(pen, 220 + 80 * column, 130 + 20 * row, f"{amount:,.2f}")
    if printed:
        write(pen, 60, 500, printed)


def draw_chart(pen, heading, growth, colour):
    write(pen, 60, 80, heading, size=18)
    for column, quarter in enumerate(QUARTERS):
        total = sum(amounts[column] for amounts in REGIONS.values())
        left, height = 80 + 110 * column, total / 20
        if quarter == "Q3":
            height *= growth
        pen.set_source_rgb(*colour)
        pen.rectangle(left, 420 - height, 60, height)
        pen.fill()
        write(pen, left + 20, 440, quarter)
    pen.arc(300, 520, 30, 0, 2 * math.pi)
    pen.stroke()


def write(pen, x, y, text, size=10):
    pen.set_source_rgb(0, 0, 0)
    pen.set_font_size(size)
    pen.move_to(x, y)
    pen.show_text(text)


def make_writer_pdfs(office):
    rows = "".join(
        f"<tr><td>{region}</td>" + "".join(f"<td>{a:,.2f}</td>" for a in amounts) + "</tr>"
        for region, amounts in REGIONS.items())
    variants = {
        "writer_report.pdf": ("Revenue", rows),
        "writer_redated.pdf": ("Run 4711", rows),
        "writer_amount.pdf": ("Revenue", rows.replace("702.50", "702.05")),
    }
    for name, (title, table) in variants.items():
        page = office.scratch / f"{title}.html"
        page.write_text(
            f"<html><head><title>{title}</title></head><body style='font-family: DejaVu Sans'>"
            f"<h1>Revenue by region</h1><table border=1>{table}</table></body></html>")
        office.convert(page, PDF_DATA / name)


def make_qpdf_pdfs():
    """One file that nobody opens without the password, one that everybody may open but not edit,
    and one that keeps its tables in streams."""
    for name, user_password in (("qpdf_locked.pdf", "secret"), ("qpdf_restricted.pdf", "")):
        subprocess.run(
            ["qpdf", "--encrypt", user_password, "owner", "256", "--extract=n", "--modify=none",
             "--", PDF_DATA / "writer_report.pdf", PDF_DATA / name], check=True)
    subprocess.run(["qpdf", "--linearize", "--object-streams=generate",
                    PDF_DATA / "writer_report.pdf", PDF_DATA / "qpdf_compact.pdf"], check=True)


# XLSX ---------------------------------------------------------------------------------------------

def make_workbooks(office):
    write_openpyxl(XLSX_DATA / "openpyxl_report.xlsx", MASTER_DAY)
    write_openpyxl(XLSX_DATA / "openpyxl_redated.xlsx", ACTUAL_DAY)
    office.convert(XLSX_DATA / "openpyxl_report.xlsx", XLSX_DATA / "calc_report.xlsx")
    write_xlsxwriter(XLSX_DATA / "xlsxwriter_report.xlsx")
    make_dressed_workbooks(office)


def make_dressed_workbooks(office):
    """A workbook with one of everything that is compared besides cells, saved again by the others.

    Calc changes some of it on loading, so that its own two runs make a pair of their own.
    """
    first = XLSX_DATA / "xlsxwriter_dressed.xlsx"
    write_dressed(first)
    openpyxl.load_workbook(first).save(XLSX_DATA / "openpyxl_dressed.xlsx")
    office.convert(first, XLSX_DATA / "calc_dressed.xlsx")
    office.convert(XLSX_DATA / "calc_dressed.xlsx", XLSX_DATA / "calc_dressed_again.xlsx")


def write_openpyxl(path, day):
    """A workbook whose formulas carry no computed values: openpyxl does not calculate."""
    book = openpyxl.Workbook()
    book.properties.creator = "Report server"
    book.properties.created = book.properties.modified = day
    fill_revenue(book.active)
    fill_notes(book.create_sheet("Notes"))
    book.save(path)
    stamp_docprops(path, day)


def fill_revenue(sheet):
    sheet.title = "Revenue"
    sheet.append(["Revenue by region (thousands)"])
    sheet.merge_cells("A1:F1")
    sheet.append(["Region", *QUARTERS, "Year"])
    for row, (region, amounts) in enumerate(REGIONS.items(), start=3):
        sheet.append([region, *amounts, f"=SUM(B{row}:E{row})"])
        for cell in sheet[row][1:]:
            cell.number_format = "#,##0.00"


def fill_notes(sheet):
    sheet["A1"] = "Closed on"
    sheet["B1"] = datetime.date(2024, 3, 31)
    sheet["B1"].number_format = "yyyy-mm-dd"
    sheet["A2"] = "Umsätze  geprüft: Łódź, 東京"


def stamp_docprops(path, day):
    """Sets the date that openpyxl itself overwrites when it saves."""
    with zipfile.ZipFile(path) as package:
        parts = {item: package.read(item) for item in package.namelist()}
    core = "docProps/core.xml"
    root = openpyxl.xml.functions.fromstring(parts[core])
    for element in root:
        if element.tag.endswith("}modified"):
            element.text = day.isoformat() + "Z"
    parts[core] = openpyxl.xml.functions.tostring(root)
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as package:
        for item, content in parts.items():
            package.writestr(zipfile.ZipInfo(item, day.timetuple()[:6]), content,
                             zipfile.ZIP_DEFLATED)


def write_xlsxwriter(path):
    """What Calc makes of the openpyxl workbook, written by a third program with its own styles."""
    book = xlsxwriter.Workbook(path, {"in_memory": True})
    book.set_properties({"created": ACTUAL_DAY, "company": "Example"})
    amount = book.add_format({"num_format": "#,##0.00", "bold": True})
    day = book.add_format({"num_format": "yyyy-mm-dd"})
    sheet = book.add_worksheet("Revenue")
    sheet.merge_range("A1:F1", "Revenue by region (thousands)")
    sheet.write_row("A2", ["Region", *QUARTERS, "Year"])
    for row, (region, amounts) in enumerate(REGIONS.items(), start=3):
        sheet.write(f"A{row}", region)
        sheet.write_row(f"B{row}", amounts, amount)
        sheet.write_formula(f"F{row}", f"=SUM(B{row}:E{row})", amount, sum(amounts))
    notes = book.add_worksheet("Notes")
    notes.write_column("A1", ["Closed on", "Umsätze  geprüft: Łódź, 東京"])
    notes.write_datetime("B1", datetime.datetime(2024, 3, 31), day)
    book.close()


def write_dressed(path):
    book = xlsxwriter.Workbook(path, {"in_memory": True})
    book.set_properties({"created": MASTER_DAY})
    red = book.add_format({"bg_color": "#FFC7CE", "font_color": "#9C0006"})
    bold = book.add_format({"bold": True})
    sheet, rates = book.add_worksheet("Q1 sales"), book.add_worksheet("Rates")
    sheet.write_row("A1", ["Region", *QUARTERS])
    for row, (region, amounts) in enumerate(REGIONS.items(), start=2):
        sheet.write(f"A{row}", region)
        sheet.write_row(f"B{row}", amounts)
    sheet.autofilter("A1:E6")
    sheet.filter_column("A", 'x == "Americas"')
    sheet.set_row(3, options={"hidden": True})
    sheet.set_column("G:I", None, None, {"hidden": True})
    sheet.freeze_panes(1, 1)
    sheet.print_area("A1:E6")
    sheet.repeat_rows(0)
    sheet.conditional_format("B2:E6", {"type": "cell", "criteria": ">", "value": 900,
                                       "format": red})
    sheet.conditional_format("B2:B6", {"type": "data_bar"})
    sheet.conditional_format("A2:A6", {"type": "formula", "criteria": "=$B2>Rates!$A$1",
                                       "format": bold})
    sheet.data_validation("F2:F6", {"validate": "list", "source": ["open", "closed"]})
    sheet.write_url("A9", "https://reports.example/7", string="Details", tip="Run 7")
    sheet.write_url("A10", "internal:Rates!A1", string="Rates")
    sheet.protect("secret", {"sort": True})
    sheet.set_header("&LRevenue")
    rates.write("A1", 1000)
    rates.hide_gridlines(2)
    book.define_name("Limit", "=Rates!$A$1")
    book.close()


# Demo suite ---------------------------------------------------------------------------------------

def make_demo(office):
    """One revenue report as PDF and XLSX, in two runs that differ only in what a run leaves."""
    targets = {
        MASTER_DAY: (DEMO / "suite/sales/Masters/PDF", DEMO / "suite/sales/Masters/XLS2007"),
        ACTUAL_DAY: (DEMO / "webcontent/bi/v5DebugPDF", DEMO / "webcontent/bi/v5DebugXLS2007"),
    }
    for day, (pdf_folder, xlsx_folder) in targets.items():
        source = office.scratch / "Revenue.xlsx"
        write_demo_workbook(source, day)
        office.convert(source, xlsx_folder / "Revenue.xlsx")
        stamp_docprops(xlsx_folder / "Revenue.xlsx", day)
        office.convert(xlsx_folder / "Revenue.xlsx", pdf_folder / "Revenue.pdf")


def write_demo_workbook(path, day):
    book = openpyxl.Workbook()
    book.properties.creator = "Report server"
    book.properties.title = f"Revenue, run of {day:%d %B %Y}"
    sheet = book.active
    fill_revenue(sheet)
    last = 2 + len(REGIONS)
    sheet.append(["Total", *(f"=SUM({column}3:{column}{last})" for column in "BCDEF")])
    style_demo_sheet(sheet, last + 1)
    chart = BarChart()
    chart.title = "Revenue by quarter"
    chart.width, chart.height = 17, 9
    chart.add_data(Reference(sheet, min_col=2, max_col=5, min_row=2, max_row=last),
                   titles_from_data=True)
    chart.set_categories(Reference(sheet, min_col=1, min_row=3, max_row=last))
    sheet.add_chart(chart, f"A{last + 4}")
    book.save(path)


def style_demo_sheet(sheet, total_row):
    sheet.sheet_properties.pageSetUpPr.fitToPage = True
    sheet.page_setup.paperSize = sheet.PAPERSIZE_A4
    sheet.column_dimensions["A"].width = 19
    for column in "BCDEF":
        sheet.column_dimensions[column].width = 12
    for row in sheet.iter_rows(max_row=total_row):
        for cell in row:
            cell.font = Font(name="DejaVu Sans", size=10, bold=cell.row in (2, total_row))
    for cell in sheet[2]:
        cell.fill = PatternFill("solid", fgColor="D9E2EC")
        cell.alignment = Alignment(horizontal="left" if cell.column == 1 else "right")
    for cell in sheet[total_row][1:]:
        cell.number_format = "#,##0.00"
    sheet["A1"].font = Font(name="DejaVu Sans", size=14, bold=True)


if __name__ == "__main__":
    main()
