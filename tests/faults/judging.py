"""What a run with an injected fault may end with, compared with the same run undisturbed."""

import dataclasses
import json
import re
import xml.etree.ElementTree

SUMMARY = "server/summary.xml"
HARNESS_LOG = "server/harness.log"
TIMES = re.compile(rb"(?m)^(=\s+Test (?:Started|Finished): ).*$")
RECORD = "server/record/"
COMPARED = ("passed", "partly", "differs", "missing", "failed")
NOT_COMPARED = ("error", "crashed")
VERDICT = re.compile(rf"(?m)^({'|'.join(COMPARED + NOT_COMPARED)}) +(?:(\S+) -> )?(\S+)$")
# A format whose masters could not be listed, or a report whose workers all died before a pair.
UNLISTED = re.compile(rf"(?m)^(?:{'|'.join(NOT_COMPARED)}) +\S+(?: \(\S+\)$|\n +the process)")
NORMALIZED = re.compile(r"server(/.*)\.(normalized_\w+)")

# These say nothing about the file: it must not be called missing.
SHORTAGES = ("ENOMEM", "EMFILE", "ENFILE")

# Findings that do not fail the test: the finding, CALL:SPAN, where it was injected ("File.cpp:12 <
# Caller.cpp:34"), and why. All patterns must match.
TOLERATED = [(re.compile(what), re.compile(call), re.compile(where), reason)
             for what, call, where, reason in (
    ("says 'failed' .* ends with 1", "worker-alloc:", "Xml",
     "documented: a parse that runs out of memory fails the document without a word"),
    ("dies by signal 6", "alloc:", "(PairJson|JsonText|RunRecord).cpp",
     "nlohmann-json 3.11 allocates in its destructors"),
    ("dies by signal 11", "alloc:", r"^OrvDiffNormalizationPattern.cpp:\d+ ",
     "ICU 72 reads through a null pointer when it clears up a pattern that it had no memory for"),
    ("no word why", "alloc:", r"^main.cpp:\d+ < main.cpp:\d+$",
     "libstdc++: the standard streams' buffers; without them there is nothing to say it with"),
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
        self.record = {path[len(RECORD):]: content for path, content in self.files.items()
                       if path.startswith(RECORD)}
        self.files = {path: TIMES.sub(rb"\1", content) for path, content in self.files.items()
                      if not path.startswith(RECORD)}


def toleration(what, call, where):
    """Why a finding does not fail the test; None when it does."""
    return next((reason for whats, calls, wheres, reason in TOLERATED
                 if whats.search(what) and calls.match(call) and wheres.search(where)), None)


def faults_of(run, undisturbed, fault):
    """What is wrong with a run in which a call failed, as a list."""
    if run.status is None:
        return ["does not end"]
    if run.status < 0:
        return [f"dies by signal {-run.status}"]
    if run.status not in (0, 1, 2):
        return [f"ends with the undocumented status {run.status}"]
    found = faults_of_verdicts(run, undisturbed, fault.error)
    if fault.call.startswith("worker-"):
        found += faults_of_survivors(run, undisturbed, fault.span)
    found += faults_of_files(run, undisturbed, fault.call)
    found += faults_of_record(run, undisturbed, fault.call)
    if run.status < undisturbed.status:
        found.append(f"ends with status {run.status} instead of {undisturbed.status}")
    if run.status == 2 and not run.err.strip() and not is_explained_in(run.out) and \
            fault.call != "write":
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
        elif run.status != 2 and not is_of_unreadable(verdict, run, error):
            found.append(f"says '{verdict}' instead of '{wanted}' and ends with {run.status}")
    if run.status != 2 and run.verdicts.keys() - undisturbed.verdicts.keys():
        found.append("names what it cannot have compared")
    return found


def is_explained_in(out):
    """Whether what was not compared is there with a reason."""
    return re.search(rf"(?m)^(?:{'|'.join(NOT_COMPARED)}) .*\n +\S", out) is not None


def faults_of_survivors(run, undisturbed, span):
    """When a worker dies, or cannot go on with a pair, the program and all other pairs do."""
    unlisted = len(UNLISTED.findall(run.out))
    missed = [actual for actual in undisturbed.verdicts if actual not in run.verdicts]
    found = ["a worker's trouble loses pairs"] * (len(missed) > 0 and unlisted == 0)
    lost = [actual for actual in undisturbed.verdicts if run.verdicts.get(actual) in NOT_COMPARED]
    if span == "once" and len(lost) + unlisted > 1:
        found.append("one fault in a worker costs several pairs")
    return found


def is_of_unreadable(verdict, run, error):
    """Whether a verdict is the documented one for a file that cannot be read."""
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
    printed = {actual for actual in run.verdicts.keys() & known
               if path != SUMMARY or run.verdicts[actual] in COMPARED}
    return [f"leaves a {kind} that looks whole and lacks verdicts"] * lacks(content, run, printed)


def faults_of_record(run, undisturbed, call):
    """A complete record holds all that was printed, and the bytes of all files that it says it
    keeps."""
    kept = {f"evidence/{name}" for name in kept_by(run)}
    if run.record.keys() - {"run.json", "pairs.jsonl"} - kept and run.status != 2 and call != "name":
        return ["leaves in the record what it does not name"]
    try:
        header = json.loads(run.record["run.json"])
    except KeyError:
        return ["leaves no record"] * (run.status != 2)
    except ValueError:
        return ["leaves half a run.json"]
    if not header["complete"]:
        return ["leaves an incomplete record"] * (run.status != 2)
    pairs = pairs_of(run)
    recorded = {pair["output"]: pair["verdict"] for pair in pairs if pair["master"]}
    found = []
    if len(pairs) != header["pairs"] or header["status"] < undisturbed.status or any(
            recorded.get(actual) != run.verdicts[actual]
            for actual in run.verdicts.keys() & undisturbed.verdicts.keys()):
        found.append("leaves a record that says it is complete and lacks verdicts")
    if not kept <= run.record.keys():
        found.append("leaves a record that lacks files which it says it keeps")
    return found


def pairs_of(run):
    """The pairs of a record; the last line may have been cut off."""
    lines = run.record.get("pairs.jsonl", b"").split(b"\n")
    return [json.loads(line) for line in lines[:-1]]


def kept_by(run):
    return {facts["hash"] for pair in pairs_of(run)
            for facts in (pair["masterFile"], pair["outputFile"]) if facts.get("evidence") == "kept"}


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
    """A log may say that it is not whole. For a pair with a missing file it names that file only."""
    if b"FAILED: the run ended early" in content or b"misses results" in content:
        return False
    return not all(actual.encode() in content or run.masters[actual].encode() in content
                   for actual in printed)


CHECKS = {SUMMARY: (is_whole_summary, summary_lacks), HARNESS_LOG: (is_whole_log, log_lacks)}


def kind_of(path):
    """A file as findings name it, so that those of one kind fall together."""
    saved = NORMALIZED.fullmatch(path)
    return {SUMMARY: "summary", HARNESS_LOG: "harness log"}.get(
        path, f"file .{saved[2]}" if saved else path)
