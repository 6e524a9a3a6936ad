"""Records of runs: written while the run goes on, read back, merged, damaged."""

import json
import pathlib
import re
import resource
import shutil
import subprocess

import jsonschema

from suite import SuiteTest

SCHEMA = pathlib.Path(__file__).parents[2] / "docs/pair-record.schema.json"


class RecordsTest(SuiteTest):
    def suite(self, reports=20):
        for i in range(reports):
            folder = f"suite/{'abc'[i % 3]}"
            self.report(f"R{i}", f"<p>{i}</p>", f"<p>{i if i % 5 else -i - 1}</p>", folder=folder)
        self.report("Missing", "x", folder="suite/a")
        self.report(b"caf\xe9", "x", "y")
        self.pair("Bad", "CtxMetadata", "Bad.xml", "<a/>", "<a>")

    def record(self, name, *options):
        run = self.verify("--record", name, *options)
        self.assertNotIn("orvdiff:", run.err)
        return run

    def content(self, name):
        """All of a record, times aside."""
        times = rb'"(seconds|cpuSeconds)":[-+.e0-9]+|"(start|end)": "[^"]*"'
        return {path.relative_to(self.work / name): re.sub(times, b"", path.read_bytes())
                for path in (self.work / name).rglob("*") if path.is_file()}

    def pairs(self, name):
        return [*map(json.loads, (self.work / name / "pairs.jsonl").read_text().splitlines())]

    def refused(self, reason, *arguments, **options):
        run = self.run_program(*arguments, **options)
        self.expect(run, 2, err=reason + "...")


class Content(RecordsTest):
    def test_what_a_record_holds(self):
        self.suite()
        self.report("Noisy", "<p>a</p><script>1</script>", "<p>a</p>\r\n<script>2</script>")
        self.assertEqual(self.record("r").status, 1)
        validator = jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text()))
        pairs = self.pairs("r")
        for pair in pairs:
            validator.validate(pair)
            if pair["verdict"] != "passed":
                for side in ("master", "output"):
                    evidence = self.work / "r/evidence" / pair[f"{side}File"].get("hash", "none")
                    there = self.work / pair[side] if isinstance(pair[side], str) else None
                    if there and there.exists():
                        self.assertEqual(evidence.read_bytes(), there.read_bytes())
        noisy = next(pair for pair in pairs if "Noisy" in str(pair["master"]))
        self.assertEqual(noisy["rules"], ["CarriageReturn", "LineBreak", "ScriptElement"])
        self.assertEqual(noisy["masterFile"]["normalizedHash"],
                         noisy["outputFile"]["normalizedHash"])
        run = json.loads((self.work / "r/run.json").read_text())
        self.assertEqual((run["complete"], run["pairs"], run["status"]), (True, len(pairs), 1))
        self.assertEqual(run["totals"]["differs"], 5)
        starts = []
        for zone in ("EAST-12", "WEST+12"):  # a day apart, by the clocks on their walls
            self.verify("--record", zone, TZ=zone)
            starts.append(json.loads((self.work / zone / "run.json").read_text())["start"])
        self.assertEqual(starts, sorted(starts))

    def test_show_prints_what_the_run_did_and_what_changed_since(self):
        self.suite()
        run = self.record("r1", "-v")
        shown = self.run_program("show", "-v", "r1")
        self.expect(shown, 0)
        count = len(run.lines("passed", "differs"))
        self.assertEqual(shown.out.splitlines()[:count], run.out.splitlines()[:count])
        self.report("R5", "<p>5</p>", "<p>5</p>", folder="suite/c")
        self.report("R1", "<p>1</p>", "<p>new</p>", folder="suite/b")
        self.record("r2")
        changes = self.run_program("show", "r1", "r2")
        self.expect(changes, 1, "1 newly failing, 6 still failing, 1 newly passing")
        self.assertEqual(len(changes.lines("differs")), 1)

    def test_failed_pairs_are_verified_again(self):
        self.suite()
        self.report("R0", "x", "x", folder="suite/a", xls=True)  # passes, unlike its page
        self.record("r")
        again = self.verify("--failed", "r", locations=())
        self.expect(again, 1, "7 of 24 pairs, those that did not pass in the run of ",
                    "7 pairs: 0 passed, 5 differ, 1 missing, 1 failed")
        self.assertEqual(self.verify("-q", "--failed", "r", locations=()).out.count("\n"), 1)

    def test_failed_pairs_are_verified_as_they_were_from_anywhere(self):
        for i in range(3):
            self.pair("R", "charts", f"R_{i}.cgs", "x", "y")
        self.write("suite/Masters/charts/R_3.cgs", "x")
        run = self.record("r", "--cgs-output-dir", "v5Debugcharts", "--cgs-master-sub-folder",
                          "charts", "-f", "cgs,html")
        self.expect(run, 1, "4 pairs: 0 passed, 3 differ, 1 missing")
        self.pair("R", "charts", "R_0.cgs", "x", "x")
        (self.server / "suite/Masters/charts/R_1.cgs").unlink()
        again = self.run_program("-C", "..", "verify", "--failed", "work/r", "--record", "again")
        self.expect(again, 1, "4 of 4 pairs", "4 pairs: 1 passed, 1 differ, 2 missing")
        self.assertTrue((self.server / "again/run.json").exists())
        third = self.verify("--failed", "../again", locations=())
        self.expect(third, 1, "3 of 4 pairs", "3 pairs: 0 passed, 1 differ, 2 missing")
        for options in (["../suite"], ["--shard", "1/2"], ["-f", "html"]):
            self.refused("--failed takes reports, formats and the working", "verify",
                         "--failed", "r", *options)
        path = self.work / "r/run.json"
        path.write_text(path.read_text().replace(str(self.work), "/gone"))
        self.refused("worked in the folder /gone, which cannot be entered: No such file",
                     "verify", "--failed", "r")

    def test_failed_pairs_are_those_of_their_sub_folder_and_picture_folder(self):
        self.write("suite/R.xml")
        for name in ("R.html", "fr/R.html", "R.png"):
            self.write(f"suite/Masters/{name}", "a")
            self.write(f"webcontent/bi/v5DebugHTML/{name}", "b")
        self.write("webcontent/bi/v5DebugXHTML/R.png", "a")  # passes
        self.record("r", "--all-sub-folders")
        shutil.rmtree(self.outputs)
        for option in ("--quiet", "--list"):
            again = self.verify("--failed", "r", option, locations=())
            self.assertIn("1 report, 3 pairs", again.out)

    def test_failed_does_not_make_a_whole_of_half_a_run(self):
        self.suite(4)
        self.record("r")
        path = self.work / "r/run.json"
        path.write_text(path.read_text().replace('"complete": true', '"complete": false'))
        self.expect(self.verify("--failed", "r", locations=()), 2,
                    err="work/r did not come to its end; ...")

    def test_failed_takes_all_pairs_where_none_could_be_listed(self):
        self.suite(4)
        self.record("r")
        path = self.work / "r/pairs.jsonl"
        pairs = self.pairs("r")
        for pair in pairs:  # as a record of a format whose masters could not be listed
            if "R1" in str(pair["master"]):
                pair.update(master="", output="", verdict="error")
        path.write_text("".join(json.dumps(pair) + "\n" for pair in pairs))
        self.expect(self.verify("-v", "--failed", "r", locations=()), 1, "5 of 7 pairs",
                    "passed   ../suite/b/Masters/R1.html")


class Shards(RecordsTest):
    def test_merged_shards_are_the_whole(self):
        self.suite()
        self.report("Lonely")
        self.write("suite/a/R0.txt")  # a twin: its masters are those of R0.xml
        whole = self.record("whole")
        for count in (1, 3, 40):
            shards = [f"s{count}.{i + 1}" for i in range(count)]
            for i, shard in enumerate(shards):
                self.record(shard, "--shard", f"{i + 1}/{count}")
            merged = self.run_program("merge", *shards, "-o", f"m{count}")
            self.expect(merged, whole.status)
            self.assertEqual(self.content(f"m{count}"), self.content("whole"))
        self.run_program("merge", "--partial", "s3.3", "s3.1", "-o", "some")
        self.assertEqual(self.run_program("merge", "s3.2", "some", "-o", "m").status, 1)
        self.assertEqual(self.content("m"), self.content("whole"))
        lists = [self.verify("--list", "--shard", "1/3", locations=(place,)).out.replace(place, "")
                 for place in ("../suite", "../webcontent/../suite")]
        self.assertEqual(*lists)

    def test_what_cannot_be_merged(self):
        self.suite(6)
        for i in (1, 2):
            self.record(f"s{i}", "--shard", f"{i}/2")
        self.record("other", "-f", "html", "--shard", "2/2")
        self.record("third", "--shard", "2/3")
        for records, reason in [("s1", "of 2 shards these are missing: 2"),
                                ("s1 s2 s2", "shard 2 is there twice: again in s2"),
                                ("s1 other", "different suites, formats or options"),
                                ("s1 third", "different numbers of shards"),
                                ("s1 nowhere", "nowhere/run.json: No such file")]:
            self.refused(reason, "merge", *records.split(), "-o", "merged")
            self.assertFalse((self.work / "merged").exists())

    def test_shards_without_a_pair_make_a_whole_that_is_trouble(self):
        self.report("Lonely")
        for i in (1, 2):
            self.assertEqual(self.record(f"s{i}", "--shard", f"{i}/2").status, 0)
        merged = self.run_program("merge", "s1", "s2", "-o", "m")
        self.assertEqual(merged.status, 2)
        self.assertIn("nothing to verify", merged.out)

    def test_what_is_merged_from_a_shard_that_is_not_whole_is_not_either(self):
        self.suite(6)
        for i in (1, 2):
            self.record(f"s{i}", "--shard", f"{i}/2")
        rows = [("pairs.jsonl", lambda text: text[:-9]),
                ("run.json", lambda text: text.replace(b'"complete": true', b'"complete": false'))]
        for file, spoil in rows:
            with self.subTest(file):
                path = self.work / "s2" / file
                path.write_bytes(spoil(path.read_bytes()))
                self.assertEqual(self.run_program("merge", "s1", "s2", "-o", file).status, 2)
                merged = json.loads((self.work / file / "run.json").read_text())
                self.assertFalse(merged["complete"])


class Damage(RecordsTest):
    def test_damaged_records_are_refused_with_file_and_reason(self):
        self.suite(3)
        rows = [("run.json", lambda text: text.replace(b'"version": 1', b'"version": 2'),
                 "the record is of version 2; this orvdiff reads version 1"),
                ("run.json", lambda text: text[:40], "is not the record of a run"),
                ("pairs.jsonl", lambda text: text[:-9], "it was changed or cut off"),
                ("pairs.jsonl", lambda text: text.replace(b'"passed"', b'"pased"'),
                 "line 4 is damaged: \"pased\" is not a verdict")]
        for number, (file, spoil, reason) in enumerate(rows):
            name = f"r{number}"
            self.record(name)
            path = self.work / name / file
            path.write_bytes(spoil(path.read_bytes()))
            self.refused(reason, "show", name)

    def test_evidence_that_is_too_large_or_not_what_was_compared(self):
        self.suite(6)
        self.report("Large", b"x" * (5 << 20), "y")
        self.record("r", "--shard", "1/1")
        self.assertIn("left out: larger", {pair["masterFile"].get("evidence", "")[:16]
                                           for pair in self.pairs("r")})
        for path in (self.work / "r/evidence").iterdir():
            path.write_bytes(b"changed")
        self.assertEqual(self.run_program("merge", "r", "-o", "m").status, 1)
        self.assertIn("left out: changed", {pair["outputFile"].get("evidence", "")[:17]
                                            for pair in self.pairs("m")})

    def test_a_folder_in_use_or_not_empty_is_refused(self):
        self.report("R", "a", "b")
        self.record("r")
        before = self.content("r")
        self.refused("the folder is not empty", "verify", "--record", "r", "../suite")
        self.assertEqual(self.content("r"), before)
        self.pair("S", "PDF", "S.pdf", "x", "y")
        running = self.popen("verify", "--record", "busy", "../suite", stdout=subprocess.DEVNULL,
                             stderr=None, env={"PATH": self.interpreter("sleep 60\n")})
        self.wait_until((self.work / "busy/run.json").exists)
        self.assertIn("another run is writing there", self.verify("--record", "busy").err)
        running.kill()
        running.wait()
        # Until its workers are gone too, the folder is in use.
        self.wait_until(lambda: "another run" not in self.verify("--record", "busy").err)

    def test_a_full_disk_under_the_record_is_trouble(self):
        self.suite()
        self.refused("orvdiff: the record r cannot be written", "verify", "--record", "r",
                     "../suite", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                                       (3000, 3000)))
        self.assertFalse(json.loads((self.work / "r/run.json").read_text())["complete"])
