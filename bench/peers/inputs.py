"""Builds the inputs of the side-by-side runs, once: they stay in the build folder."""

import json
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import time
import zlib

SOURCE = pathlib.Path(__file__).resolve().parents[2]
PAGE_FOLDERS = ("/usr/share/doc/postgresql-doc-*/html", "/usr/share/doc/python3*/html")
LAYOUT_NAMESPACE = "http://www.orv.example/xmlns/prod/tarsa/layoutData/201310"
DEMO = SOURCE / "examples/demo"
SCHEMA = DEMO / "server/schemas/layoutDataXMLV3.xsd"
MIB = 1 << 20

FULL = {"pages": 1500, "large_text": 64 * MIB, "small_files": 10_000, "numbers": 2_000_000,
        "documents": 500, "large_document": 12_000_000, "reports": (1_000, 10_000, 50_000),
        "checked_file": 256 * MIB, "growth": 500_000, "script_pairs": 40,
        "night": {"pages": 3_000, "images": 200, "tables": 50},
        "differing": {"lines": 64 * MIB, "unrelated": 10 * MIB, "words": 170_000},
        "morning": {"pages": 3_000, "images": 200, "tables": 50}}
QUICK = {"pages": 8, "large_text": MIB // 4, "small_files": 20, "numbers": 2_000,
         "documents": 5, "large_document": 100_000, "reports": (20, 40, 60),
         "checked_file": MIB, "growth": 1_000, "script_pairs": 1,
         "night": {"pages": 30, "images": 4, "tables": 4},
         "differing": {"lines": MIB // 4, "unrelated": MIB // 8, "words": 2_000},
         "morning": {"pages": 60, "images": 10, "tables": 10}}


class Suite:
    """A report suite: its working folder, reports, masters and outputs."""

    def __init__(self, folder):
        self.work = folder / "server/work"
        self.reports = folder / "server/suite"
        self.masters = self.reports / "Masters"
        self.outputs = folder / "server/webcontent/bi"

    def create(self, master_folder, output_folder):
        self.masters /= master_folder
        self.outputs /= output_folder
        for path in (self.work, self.masters, self.outputs):
            path.mkdir(parents=True, exist_ok=True)

    def add(self, name, extension, master, actual):
        (self.reports / f"{name}.xml").write_text("<report/>\n")
        (self.masters / f"{name}{extension}").write_bytes(master)
        (self.outputs / f"{name}{extension}").write_bytes(actual)


class Inputs:
    def __init__(self, folder, quick, pages_from):
        self.sizes = QUICK if quick else FULL
        self._folder = folder / ("quick" if quick else "full")
        self._pages_from = pages_from
        self._built_anything = False

    def settle(self):
        """Waits until folders made just now count as old: a listing of a young one is not kept."""
        if self._built_anything:
            time.sleep(5)
            self._built_anything = False

    def _once(self, name, build):
        """The folder `name`; `build` fills it when it is not there yet."""
        folder = self._folder / name
        if not folder.exists():
            print(f"building {folder}", file=sys.stderr)
            unfinished = self._folder / f"{name}.unfinished"
            shutil.rmtree(unfinished, ignore_errors=True)
            unfinished.mkdir(parents=True)
            build(unfinished)
            unfinished.rename(folder)
            self._built_anything = True
        return folder

    def html(self):
        """Real pages; masters and outputs differ in their volatile parts."""
        def build(folder):
            make = SOURCE / "tools/make_html_suite.py"
            subprocess.run([sys.executable, make, "--pages", str(self.sizes["pages"]),
                            *self._page_folders(), folder / "suite"],
                           check=True, stdout=sys.stderr)
        return Suite(self._once("html", build) / "suite")

    def _page_folders(self):
        if self._pages_from:
            return [self._pages_from]
        found = {path.resolve() for pattern in PAGE_FOLDERS for path in
                 pathlib.Path("/").glob(pattern[1:]) if path.is_dir()}
        if not found:
            sys.exit("The runs need real HTML pages: apt-get install postgresql-doc-15 "
                     "python3-doc, or name a folder of pages with --pages-from.")
        return sorted(found)

    def large_text(self):
        """One pair of equal texts."""
        def build(folder):
            text = sized(self.sizes["large_text"], report_lines(1))
            suite = Suite(folder)
            suite.create("XML", "v5DebugXML")
            suite.add("Large", ".xml", text, text)
        return Suite(self._once("large-text", build))

    def volatile_text(self):
        """One pair of HTML texts that differ in volatile parts all over."""
        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            size = self.sizes["large_text"]
            suite.add("Large", ".html", sized(size, html_lines(1)), sized(size, html_lines(2)))
        return Suite(self._once("volatile-text", build))

    def small_texts(self):
        def build(folder):
            suite = Suite(folder)
            suite.create("XML", "v5DebugXML")
            for number in range(self.sizes["small_files"]):
                text = sized(2048, report_lines(number))
                suite.add(f"Report{number:06}", ".xml", text, text)
        return Suite(self._once("small-texts", build))

    def images(self):
        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            rng = random.Random(1)
            for number in range(self.sizes["small_files"]):
                image = b"\x89PNG\r\n\x1a\n" + rng.randbytes(8192)
                suite.add(f"Chart{number:06}", ".png", image, image)
        return Suite(self._once("images", build))

    def reports(self, count):
        """`count` reports with one small page each."""
        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            for number in range(count):
                suite.add(f"Report{number:06}", ".html", sized(1024, html_lines(1)),
                          sized(1024, html_lines(2)))
        return Suite(self._once(f"reports-{count}", build))

    def numbers(self, noise_every):
        """Two texts of numbers of sixteen digits; every `noise_every`-th is off in its last."""
        def build(folder):
            rng = random.Random(7)
            with open(folder / "master", "w") as master, open(folder / "actual", "w") as actual:
                for i in range(self.sizes["numbers"]):
                    fraction = rng.randrange(10 ** 14, 10 ** 15 - 10)
                    off = 5 if i % noise_every == 0 else 0
                    end = "\n" if i % 10 == 9 else " "
                    master.write(f"3.{fraction}{end}")
                    actual.write(f"3.{fraction + off}{end}")
        return self._once(f"numbers-{noise_every}", build)

    def documents(self):
        """Valid layout data: many small documents and a large one, as two formats."""
        def build(folder):
            suite = Suite(folder)
            suite.create("CtxMetadata", "v5DebugCtxMetadata")
            rng = random.Random(3)
            names = []
            for number in range(self.sizes["documents"] + 1):
                is_large = number == self.sizes["documents"]
                size = self.sizes["large_document"] if is_large else rng.randrange(2_000, 40_000)
                names.append(f"Document{number:04}")
                document = layout_data(size, rng)
                suite.add(names[-1], ".xml", document, document)
            for old, new in ((suite.masters, "DataXML"), (suite.outputs, "v5DebugDataXML")):
                (old.parent / new).mkdir()
                for name in names:
                    os.link(old / f"{name}.xml", old.parent / new / f"{name}.xml")
            schemas = suite.work.parent / "schemas"
            schemas.mkdir()
            shutil.copy(SCHEMA, schemas)
        return Suite(self._once("documents", build))

    def script_pairs(self):
        """Pairs that scripts compare: as many PDF documents as workbooks."""
        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            shutil.copytree(DEMO / "src", folder / "src")
            for master, output, extension in (("PDF", "v5DebugPDF", ".pdf"),
                                              ("XLS2007", "v5DebugXLS2007", ".xlsx")):
                for files, demo in ((suite.masters, DEMO / "server/suite/sales/Masters"),
                                    (suite.outputs.parent, DEMO / "server/webcontent/bi")):
                    kind = master if files == suite.masters else output
                    (files / kind).mkdir()
                    for number in range(self.sizes["script_pairs"]):
                        shutil.copy(demo / kind / f"Revenue{extension}",
                                    files / kind / f"Document{number:04}{extension}")
            for number in range(self.sizes["script_pairs"]):
                (suite.reports / f"Document{number:04}.xml").write_text("<report/>\n")
        return Suite(self._once("script-pairs", build))

    def night(self):
        """A night's suite: one change to the generator shows in a tenth of the pages, and a few
        files of every kind are wrong in their own ways. Returns it with the number of pairs."""
        pages, images, tables = self.sizes["night"].values()

        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            rng = random.Random(13)
            for number in range(pages):
                size = rng.randrange(20_000, 100_000)
                master = b"<h1>Revenue</h1>\n" + sized(size, html_lines(number))
                actual = b"<h1>Revenue</h1>\n" + sized(size, html_lines(number + pages))
                if number % 10 == 0:
                    actual = actual.replace(b"<h1>Revenue</h1>", b"<h1>Turnover</h1>")
                elif number % (pages // 16 + 1) == 1:
                    actual = actual.replace(b"</td>", b"%d</td>" % number, 1)
                suite.add(f"Page{number:05}", ".html", master, actual)
            for number in range(images):
                image = b"\x89PNG\r\n\x1a\n" + rng.randbytes(8192)
                suite.add(f"Chart{number:05}", ".png", image,
                          image[:-1] if number % 10 == 0 else image)
            for kind, output, extension in (("CSV", "v5DebugCSV", ".csv"),
                                            ("JSON", "v5DebugJSON", ".json")):
                (suite.masters / kind).mkdir()
                (suite.outputs.parent / output).mkdir()
                for number in range(tables):
                    text = b"[1, %d]\n" % number * 500
                    name = f"Table{extension[1:]}{number:05}"
                    (suite.reports / f"{name}.xml").write_text("<report/>\n")
                    (suite.masters / kind / f"{name}{extension}").write_bytes(text)
                    (suite.outputs.parent / output / f"{name}{extension}").write_bytes(
                        text[:-2] if number % 10 == 0 else text)
        return Suite(self._once("night", build)), pages + images + 2 * tables

    def morning(self, differs=True):
        """What reports are read for: real pages, of which a tenth show the same changed word in
        their footer and 16 others a change of their own, and a few pictures and tables that
        differ. Without `differs`, the same masters with outputs that are equal."""
        sizes = self.sizes["morning"]

        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            pages = self._pages_between(20_000, 100_000)
            every = max(sizes["pages"] // 16, 1)
            for number in range(sizes["pages"]):
                page = pages[number % len(pages)]
                end = page.rfind(b"</body>")
                releases = (b"11.1", b"11.2" if number % 10 == 3 else b"11.1")
                master, output = (page[:end] + b"<p>Release %s of the writer</p>\n" % release +
                                  page[end:] for release in releases)
                if number % every == 4 and number < 16 * every:
                    output = output.replace(b"</p>", b" note %d</p>" % number, 1)
                suite.add(f"Page{number:05}", ".html", master, output if differs else master)
            for number in range(sizes["images"]):
                master, output = picture(number, False), picture(number, number % 10 == 0)
                suite.add(f"Chart{number:05}", ".png", master, output if differs else master)
            for kind, write in (("CSV", csv_table), ("JSON", json_table)):
                tables = Suite(folder)
                tables.create(kind, f"v5Debug{kind}")
                for number in range(sizes["tables"]):
                    master, output = write(number, False), write(number, number % 10 == 0)
                    tables.add(f"{kind}{number:05}", f".{kind.lower()}", master,
                               output if differs else master)
        folder = self._once("morning" if differs else "morning-equal", build)
        return Suite(folder), sum(sizes.values()) + sizes["tables"]

    def large_pair(self):
        """One page of a megabyte, of which one line in a hundred has changed."""
        def build(folder):
            suite = Suite(folder)
            suite.create("", "v5DebugHTML")
            lines = sized(MIB, html_lines(1)).splitlines(keepends=True)
            changed = [line.replace(b"Revenue", b"Turnover") if number % 100 == 50 else line
                       for number, line in enumerate(lines)]
            suite.add("Large", ".html", b"".join(lines), b"".join(changed))
        return Suite(self._once("large-pair", build))

    def _pages_between(self, least, most):
        """The bytes of real pages of such sizes, or of any size if there are none."""
        texts = [file.read_bytes() for folder in self._page_folders()
                 for file in sorted(pathlib.Path(folder).rglob("*.html"))]
        whole = [text for text in texts if b"</body>" in text]
        return [text for text in whole if least <= len(text) <= most] or whole

    def checked_file(self):
        def build(folder):
            rng = random.Random(5)
            with open(folder / "expected", "wb") as expected:
                for _ in range(self.sizes["checked_file"] // MIB):
                    expected.write(rng.randbytes(MIB))
            shutil.copy(folder / "expected", folder / "actual")
        return self._once("checked-file", build)

    def differing_texts(self):
        """The size of the large texts, and pairs of texts that are hard in different ways."""
        folder = self._folder / "differing"
        names = ("lines", "shuffled", "one line", "unrelated", "few words")
        pairs = {name: (folder / f"{name} 1", folder / f"{name} 2") for name in names}
        if not folder.exists():
            self._built_anything = True
            folder.mkdir(parents=True)
            for name, texts in differing(self.sizes["differing"]):
                for path, text in zip(pairs[name], texts):
                    path.write_text(text)
        return self.sizes["differing"]["lines"], pairs



def picture(number, differs):
    """A bar chart of 400 by 300 pixels as PNG."""
    rng = random.Random(number)
    heights = [rng.randrange(20, 280) for _ in range(20)]
    if differs:
        heights[7] -= 9
    bar, paper = b"\x2b\x6c\xb0" * 20, b"\xff" * 60
    rows = b"".join(b"\0" + b"".join(bar if 300 - y < height else paper for height in heights)
                    for y in range(300))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    header = struct.pack(">IIBBBBB", 400, 300, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rows)) +
            chunk(b"IEND", b""))


def csv_table(number, differs):
    rows = [f"{row},Item {row},{(row * 37 + number) % 1000}.50\n" for row in range(200)]
    if differs:
        rows[17] = f"17,Item 17,{number}.75\n"
    return ("Id,Name,Price\n" + "".join(rows)).encode()


def json_table(number, differs):
    rows = [{"id": row, "name": f"Item {row}", "total": (row * 37 + number) % 1000}
            for row in range(200)]
    if differs:
        rows[3]["total"] = -number - 1
    return json.dumps({"rows": rows}, indent=1).encode()


def sized(size, lines):
    text = bytearray()
    while len(text) < size:
        text += next(lines)
    return bytes(text)


def report_lines(seed):
    rng = random.Random(seed)
    while True:
        yield b"<row><item>Revenue %06d</item><value>%08.2f</value></row>\n" % (
            rng.randrange(10 ** 6), rng.random() * 10 ** 5)


def html_lines(run):
    """The rows of a table; what differs from run to run is volatile."""
    rng = random.Random(11)
    volatile = random.Random(run)
    while True:
        yield (b'<tr><td id="rt_%06d" class="cell" onclick="go(%05d)">Revenue %06d</td></tr>\n'
               % (volatile.randrange(10 ** 6), volatile.randrange(10 ** 5),
                  rng.randrange(10 ** 6)))


def layout_data(size, rng):
    rows = (b'        <row kind="detail">\n'
            b'          <cell style="txt"><coord>36,%d,156,17</coord><value>Item %d</value></cell>\n'
            b'          <cell style="num"><coord>192,%d,100,17</coord><value>%d</value></cell>\n'
            b'        </row>\n'
            % tuple(rng.randrange(1000) for _ in range(4)) for _ in iter(int, 1))
    return (b'<?xml version="1.0" encoding="UTF-8"?>\n<layoutData xmlns="%s" report="Revenue" '
            b'locale="en-US" version="3">\n  <page number="1" name="pgRevenue" width="842" '
            b'height="595">\n    <body>\n      <table name="list" columns="2">\n'
            b'        <coord>36,73,555,17</coord>\n' % LAYOUT_NAMESPACE.encode()
            + sized(size, rows)
            + b'      </table>\n    </body>\n  </page>\n</layoutData>\n')


def differing(sizes):
    """Names and both texts of pairs that differ."""
    chance = random.Random(12)
    words = ["".join(chance.choices("abcdefghijklmnopqrstuvwxyz", k=chance.randint(2, 9)))
             for _ in range(20_000)]

    def line():
        return " ".join(chance.choices(words, k=10)) + "\n"

    def page(size):
        parts = []
        while size > 0:
            text = " ".join(chance.choices(words, k=12))
            parts.append(f"<tr><td>{text}</td></tr>" if chance.random() < .5 else f"<p>{text}</p>\n")
            size -= len(parts[-1])
        return "".join(parts)

    lines = []
    size = sizes["lines"]
    while size > 0:
        lines.append(line())
        size -= len(lines[-1])
    changed = [text.replace(" ", " changed ", 1) if number % 100 == 50 else text
               for number, text in enumerate(lines)]
    yield "lines", ("".join(lines), "".join(changed))
    yield "one line", tuple("".join(side).replace("\n", " ") for side in (lines, changed))
    shuffled = chance.sample(lines, len(lines))
    yield "shuffled", ("".join(lines), "".join(shuffled))
    yield "unrelated", (page(sizes["unrelated"]), page(sizes["unrelated"]))
    few = words[:50]
    yield "few words", tuple("\n".join(chance.choices(few, k=sizes["words"])) for _ in "12")
