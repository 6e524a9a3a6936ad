"""What is measured against what, and how fast it has to be."""

import dataclasses
import json
import shutil
import statistics

from inputs import LAYOUT_NAMESPACE, SOURCE
from measure import Command, in_turn, median, peak_of_tree, run


@dataclasses.dataclass(frozen=True)
class Figures:
    """One line of the table; times in seconds, sizes in bytes."""
    us: float
    peer: float
    unit: str
    ratio: float
    least: float
    most: float
    cpu_ratio: float = None


@dataclasses.dataclass(frozen=True)
class Row:
    """One line of work. `target` is the least ratio when `faster`, else the greatest; None: only
    to be known."""
    name: str
    work: str
    against: str
    target: float = None
    faster: bool = False

    def ratio_of(self, us, peer):
        return peer / us if self.faster else us / peer

    def is_met(self, figures):
        return figures.ratio >= self.target if self.faster else figures.ratio <= self.target

    def target_text(self):
        if self.target is None:
            return "known"
        return f"≥ {self.target:g}× faster" if self.faster else f"≤ {self.target:g}×"


@dataclasses.dataclass(frozen=True)
class Race(Row):
    """Our time to a peer's; `share` is how much of our work the peer's is worth."""
    us: Command = None
    peer: Command = None
    share: float = 1

    def measure(self, runs):
        us, peer = in_turn([self.us, self.peer], runs)
        share = self.share
        ratios = [self.ratio_of(ours.wall * share, other.wall) for ours, other in zip(us, peer)]
        wall = (median(us, "wall"), median(peer, "wall"))
        return Figures(*wall, "s", self.ratio_of(wall[0] * share, wall[1]), min(ratios),
                       max(ratios),
                       self.ratio_of(median(us, "cpu") * share, max(median(peer, "cpu"), 1e-3)))


@dataclasses.dataclass(frozen=True)
class Memory(Row):
    """Our peak memory to the size of a file."""
    us: Command = None
    size: int = 0

    def measure(self, runs):
        peaks = [sample.peak for sample in in_turn([self.us], runs)[0]]
        ratios = [self.ratio_of(peak, self.size) for peak in peaks]
        return Figures(statistics.median(peaks), self.size, "B", statistics.median(ratios),
                       min(ratios), max(ratios))


@dataclasses.dataclass(frozen=True)
class ParentShare(Row):
    """Processor time of a process alone to that of all that it started, itself included."""
    us: Command = None

    def measure(self, runs):
        samples = in_turn([self.us], runs)[0]
        shares = [sample.own_cpu / max(sample.cpu, 1e-3) for sample in samples]
        return Figures(median(samples, "own_cpu"), median(samples, "cpu"), "s",
                       statistics.median(shares), min(shares), max(shares))


@dataclasses.dataclass(frozen=True)
class Limit(Row):
    """Our time to the longest that is allowed, in seconds."""
    us: Command = None
    seconds: float = 0

    def measure(self, runs):
        walls = [sample.wall for sample in in_turn([self.us], runs)[0]]
        ratios = [self.ratio_of(wall, self.seconds) for wall in walls]
        return Figures(statistics.median(walls), self.seconds, "s", statistics.median(ratios),
                       min(ratios), max(ratios))


@dataclasses.dataclass(frozen=True)
class WorkLimit(Limit):
    """The same for processor time."""

    def measure(self, runs):
        times = [sample.cpu for sample in in_turn([self.us], runs)[0]]
        ratios = [self.ratio_of(time, self.seconds) for time in times]
        return Figures(statistics.median(times), self.seconds, "s", statistics.median(ratios),
                       min(ratios), max(ratios))


@dataclasses.dataclass(frozen=True)
class SizeLimit(Row):
    """The size of the largest of several groups of files to the largest that is allowed."""
    groups: list = None
    size: int = 0

    def measure(self, _runs):
        sizes = [sum(file.stat().st_size for file in group) for group in self.groups]
        ratios = [self.ratio_of(size, self.size) for size in sizes]
        return Figures(max(sizes), self.size, "B", max(ratios), min(ratios), max(ratios))


class GrowthProgram:
    """Runs the measurement of growth once, whoever asks for its figures."""

    def __init__(self, command):
        self._command = command
        self._worst = None

    def worst(self, group):
        """The worst case of a group: ratio, time(n) and time(2n) in milliseconds."""
        if self._worst is None:
            lines = run(self._command).output.splitlines()
            heads = [i for i, line in enumerate(lines) if line.split()[:1] == ["ratio"]]
            self._worst = [[float(word) for word in lines[i + 1].split()[:3]]
                           for i in heads if i + 1 < len(lines)]
        return self._worst[group]


@dataclasses.dataclass(frozen=True)
class Growth(Row):
    """The worst time(2n) ÷ time(n) of a group of cases, each the best of several runs."""
    program: GrowthProgram = None
    group: int = 0

    def measure(self, _runs):
        ratio, smaller, larger = self.program.worst(self.group)
        return Figures(larger / 1e3, smaller / 1e3, "s", ratio, ratio, ratio)


class Programs:
    def __init__(self, build, inputs):
        self._bin = build / "bin"
        self.inputs = inputs

    def engine(self, suite, format_name, passed):
        """Every report of a suite through the engine of one format."""
        return Command([self._bin / "orvdiff_verify_pairs", "suite", format_name, "../suite"],
                       suite.work, f"{passed} passed, 0 did not")

    def verify(self, suite, *options):
        return Command([self._bin / "orvdiff", "verify", *options, "../suite"], suite.work)

    def tool(self, name, *arguments, says=""):
        return Command([self._bin / name, *arguments], says=says)


def html_rows(programs):
    suite = programs.inputs.html()
    pages = len(list(suite.masters.iterdir()))
    size = sum(file.stat().st_size for folder in (suite.masters, suite.outputs / "v5DebugHTML")
               for file in folder.iterdir())
    work = f"{pages} real HTML pages, {size / 1e6:.0f} MB, volatile parts differ"
    folders = (suite.masters, suite.outputs / "v5DebugHTML")
    us = programs.engine(suite, "html", pages)
    perl = Command(["perl", SOURCE / "bench/peers/normalize.pl", *folders])
    yield Race("P1", work, "Perl, same substitutions", 10, True, us=us, peer=perl)
    yield Race("P2", work, "plain ICU", 15, True, us=us,
               peer=programs.tool("orvdiff_plain_icu", *folders))


def text_rows(programs):
    sizes = programs.inputs.sizes
    suite = programs.inputs.large_text()
    pair = (suite.masters / "XML/Large.xml", suite.outputs / "v5DebugXML/Large.xml")
    yield Race("P3", f"equal texts of {sizes['large_text'] / 1e6:.0f} MB", "cmp", 1,
               us=programs.engine(suite, "xml", 1), peer=Command(["cmp", *pair]))
    suite = programs.inputs.small_texts()
    count = sizes["small_files"]
    yield Race("P3", f"{count} pairs of equal small texts", "diff -rq", 1,
               us=programs.engine(suite, "xml", count),
               peer=diff(suite.masters / "XML", suite.outputs / "v5DebugXML"))


def diff(masters, outputs):
    return Command(["diff", "-rq", masters, outputs])


def image_rows(programs):
    suite = programs.inputs.images()
    count = programs.inputs.sizes["small_files"]
    yield Race("P4", f"{count} pairs of equal images, `orvdiff verify`", "diff -rq", 1,
               us=programs.verify(suite, "-f", "html-png"),
               peer=diff(suite.masters, suite.outputs / "v5DebugHTML"))


def number_rows(programs):
    for noise_every, share in ((20, "5 %"), (1, "all")):
        folder = programs.inputs.numbers(noise_every)
        pair = (folder / "master", folder / "actual")
        count = programs.inputs.sizes["numbers"]
        yield Race("P5", f"{count} numbers, {pair[0].stat().st_size / 1e6:.0f} MB a side, {share} "
                   "off in the last digit", "numdiff -q", 15, True,
                   us=programs.tool("orvdiff_verify_pairs", "numbers", *pair, says="1 passed"),
                   peer=Command(["numdiff", "-q", "-r", "1e-14", *pair]))


def xml_rows(programs):
    suite = programs.inputs.documents()
    count = programs.inputs.sizes["documents"] + 1
    schema = suite.work.parent / "schemas/layoutDataXMLV3.xsd"
    for work, format_name, folder, grammar, options in (
            ("well-formedness", "ctx-metadata", "v5DebugCtxMetadata", (), ()),
            ("schema", "layout-data", "v5DebugDataXML", (LAYOUT_NAMESPACE, schema),
             ("--schema", schema))):
        outputs = suite.outputs / folder
        us = programs.engine(suite, format_name, count)
        work = f"{count} XML documents, one large: {work}"
        yield Race("P6", work, "bare Xerces loop", 1.15, us=us,
                   peer=programs.tool("orvdiff_bare_xerces", outputs, *grammar,
                                      says=f"{count} documents"))
        yield Race("P6", work, "xmllint --noout", us=us,
                   peer=Command(["xmllint", "--noout", *options, *sorted(outputs.iterdir())]))


def folder_rows(programs):
    first, *others = programs.inputs.sizes["reports"]
    base = programs.verify(programs.inputs.reports(first))
    for count in others:
        yield Race("P7", f"`orvdiff verify` of {count} reports, per report", f"of {first} reports",
                   1.3, us=programs.verify(programs.inputs.reports(count)), peer=base,
                   share=first / count)


def growth_rows(programs):
    n = programs.inputs.sizes["growth"]
    program = GrowthProgram(programs.tool("orvdiff_growth", n))
    work = f"hard on backtracking, {2 * n} repetitions, worst case"
    yield Growth("P8", work, f"{n} repetitions", 2.3, program=program)
    yield Growth("P8", f"{work} of a mere pass over the text", f"{n} repetitions",
                 program=program, group=1)


def check_rows(programs):
    folder = programs.inputs.checked_file()
    pair = (folder / "actual", folder / "expected")
    yield Race("P9", f"harness check of equal {pair[0].stat().st_size / 1e6:.0f} MB", "cmp", 2,
               us=programs.tool("orvdiff_verify_pairs", "check", *pair, says="1 passed"),
               peer=Command(["cmp", *pair]))


def memory_rows(programs):
    suite = programs.inputs.volatile_text()
    size = programs.inputs.sizes["large_text"]
    yield Memory("P10", f"peak memory, texts of {size / 1e6:.0f} MB, volatile parts differ",
                 "size of one", 8, us=programs.engine(suite, "html", 1), size=size)


def worker_rows(programs):
    """What several processes gain; never more than the cores that are free allow."""
    def race(name, suite, work, formats):
        two, one = (programs.verify(suite, "-q", "-j", jobs, "-f", formats) for jobs in "21")
        return Race(name, f"{work}, `-j 2`", "`-j 1`", 1.8, True, us=two, peer=one)

    pages = programs.inputs.html()
    yield race("P11a", pages, "the pages of P1", "html")
    scripts = programs.inputs.script_pairs()
    count = programs.inputs.sizes["script_pairs"]
    yield race("P11b", scripts, f"{count} PDF documents and {count} workbooks", "pdf,xlsx")
    program = programs.verify(pages).argv[0]
    by_hand = ("find ../suite -maxdepth 1 -name '*.xml' -print0 | "
               f"xargs -0 -P2 -n50 '{program}' verify -q -j 1 -f html")
    yield Race("P11c", "the pages of P1, `-j 2`", "`xargs -P2 -n50 orvdiff verify`", 1, True,
               us=programs.verify(pages, "-q", "-j", "2", "-f", "html"),
               peer=Command(["sh", "-c", by_hand], pages.work))
    count = programs.inputs.sizes["reports"][-1]
    yield ParentShare("P11d", f"the parent of two workers, {count} small pairs",
                      "all three processes",
                      us=programs.verify(programs.inputs.reports(count), "-q", "-j", "2",
                                         "-f", "html"))


def merge_rows(programs):
    suite, pairs = programs.inputs.night()
    records = suite.work / "records"
    shutil.rmtree(records, ignore_errors=True)
    shards = [records / f"shard-{number}" for number in range(1, 5)]
    for number, shard in enumerate(shards, 1):
        run(dataclasses.replace(programs.verify(
            suite, "-q", "-f", "html,html-png,csv,json", "--shard", f"{number}/4",
            "--record", shard), status=1))
    merged = records / "merged"
    program = programs.verify(suite).argv[0]
    work = f"four shards of {pairs} pairs, a tenth of them different"
    again = f"rm -rf '{merged}'; exec \"$0\" merge \"$@\" -o '{merged}'"
    yield Limit("P11e", f"`orvdiff merge` of {work}", "a limit", 1, seconds=0.5,
                us=Command(["sh", "-c", again, program, *shards], status=1))
    yield SizeLimit("P11f", f"the largest record of {work}, without evidence", "a limit", 1,
                    size=10 ** 6,
                    groups=[[shard / "run.json", shard / "pairs.jsonl"] for shard in shards])


def difference_rows(programs):
    """What it takes to show how two texts differ."""
    size, pairs = programs.inputs.differing_texts()

    def show(pair):
        return Command([programs.tool("orvdiff").argv[0], "diff", "xml", *pair], status=1,
                       says="more difference")

    work = f"differences of texts of {size / 1e6:.0f} MB, 1 % of the lines"
    lines = pairs["lines"]
    for peer in (["diff", "-u"], ["git", "diff", "--no-index"]):
        yield Race("D1", work, " ".join(peer), 1.5, us=show(lines),
                   peer=Command([*peer, *lines], status=1))
    for name in ("shuffled", "one line", "unrelated", "few words"):
        yield WorkLimit("D2", f"differences of texts: {name}", "a limit", 1, seconds=3,
                        us=show(pairs[name]))
    for name in ("lines", "shuffled", "one line"):
        yield Memory("D3", f"peak memory, differences of texts of {size / 1e6:.0f} MB: {name}",
                     "size of one", 10, us=show(pairs[name]), size=size)


@dataclasses.dataclass(frozen=True)
class TreeMemory(Row):
    """The most memory that a command and all that it starts hold at a time, shared pages once."""
    us: Command = None
    size: int = 0

    def measure(self, runs):
        peaks = [peak_of_tree(self.us) for _ in range(runs)]
        ratios = [peak / self.size for peak in peaks]
        return Figures(statistics.median(peaks), self.size, "B", statistics.median(ratios),
                       min(ratios), max(ratios))


class PageFigures:
    """Has a browser open the reports once, whoever asks for its figures."""

    def __init__(self, reports):
        self._reports = reports
        self._figures = None

    def of(self, name):
        if self._figures is None:
            script = SOURCE / "bench/peers/page_figures.py"
            command = Command(["/usr/bin/python3", script, *self._reports])
            self._figures = json.loads(run(command).output)
        return self._figures[name]


@dataclasses.dataclass(frozen=True)
class PageFigure(Row):
    """What a browser needs for the HTML report, to the most that is allowed."""
    figures: PageFigures = None
    figure: str = ""
    most: float = 0
    unit: str = "s"

    def measure(self, _runs):
        value = self.figures.of(self.figure)
        ratio = value / self.most
        return Figures(value, self.most, self.unit, ratio, ratio, ratio)


def report_rows(programs):
    (suite, pairs), (equal, _) = programs.inputs.morning(), programs.inputs.morning(False)
    large = programs.inputs.large_pair()
    reports = ("--html", "report.html", "--json", "report.json", "--junit", "report.xml",
               "--markdown", "report.md")
    formats = ("-f", "html,html-png,csv,json")
    us = dataclasses.replace(programs.verify(suite, "-q", *formats, *reports), status=1)
    none = programs.verify(equal, "-q", *formats, *reports)
    run(us)
    run(dataclasses.replace(programs.verify(large, "-q", *reports), status=1))
    page = suite.work / "report.html"
    differing = f"{pairs} pairs, a tenth of them different, and write four reports"
    yield Limit("P14a", f"compare {differing}", "a limit", 1, us=us, seconds=1.5)
    by_hand = (f"diff -ru '{suite.masters}' '{suite.outputs}/v5DebugHTML' >/dev/null; "
               f"diff -ru '{suite.masters}/CSV' '{suite.outputs}/v5DebugCSV' >/dev/null; "
               f"diff -ru '{suite.masters}/JSON' '{suite.outputs}/v5DebugJSON' >/dev/null; true")
    yield Race("P14a", f"compare {differing}", "diff -ru", 5, us=us,
               peer=Command(["sh", "-c", by_hand]))
    yield Race("P14b", f"compare {differing}", "the same with none different", 1.2, us=us,
               peer=none)
    yield TreeMemory("P14c", "peak memory of that, all processes", "a limit", 1, us=us,
                     size=250 * 10 ** 6)
    yield SizeLimit("P14d", "the page", "a limit", 1, groups=[[page]], size=1_500_000)
    yield SizeLimit("P14d", "the JUnit file", "a limit", 1, groups=[[suite.work / "report.xml"]],
                    size=300_000)
    figures = PageFigures([page, large.work / "report.html"])
    for name, work, figure, most, unit in (
            ("P14e", "first paint of the page in Chromium", "paint", 0.25, "s"),
            ("P14e", "nodes of the page", "nodes", 3000, ""),
            ("P14e", "screens of 1280 by 800 for the hunks of 16 changes of their own", "screens",
             4, ""),
            ("P14f", "answering a key in the page's filter", "key", 0.1, "s"),
            ("P14g", "opening a pair of two texts of 1 MB", "open", 0.5, "s")):
        yield PageFigure(name, work, "a limit", 1, figures=figures, figure=figure, most=most,
                         unit=unit)


ROWS = {"P1": html_rows, "P2": html_rows, "P3": text_rows, "P4": image_rows, "P5": number_rows,
        "P6": xml_rows, "P7": folder_rows, "P8": growth_rows, "P9": check_rows,
        "P10": memory_rows, "P11a": worker_rows, "P11b": worker_rows, "P11c": worker_rows,
        "P11d": worker_rows, "P11e": merge_rows, "P11f": merge_rows,
        "D1": difference_rows, "D2": difference_rows, "D3": difference_rows,
        **dict.fromkeys(("P14a", "P14b", "P14c", "P14d", "P14e", "P14f", "P14g"), report_rows)}
