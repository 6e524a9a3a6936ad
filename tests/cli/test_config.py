"""A suite's file: settings, patterns, known differences, trust."""

import datetime
import json
import os
import pathlib
import tomllib

import jsonschema

from suite import SuiteTest

DOCS = pathlib.Path(__file__).parents[2] / "docs"
STAMP = """[[pattern]]
name = "stamp"
expression = "Build [0-9]+"
formats = ["xls"]
why = "the server stamps its pages"
[[pattern.examples]]
before = "Build 4711"
after = ""
[[pattern.examples]]
stays = "Builders 12"
"""


def known(rest, until="2999-12-31"):
    return f'[[known]]\nwhy = "as planned"\nuntil = {until}\n{rest}\n'


class Config(SuiteTest):
    def config(self, *tables, name="suite/orvdiff.toml"):
        return self.write(name, "version = 1\n" + "".join(tables))

    def pair_record(self, record="night"):
        return json.loads((self.work / record / "pairs.jsonl").read_text())

    def check_schema(self, name):
        schema = json.loads((DOCS / "pair-record.schema.json").read_text())
        jsonschema.Draft202012Validator(schema).validate(self.pair_record(name))

    def test_patterns_act_where_they_are_added_and_are_named(self):
        self.config(STAMP)
        self.report("R", "Build 1\n", "Build 22\n", xls=True)
        run = self.verify("--record", "night")
        self.expect(run, 0, "1 suite pattern helped 1 pair to pass (-v names them)\n")
        self.assertIn("stamp", self.pair_record()["rules"])
        header = json.loads((self.work / "night/run.json").read_text())
        self.assertEqual(header["config"]["patterns"][0]["why"], "the server stamps its pages")
        master, output = "../suite/Masters/XLS/R.html", "../webcontent/bi/v5DebugXLS/R.html"
        self.expect(self.run_program("explain", "xls", master, output), 0,
                    "Suite pattern stamp, from ../suite/orvdiff.toml:2:1: the server stamps its pages")
        self.expect(self.run_program("diff", "xls", master, output), 0)
        self.expect(self.run_program("normalize", "xls", master), 0, out="\n")
        self.expect(self.verify("--no-config"), 1)
        self.report("R", "Build 1\n", "Built 22\n", xls=True)
        self.expect(self.verify(), 1)

    def test_the_command_line_counts_more_than_the_file_and_the_file_more_than_defaults(self):
        self.config('[suite]\nwork = "../work"\nformats = ["xls"]\ntimeout = 7\n')
        self.report("R", "a", "b")
        self.report("S", "a", "a", xls=True)
        self.expect(self.verify("-v"), 0, "Settings from ", "/suite/orvdiff.toml\n", "1 pair: 1 passed")
        self.expect(self.verify("-f", "html"), 1, "differs  ../suite/Masters/R.html")
        run = self.run_program("config", "--timeout", "9", "../suite")
        lines = [" ".join(line.split()) for line in run.out.splitlines()]
        for line in ('formats = ["xls"] # ../suite/orvdiff.toml:4:1', "timeout = 9 # command line",
                     "mask-limit = 20 # default"):
            self.assertIn(line, lines)
        # From another folder, the file still says where the outputs are; the report stays here.
        run = self.run_program("verify", "-C", "..", "suite", "--no-config")
        self.assertEqual(run.status, 1)
        self.write("elsewhere/x")
        run = self.program("verify", str(self.server / "suite"), "--junit", "j.xml")
        self.expect(run, 0, "1 pair: 1 passed")
        self.assertTrue((self.work / "j.xml").exists())

    def test_the_nearest_file_counts_and_locations_must_agree(self):
        self.config('[suite]\nformats = "xls"\n', name="orvdiff.toml")
        self.config("", name="suite/orvdiff.toml")
        self.report("R", "a", "a")
        self.report("T", "a", "a", folder="other")
        self.expect(self.verify("-v"), 0, "not from ", "/server/orvdiff.toml, which is further up")
        run = self.verify(locations=("../suite", "../other"))
        self.expect(run, 2, err="orvdiff: the locations belong to different suites: ../suite has ...")
        self.expect(self.verify("--config", "../suite/orvdiff.toml", locations=("../suite", "../other")), 0)

    def test_layout_names_may_differ(self):
        self.config('[suite]\noutputs = "../out"\nmasters = "Expected"\n')
        self.write("suite/R.xml", "r")
        self.write("suite/Expected/R.html", "a")
        self.write("out/v5DebugHTML/R.html", "a")
        self.expect(self.verify("-v"), 0, "passed   ../suite/Expected/R.html -> ../out/v5DebugHTML/R.html")

    def test_known_differences_are_no_failures_and_no_passes(self):
        self.report("R", "a 1", "a 2")
        run = self.verify("--record", "first")
        group = self.pair_record("first")["difference"]["changes"][0]["group"]
        self.config(known(f'pair = "Masters/R.html"\ngroup = "{group}"'))
        for options in ((), ("-q",)):
            self.expect(self.verify(*options), 0, "All passed but what is known.", "0 passed", "1 known")
        reports = "--record night --junit j.xml --markdown m.md --json j.json".split()
        self.expect(self.verify(*reports), 0, "Known until 2999-12-31: 1 pair, as planned (../suite/orvdiff.toml:2")
        self.check_schema("night")
        self.assertEqual(self.pair_record()["known"]["verdict"], "differs")
        self.assertIn('failures="0" errors="0" skipped="1"', (self.work / "j.xml").read_text())
        self.assertIn("known: as planned (until 2999-12-31", (self.work / "j.xml").read_text())
        self.assertIn("0 of 1 pair passed, 1 known", (self.work / "m.md").read_text())
        self.assertEqual(json.loads((self.work / "j.json").read_text())["run"]["totals"], {"known": 1})
        self.expect(self.run_program("show", "night"), 0, "All passed but what is known.", "1 known")
        self.expect(self.run_program("report", "night", "--annotations", "github"), 0, out="")
        self.expect(self.verify("--failed", "night", locations=()), 0, "0 of 1 pair")
        self.report("R", "a 1", "a 3")  # another change
        self.expect(self.verify(), 1, "1 differ")
        self.report("R", "a 1", "a 1")
        self.expect(self.verify(), 0, "no longer needed: ../suite/orvdiff.toml:2:1: Masters/R.html", "All passed.")

    def test_shards_tell_together_what_is_no_longer_needed(self):
        for name in "RSTU":
            self.report(name, "a 1", "a 2" if name == "R" else "a 1")
        self.config(known('pair = "Masters/R*.html"\nverdict = "differs"'),
                    known('pair = "Masters/?.html"\nverdict = "differs"'),
                    known('pair = "Masters/S*.html"\nverdict = "differs"'), known('pair = "X*"\nverdict = "differs"'))
        for shard in "12":
            run = self.verify("--shard", f"{shard}/2", "--record", shard)
            self.assertNotIn("no longer needed", run.out)
        run = self.run_program("merge", "1", "2", "-o", "all")
        self.expect(run, 0, "no longer needed: ../suite/orvdiff.toml:12:1: Masters/S*.html",
                    "there is no such pair: ../suite/orvdiff.toml:17:1: X*")
        self.assertEqual(run.out.count("no longer needed"), 1)

    def test_known_differences_end(self):
        self.report("R", "a 1", "a 2")
        today = datetime.date.today()
        for days, status in ((0, 0), (-1, 1)):
            until = today + datetime.timedelta(days)
            self.config(known('pair = "**/*.html"\nverdict = "differs"', until))
            self.assertEqual(self.verify().status, status)
        self.assertIn("so 1 pair fails again: ", self.verify().out)
        self.config(known('pair = "**/*.html"\nverdict = "differs"'))
        self.report("R", "a\0b", "a\0c")  # compared only up to the NUL
        self.expect(self.verify(), 2, "1 partly", err=self.verify().err)

    def test_shards_of_different_files_do_not_merge(self):
        for name in ("R", "S", "T", "U"):
            self.report(name, "a", "a")
        self.config(STAMP)
        self.verify("--shard", "1/2", "--record", "one")
        self.config(STAMP + "# touched\n")
        self.verify("--shard", "2/2", "--record", "two")
        run = self.run_program("merge", "one", "two", "-o", "all")
        self.assertEqual(run.status, 2)
        self.assertIn("different suites, formats or options", run.err)

    def test_a_file_that_others_can_write_runs_no_programs(self):
        self.report("R", "a", "a")
        script = self.write("suite/same.sh", '#!/bin/sh\ncmp "$1" "$2"\n')
        os.chmod(script, 0o755)
        table = ('[[format]]\nname = "odd"\noutputs = "Odd"\ntail = "*.odd"\ncompare = "script"\n'
                 'command = ["./same.sh", "{master}", "{output}"]\n')
        file = self.config(table)
        self.write("suite/Masters/R.odd", "a")
        self.write("webcontent/bi/Odd/R.odd", "b")
        self.expect(self.verify(), 1, "differs  ../suite/Masters/R.odd")
        for text, refused in ((table, True), ('[suite]\nwork = "../work"\n', True), (STAMP, False)):
            file = self.config(text)
            os.chmod(file, 0o666)
            run = self.verify()
            self.assertEqual("names programs to run, but everybody can write it" in run.err, refused)
            self.assertNotEqual(self.verify("--trust-config").status, 2)
        if os.geteuid() == 0:
            os.chmod(self.config(table), 0o644)
            os.chown(file, 65534, -1)
            self.assertIn("belongs to another user", self.verify().err)

    def test_check_says_everything_at_once(self):
        file = self.config('[suite]\nwrok = "x"\njobs = 0\n')
        run = self.run_program("config", "--check", "../suite")
        self.expect(run, 2, 'orvdiff.toml:3:1: unknown key "wrok" in [suite]; did you mean "work"?',
                    "orvdiff.toml:4:1: ", "2 problems in ")
        self.assertEqual(self.verify().status, 2)
        self.report("R", "x" * 3000 + "Build 1", "x", xls=True)
        rows = [  # expression, what is said
            ("Build [0-9]+", "is sound: 1 pattern"),
            ("(Build [0-9]+)?", "can match the empty text"),
            ("Build [0-9]+|x{9,}", "masks more than mask-limit allows: 3000 bytes at once of "),
            ("Build [0-9]+|(x+)+y", "fails on ../suite/Masters/XLS/R.html: the pattern \"stamp\" takes"),
            ("Build [0-9]{1,9}(?=$|<)", "is outside the linear subset"),
        ]
        for expression, said in rows:
            self.config(STAMP.replace("Build [0-9]+", expression))
            run = self.run_program("config", "--check", "../suite")
            self.assertIn(said, run.out)
            self.assertEqual(run.status, 0 if "sound" in run.out else 2)
        for text in ("x = [" * 9999, "version = 1\n" + "#" * 5_000_000):
            self.write("suite/orvdiff.toml", text)
            self.assertEqual(self.verify().status, 2)

    def test_the_schema_for_editors_agrees_with_the_program(self):
        schema = json.loads((DOCS / "orvdiff-toml.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        keys = set(schema["properties"]["suite"]["properties"])
        shown = self.run_program("config").out.split("[suite]")[1]
        self.assertEqual(keys, {line.split(" = ")[0] for line in shown.splitlines() if " = " in line})
        good = tomllib.loads("version = 1\n" + STAMP + known('group = "a"'))
        jsonschema.Draft202012Validator(schema).validate(good)
