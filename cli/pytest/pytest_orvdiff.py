"""A plugin of pytest: the pairs of a record of `orvdiff verify` as tests.

    pytest -p pytest_orvdiff night                                 # the record in the folder night
    pytest -p pytest_orvdiff --orvdiff-verify='-C work ../suite'   # verifies first, with these arguments

Each pair is a test, called FORMAT[MASTER], so `-k`, `--last-failed` and `::html` choose among them. It
fails if the output is wrong, is an error if the comparison did not come to an end, and is skipped if it
was not run. A known difference is an expected failure. The test `run` fails if the record does not account for the whole run. Needs pytest 7.0 or
later and, with pytest-xdist, works with `-n`, too.
"""

import json
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unicodedata

import pytest

RECORD_VERSION = 1
PAIRS = "pairs.jsonl"
FAILURES = ("differs", "missing", "failed", "stale")
HUNKS = 3  # of a pair, without -v
SIGNS = {"context": " ", "removed": "-", "added": "+"}


class OrvdiffWarning(pytest.PytestWarning):
    """The run passed, and did not compare everything."""


def text_of(value):
    """A text of a record; what is no UTF-8 there becomes lone surrogates."""
    return value if isinstance(value, str) else bytes.fromhex(value["hex"]).decode("utf-8", "surrogateescape")


def printable(value):
    """A text of a record on one line, escaped as `orvdiff` does."""

    def escaped(character):
        code = ord(character)
        if 0xDC80 <= code <= 0xDCFF:
            return f"\\x{code - 0xDC00:02X}"
        if character in "\n\r\t\\":
            return {"\n": "\\n", "\r": "\\r", "\t": "\\t", "\\": "\\\\"}[character]
        return f"\\x{code:02X}" if code < 0x80 else f"\\u{{{code:04X}}}"

    # Not printable for Python are control and format characters, blanks but the plain one, surrogates.
    return "".join(c if c.isprintable() and c != "\\" else escaped(c) for c in text_of(value))


def columns(text):
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def shown_line(line, numbers):
    """A line of a hunk, and below it carets under what has changed if that is not all of it."""
    text, marks = "", ""
    spans = line["spans"]
    is_marked = {"same", "changed"} <= {span["kind"] for span in spans}
    for span in [{"kind": "cut"}] * line.get("cutBefore", False) + spans + [{"kind": "cut"}] * line.get("cutAfter", False):
        kind = span["kind"]
        part = "…" if kind == "cut" else f"⟨{span['rule']}⟩" if kind == "masked" else printable(span["text"])
        text += part
        marks += ("^" if kind == "changed" and is_marked else " ") * columns(part)
    front = f"{numbers} {SIGNS[line['kind']]} "
    yield (front + text).rstrip()
    if "^" in marks:
        yield " " * len(front) + marks.rstrip()
    if "omitted" in line:
        yield f"{front}… {line['omitted']} more"


def shown_hunk(hunk):
    if hunk["place"]:
        yield printable(hunk["place"])
    sides = ("masterLine", "outputLine")
    widths = [max(len(str(line.get(side, ""))) for line in hunk["lines"]) for side in sides] if hunk["lines"] else []
    for line in hunk["lines"]:
        numbers = " ".join(f"{line.get(side, '')}".rjust(width) for side, width in zip(sides, widths) if width)
        yield from shown_line(line, numbers)


def shown_pair(pair, most_hunks):
    """Everything there is to say of a pair that did not pass."""
    yield f"{pair['verdict']}  {printable(pair['master'])} -> {printable(pair['output'])}"
    if "message" in pair:
        yield printable(pair["message"])
    if "difference" not in pair:
        return
    difference = pair["difference"]
    yield from map(printable, difference["notes"])
    hunks = difference["hunks"][:most_hunks]
    for index, hunk in enumerate(hunks):
        if index and not hunk["place"]:
            yield "--"
        yield from shown_hunk(hunk)
    if difference["hunkCount"] > len(hunks):
        left = difference["hunkCount"] - len(hunks)
        yield f"{left} more difference{'s' * (left > 1)}{' (-v)' * (len(hunks) < len(difference['hunks']))}"
    if difference["coarse"]:
        yield "too large or too different to be compared in every detail"


class Item(pytest.Item):
    """A test without code of its own. It fails in `setup` where that is an error, not a failure."""

    def runtest(self):
        pass

    def reportinfo(self):
        return self.path, 0, self.name


class PairItem(Item):
    """A pair of a record."""

    def __init__(self, pair, **arguments):
        super().__init__(**arguments)
        self.pair = pair

    def fail(self):
        most_hunks = None if self.config.option.verbose > 0 else HUNKS
        pytest.fail("\n".join(shown_pair(self.pair, most_hunks)), pytrace=False)

    def add_output(self, when):
        if "printed" in self.pair:
            lines = text_of(self.pair["printed"]).splitlines()
            self.add_report_section(when, "stdout", "\n".join(map(printable, lines)) + "\n")

    def setup(self):
        verdict = self.pair["verdict"]
        if verdict == "not run":
            pytest.skip(f"{printable(self.pair.get('message', 'not run'))}: {self.name}")
        if verdict not in ("passed", "known", *FAILURES):  # also a verdict of a later version
            self.add_output("setup")
            self.fail()

    def runtest(self):
        self.add_output("call")
        if self.pair["verdict"] == "known":
            pytest.xfail("; ".join(printable(reason["why"]) for reason in self.pair["known"]["reasons"]))
        if self.pair["verdict"] != "passed":
            self.fail()


class ReportItem(Item):
    """A report that no selected format has a master of."""

    def setup(self):
        pytest.skip(f"no master in any selected format: {self.name}")


class RunItem(Item):
    """The run as a whole: without it, half a run would look like a whole one that passed."""

    def __init__(self, problems, findings, **arguments):
        super().__init__(**arguments)
        self.problems = problems
        self.findings = findings

    def setup(self):
        if self.problems:
            pytest.fail("\n".join(self.problems), pytrace=False)

    def runtest(self):
        kinds = [f"{printable(each['kind'])} {each['count']}" for each in self.findings if each["kind"] != "unverified"]
        if kinds:
            self.warn(OrvdiffWarning(f"not accounted for: {', '.join(kinds)}; `orvdiff show RECORD` explains them"))


def problems_of(run, pairs, is_cut):
    """Why the record does not tell all of the run."""
    verdicts = {pair["verdict"] for pair in pairs}
    shards = run["shards"]
    yield from map(printable, run["notes"])
    if not run.get("complete"):
        yield "the run was interrupted; it did not come to all of its reports"
    elif is_cut or run["pairs"] != len(pairs):
        yield f"{PAIRS} is damaged: it holds {len(pairs)} pairs, and run.json counts {run['pairs']}"
    elif run["status"] not in (0, 1) and verdicts <= {"passed", "known", "not run", *FAILURES}:
        # Such as what --strict does not allow, or a comparison script that is not there.
        yield f"the run ended with status {run['status']}; `orvdiff show RECORD` says why"
    if 1 < len(shards["indices"]) < shards["count"]:
        yield f"only {len(shards['indices'])} of {shards['count']} shards are in this record"
    if not pairs and not run["mayBeEmpty"]:
        yield "nothing was verified"


class RecordFile(pytest.File):
    def read(self):
        """The run, its pairs, and whether the last line lacks its end, as after a crash."""
        run = json.loads((self.path.parent / "run.json").read_bytes())
        if run["version"] != RECORD_VERSION:
            raise ValueError(f"a record of version {run['version']}; this plugin reads version {RECORD_VERSION}")
        *lines, rest = self.path.read_bytes().split(b"\n")
        return run, [json.loads(line) for line in lines], rest != b""

    def collect(self):
        try:
            run, pairs, is_cut = self.read()
            problems = list(problems_of(run, pairs, is_cut))
            for pair in pairs:
                name = f"{printable(pair['format'])}[{printable(pair['master'])}]"
                yield PairItem.from_parent(self, name=name, pair=pair)
            for report in run["unverified"]:
                yield ReportItem.from_parent(self, name=f"report[{printable(report)}]")
            yield RunItem.from_parent(self, name="run", problems=problems, findings=run["findings"])
        except (OSError, ValueError, KeyError, TypeError) as error:
            reason = f"there is no {error}" if isinstance(error, KeyError) else error
            raise self.CollectError(f"{self.path} cannot be read as part of a record: {reason}") from None


def pytest_addoption(parser):
    group = parser.getgroup("orvdiff", "outputs of reports")
    group.addoption("--orvdiff-verify", metavar="ARGUMENTS", help="run `orvdiff verify ARGUMENTS` and test its record")
    group.addoption("--orvdiff-program", metavar="FILE", default="orvdiff", help="the orvdiff to run (default: found by PATH)")


def pytest_configure(config):
    if hasattr(config, "workerinput"):  # a worker of xdist: another process has verified
        record = config.workerinput["orvdiff_record"]
    elif config.option.orvdiff_verify is not None:
        record = verify(config)
    else:
        record = None
    config.orvdiff_record = record
    if record is not None:
        config.args.append(record)


@pytest.hookimpl(optionalhook=True)
def pytest_configure_node(node):
    node.workerinput["orvdiff_record"] = node.config.orvdiff_record


def verify(config):
    """Runs orvdiff; returns its list of pairs. The test `run` tells of all trouble but having none."""
    arguments = shlex.split(config.option.orvdiff_verify)
    if any(re.match("--(record|failed)", argument) for argument in arguments):
        raise pytest.UsageError("--orvdiff-verify keeps a record of its own; to test another, name its folder")
    folder = pathlib.Path(tempfile.mkdtemp(prefix="pytest-orvdiff-"))
    config.add_cleanup(lambda: shutil.rmtree(folder, ignore_errors=True))
    record = folder / "record"
    program = config.option.orvdiff_program
    command = [program, "verify", "--quiet", "--color", "never", "--record", str(record), *arguments]
    try:
        run = subprocess.run(command, cwd=config.invocation_params.dir, stdin=subprocess.DEVNULL, capture_output=True)
    except OSError as error:
        raise pytest.UsageError(
            f"cannot run {program}: {error.strerror}; install orvdiff, or name it by --orvdiff-program"
        ) from None
    if not (record / PAIRS).exists():
        said = run.stderr.decode("utf-8", "backslashreplace")
        raise pytest.UsageError(f"{shlex.join(command)}: status {run.returncode}\n{said}")
    return str(record / PAIRS)


def pytest_collect_file(file_path, parent):
    """A record is tested only if it is named, not because it lies below the folder of other tests."""
    if file_path.name != PAIRS:
        return None
    if str(file_path) == parent.config.orvdiff_record:
        # Its place is another one in every run; the names of its tests must not be.
        return RecordFile.from_parent(parent, path=file_path, nodeid="orvdiff-verify")
    if parent.session.isinitpath(file_path) or parent.session.isinitpath(file_path.parent):
        return RecordFile.from_parent(parent, path=file_path)
    return None
