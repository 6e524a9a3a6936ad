"""What a run did not compare, and says so."""

import json
import os
import shutil
import unicodedata

from suite import SuiteTest

PNG = b"\x89PNG"


class Accounting(SuiteTest):
    def setUp(self):
        super().setUp()
        self.report("Good", "<p>x</p>", "<p>x</p>")

    def files(self, *names):
        for name in names:
            self.write(name, "<p>x</p>")

    def language_skipped(self):
        self.files("suite/Masters/fr/Good.html", "suite/Masters/eu/de/CSV/Good.csv")

    def report_deleted(self):
        self.files("suite/Masters/Gone.html")

    def last_report_of_a_folder_deleted(self):
        self.files("suite/old/Masters/Gone.html")

    def folder_in_another_case(self):
        self.files("suite/Masters/pdf/Good.pdf")

    def extension_in_another_case(self):
        self.files("suite/Masters/Good.HTML")

    def name_in_another_form(self):
        self.report(unicodedata.normalize("NFC", "Café"))
        self.files("suite/Masters/" + unicodedata.normalize("NFD", "Café") + ".html")

    def folder_of_masters_in_another_case(self):
        self.files("suite/more/R.xml", "suite/more/masters/R.html")

    def extra_output(self):
        self.files("webcontent/bi/v5DebugHTML/Extra.html")

    def output_in_another_case(self):
        self.files("webcontent/bi/v5DebugHTML/GOOD.html")

    def leftover_output(self):
        self.files("webcontent/bi/v5DebugHTML/Good.html.normalized_actual")

    def shared_output(self):
        self.report("Good", "<p>x</p>", folder="suite/other")

    def format_folder_absent(self):
        self.pictures("v5DebugHTML")

    def format_needing_options(self):
        self.files("suite/Masters/Good.cgs")

    def prefix_claim(self):
        self.report("Goods", "<p>x</p>", "<p>x</p>")

    def empty_master(self):
        self.report("Void", "", "")

    def page_swallowed_by_a_mask(self):
        page = "<p>x</p><script src='a.js'/>%s<script></script>"
        self.report("Page", page % ("right " * 500), page % ("wrong " * 500))

    def text_cut_at_a_nul(self):
        self.report("Null", b"same\0one", b"same\0other")

    def script_missing(self):
        self.pair("Good", "PDF", "Good.pdf")
        (self.scripts / "diffpdf/diffPdfFiles.py").unlink()

    def numbers_absent(self):
        self.pair("Good", "vmd", "Good.vmd", "1\n2\n", "1\n2")

    def file_of_no_format(self):
        self.files("suite/Masters/Good.html.bak")

    def suffix_not_given(self):
        self.files("suite/Masters/XLS2007_b/Good.xlsx")

    def report_without_masters(self):
        self.report("Bare")

    def pictures(self, *folders):
        """Two picture masters, of which only the first has outputs, in these folders."""
        for folder in folders:
            self.write(f"webcontent/bi/{folder}/Good_1.png", PNG)
        for name in ("Good_1.png", "Good_2.png")[:1 if folders == ("v5DebugHTML",) else 2]:
            self.write("suite/Masters/" + name, PNG)

    def reset(self):
        for folder in ("suite", "webcontent"):
            shutil.rmtree(self.server / folder)
        for folder in ("suite/Masters", "webcontent/bi/v5DebugHTML"):
            (self.server / folder).mkdir(parents=True)
        self.report("Good", "<p>x</p>", "<p>x</p>")
        self.write(self.scripts / "diffpdf/diffPdfFiles.py")

    def test_no_way_leads_to_all_passed(self):
        self.assertIn("All passed.", self.verify("--strict").out)
        for build, said, strict in [
                (self.language_skipped, "2 masters in eu/de, fr were not read, ", "sub-folders"),
                (self.report_deleted, "1 master belongs to no report: ../suite/Ma", "orphans"),
                (self.last_report_of_a_folder_deleted, "report: ../suite/old/Masters/Gone", "orphans"),
                (self.folder_in_another_case, "Masters/pdf/Good.pdf (wanted: PDF/Good.pdf)", "case"),
                (self.extension_in_another_case, "Good.HTML (wanted: Good.html)", "case"),
                (self.name_in_another_form, "(wanted: Caf", "case, unverified"),
                (self.folder_of_masters_in_another_case, "masters (wanted: Masters)", "case"),
                (self.extra_output, "1 output has no master: ../webcontent/bi/v5D", "outputs"),
                (self.output_in_another_case, "GOOD.html (wanted: Good.html)", "case"),
                (self.leftover_output, "1 file is left over from an earlier", "leftovers"),
                (self.shared_output, "v5DebugHTML/Good.html for ../suite/ and ../suite/o", "shared"),
                (self.format_folder_absent, "raw-xml-png, xhtml-png, which have no", "pictures"),
                (self.format_needing_options, "cgs was not read: ../suite/Masters/Good.cgs; add "
                 "--cgs-output-dir NAME", "formats"),
                (self.prefix_claim, "Goods.html by Goods and Good", "claims"),
                (self.empty_master, "1 pair passed with nothing to compare", "vacuous"),
                (self.page_swallowed_by_a_mask, "1 pass rests on outsized masks", "masks"),
                (self.text_cut_at_a_nul, "1 partly", "partly"),
                (self.script_missing, "diffPdfFiles.py does not exist", None),
                (self.numbers_absent, "1 pair passed with nothing to compare", "vacuous"),
                (self.file_of_no_format, "1 file among the masters fits no format", "unknown"),
                (self.suffix_not_given, "another suffix (_b) was not read", "suffixes"),
                (self.report_without_masters, "../suite/Bare.xml", "unverified")]:
            with self.subTest(build.__name__):
                self.reset()
                build()
                run = self.verify(PATH=os.environ["PATH"] + ":" + self.python())
                self.assertIn(said, run.out + run.err)
                strictly = self.verify("--strict", PATH=os.environ["PATH"] + ":" + self.python())
                self.assertEqual(strictly.status, 2)
                self.assertNotIn("All passed.", run.out + strictly.out)
                if strict is not None:
                    self.assertIn(f"not accepted with --strict: {strict}\n", strictly.err)
                    self.assertIn(run.status, (0, 2))
                    self.assertEqual(self.verify("--strict=unread").status, run.status)

    def python(self):
        return self.interpreter("exit 0\n").split(":")[0]

    def test_a_narrowed_run_speaks_of_what_was_asked_for_only(self):
        for build in (self.report_deleted, self.extra_output, self.format_needing_options,
                      self.folder_in_another_case, self.file_of_no_format):
            build()
        self.report("Near", "<p>x</p>", "<p>x</p>")
        self.report("Far", "<p>x</p>", "<p>x</p>", folder="suite/far")
        self.files("webcontent/bi/v5DebugHTML/Farther.html")
        for arguments, locations in [((), ["../suite/Near.xml"]), ((), ["../suite/far"]),
                                     (("-f", "html"), ["../suite/far"])]:
            run = self.verify("--strict", *arguments, locations=locations)
            self.expect(run, 0, "All passed. 1 report")
        self.expect(self.verify("-f", "html"), 0, "1 master belongs", "2 outputs have no master",
                    "3 not accounted for")
        self.files("webcontent/bi/v5DebugHTML/Far_2.html")
        self.expect(self.verify(locations=["../suite/far"]), 0, "1 output has no master: ")

    def test_it_makes_no_difference_how_a_place_is_named(self):
        self.report("Far", "<p>x</p>", "<p>x</p>", folder="suite/far")
        self.files("suite/Masters/fr/Good.html", "webcontent/bi/v5DebugHTML/fr/Good.html")
        for arguments, locations in [
                (("--all-sub-folders",), ["../suite/", "../suite/far", "../suite//Good.xml"]),
                (("--all-sub-folders",), [str(self.server / "suite")]),
                (("--sub-folder", "./fr//", "--sub-folder", ""), ["../suite//Good.xml"]),
                (("-C", "../suite", "--all-sub-folders"), ["."]),
                (("-C", "../suite", "--all-sub-folders"), ["Good.xml", "./far"])]:
            with self.subTest(arguments=arguments, locations=locations):
                run = self.verify("--strict", *arguments, locations=locations)
                self.expect(run, 0, "All passed. ")
        self.files("webcontent/bi/v5DebugHTML/Extra.html")
        for locations in (["../suite", "../suite/far"], [str(self.server / "suite") + "/"]):
            self.expect(self.verify(locations=locations), 0, "1 output has no master")

    def test_shards_say_together_what_one_run_says(self):
        for build in (self.report_deleted, self.extra_output, self.language_skipped,
                      self.prefix_claim, self.shared_output, self.format_needing_options):
            build()
        for number in range(8):
            self.report(f"R{number}")
        self.verify("--record", "whole")
        for index in (1, 2, 3):
            self.verify("--record", f"s{index}", "--shard", f"{index}/3")
        self.run_program("merge", "s1", "s2", "s3", "-o", "merged")
        whole, merged = (json.loads((self.work / folder / "run.json").read_text())["findings"]
                         for folder in ("whole", "merged"))
        self.assertEqual(merged, whole)
        self.assertEqual(len(whole), 7)
        self.assertIn("1 master belongs to no report", self.run_program("show", "merged").out)
        self.assertNotIn("Everything", self.verify("--failed", "whole").out)

    def test_shared_pictures_are_missing_unless_another_format_compared_them(self):
        self.pictures("v5DebugHTML", "v5DebugRawXml")  # nothing wrote Good_2.png
        for arguments, missing, status in [((), 3, 1), (("-f", "xhtml-png"), 2, 1)]:
            run = self.verify("--no-groups", *arguments)
            self.assertEqual((len(run.lines("missing")), run.status), (missing, status), run.out)
        self.assertIn("1 picture was not compared as xhtml-png", self.verify().out)
        self.assertNotIn("XHTML/Good_1", self.verify("--list").out)
        (self.server / "webcontent/bi/v5DebugXHTML").mkdir()
        self.assertEqual(len(self.verify("--no-groups").lines("missing")), 4)

    def test_saving_normalised_texts_removes_those_of_what_passes_now(self):
        self.report("Bad", "<p>x</p>", "<p>y</p>")
        self.verify("--save-normalized")
        self.report("Bad", "<p>y</p>", "<p>y</p>")
        self.files("webcontent/bi/v5DebugHTML/Bad.html.cleansed")
        self.expect(self.verify(), 0, "3 files are left over")
        self.expect(self.verify("--save-normalized"), 0, "1 file is left over", ".cleansed")
        self.assertEqual(sorted(os.listdir(self.outputs)),
                         ["Bad.html", "Bad.html.cleansed", "Good.html"])

    def test_what_cannot_be_read_is_trouble_and_loops_end(self):
        (self.server / "suite/Masters/loop").symlink_to(".")
        (self.server / "suite/linked").mkdir()
        (self.server / "suite/linked/Masters").symlink_to("../Masters")
        self.expect(self.verify("--all-sub-folders"), 0, "All passed.")
        (self.server / "suite/Masters/locked").mkdir(mode=0)
        run = self.run_as_nobody("verify", "../suite")
        self.expect(run, 2, err="the folder ../suite/Masters/locked cannot be read...")
        self.assertNotIn("All passed", run.out)


class SubFolders(SuiteTest):
    def test_all_of_them_in_one_run(self):
        self.report("R", "x", "x")
        for folder in ("fr", "eu/de"):
            self.write(f"suite/Masters/{folder}/CSV/R.csv", "x")
            self.write(f"webcontent/bi/v5DebugCSV/{folder}/R.csv", "x")
        for arguments, pairs in [("--all-sub-folders", 3), ("--sub-folder fr", 1),
                                 ("--sub-folder fr --sub-folder eu/de --sub-folder fr", 2)]:
            run = self.verify("--record", f"r{pairs}", *arguments.split())
            self.expect(run, 0, f" {pairs} pair", f"{pairs} passed")
        records = (self.work / "r3/pairs.jsonl").read_text().splitlines()
        self.assertEqual({json.loads(line)["subFolder"] for line in records}, {"", "fr", "eu/de"})
        self.expect(self.verify("--sub-folder", "fr"), 0,
                    "2 masters in eu/de and in no sub-folder were")
        self.expect(self.verify("--sub-folder=fr", "--sub-folder=frr"), 2,
                    err="no master in the sub-folder frr...")


class StaleOutputs(SuiteTest):
    def test_an_output_older_than_the_run_is_stale_whatever_it_holds(self):
        self.report("Old", "x", "x")
        self.report("Odd", "x", "y")
        self.report("New", "x", "x")
        os.utime(self.outputs / "Old.html", (1_000_000_000,) * 2)
        os.utime(self.outputs / "Odd.html", (1_000_000_000,) * 2)
        self.write("work/start")
        os.utime(self.work / "start", (1_000_000_001,) * 2)
        for time in ("start", "@1000000001", "12h", "2001-09-09T01:46:41Z", "2001-09-09 01:46:41",
                     "2001-09-10"):
            run = self.verify("--newer-than", time, "--summary", "s.xml", TZ="UTC")
            self.expect(run, 1, "1 passed, 0 differ", "2 stale",
                        "  written 2001-09-09 01:46:40, before 20")
            self.assertEqual(len(run.lines("stale")), 2)
            self.assertEqual((self.work / "s.xml").read_text().count("<TestCaseF"), 2)
        self.expect(self.verify("--newer-than", "@1000000000"), 1, "2 passed, 1 differ")
        self.expect(self.verify("--newer-than", "12h", "--strict=stale"), 2,
                    err="not accepted with --strict: stale...")

    def test_times_that_mean_nothing_or_two_things(self):
        self.write("work/12h")
        for time, why in [("12h", "write ./12h"), ("yesterday", "not a time ("), ("-5m", "not a"),
                          ("2026-02-30", "no such local time"), ("2999-01-01", "in the future"),
                          ("2026-03-29 02:30", "no such local time"), ("h", "not a time"),
                          ("2025-10-26 02:30", "showed this time twice")]:
            self.expect(self.verify("--newer-than=" + time, TZ="Europe/Berlin"), 2,
                        err=f"orvdiff: --newer-than {time}: ...")
            self.assertIn(why, self.verify("--newer-than=" + time, TZ="Europe/Berlin").err)


class WorkFolder(SuiteTest):
    def test_work_changes_where_outputs_are_and_nothing_else(self):
        self.report("R", "x", "y")
        (self.server / "linked").symlink_to("suite")
        self.write("bad\udcff/start")
        os.utime(os.fsencode(self.server) + b"/bad\xff/start", (1, 1))
        for location in ("suite", "./suite/", "linked", str(self.server / "suite/R.xml")):
            run = self.run_program("-C", "..", "verify", "--work", "work", location, "--summary",
                                   "s.xml", "--newer-than", "bad\udcff/start")
            self.expect(run, 1, "differs  ", " -> ../webcontent/bi/v5DebugHTML/R.html")
            (self.server / "s.xml").unlink()
        self.expect(run, 1, f"differs  {self.server}/suite/Masters/R.html")
        self.expect(self.run_program("verify", "--work", "nowhere", "../suite"), 2,
                    err="orvdiff: --work nowhere: No such file or directory\n")
        self.expect(self.run_program("-C", "../suite", "verify", "../suite/x", "../suite"), 2,
                    err="orvdiff: ../suite/x does not exist\n")
        self.write("work/mine/R.xml")
        self.expect(self.run_program("-C", "../suite", "verify", "mine"), 2,
                    err=f"orvdiff: mine does not exist in {self.server}/suite, the folder of -C, "
                        f"but does in {self.work}; use --work...")


class Audit(SuiteTest):
    def audit(self, *arguments):
        run = self.run_program("audit", "--json", *arguments, "../suite")
        return run, [json.loads(line) for line in run.out.splitlines()]

    def test_masters_that_cannot_be_right(self):
        chunk = b"\0\0\0\0IEND\xaeB`\x82"
        png = b"\x89PNG\r\n\x1a\n"
        for name, content, kind, why in [
                ("a.html", "", "empty", ""), ("b.html", b"x\0y", "invalid", "NUL byte"),
                ("c.xml", "<a>\n<b></a>", "invalid", "2:"), ("d.xml", "<a>&b;</a>", "invalid", "1:"),
                ("JSON/e.json", "{1}", "invalid", "JSON"), ("f.png", "GIF", "invalid", "not a PNG"),
                ("g.png", png + b"\0\0\0\0IDAT1234" + chunk, "invalid", "checksum"),
                ("h.png", png, "invalid", "cut short"), ("PDF/i.pdf", "<html>", "invalid", "PDF"),
                ("XLS2007/j.xlsx", "x", "invalid", "workbook"), ("k.png", png + chunk, None, None),
                ("l.xml", '<!DOCTYPE a SYSTEM "file:///nowhere"><a/>', None, None)]:
            with self.subTest(name):
                self.report("R")
                folder, base = os.path.split(name)
                self.write(f"suite/Masters/{folder}/R{base}", content)
                run, found = self.audit()
                found = [finding for finding in found if finding["kind"] != "patterns"]
                self.assertEqual(run.status, 1 if kind else 0, run.out + run.err)
                self.assertEqual([finding["kind"] for finding in found], [kind] if kind else [])
                self.assertIn(why or "", str(found))
                shutil.rmtree(self.server / "suite/Masters")
                (self.server / "suite/Masters").mkdir()

    def test_what_a_whole_suite_shows(self):
        for name, master in (("A", "<p>x</p>"), ("B", "<p>x</p>"), ("B_2", None), ("Large", "x")):
            self.report(name, master)
        self.write("suite/Masters/B_2.html", "<p>x</p>")
        os.truncate(self.server / "suite/Masters/Large.html", 1 << 31)
        self.write("suite/Masters/Gone.html", "<p>gone</p>")
        self.write("webcontent/bi/v5DebugHTML/New\udcff.html", "x")
        run, found = self.audit("--fix-list", "fixes")
        self.assertEqual(run.status, 1)
        kinds = [finding["kind"] for finding in found]
        self.assertEqual(kinds[:6], ["orphans", "claims", "outputs", "large", "identical",
                                     "identical"])
        self.assertEqual(kinds.count("patterns"), 17)
        self.assertEqual([json.loads(line) for line in (self.work / "fixes").read_text().splitlines()],
                         [{"fix": "remove", **found[0]}, {"fix": "accept", **found[2]}])
        text = self.run_program("audit", "../suite")
        self.expect(text, 1, "orphans: 1 master belongs to no report; ", "    ../suite/Masters/Gone",
                    "6 findings. 4 reports, 4 masters\n")
        self.expect(self.run_program("audit", "-f", "xml", "../suite"), 0, out="Clean. 4 reports, "
                    "0 masters\n")
        (self.server / "suite/Masters/locked").mkdir(mode=0)
        self.assertEqual(self.run_as_nobody("audit", "../suite").status, 2)
        self.expect(self.run_program("audit", "../webcontent"), 2, err="orvdiff: no reports...")
