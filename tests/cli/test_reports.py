"""Reports of recorded runs and of runs as they happen: whole, in their place, and the same."""

import json
import os
import pathlib
import re
import resource

import jsonschema

from suite import SuiteTest

DOCS = pathlib.Path(__file__).parents[2] / "docs"


class Reports(SuiteTest):
    def setUp(self):
        super().setUp()
        for i in range(7):
            self.report(f"R{i}", f"<p>{i}</p>", f"<p>{i if i % 3 else 'x'}</p>")
        self.report(b"caf\xe9", "x")

    def written(self, name):
        """A JSON report, without what no two runs share."""
        text = (self.work / name).read_text()
        own = r'"(seconds|cpuSeconds|start|end|suite)": ?("[^"]*"|[-+.e0-9]+),?|"commandLine": \[[^]]*\],'
        return json.loads(re.sub(own, "", text))

    def test_reports_of_a_run_of_its_record_and_of_its_shards_are_the_same(self):
        self.assertEqual(self.verify("--record", "r", "--json", "run.json", "--html", "run.html").status, 1)
        for i in (1, 2):
            self.verify("--shard", f"{i}/2", "--record", f"s{i}")
        self.expect(self.run_program("report", "r", "--json", "record.json"), 0, out="")
        self.expect(self.run_program("report", "s2", "s1", "--json", "shards.json"), 0)
        record, shards = self.written("record.json"), self.written("shards.json")
        self.assertEqual(record, shards)
        piped = self.run_program("report", "r", "--json", "-")
        self.assertEqual(piped.out, (self.work / "record.json").read_text())
        self.assertEqual(self.run_program("report", "s1", "--json", "-").status, 0)
        for pair in record["pairs"]:
            for side in ("masterFile", "outputFile"):
                pair[side].pop("evidence", None)  # of a record only
        self.assertEqual(self.written("run.json"), record)
        schemas = [
            json.loads((DOCS / name).read_text()) for name in ("report.schema.json", "pair-record.schema.json")
        ]
        resolver = jsonschema.RefResolver("file:///", schemas[0], {"file:///pair-record.schema.json": schemas[1]})
        jsonschema.Draft202012Validator(schemas[0], resolver=resolver).validate(json.loads(piped.out))

    def test_files_that_cannot_be_reports(self):
        self.verify("--record", "r")
        os.symlink("x", self.work / "link")
        rows = [
            ("report r --json r/x", "cannot be written into the record r"),
            ("report r --html r/evidence/x", "cannot be written into the record r"),
            ("report r --html x --json link", "the HTML report and the JSON report cannot both be link"),
            ("report r --html - --json -", "only one report can go to standard output"),
            ("report r --html nowhere/x", "No such file or directory"),
            ("report r", "report needs at least one report to write"),
            ("report r r --html x", "shard 1 is there twice"),
            ("verify ../suite --html x --summary x", "the summary and the HTML report cannot both be x"),
            ("verify ../suite --json -", "name a file for --json"),
            ("verify ../suite --json ../suite/Masters/R1.html", "R1.html is a master of this run"),
            ("verify ../suite --record new --html new/x", "cannot be written into the record new"),
        ]
        for command, reason in rows:
            with self.subTest(command):
                run = self.run_program(*command.split())
                self.assertEqual(run.status, 2)
                self.assertIn(reason, run.err)
                self.assertFalse(
                    (self.work / "x").exists() or (self.work / "r/x").exists() or (self.work / "new").exists()
                )

    def test_a_full_disk_leaves_no_half_report(self):
        self.verify("--record", "r")

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (700, 700))

        for command in (["report", "r"], ["verify", "../suite"]):
            with self.subTest(command[0]):
                run = self.run_program(*command, "--html", "x", "--json", "y", preexec_fn=limit)
                self.assertEqual(run.status, 2)
                for what in ("HTML report x", "JSON report y"):
                    self.assertIn(f"the {what} could not be written completely", run.err)
                self.assertEqual([*self.work.glob("[xy]*")], [])
        (self.work / "x").write_text("of yesterday")
        self.run_program("verify", "../suite", "--html", "x", preexec_fn=limit)
        self.assertFalse((self.work / "x").exists())
        full = self.run_program("report", "r", "--html", "/dev/full")
        self.assertEqual(full.status, 2)
        self.assertIn("not all of it could be written", full.err)

    def test_a_record_that_is_damaged_leaves_the_former_report(self):
        self.verify("--record", "r")
        (self.work / "x").write_text("of yesterday")
        path = self.work / "r/pairs.jsonl"
        path.write_bytes(path.read_bytes()[:-9])
        self.assertEqual(self.run_program("report", "r", "--html", "x").status, 2)
        self.assertEqual((self.work / "x").read_text(), "of yesterday")
