"""What a run with an injected fault may end with, compared with the same run undisturbed."""

import dataclasses
import re
import xml.etree.ElementTree

SUMMARY = "server/summary.xml"
HARNESS_LOG = "server/harness.log"
TIMES = re.compile(rb"(?m)^(=\s+Test (?:Started|Finished): ).*$")
VERDICT = re.compile(
    r"(?m)^(passed|partly|differs|missing|failed|crashed):? +(?:(\S+) -> )?(\S+)$")
ERROR = re.compile(r"(?m)^error +\S+ \(\S+\): (.+)$")
NORMALIZED = re.compile(r"server(/.*)\.(normalized_\w+)")

# These say nothing about the file: it must not be called missing.
SHORTAGES = ("ENOMEM", "EMFILE", "ENFILE")

# Findings that do not fail the test: the finding, CALL:SPAN, where it was injected ("File.cpp:12 <
# Caller.cpp:34"), and why. All patterns must match.
TOLERATED = [(re.compile(what), re.compile(call), re.compile(where), reason)
             for what, call, where, reason in (
    ("dies by signal 11", "alloc:", "OrvDiffNormalizationPattern",
     "ICU 72: RegexPattern::zap() walks the sets that could not be allocated"),
    ("says 'failed' .* ends with 1", "alloc:", "Xml",
     "documented: a parse that runs out of memory fails the document without a word"),
    # To be fixed in the program; delete the row with the fault.
    ("looks whole and lacks", "alloc:", "",
     "a listener that throws keeps the others from being notified (PairFilter)"),
    ("half a summary without status 2", "alloc:", "OrvDiffStreamLog",
     "SummaryFile::deliver does not ask m_stream, which swallows bad_alloc"),
    ("dies by signal 6", "alloc:lasts", "",
     "the destructors of HarnessLog and its TestCase throw (cli/report)"),
)]


@dataclasses.dataclass
class Outcome:
    """What a run left behind."""
    status: int  # negative: the signal that ended it; None: it did not end
    out: str
    err: str
    files: dict

    def __post_init__(self):
        found = VERDICT.findall(self.out)
        self.verdicts = {actual: verdict for verdict, _, actual in found}
        self.masters = {actual: master or actual for _, master, actual in found}
        self.errors = ERROR.findall(self.out)
        self.files = {path: TIMES.sub(rb"\1", content) for path, content in self.files.items()}


def toleration(what, call, where):
    """Why a finding does not fail the test; None when it does."""
    return next((reason for whats, calls, wheres, reason in TOLERATED
                 if whats.search(what) and calls.match(call) and wheres.search(where)), None)


def faults_of(run, undisturbed, error, call):
    """What is wrong with a run in which a call failed with this error, as a list."""
    if run.status is None:
        return ["does not end"]
    if run.status < 0:
        return [f"dies by signal {-run.status}"]
    if run.status not in (0, 1, 2):
        return [f"ends with the undocumented status {run.status}"]
    found = faults_of_verdicts(run, undisturbed, error)
    found += faults_of_files(run, undisturbed, call)
    if run.status < undisturbed.status:
        found.append(f"ends with status {run.status} instead of {undisturbed.status}")
    if run.status == 2 and not run.err.strip() and "error " not in run.out and call != "write":
        found.append("ends with status 2 and no word why")
    return sorted(set(found))


def faults_of_verdicts(run, undisturbed, error):
    found = []
    for actual, wanted in undisturbed.verdicts.items():
        verdict = run.verdicts.get(actual)
        if verdict == wanted or (verdict is None and run.status == 2):
            continue
        if verdict is None:
            found.append(f"says nothing of a pair and ends with status {run.status}")
        elif wanted != "passed" and verdict in ("passed", "partly"):  # to a host both are passes
            found.append("WRONG PASS")
        elif verdict == "missing" and error in SHORTAGES:
            found.append(f"calls a file missing because of {error}")
        elif run.status != 2 and not is_explained(verdict, run, error):
            found.append(f"says '{verdict}' instead of '{wanted}' and ends with {run.status}")
    if run.status != 2 and run.verdicts.keys() - undisturbed.verdicts.keys():
        found.append("names what it cannot have compared")
    return found


def is_explained(verdict, run, error):
    """Whether a verdict is the documented one for a process that died (a worker of the program; the
    rest of its pairs must keep their verdicts), or for a file that cannot be read."""
    if verdict == "crashed":
        return run.status == 1
    lacks_schema = verdict == "failed" and "layoutDataXMLV3.xsd cannot be used" in run.out
    return run.status == 1 and error not in SHORTAGES and (verdict == "missing" or lacks_schema)


def faults_of_files(run, undisturbed, call):
    found = []
    for path in undisturbed.files.keys() - run.files.keys():
        if run.status != 2 and is_due(path, run, undisturbed):
            found.append(f"leaves no {kind_of(path)} and ends with {run.status}")
    for path, content in run.files.items():
        if path not in undisturbed.files:
            # If removing a file is what fails, the file stays.
            if call != "name" and is_due(path, run, undisturbed):
                found.append(f"leaves {kind_of(path)} behind")
        elif content != undisturbed.files[path]:
            found += faults_of_file(path, content, run, undisturbed.verdicts.keys())
    return found


def is_due(path, run, undisturbed):
    """Whether a file must be as in the undisturbed run. Normalised texts depend on the verdict."""
    saved = NORMALIZED.fullmatch(path)
    actual = ".." + saved[1] if saved else None
    return actual is None or run.verdicts.get(actual) == undisturbed.verdicts.get(actual)


def faults_of_file(path, content, run, known):
    """What is wrong with a file that differs from that of the undisturbed run, which had `known`
    outputs. A file that looks whole must hold every verdict that was printed in full."""
    kind = kind_of(path)
    if path not in CHECKS:
        named = path.rpartition("/")[2] in run.out + run.err
        return [] if run.status == 2 and named else [f"leaves half a {kind}"]
    is_whole, lacks = CHECKS[path]
    if not is_whole(content):
        return [] if run.status == 2 else [f"leaves half a {kind} without status 2"]
    printed = run.verdicts.keys() & known
    return [f"leaves a {kind} that looks whole and lacks verdicts"] * lacks(content, run, printed)


def is_whole_summary(content):
    try:
        return xml.etree.ElementTree.fromstring(content).tag == "TestSummary"
    except xml.etree.ElementTree.ParseError:
        return False


def summary_lacks(content, run, printed):
    entries = {(entry.findtext("CurrentFile"), entry.tag == "TestCasePassDiff")
               for entry in xml.etree.ElementTree.fromstring(content)}
    return not entries >= {(actual, run.verdicts[actual] == "passed") for actual in printed}


def is_whole_log(content):
    return b"= TOTALS " in content and content.endswith(b"=\n")


def log_lacks(content, run, printed):
    """A log that reports an error may lack what came after it. For a pair with a missing file it
    names that file only."""
    if any(error.encode() in content for error in run.errors):
        return False
    return not all(actual.encode() in content or run.masters[actual].encode() in content
                   for actual in printed)


CHECKS = {SUMMARY: (is_whole_summary, summary_lacks), HARNESS_LOG: (is_whole_log, log_lacks)}


def kind_of(path):
    """A file as findings name it, so that those of one kind fall together."""
    saved = NORMALIZED.fullmatch(path)
    return {SUMMARY: "summary", HARNESS_LOG: "harness log"}.get(
        path, f"file .{saved[2]}" if saved else path)
