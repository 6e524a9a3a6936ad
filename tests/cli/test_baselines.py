"""What accept, remove, undo and log do to masters, and what they leave alone."""

import fcntl
import json
import os
import pathlib
import pty
import shlex
import shutil
import subprocess

from suite import PROGRAM, SuiteTest

PNG = b"\x89PNG\r\n\x1a\n"


class Baselines(SuiteTest):
    def setUp(self):
        super().setUp()
        self.report("Good", "<p>x</p>", "<p>x</p>")
        self.report("Old", "<p>old</p>", "<p>new</p>")
        self.masters = self.server / "suite/Masters"

    def accept(self, *arguments, locations=("../suite",)):
        return self.run_program("accept", "-y", *arguments, *locations)

    def recorded(self):
        self.verify("--record", "../record", "-q")
        return "--from", "../record"

    def from_record(self, *arguments):
        return self.accept("--from", "../record", *arguments, locations=())

    def undo(self, *arguments):
        return self.run_program("undo", *arguments)

    def log(self):
        return self.run_program("log")

    def snapshot(self):
        """Every file and folder of the suite, with contents and permissions, without the journal."""
        top = self.server / "suite"
        return {str(path.relative_to(top)): (path.is_file() and path.read_bytes(), path.stat().st_mode)
                for path in top.rglob("*") if ".orvdiff" not in path.parts}

    def expect_untouched(self, run, status, *texts, before, err=""):
        self.expect(run, status, *texts, err=err)
        self.assertEqual(self.snapshot(), before)


class WhatIsAccepted(Baselines):
    def test_a_difference_until_it_is_undone(self):
        os.chmod(self.masters / "Old.html", 0o640)
        before = self.snapshot()
        self.expect_untouched(self.run_program("accept", "-n", "../suite"), 0,
                              "To accept:\n    ../suite/Masters/Old.html\nWould accept 1 output\n",
                              before=before)
        self.expect(self.accept(), 0, "Accepted 1 output (entry 1)\nTake it back with: orvdiff undo 1\n")
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>new</p>")
        self.assertEqual((self.masters / "Old.html").stat().st_mode & 0o777, 0o640)
        self.expect(self.verify(), 0, "All passed.")  # the journal is in the suite, and none of it
        self.assertEqual((self.server / "suite/.orvdiff/.gitignore").read_text(), "*\n")
        self.expect_untouched(self.undo(), 0, "Undid accept 1 of ", ": 1 master\n", before=before)
        self.expect(self.log(), 0, "undo of 1, 1 master", ", undone\n")
        self.expect(self.undo(), 2, err="orvdiff: there is nothing to undo\n")
        self.expect(self.undo("x"), 2, err="orvdiff: ID: \"x\" is not the number of an entry\n"
                                           "Try \"orvdiff undo --help\".\n")
        self.expect(self.undo("2"), 0)  # an undo can be undone, too
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>new</p>")

    def test_lines_that_are_no_decisions(self):
        record = self.recorded()
        for line, problem in (('{"fix":', "it is not a JSON object"), ("[]", "it is not a JSON object"),
                              ('{"path":"x"}', 'it has no "fix"')):
            self.write("list", line.encode())
            self.expect(self.accept(*record, "--list", "../list", locations=()), 2,
                        err=f"orvdiff: {self.server}/list, line 1 is not a decision: {problem}\n")

    def test_names_that_are_no_text(self):
        self.report(b"caf\xe9", "<p>old</p>", "<p>new</p>")
        before = self.snapshot()
        self.expect(self.accept(*self.recorded(), locations=()), 0, "    ../suite/Masters/caf\\xE9.html\n")
        self.expect_untouched(self.undo(), 0, before=before)

    def test_only_what_was_chosen(self):
        self.report("Also", "<p>old</p>", "<p>new</p>")
        between = "<p>the same words</p>" * 20
        self.report("Both", f"<p>old</p>{between}<p>a</p>", f"<p>new</p>{between}<p>b</p>")
        self.report("sub/Deep", "<p>old</p>", "<p>new</p>")
        self.write("webcontent/bi/v5DebugHTML/Deep.html", "<p>new</p>")
        shutil.move(self.masters / "sub", self.server / "suite/sub/Masters")
        record = self.recorded()
        pairs = [*map(json.loads, (self.server / "record/pairs.jsonl").read_text().splitlines())]
        changes = {os.path.basename(pair["master"]): [each["group"] for each in pair["difference"]["changes"]]
                   for pair in pairs if pair["verdict"] == "differs"}
        group = changes["Old.html"][0]
        decisions = self.server / "decisions.jsonl"
        old = next(pair for pair in pairs if pair["master"].endswith("/Old.html"))
        line = {"fix": "accept", "path": old["master"], "format": "html", "unknown": 1,
                "masterHash": old["masterFile"]["hash"], "outputHash": old["outputFile"]["hash"]}
        decisions.write_text("\n".join(map(json.dumps, (
            line, {"fix": "fault", "path": "../suite/Masters/Also.html"}))) + "\n")
        for arguments, status, chosen, left in (
                (("--group", group), 1, ["Also", "Old", "Deep"], ["Both"]),
                (("--list", "../decisions.jsonl"), 0, ["Old"], []),
                (("../suite/Also.xml", "../suite/sub"), 0, ["Also", "Deep"], []),
                (("--format", "csv"), 0, [], [])):
            with self.subTest(arguments=arguments):
                run = self.run_program("accept", "-n", *record, *arguments)
                lines = [text.strip() for text in run.out.splitlines() if text.startswith("  ")]
                self.assertEqual(run.status, status, run.out + run.err)
                self.assertEqual([pathlib.Path(text).stem for text in lines if ":" not in text], chosen)
                self.assertEqual([pathlib.Path(text.split(":")[0]).stem for text in lines if ":" in text], left)
        line["outputHash"] = "0" * 32
        decisions.write_text(json.dumps(line))
        self.expect(self.from_record("--list", "../decisions.jsonl"), 1, "it was decided on other files")
        decisions.write_text('{"fix":"accept"}\n')
        self.expect(self.from_record("--list", "../decisions.jsonl"), 2, err="orvdiff: ...")
        self.expect(self.from_record("--group", "00000000"), 2,
                    err="orvdiff: no pair has a change of group 00000000\n")

    def test_the_recorded_bytes_where_the_output_is_gone(self):
        self.recorded()
        output = self.outputs / "Old.html"
        output.write_text("<p>of a later run</p>")
        evidence = [path for path in (self.server / "record/evidence").iterdir()
                    if path.read_text() == "<p>new</p>"]
        os.rename(evidence[0], self.server / "hidden")
        before = self.snapshot()
        self.expect_untouched(self.from_record(), 1, "the record is incomplete", before=before)
        os.rename(self.server / "hidden", evidence[0])
        self.expect(self.from_record(), 0)
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>new</p>")

    def test_new_masters_where_their_formats_look(self):
        for name, output in (("v5DebugHTML/Fresh.html", "<p>x</p>"), ("v5DebugCSV/Fresh.csv", "a,b\n"),
                             ("v5DebugHTML/Twin.html", "<p>x</p>"), ("v5DebugHTML/Nobody.html", "<p>x</p>"),
                             ("v5DebugHTML/Goodness.html", "<p>x</p>"), ("v5DebugCtxMetadata/Fresh.xml", "<a>"),
                             ("v5DebugCSV/Good.csv", "")):
            self.write("webcontent/bi/" + name, output)
        for report in ("suite/Fresh", "suite/a/Twin", "suite/b/Twin"):
            self.write(report + ".xml", "a report")
            os.makedirs(self.server / os.path.dirname(report) / "Masters", exist_ok=True)
        before = self.snapshot()
        self.expect(self.accept("--new"), 1, "Goodness.html: no report has this name; the nearest is ../suite/Good.xml",
                    "Nobody.html: no report has this name\n", "Twin.html: it could be of ../suite/a/Twin.xml or of ",
                    "Good.csv: the output is empty", "Fresh.xml: the output is not valid: ", "Stored 2 new masters, ")
        self.assertEqual(self.snapshot().keys() - before.keys(),
                         {"Masters/Fresh.html", "Masters/CSV", "Masters/CSV/Fresh.csv"})
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>old</p>")
        self.expect_untouched(self.undo(), 0, before=before)

    def test_what_an_audit_lists(self):
        self.write("suite/Fresh.xml", "a report")
        self.write("webcontent/bi/v5DebugHTML/Fresh.html", "<p>x</p>")
        self.write("suite/Masters/Gone.html", "<p>x</p>")
        self.run_program("audit", "../suite", "--fix-list", "../fixes.jsonl")
        self.expect(self.accept("--list", "../fixes.jsonl"), 0, "Accepted:\n    ../suite/Masters/Fresh.html\n")
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>old</p>")
        self.expect(self.run_program("remove", "-y", "--list", "../fixes.jsonl", "../suite"), 0,
                    "Removed 1 file (entry 2)")


class WhatIsRefused(Baselines):
    def test_outputs_that_are_no_masters(self):
        self.pair("Bad", "CtxMetadata", "Bad.xml", "<a/>", "<a>")
        self.pair("Json", "JSON", "Json.json", "{}", "{")
        self.report("Empty", "<p>x</p>", "")
        self.report("Missing", "<p>x</p>")
        self.report("Nul", b"same\0one", b"same\0other")
        (self.masters / "Old.html").write_text("<p>new</p>")
        before = self.snapshot()
        self.expect_untouched(self.accept(), 2, "Bad.xml: the output is not valid", "Json.json: the output is not valid",
                              "Empty.html: the output is empty", "Missing.html: there is nothing to accept",
                              "Nul.html: only a part of the output was compared", before=before, err="...")

    def test_files_that_changed_since(self):
        self.recorded()
        pairs = self.server / "record/pairs.jsonl"
        pairs.write_text(pairs.read_text().replace('"evidence":"kept"', '"evidence":"left out: too large"'))
        for name, sentence in (
                (self.outputs / "Old.html", "the output is no longer what was compared, and the record does not "
                                            "hold it: left out: too large"),
                (self.masters / "Old.html", "it has changed since it was compared")):
            former = name.read_text()
            name.write_text("<p>later</p>")
            before = self.snapshot()
            self.expect_untouched(self.from_record(), 1, "Old.html: " + sentence, before=before)
            name.write_text(former)

    def test_a_picture_of_two_formats(self):
        self.write("suite/Pic.xml", "a report")
        self.write("suite/Masters/Pic_1.png", PNG + b"old")
        for folder, content in (("HTML", b"one"), ("XHTML", b"two")):
            self.write(f"webcontent/bi/v5Debug{folder}/Pic_1.png", PNG + content)
        before = self.snapshot()
        run = self.accept("-f", "html-png,xhtml-png", locations=("../suite/Pic.xml",))
        self.expect_untouched(run, 1, "Pic_1.png: it is the master of several outputs, which are not the same",
                              before=before)

    def test_links_out_of_the_suite(self):
        outside, inside = self.server / "elsewhere.html", self.server / "suite/inside.bin"
        for target, status in ((outside, 1), (inside, 0)):
            (self.masters / "Old.html").unlink()
            target.write_text("<p>old</p>")
            (self.masters / "Old.html").symlink_to(target)
            self.expect(self.accept(), status)
            self.assertEqual(target.read_text(), "<p>new</p>" if status == 0 else "<p>old</p>")
            self.assertTrue((self.masters / "Old.html").is_symlink())

    def test_without_an_answer(self):
        before = self.snapshot()
        self.expect_untouched(self.run_program("accept", "../suite"), 2, before=before,
                              err="orvdiff: there is no terminal to ask on; see with --dry-run what would happen, "
                                  "and use --yes to let it happen\n")
        for answer, accepted in ((b"n\n", False), (b"\x04", False), (b"y\n", True)):
            master, terminal = pty.openpty()
            with subprocess.Popen([PROGRAM, "accept", "-q", "../suite"], cwd=self.work, stdin=terminal,
                                  stdout=terminal, stderr=terminal) as process:
                os.close(terminal)
                os.write(master, answer)
                self.assertEqual(process.wait(60), 0 if accepted else 1)
            os.close(master)
            self.assertEqual((self.masters / "Old.html").read_text(), "<p>new</p>" if accepted else "<p>old</p>")

    def test_a_second_command_at_once(self):
        self.accept()
        self.undo()
        with open(self.server / "suite/.orvdiff/.lock") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            before = self.snapshot()
            self.expect_untouched(self.accept("-q"), 2, before=before, err="another orvdiff is changing masters...")


class WhatIsRemoved(Baselines):
    def test_orphans_and_nothing_else(self):
        self.write("suite/Masters/Gone.html", "<p>x</p>")
        self.write("suite/Masters/fr/CSV/Gone.csv", "a")
        os.symlink(self.server / "suite/linked", self.server / "suite/real")
        self.write("suite/linked/R.xml", "a report")
        os.makedirs(self.server / "shared")
        (self.server / "suite/linked/Masters").symlink_to(self.server / "shared")
        self.write("shared/Other.html", "<p>x</p>")
        before = self.snapshot()
        run = self.run_program("remove", "-y", "--orphans", "../suite")
        self.expect(run, 1, "Other.html: its folder is a link", "Removed 2 files")
        self.assertEqual(before.keys() - self.snapshot().keys(), {"Masters/Gone.html", "Masters/fr/CSV/Gone.csv"})
        self.assertTrue((self.server / "shared/Other.html").exists())
        self.expect_untouched(self.undo(), 0, before=before)

    def test_only_what_this_audit_names(self):
        (self.server / "fixes.jsonl").write_text('{"fix":"remove","path":"../suite/Masters/Good.html"}\n')
        before = self.snapshot()
        self.expect_untouched(self.run_program("remove", "-y", "--list", "../fixes.jsonl", "../suite"), 1,
                              "Good.html: it belongs to something", before=before)
        for report in (self.server / "suite").glob("*.xml"):
            report.unlink()
        before = self.snapshot()
        self.expect_untouched(self.run_program("remove", "-y", "--orphans", "../suite"), 2, before=before,
                              err="orvdiff: nothing is removed, as there are no reports at the locations\n")


class TheJournal(Baselines):
    def test_masters_changed_after_an_accept(self):
        self.report("Also", "<p>old</p>", "<p>new</p>")
        self.accept()
        (self.masters / "Old.html").write_text("<p>by hand</p>")
        before = self.snapshot()
        self.expect_untouched(self.undo(), 1, "Old.html: it has changed since", "Undid nothing of accept 1",
                              before=before)
        self.expect(self.undo("--skip-changed"), 1, "1 master, 1 left as it is")
        self.assertEqual((self.masters / "Also.html").read_text(), "<p>old</p>")
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>by hand</p>")
        self.expect(self.undo(), 2, err="orvdiff: there is nothing to undo\n")

    def test_the_suites_file_says_which_new_outputs_are_stale(self):
        (self.outputs / "Old_9.html").write_text("<p>new</p>")
        os.utime(self.outputs / "Old_9.html", (0, 0))
        self.write("suite/orvdiff.toml", 'version = 1\n[suite]\nnewer-than = "12h"\n')
        self.expect(self.run_program("accept", "-y", "--new", "../suite"), 1, "Old_9.html: it is stale:")

    def test_an_older_entry(self):
        self.accept()
        (self.outputs / "Old.html").write_text("<p>newer</p>")
        self.accept()
        self.expect(self.undo("1"), 1, "; undo accept 2 first")
        self.expect(self.undo(), 0)
        self.expect(self.undo(), 0)
        self.assertEqual((self.masters / "Old.html").read_text(), "<p>old</p>")

    def test_damage(self):
        self.accept()
        before = self.snapshot()
        journal = self.server / "suite/.orvdiff"
        content = next((journal / "content").iterdir())
        entry = journal / "entries/1.json"
        for path, change, where in ((content, lambda text: text + "x", "out"),
                                    (entry, lambda text: text.replace("Old", "New"), "err"),
                                    (entry, lambda text: text[:40], "err")):
            former = path.read_text()
            path.write_text(change(former))
            run = self.undo()
            self.assertIn("damaged", run.out if where == "out" else run.err)
            self.assertNotEqual(run.status, 0)
            self.assertEqual(self.snapshot(), before)
            path.write_text(former)
        self.expect(self.undo(), 0)

    def test_where_it_is(self):
        inner = self.server / "suite/inner"
        self.report("Deep", "<p>old</p>", "<p>new</p>", folder="suite/inner")
        deep = ("../suite/inner/Deep.xml",)
        self.accept(locations=deep)  # beside the working folder
        self.assertEqual([*self.server.rglob(".orvdiff")], [self.server / "suite/.orvdiff"])
        self.undo()
        shutil.rmtree(self.server / "suite/.orvdiff")
        (self.server / ".git").mkdir()  # a repository
        self.accept(locations=deep)
        self.assertEqual([*self.server.rglob(".orvdiff")], [self.server / ".orvdiff"])
        self.expect(self.undo(), 0)
        self.expect(self.accept("--journal", "../elsewhere", locations=deep), 0,
                    "orvdiff undo 1 --journal ../elsewhere\n")
        self.expect(self.undo("--journal", "../elsewhere"), 0)
        self.expect(self.accept("--journal", "none", locations=deep), 0,
                    err="orvdiff: no journal was kept: nothing can take this back\n")
        self.assertTrue(inner.is_dir())

    def test_what_takes_it_back_works_where_the_user_is(self):
        def typed(words):
            return subprocess.run([PROGRAM, *words], cwd=self.server, check=True, text=True,
                                  stdout=subprocess.PIPE).stdout
        before = self.snapshot()
        self.recorded()
        for words in (("-C", "work", "../suite"), ("--from", "record"),
                      ("-C", "work", "../suite", "--journal", "../it's mine")):
            hint = typed(("accept", "-y", *words)).splitlines()[-1].split("orvdiff ", 1)[1]
            self.assertNotEqual(self.snapshot(), before, words)
            typed(shlex.split(hint))
            self.assertEqual(self.snapshot(), before, words)

    def test_how_much_it_keeps(self):
        for text in ("1", "2", "3"):
            (self.outputs / "Old.html").write_text(f"<p>{text}</p>")
            self.accept("--keep", "2")
        journal = self.server / "suite/.orvdiff"
        self.assertEqual(sorted(os.listdir(journal / "entries")), ["2.json", "3.json"])
        self.assertEqual(sorted(path.read_text() for path in (journal / "content").iterdir()),
                         ["<p>1</p>", "<p>2</p>"])

    def test_a_suite_that_cannot_be_written(self):
        for folder in ("suite", "suite/Masters"):
            os.chmod(self.server / folder, 0o555)
        before = self.snapshot()
        run = self.run_as_nobody("accept", "-y", "../suite")
        self.expect_untouched(run, 2, "Masters/Old.html: the folder ", "Permission denied", before=before)
