"""The PDF comparison, on files that cairo, LibreOffice and qpdf made."""

import contextlib
import os
import pathlib
import shutil
import time

from running import DATA, DIFFERENT, EQUAL, SCRIPTS, TROUBLE, ScriptTest

PDF = DATA / "pdf"


class DiffPdfTest(ScriptTest):
    script = SCRIPTS / "diffpdf/diffPdfFiles.py"

    def test_verdicts(self):
        report = "cairo_report"
        rows = [  # options, master, actual, exit status, words of the output
            ([], report, "cairo_redated", EQUAL, ""),
            ([], "writer_report", "writer_redated", EQUAL, ""),
            ([], "writer_report", "qpdf_restricted", EQUAL, ""),
            ([], "writer_report", "qpdf_compact", EQUAL, ""),
            ([], report, "cairo_longer", DIFFERENT, "pages\n  master: 2\n  actual: 3\n"),
            ([], report, "cairo_reworded", DIFFERENT,
             "text, page 2, line 1\n  master: Revenue by quarter\n  actual: Revenue per quarter"),
            ([], "writer_report", "writer_amount", DIFFERENT, "...urope 615.25 648.00 702.05"),
            ([], report, "cairo_taller_bar", DIFFERENT,
             "picture, page 2, 240 pixels within x 300 to 359, y 184 to 187"),
            ([], report, "cairo_landscape", DIFFERENT, "picture, page 1, size"),
            (["--tolerance", "3"], report, "cairo_recoloured", EQUAL, ""),
            (["--tolerance", "2"], report, "cairo_recoloured", DIFFERENT, "master: #336699 at x"),
            (["--dpi", "36"], report, "cairo_taller_bar", DIFFERENT, "at 36 dpi"),
            (["--ignore-text", "printed on .*", "--dpi", "150"], "cairo_printed_monday",
             "cairo_printed_friday", EQUAL, ""),
            (["--ignore-text", "Revenue.*"], report, "cairo_taller_bar", DIFFERENT,
             "picture, page 2, 240 pixels"),
            ([], report, "qpdf_locked", TROUBLE, "locked with a password"),
            ([], report, "absent", TROUBLE, "No such file"),
            (["--dpi", "0"], report, report, TROUBLE, "not within 10 and 600"),
            (["--ignore-text", "("], report, report, TROUBLE, "regular expression"),
            (["--tolerence", "1"], report, report, TROUBLE, "--tolerence")]
        self.check_all([
            (["--help"], EQUAL, "never (default: 60)"),
            (["one.pdf"], TROUBLE, "usage: diffPdfFiles.py [options] MASTER ACTUAL"),
            *(([*options, PDF / f"{master}.pdf", PDF / f"{actual}.pdf"], status, words)
              for options, master, actual, status, words in rows)])

    def test_damaged_files_and_awkward_names(self):
        whole = (PDF / "cairo_report.pdf").read_bytes()
        table = whole.rindex(b"startxref")
        rows = [
            (whole[:-30], TROUBLE, "repaired"), (b"", TROUBLE, "not a PDF"),
            (whole[:len(whole) // 2], TROUBLE, "poppler cannot read"),
            (whole[:table] + whole[table + 10:], TROUBLE, "(no startxref)"),
            (whole[:table] + b"startxref\n12\n%%EOF\n", TROUBLE, "at offset 12"),
            (whole.replace(b"/Size", b"/Prev 33 /Size"), TROUBLE, "at offset 33"),
            (whole.replace(b"xref\n0 18", b"xref\n0 19"), TROUBLE, "repaired"),
            (whole.replace(b"0000009173", b"0000000000"), TROUBLE, "table misses an object"),
            (whole.replace(b"(Revenue)", b">Revenue)"), DIFFERENT,
             "structure\n  master: sound\n  actual: Syntax Error"),
            (b"From: server\n\n" + whole + b"\n" * 2000, EQUAL, "")]
        os.mkfifo(self.folder / "pipe")
        names = ("two words.pdf", "-dpi", "-", "Umsätze.pdf", "fd:/0")
        (self.folder / "fd:").mkdir()
        for name in names:
            shutil.copy(PDF / "cairo_report.pdf", self.folder / name)
        shutil.copy(PDF / "cairo_reworded.pdf", self.folder / "-r")
        self.check_all([
            *(([name, "-r"], DIFFERENT, "text, page 2") for name in names),
            ([self.put("a", b"text"), self.put("b", b"text")], TROUBLE, "not a PDF"),
            ([PDF / "cairo_report.pdf", "pipe"], TROUBLE, "not a regular file"),
            *(([PDF / "cairo_report.pdf", self.put(f"{number}.pdf", content)], status, words)
              for number, (content, status, words) in enumerate(rows))])

    def fake(self, program, action):
        """Puts a program of this name before poppler's own; returns the environment to run in."""
        self.put(program, f"#!/bin/sh\n{action}\n".encode()).chmod(0o755)
        return {"PATH": f"{self.folder}:{os.environ['PATH']}"}

    def assert_gone(self, process):
        """A killed process may stay a zombie (Z) where nobody waits for orphans."""
        for _ in range(100):
            with contextlib.suppress(FileNotFoundError, ProcessLookupError):
                if ") Z " not in pathlib.Path(f"/proc/{process}/stat").read_text():
                    time.sleep(0.05)
                    continue
            return
        self.fail(f"process {process} still runs")

    def test_failing_poppler(self):
        pair = [PDF / "cairo_report.pdf", PDF / "cairo_redated.pdf"]
        for program, action, words in [
                ("pdfinfo", "sleep 50 & echo $! >>children; wait", "gave up after 1 s"),
                ("pdftotext", "exit 1", "pdftotext cannot read"),
                ("pdftoppm", "printf 'P6\\n2 2\\n255\\n123456789012'", "cannot draw page 2"),
                ("pdftoppm", "printf 'P6\\n2 2\\n255\\n12345'", "cannot draw page 1")]:
            with self.subTest(program=program, action=action):
                environment = self.fake(program, action)
                limit = ["--timeout", "1"] if "sleep" in action else []
                self.check([*limit, *pair], TROUBLE, words, **environment)
                (self.folder / program).unlink()
        for process in (self.folder / "children").read_text().split():
            self.assert_gone(process)
        self.check(["--timeout", "1", "--ignore-text", "((.+)+)+#", *pair], TROUBLE, "gave up")
        self.check(pair, TROUBLE, "install the Debian package poppler-utils", PATH=str(self.folder))
