"""What a run with an injected fault may end with, compared with the same run undisturbed."""

import dataclasses
import json
import re
import xml.etree.ElementTree

SUMMARY, HARNESS_LOG, RECORD = "server/summary.xml", "server/harness.log", "server/record/"
TIMES = re.compile(rb"(?m)^(=\s+Test (?:Started|Finished): ).*$")
COMPARED = ("passed", "partly", "differs", "missing", "failed")
NOT_COMPARED = ("error", "crashed")
VERDICT = re.compile(rf"(?m)^({'|'.join(COMPARED + NOT_COMPARED)}) +(?:(\S+) -> )?(\S+)$")
# A format whose masters could not be listed, or a report whose workers all died before a pair.
UNLISTED = re.compile(rf"(?m)^(?:{'|'.join(NOT_COMPARED)}) +\S+(?: \(\S+\)$|\n +the process)")
SAVED = re.compile(r"server(/.*)\.normalized_\w+")
# These say nothing about the file: it must not be called missing.
SHORTAGES = ("ENOMEM", "EMFILE", "ENFILE")

# Findings that do not fail the test: the finding, the call, where it was injected ("File.cpp:12 <
# Caller.cpp:34"), and why. All patterns must match.
TOLERATED = (
    ("says 'failed' .* ends with 1", "worker-alloc", "Xml",
     "documented: a parse that runs out of memory fails the document without a word"),
    ("status -(6|11)", "alloc", "(PairJson|JsonText|RunRecord).cpp",
     "nlohmann-json 3.11 does not survive every failed allocation: its destructors allocate too"),
    ("status -11", "alloc", r"^OrvDiffNormalizationPattern.cpp:\d+ ",
     "ICU 72 reads through a null pointer when it clears up a pattern that it had no memory for"),
    ("no word why", "alloc", r"^main.cpp:\d+ < main.cpp:\d+$",
     "libstdc++: the standard streams' buffers; without them there is nothing to say it with"))


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
                 if re.search(whats, what) and calls == call and re.search(wheres, where)), None)


def faults_of(run, undisturbed, fault):
    """What is wrong with a run in which a call failed, as a set."""
    if run.status not in (0, 1, 2):
        return {f"ends with the undocumented status {run.status}"}
    found = {*faults_of_verdicts(run, undisturbed, fault.error),
             *faults_of_files(run, undisturbed, fault.call),
             *faults_of_record(run, undisturbed, fault.call)}
    if fault.call.startswith("worker-"):
        found |= set(faults_of_survivors(run, undisturbed, fault.span))
    if run.status < undisturbed.status:
        found.add(f"ends with status {run.status} instead of {undisturbed.status}")
    is_explained = run.err.strip() or re.search(
        rf"(?m)^(?:{'|'.join(NOT_COMPARED)}) .*\n +\S", run.out)
    if run.status == 2 and not is_explained and fault.call != "write":
        found.add("ends with status 2 and no word why")
    return found


def faults_of_verdicts(run, undisturbed, error):
    for actual, wanted in undisturbed.verdicts.items():
        verdict = run.verdicts.get(actual)
        if verdict == wanted or (verdict is None and run.status == 2):
            continue
        if verdict is None:
            yield f"says nothing of a pair and ends with status {run.status}"
        elif wanted != "passed" and verdict in ("passed", "partly"):  # to a host both are passes
            yield "WRONG PASS"
        elif verdict == "missing" and error in SHORTAGES:
            yield f"calls a file missing because of {error}"
        elif run.status != 2 and not is_of_unreadable(verdict, run, error):
            yield f"says '{verdict}' instead of '{wanted}' and ends with {run.status}"
    if run.status != 2 and run.verdicts.keys() - undisturbed.verdicts.keys():
        yield "names what it cannot have compared"


def is_of_unreadable(verdict, run, error):
    """Whether a verdict is the documented one for a file that cannot be read."""
    lacks_schema = verdict == "failed" and "layoutDataXMLV3.xsd cannot be used" in run.out
    return run.status == 1 and error not in SHORTAGES and (verdict == "missing" or lacks_schema)


def faults_of_survivors(run, undisturbed, span):
    """When a worker dies, or cannot go on with a pair, the program and all other pairs do."""
    unlisted = len(UNLISTED.findall(run.out))
    verdicts = [run.verdicts.get(actual) for actual in undisturbed.verdicts]
    if None in verdicts and unlisted == 0:
        yield "a worker's trouble loses pairs"
    if span == "once" and sum(verdict in NOT_COMPARED for verdict in verdicts) + unlisted > 1:
        yield "one fault in a worker costs several pairs"


def faults_of_files(run, undisturbed, call):
    for path in run.files.keys() | undisturbed.files.keys():
        content, wanted = run.files.get(path), undisturbed.files.get(path)
        kind = path.rpartition(".")[2]
        saved = SAVED.fullmatch(path)  # is there or not depending on the verdict
        output = saved and ".." + saved[1]
        is_due = not saved or run.verdicts.get(output) == undisturbed.verdicts.get(output)
        if content is None and run.status != 2 and is_due:
            yield f"leaves no {kind} and ends with {run.status}"
        elif wanted is None and call != "name" and is_due:  # what cannot be removed stays
            yield f"leaves {kind} behind"
        elif None not in (content, wanted) and content != wanted:
            yield from faults_of_changed(path, content, run, undisturbed.verdicts.keys())


def faults_of_changed(path, content, run, known):
    """A summary or log that looks whole must hold every verdict on one of the `known` outputs that
    was printed; any other file has to be named."""
    if path not in (SUMMARY, HARNESS_LOG):
        if run.status != 2 or path.rpartition("/")[2] not in run.out + run.err:
            yield f"leaves half a {path.rpartition('.')[2]}"
        return
    printed = {actual for actual in run.verdicts.keys() & known
               if path == HARNESS_LOG or run.verdicts[actual] in COMPARED}
    is_whole, lacks = (check_summary if path == SUMMARY else check_log)(content, run, printed)
    if not is_whole and run.status != 2:
        yield f"leaves half a {path} without status 2"
    if is_whole and lacks:
        yield f"leaves a {path} that looks whole and lacks verdicts"


def check_summary(content, run, printed):
    try:
        entries = {(entry.findtext("CurrentFile"), entry.tag == "TestCasePassDiff")
                   for entry in xml.etree.ElementTree.fromstring(content)}
    except xml.etree.ElementTree.ParseError:
        return False, False
    return True, not entries >= {(actual, run.verdicts[actual] == "passed") for actual in printed}


def check_log(content, run, printed):
    """A log may say that it is not whole. For a pair with a missing file it names that file only."""
    admits = b"FAILED: the run ended early" in content or b"misses results" in content
    names_all = all(actual.encode() in content or run.masters[actual].encode() in content
                    for actual in printed)
    return b"= TOTALS " in content and content.endswith(b"=\n"), not admits and not names_all


def faults_of_record(run, undisturbed, call):
    """A complete record holds all that was printed, and the bytes of all files that it says it
    keeps. The last line of one that is not complete may have been cut off."""
    pairs = [json.loads(line) for line in run.record.get("pairs.jsonl", b"").split(b"\n")[:-1]]
    kept = {f"evidence/{facts['hash']}" for pair in pairs
            for facts in (pair["masterFile"], pair["outputFile"]) if facts.get("evidence") == "kept"}
    if run.record.keys() - {"run.json", "pairs.jsonl"} - kept and run.status != 2 and call != "name":
        yield "leaves in the record what it does not name"
    try:
        header = json.loads(run.record.get("run.json", '{"complete": false}'))
    except ValueError:
        header = None
        yield "leaves half a run.json"
    if header and not header["complete"] and run.status != 2:
        yield "leaves no complete record"
    if header and header["complete"]:
        recorded = {pair["output"]: pair["verdict"] for pair in pairs if pair["master"]}
        if len(pairs) != header["pairs"] or header["status"] < undisturbed.status or any(
                recorded.get(actual) != run.verdicts[actual]
                for actual in run.verdicts.keys() & undisturbed.verdicts.keys()):
            yield "leaves a record that says it is complete and lacks verdicts"
        if not kept <= run.record.keys():
            yield "leaves a record that lacks files which it says it keeps"
