import os
import re
import unittest
import xml.etree.ElementTree

from suite import SuiteTest

COUNTS = re.compile(
    r"(\d+) reports?, (\d+) pairs?: (\d+) passed, (?:(\d+) partly, )?(\d+) differ, "
    r"(\d+) missing, (\d+) failed, "
    r"(\d+) errors?(?:, (\d+) reports? not verified)? \(\d+\.\d\d s\)")


class Outcomes(SuiteTest):
    def counts(self, run):
        found = COUNTS.search(run.out)
        self.assertIsNotNone(found, run.out + run.err)
        return tuple(int(number or 0) for number in found.groups())

    def test_every_outcome_in_one_run(self):
        self.report("Same", "<p id=\"a\">x</p>\n", "<p id=\"b\">x</p>\r\n")
        self.report("Other", "<p>1,284</p>", "<p>1,248</p>")
        self.report("Gone", "<p>x</p>")
        self.report("Null", b"same\0one", b"same\0other")
        for number in range(25):
            self.report(f"Bare{number:02}")
        for folder in ("suite", "suite/other"):  # two reports of one name share their outputs
            self.report("R", folder=folder)
            self.write(folder + "/Masters/CtxMetadata/R.xml", "<a/>")
        self.write("webcontent/bi/v5DebugCtxMetadata/R.xml", "<a>")
        run = self.verify("--harness-log", "h.mxr", "--summary", "s.xml")
        self.assertEqual((run.status, run.err), (2, ""))
        self.assertEqual(self.counts(run), (31, 6, 1, 1, 1, 1, 2, 0, 25))
        self.assertIn("Not all passed", run.out)
        self.assertEqual(run.lines("passed", "partly", "differs", "missing", "error"), [
            f"{word:8} ../suite/Masters/{name}.html -> ../webcontent/bi/v5DebugHTML/{name}.html"
            for word, name in (("missing", "Gone"), ("partly", "Null"), ("differs", "Other"))])
        self.assertEqual(len(run.lines("failed")), 2)
        self.assertIn("the actual output does not exist", run.out)
        self.assertRegex(run.out, r"Not verified.*\n    \.\./suite/Bare00\.xml\n")
        self.assertEqual((run.out.count("/Bare"), run.out.count("and 5 more")), (20, 1))
        work = self.server / "work"
        self.assertRegex((work / "h.mxr").read_text(), "FAILED: .*/Null.html .*up to the NUL")
        self.assertRegex((work / "s.xml").read_text(), "<TestCaseFailureDiff>.*/Null.html<")
        verbose = self.verify("-v").out
        self.assertIn("passed   ../suite/Masters/Same.html", verbose)
        self.assertEqual(verbose.count("/Bare"), 25)
        quiet = self.verify("-q")
        self.assertEqual((quiet.status, quiet.out.count("\n"), quiet.err), (2, 1, ""))

    def test_a_pair_that_two_reports_find_counts_once_and_for_the_longer_name(self):
        self.report("Sales")
        self.report("Sales_2", "<p>a</p>", "<p>b</p>")
        run = self.verify("--harness-log", "h.mxr")
        log = (self.server / "work/h.mxr").read_text()
        self.assertRegex(log, r"(?s)Start Test: Sales\n.*Start Test: Sales_2\n.*FAILED.*End Test: Sales_2")
        self.assertEqual(self.counts(run), (2, 1, 0, 0, 1, 0, 0, 0, 1))
        self.assertIn("    ../suite/Sales.xml\n", run.out)
        self.report("Sales", "<p>a</p>", "<p>a</p>")
        self.assertEqual(self.counts(self.verify()), (2, 2, 1, 0, 1, 0, 0, 0, 0))
        self.write("suite/Sales.txt")  # shares its name, so its masters too
        self.assertEqual(self.counts(self.verify()), (3, 2, 1, 0, 1, 0, 0, 0, 0))
        self.report("Sale")  # named alone, and without masters of its own
        alone = self.verify(locations=["../suite/Sale.xml"])
        self.assertEqual((alone.status, self.counts(alone)), (2, (1, 2, 1, 0, 1, 0, 0, 0, 1)))

    def test_what_is_wrong_with_a_missing_file(self):
        folders = {"master": "suite/Masters", "actual output": "webcontent/bi/v5DebugHTML"}
        rows = [
            ("actual output", os.mkdir, "is a folder"),
            ("actual output", lambda path: path.symlink_to(path), "cannot be reached: "),
            ("actual output", os.mkfifo, "is not a regular file"),
            ("master", os.mkdir, "is a folder"),
            ("master", lambda path: path.symlink_to("nowhere"), "is a dangling link"),
        ]
        for number, (side, spoil, reason) in enumerate(rows):
            with self.subTest(side=side, reason=reason):
                self.report(f"R{number}", "x", "x")
                path = self.server / folders[side] / f"R{number}.html"
                path.unlink()
                spoil(path)
                run = self.verify(locations=[f"../suite/R{number}.xml"])
                self.assertEqual((run.status, len(run.lines("missing"))), (1, 1), run.out)
                self.assertIn(f"the {side} {reason}", run.out)
        run = self.run_program("-C", "..", "verify", "suite/R0.xml")
        self.assertEqual((run.status, len(run.lines("missing"))), (1, 1))
        self.assertIn("no folder ../webcontent/bi", run.err)

    def test_what_an_engine_raises_is_that_reports_error_only(self):
        self.report("A", "<p>a</p>", "<p>b</p>")
        self.report("Big", "x", "y")
        self.report("Big_2", "<p>x</p>", "<p>x</p>")
        self.report("C", "<p>c</p>", "<p>c</p>")
        os.truncate(self.server / "suite/Masters/Big.html", 1 << 31)  # sparse, and too large
        run = self.verify("-f", "html")
        self.assertEqual(run.status, 2, run.err)
        self.assertEqual(self.counts(run), (4, 4, 2, 0, 1, 0, 0, 1, 0))
        self.assertIn("error    ../suite/Masters/Big.html -> ../webcontent/bi/v5DebugHTML/Big.html\n"
                      "          files of 2 GiB or more cannot be compared\n", run.out)
        self.assertRegex(self.verify("-v").out, r"error .*\n .* \[VEL_ASSERT.*OrvDiffLib")


class Excerpts(SuiteTest):
    def test_position_excerpt_and_mark(self):
        long = "abcdefghij" * 20
        cut = "\u2026" + long[-30:]
        rows = [  # master, actual, position, what both sides show, columns before the mark
            ("one\ntwo\nthree", "one\ntwo\nthrew", "3:5", "three", "threw", 4),
            ("same", "same and more", "1:5", "same[end of text]", "same and more", 4),
            ("a\nb", "ab", "1:2", "a\\n", "ab", 1),
            ("\U0001F4C8 1", "\U0001F4C9 1", "1:1", "\U0001F4C8 1", "\U0001F4C9 1", 0),
            (b"a\xc3", b"a\xc3\xa9", "1:2", "a\\xC3", "a\u00e9", 1),
            ("\x1b[2J\x07\u202ea", "\x1b[2J\x07\u202eb", "1:7", "\\x1B[2J\\x07\\u{202E}a",
             "\\x1B[2J\\x07\\u{202E}b", 19),
            (long + "X" + long, long + "Y" + long, "1:201", cut + "Xabc", cut + "Yabc", 31),
            ("\u00e9" * 99 + "1", "\u00e9" * 99 + "2", "1:100", "\u2026" + "\u00e9" * 30 + "1",
             "\u2026" + "\u00e9" * 30 + "2", 31),
            ("\u8868 X", "\u8868 Y", "1:3", "\u8868 X", "\u8868 Y", 3),
            ("e\u0301\tX", "e\u0301\tY", "1:4", "e\u0301\\tX", "e\u0301\\tY", 3),
        ]
        for master, actual, place, of_master, of_actual, columns in rows:
            with self.subTest(master=master[:20], actual=actual[:20]):
                self.report("R", master, actual, xls=True)
                run = self.verify()
                self.assertIn(f"at {place} in the normalised text\n", run.out)
                self.assertIn(f"master: {of_master}", run.out)
                self.assertIn(f"actual: {of_actual}", run.out)
                self.assertIn("\n" + " " * (len("          actual: ") + columns) + "^\n", run.out)
                self.assertLess(max(map(len, run.out.splitlines())), 130)

    def test_names_are_taken_and_shown_as_they_are_or_escaped(self):
        rows = [
            ("[1]?*'\"$(id)`", "[1]?*'\"$(id)`"), ("Gr\u00f6\u00dfe", "Gr\u00f6\u00dfe"),
            (b"bad\xffbyte", "bad\\xFFbyte"), ("esc\x1b[31m", "esc\\x1B[31m"),
            ("line\nend", "line\\nend"), ("back\\slash", "back\\\\slash"),
        ]
        for name, _ in rows:
            self.report(name, "<p>a</p>", "<p>b</p>")
        run = self.verify("--harness-log", "h.mxr", "--color", "never", locations=[
            b"../suite/" + os.fsencode(name) + b".xml" for name, _ in rows])
        log = (self.server / "work/h.mxr").read_bytes().decode()
        for _, shown in rows:
            with self.subTest(shown):
                self.assertIn(f"Start Test: {shown}\n", log)
                self.assertIn(f"Masters/{shown}.html and ", log)
                self.assertIn(f"differs  ../suite/Masters/{shown}.html -> "
                              f"../webcontent/bi/v5DebugHTML/{shown}.html", run.lines("differs"))
        self.assertNotIn("\x1b", log + run.out)
        self.assertEqual("\x1b" in self.verify().out, False)
        always = self.verify("--color", "always", NO_COLOR="1")
        self.assertIn("\x1b[31mdiffers\x1b[0m", always.out)


class EngineOutput(SuiteTest):
    def test_what_engines_and_scripts_print_stands_escaped_below_its_pair(self):
        self.pair("E", "CtxMetadata", "v5DebugCtxMetadata", "E\npassed\x1b.xml", "<a/>",
                  '<?xml version="1.1"?><a>\n</b&#x1b;>')
        for name in ("F", "G"):
            self.pair(name, "PDF", "v5DebugPDF", name + ".pdf", name, name)
        path = self.interpreter("""
            seq 100000
            printf '\\033[2Jout\\npassed  forged' >&2
            case "$3" in *G.pdf) exit 1; esac
            """)
        for arguments in (("verify", "../suite"),
                          ("compare", "pdf", "../suite/F.xml", "../suite/F.xml")):
            with self.subTest(arguments[0]):
                run = self.run_program(*arguments, PATH=path)
                self.assertEqual((run.status, run.err), (int(arguments[0] == "verify"), ""))
                self.assertNotIn("\x1b", run.out)
                self.assertRegex(run.out, r"(?s)passed   \S+F\.\w+( -> \S+)?\n +1\n.* 100000\n"
                                          r" +\\x1B\[2Jout\n +passed  forged\n")
                self.assertEqual(len(run.lines("passed")), 1)
        run = self.verify("-v", "-j", "1", locations=("../suite", "../webcontent"), PATH=path)
        self.assertIn("no report in ../webcontent", run.err)  # not caught with what scripts print
        self.assertEqual([run.out.count(f" {n}\n") for n in (99, 100000)], [2, 2])
        self.assertRegex(run.out, r"failed   .*E\\npassed\\x1B\.xml\n +\++\n +Schema validation")
        self.assertRegex(run.out, r"differs .*G\.pdf\n +1\n")
        self.assertEqual(self.verify("-q", PATH=path).out.count("\n"), 1)

    def test_a_script_that_cannot_run_is_said_once_and_is_trouble(self):
        self.report("A", "x", "x")
        for name in ("F", "G"):
            self.pair(name, "PDF", "v5DebugPDF", name + ".pdf", name, name)
        pdf = self.scripts / "diffpdf/diffPdfFiles.py"
        rows = [("the comparison script ../../src/vask/testdata/Scripts/diffpdf/diffPdfFiles.py "
                 f"does not exist (working folder: {self.server}/work)", pdf.unlink, None),
                ("python, which runs the comparison script ", pdf.touch, "/nowhere")]
        for reason, spoil, path in rows:
            with self.subTest(reason):
                spoil()
                run = self.verify("--harness-log", "h.mxr",
                                  PATH=path or self.interpreter("exit 0\n"))
                self.assertEqual((run.status, run.lines("differs")), (2, []))
                self.assertRegex(run.out, r"3 reports, 3 pairs: 1 passed.* 2 not run")
                self.assertIn(f"2 pairs of format pdf not compared: {reason}", run.err)
                self.assertEqual(run.err.count("\n"), 1)
                log = (self.server / "work/h.mxr").read_text()
                self.assertEqual(log.count("FAILED: 1 pair of format pdf not compared"), 2)
                alone = self.verify(PATH=path or "/bin", locations=["../suite/A.xml"])
                self.assertEqual((alone.status, alone.err), (0, ""))

    def test_statistics_that_hold_none_are_pointed_out(self):
        self.pair("V", "vmd", "v5DebugVMD", "V.vmd", "1\n2\n", "1\n2")
        self.assertEqual((self.verify().status, self.verify().lines("passed")), (0, []))
        run = self.verify("-v")
        self.assertRegex(run.out, r"passed .*V\.vmd\n +nothing was compared: .*fewer than three")


class Locations(SuiteTest):
    def listed(self, *locations, arguments=()):
        run = self.verify("--list", *arguments, locations=locations)
        self.assertEqual(run.status, 0, run.err)
        return sorted({line.split("  ")[0] for line in run.out.splitlines() if "  " in line})

    def test_what_counts_as_a_report(self):
        for folder in ("suite", "suite/deep/er"):
            self.report("R", "x", "x", folder=folder)
        self.report(".hidden", "x", "x")
        self.report("R", "x", "x", folder="suite/.git")
        self.write("suite/loose/NoMasters.xml")
        self.write("suite/Masters/Inner/Masters/M.html")
        (self.server / "suite/again").symlink_to(".")
        both = ["../suite/R.xml", "../suite/deep/er/R.xml"]
        self.assertEqual(self.listed("../suite/"), both)
        self.assertEqual(self.listed("../suite", "../work/../suite", "../suite/R.xml"), both)
        self.assertEqual(self.listed("../suite/deep"), both[1:])
        self.assertEqual(self.listed(".", arguments=("-C", "../suite")), ["R.xml", "deep/er/R.xml"])
        self.report("R", "x", "x", folder="[2023,2024]")  # a list, to a parser of command lines
        self.report("T", "x", "x", folder=".")  # a location without a folder part
        self.assertEqual(self.listed("[2023,2024]", "T.xml", arguments=("-C", "../work/..")),
                         ["./[2023,2024]/R.xml", "T.xml"])

    def test_locations_that_cannot_be_used_stop_the_run_before_it_starts(self):
        self.report("R", "x", "y")
        (self.server / "links").mkdir()
        (self.server / "links/Masters").symlink_to("nowhere")
        rows = [("../nowhere", "../nowhere does not exist"),
                ("../links", "../links/Masters is a dangling link"),
                ("/dev/null", "neither a file nor a folder"), ("", '"" does not exist')]
        for location, message in rows:
            with self.subTest(location):
                run = self.verify("--summary", "s.xml", locations=["../suite", location])
                self.assertEqual((run.status, run.out), (2, ""))
                self.assertIn(message, run.err)
                self.assertFalse((self.server / "work/s.xml").exists())

    def test_what_may_not_be_read_is_trouble(self):
        self.report("R", "x", "x")
        rows = [("suite/locked", "../suite/locked: Permission denied"),
                ("suite/deep/Masters", "../suite/deep/Masters: Permission denied"),
                ("suite/Masters/XLS", "The folder ../suite/Masters/XLS cannot be read: Permission")]
        for path, message in rows:
            with self.subTest(path):
                locked = self.server / path
                locked.mkdir(parents=True)
                locked.chmod(0)
                run = self.run_as_nobody("verify", "../suite")
                self.assertEqual(run.status, 2)
                self.assertIn(message, run.out + run.err)
                self.assertEqual("1 passed" in run.out, path == "suite/Masters/XLS", run.out)
                locked.chmod(0o755)

    def test_nothing_to_verify_is_trouble_unless_allowed(self):
        for arguments in ((), ("--list",)):
            with self.subTest(arguments):
                self.assertEqual(self.verify(*arguments).status, 2)
                self.assertEqual(self.verify(*arguments, "--allow-none").status, 0)
        self.report("R", "x", "x")
        places = ["../suite", "../webcontent", "../suite/Masters"]
        run = self.verify(locations=places)
        self.assertEqual(run.status, 2)
        for place in places[1:]:
            self.assertIn(f"no report in {place} (", run.err)
        self.assertEqual(self.verify("--allow-none", locations=places).status, 0)

    def test_listing_names_every_pair_and_compares_none(self):
        self.report("Rev", "x")
        self.report("Revenue", "x")
        self.report("Re")
        run = self.verify("--list", "-f", "html,xhtml")
        self.assertEqual(run.out.splitlines(), [
            "../suite/Re.xml  not verified: no selected format has a master",
            *(f"../suite/{name}.xml  html  ../suite/Masters/{name}.html -> "
              f"../webcontent/bi/v5DebugHTML/{name}.html" for name in ("Rev", "Revenue")),
            "3 reports, 2 pairs"])


class Formats(SuiteTest):
    def test_selection_and_places(self):
        self.report("R")
        for master in ("Masters/R.html", "Masters/R.xml", "Masters/fr/R.html", "Masters/R_x.cgs",
                       "Masters/deep/R_1.cgs", "Masters/R.prp"):
            self.write("suite/" + master)
        html, xhtml = "v5DebugHTML/R.html", "v5DebugXHTML/R.xml"
        rows = [
            ((), [html, xhtml]),
            (("--format", "xhtml,html", "-f", "nao"), [html, xhtml]),
            (("--sub-folder", "fr", "--folder-suffix", "_b"), ["v5DebugHTML_b/fr/R.html"]),
            (("--cgs-output-dir", "charts"), [html, xhtml, "charts/R_x.cgs"]),
            (("-f", "cgs", "--cgs-output-dir", "c", "--cgs-suffix", "x"), ["c/R_x.cgs"]),
            (("-f", "cgs", "--cgs-output-dir", "c", "--cgs-master-sub-folder", "deep"),
             ["c/R_1.cgs"]),
            (("-f", "html", "--prp-output-dir", "p"), [html, "p/R.prp"]),
        ]
        for arguments, outputs in rows:
            with self.subTest(arguments):
                run = self.verify("--list", *arguments)
                self.assertEqual(re.findall(r"-> \.\./webcontent/bi/(\S+)", run.out), outputs)


class Files(SuiteTest):
    def test_summary_holds_every_pair_that_was_compared(self):
        self.report("A&B", "x", "x")
        self.report("C", "x", "y")
        for target in ("s.xml", "-"):
            with self.subTest(target):
                run = self.verify("--summary", target)
                self.assertEqual(run.status, 1)
                text = run.out if target == "-" else (self.server / "work/s.xml").read_text()
                self.assertEqual([(entry.tag, entry.find("MasterFile").text)
                                  for entry in xml.etree.ElementTree.fromstring(text)],
                                 [("TestCasePassDiff", "../suite/Masters/A&B.html"),
                                  ("TestCaseFailureDiff", "../suite/Masters/C.html")])
                self.assertIn("differs  ", run.err if target == "-" else run.out)

    def test_a_harness_log_has_a_test_case_per_report_and_ends_with_the_table(self):
        self.report("Bare")
        run = self.verify("--harness-log", "run.mxr", MOX_EFFECTIVE_WORKING_DIR="/tmp")
        log = (self.server / "work/run.mxr").read_text()
        self.assertEqual(run.status, 2)
        self.assertIn("Not verified: no selected format has a master.", log)
        self.assertRegex(log, r"(?s)>>  FAILED: nothing to verify.*= TOTALS .* >> FAIL =\n")
        self.report("Same", "<p>x</p>", "<p>x</p>")
        self.report("Other", "<p>1,284</p>", "<p>1,248</p>")
        for level, has_dump in (("concise", False), ("normal", True)):
            with self.subTest(level):
                run = self.verify("--harness-log", "run.mxr", "--log-level", level)
                self.assertEqual((run.status, run.err), (1, ""))
                self.assertNotIn("MOX Test Harness", run.out)
                log = (self.server / "work/run.mxr").read_bytes().decode()
                self.assertEqual("Offset: 0X6 (6)" in log, has_dump)
                self.assertIn("Start Test: Other\n", log)
                self.assertIn("PASSED: Contents are equivalent: ../suite/Masters/Same.html", log)
                self.assertRegex(log, r"= TOTALS  +0  +1  +1  +0  +>> FAIL =\n=+\n\Z")


if __name__ == "__main__":
    unittest.main()
