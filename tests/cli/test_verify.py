import os
import re
import xml.etree.ElementTree

from suite import SuiteTest

COUNTS = re.compile(
    r"(\d+) reports?, (\d+) pairs?: (\d+) passed, (?:(\d+) partly, )?(\d+) differ, (\d+) missing, "
    r"(\d+) failed, (\d+) errors?(?:, (\d+) reports? not verified)?"
    r"(?:, \d+ not accounted for)? \(\d+\.\d\d s\)")
HTML = "../webcontent/bi/v5DebugHTML/"


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
        self.expect(run, 2, "Not all passed", "the actual output does not exist", "and 5 more")
        self.assertEqual(self.counts(run), (31, 6, 1, 1, 1, 1, 2, 0, 25))
        self.assertEqual(run.lines("passed", "partly", "differs", "missing", "error"), [
            f"{word:8} ../suite/Masters/{name}.html -> {HTML}{name}.html"
            for word, name in (("partly", "Null"), ("missing", "Gone"), ("differs", "Other"))])
        self.assertIn("2 pairs, same message: ", run.out)
        self.assertEqual(run.out.count("/Bare"), 20)
        self.assertRegex(run.out, r"Not verified.*\n    \.\./suite/Bare00\.xml\n")
        self.assertRegex(self.harness_log(), "FAILED: .*/Null.html .*up to the NUL")
        self.assertRegex((self.work / "s.xml").read_text(), "<TestCaseFailureDiff>.*/Null.html<")
        verbose = self.verify("-v").out
        self.assertIn("passed   ../suite/Masters/Same.html", verbose)
        self.assertEqual(verbose.count("/Bare"), 25)
        quiet = self.verify("-q")
        self.assertEqual((quiet.status, quiet.out.count("\n"), quiet.err), (2, 1, ""))

    def test_a_pair_that_two_reports_find_counts_once_and_for_the_longer_name(self):
        self.report("Sales")
        self.report("Sales_2", "<p>a</p>", "<p>b</p>")
        run = self.verify("--harness-log", "h.mxr")
        self.assertRegex(self.harness_log(), r"(?s)Start Test: Sales\n.*Start Test: Sales_2\n"
                                             r".*FAILED.*End Test: Sales_2")
        self.assertEqual(self.counts(run), (2, 1, 0, 0, 1, 0, 0, 0, 1))
        self.assertIn("    ../suite/Sales.xml\n", run.out)
        self.report("Sales", "<p>a</p>", "<p>a</p>")
        self.write("suite/Sales.txt")  # shares its name, so its masters too
        self.assertEqual(self.counts(self.verify()), (3, 2, 1, 0, 1, 0, 0, 0, 0))
        self.report("Sale")  # named alone, and without masters of its own
        alone = self.verify(locations=["../suite/Sale.xml"])
        self.assertEqual((alone.status, self.counts(alone)), (2, (1, 2, 1, 0, 1, 0, 0, 0, 1)))
        # Sales_2 finds Sales_2*_2_x.cgs only, although this name begins with its own.
        self.pair("Sales", "charts", "Sales_2_x.cgs", "x", "y")
        run = self.verify("--cgs-output-dir", "v5Debugcharts", "--cgs-suffix", "2_x",
                          "--cgs-master-sub-folder", "charts")
        self.assertEqual(len(run.lines("differs")), 2)

    def test_what_is_wrong_with_a_missing_file(self):
        folders = {"master": self.server / "suite/Masters", "actual output": self.outputs}
        for number, (side, spoil, reason) in enumerate([
                ("actual output", os.mkdir, "is a folder"),
                ("actual output", lambda path: path.symlink_to(path), "cannot be reached: "),
                ("actual output", os.mkfifo, "is not a regular file"),
                ("master", os.mkdir, "is a folder"),
                ("master", lambda path: path.symlink_to("nowhere"), "is a dangling link")]):
            with self.subTest(side=side, reason=reason):
                self.report(f"R{number}", "x", "x")
                path = folders[side] / f"R{number}.html"
                path.unlink()
                spoil(path)
                self.expect(self.verify(locations=[f"../suite/R{number}.xml"]), 1,
                            "missing  ", f"the {side} {reason}")
        run = self.run_program("-C", "..", "verify", "suite/R0.xml")
        self.expect(run, 1, "missing  ", err="folder ../webcontent/bi not found...")

    def test_what_an_engine_raises_is_that_reports_error_only(self):
        self.report("A", "<p>a</p>", "<p>b</p>")
        self.report("Big", "x", "y")
        for name in ("Big_2", "C"):
            self.report(name, "x", "x")
        os.truncate(self.server / "suite/Masters/Big.html", 1 << 31)  # sparse, and too large
        run = self.verify("-f", "html")
        self.expect(run, 2, f"error    ../suite/Masters/Big.html -> {HTML}Big.html\n"
                            "          files of 2 GiB or more cannot be compared\n")
        self.assertEqual(self.counts(run), (4, 4, 2, 0, 1, 0, 0, 1, 0))
        self.assertRegex(self.verify("-v").out, r"error .*\n .* \[VEL_ASSERT.*OrvDiffLib")


class Names(SuiteTest):
    def test_names_are_taken_and_shown_as_they_are_or_escaped(self):
        rows = [("[1]?*'\"$(id)`", "[1]?*'\"$(id)`"), ("Gr\u00f6\u00dfe", "Gr\u00f6\u00dfe"),
                ("bad\udcffbyte", "bad\\xFFbyte"), ("esc\x1b[31m", "esc\\x1B[31m"),
                ("line\nend", "line\\nend"), ("back\\slash", "back\\\\slash")]
        for name, _ in rows:
            self.report(name, "<p>a</p>", "<p>b</p>")
        run = self.verify("--harness-log", "h.mxr", "--color", "never", "--no-groups",
                          locations=[f"../suite/{name}.xml" for name, _ in rows])
        log = self.harness_log()
        for _, shown in rows:
            self.assertIn(f"Start Test: {shown}\n", log)
            self.assertIn(f"Masters/{shown}.html and ", log)
            self.assertIn(f"differs  ../suite/Masters/{shown}.html -> {HTML}{shown}.html",
                          run.lines("differs"))
        grouped = self.verify("-v").out
        for _, shown in rows:
            self.assertRegex(grouped, f"(for example|also|    ) .*/{re.escape(shown)}.html\n")
        self.assertNotIn("\x1b", log + run.out + grouped)
        always = self.verify("--color", "always", NO_COLOR="1")
        self.assertIn("\x1b[31m6 pairs\x1b[0m", always.out)


class EngineOutput(SuiteTest):
    def test_what_engines_and_scripts_print_stands_escaped_below_its_pair(self):
        self.pair("E", "CtxMetadata", "E\npassed\x1b.xml", "<a/>",
                  '<?xml version="1.1"?><a>\n</b&#x1b;>')
        for name in ("F", "G"):
            self.pair(name, "PDF", name + ".pdf")
        path = self.interpreter("""
            seq 100000
            printf '\\033[2Jout\\npassed  forged' >&2
            case "$3" in *G.pdf) exit 1; esac
            """)
        for status, *arguments in ((1, "verify", "../suite"),
                                   (0, "compare", "pdf", "../suite/F.xml", "../suite/F.xml")):
            run = self.run_program(*arguments, PATH=path)
            self.expect(run, status)
            self.assertNotIn("\x1b", run.out)
            self.assertRegex(run.out, r"(?s)passed   \S+F\.\w+( -> \S+)?\n +1\n.* 100000\n"
                                      r" +\\x1B\[2Jout\n +passed  forged\n")
            self.assertEqual(len(run.lines("passed")), 1)
        run = self.verify("-v", "-j", "1", locations=("../suite", "../webcontent"), PATH=path)
        self.assertIn("no reports in ../webcontent", run.err)  # not caught with what scripts print
        self.assertEqual([run.out.count(f" {n}\n") for n in (99, 100000)], [2, 2])
        self.assertRegex(run.out, r"failed   .*E\\npassed\\x1B\.xml\n( .*\n)* +\++\n +Schema validation")
        self.assertRegex(run.out, r"differs .*G\.pdf\n +1\n")
        self.assertEqual(self.verify("-q", PATH=path).out.count("\n"), 1)

    def test_a_script_that_cannot_run_is_said_once_and_is_trouble(self):
        self.report("A", "x", "x")
        for name in ("F", "G"):
            self.pair(name, "PDF", name + ".pdf")
        pdf = self.scripts / "diffpdf/diffPdfFiles.py"
        for reason, spoil, path in [
                ("the comparison script ../../src/vask/testdata/Scripts/diffpdf/diffPdfFiles.py "
                 f"does not exist (working folder: {self.work})", pdf.unlink, None),
                ("python, which runs the comparison script ", pdf.touch, "/nowhere")]:
            spoil()
            run = self.verify("--harness-log", "h.mxr", PATH=path or self.interpreter("exit 0\n"))
            self.expect(run, 2, err=f"2 pairs of format pdf not compared: {reason}...")
            self.assertEqual((run.lines("differs"), run.err.count("\n")), ([], 1))
            self.assertRegex(run.out, r"3 reports, 3 pairs: 1 passed.* 2 not run")
            self.assertEqual(
                self.harness_log().count("FAILED: 1 pair of format pdf not compared"), 2)
            self.expect(self.verify(PATH=path or "/bin", locations=["../suite/A.xml"]), 0)

    def test_statistics_that_hold_none_are_pointed_out(self):
        self.pair("V", "vmd", "V.vmd", "1\n2\n", "1\n2")
        self.assertEqual((self.verify().status, self.verify().lines("passed")), (0, []))
        run = self.verify("-v")
        self.assertRegex(run.out, r"passed .*V\.vmd\n +nothing was compared: .*fewer than three")


class Locations(SuiteTest):
    def listed(self, *locations, arguments=()):
        run = self.verify("--list", *arguments, locations=locations)
        self.assertEqual(run.status, 0, run.err)
        return sorted({line.split("  ")[0] for line in run.out.splitlines() if "  " in line})

    def test_what_counts_as_a_report(self):
        # "[...]" is a list to a parser of command lines; "." a location without a folder part.
        for folder in ("suite", "suite/deep/er", "suite/.git", "[2023,2024]"):
            self.report("R", "x", "x", folder=folder)
        self.report("T", "x", "x", folder=".")
        self.report(".hidden", "x", "x")
        self.write("suite/loose/NoMasters.xml")
        self.write("suite/Masters/Inner/Masters/M.html")
        (self.server / "suite/again").symlink_to(".")
        both = ["../suite/R.xml", "../suite/deep/er/R.xml"]
        self.assertEqual(self.listed("../suite", "../webcontent/../suite/", "../suite/R.xml"), both)
        self.assertEqual(self.listed("../suite/deep"), both[1:])
        self.assertEqual(self.listed(".", arguments=("-C", "../suite")), ["R.xml", "deep/er/R.xml"])
        self.assertEqual(self.listed("[2023,2024]", "T.xml", arguments=("-C", "..")),
                         ["./[2023,2024]/R.xml", "T.xml"])

    def test_locations_that_cannot_be_used_stop_the_run_before_it_starts(self):
        self.report("R", "x", "y")
        (self.server / "links").mkdir()
        (self.server / "links/Masters").symlink_to("nowhere")
        for location, message in [("../nowhere", "../nowhere does not exist"),
                                  ("../links", "../links/Masters is a dangling link"),
                                  ("/dev/null", "neither a file nor a folder"),
                                  ("", '"" does not exist')]:
            run = self.verify("--summary", "s.xml", locations=["../suite", location])
            self.expect(run, 2, out="", err=message + "...")
            self.assertFalse((self.work / "s.xml").exists())

    def test_what_may_not_be_read_is_trouble(self):
        self.report("R", "x", "x")
        for path, message in [
                ("suite/locked", "../suite/locked: Permission denied"),
                ("suite/deep/Masters", "../suite/deep/Masters: Permission denied"),
                ("suite/Masters/XLS", "The folder ../suite/Masters/XLS cannot be read: Perm")]:
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
            self.assertEqual(self.verify(*arguments).status, 2)
            self.assertEqual(self.verify(*arguments, "--allow-none").status, 0)
        self.report("R", "x", "x")
        places = ["../suite", "../webcontent", "../suite/Masters"]
        run = self.verify(locations=places)
        for place in places[1:]:
            self.expect(run, 2, err=f"no reports in {place} (...")
        self.assertEqual(self.verify("--allow-none", locations=places).status, 0)

    def test_listing_names_every_pair_and_compares_none(self):
        self.report("Rev", "x")
        self.report("Revenue", "x")
        self.report("Re")
        run = self.verify("--list", "-f", "html,xhtml")
        self.assertEqual(run.out.splitlines(), [
            "../suite/Re.xml  not verified: no selected format has a master",
            *(f"../suite/{name}.xml  html  ../suite/Masters/{name}.html -> {HTML}{name}.html"
              for name in ("Rev", "Revenue")), "3 reports, 2 pairs"])


class Formats(SuiteTest):
    def test_selection_and_places(self):
        self.report("R")
        for master in ("R.html", "R.xml", "fr/R.html", "R_x.cgs", "deep/R_1.cgs", "R.prp"):
            self.write("suite/Masters/" + master)
        html, xhtml = "v5DebugHTML/R.html", "v5DebugXHTML/R.xml"
        for arguments, outputs in [
                ("", [html, xhtml]), ("--format xhtml,html -f nao", [html, xhtml]),
                ("--sub-folder fr --folder-suffix _b", ["v5DebugHTML_b/fr/R.html"]),
                ("--cgs-output-dir charts", [html, xhtml, "charts/R_x.cgs"]),
                ("-f cgs --cgs-output-dir c --cgs-suffix x", ["c/R_x.cgs"]),
                ("-f cgs --cgs-output-dir c --cgs-master-sub-folder deep", ["c/R_1.cgs"]),
                ("-f html --prp-output-dir p", [html, "p/R.prp"])]:
            with self.subTest(arguments):
                run = self.verify("--list", *arguments.split())
                self.assertEqual(re.findall(r"-> \.\./webcontent/bi/(\S+)", run.out), outputs)


class Files(SuiteTest):
    def test_summary_holds_every_pair_that_was_compared(self):
        self.report("A&B", "x", "x")
        self.report("C", "x", "y")
        for target in ("s.xml", "-"):
            run = self.verify("--summary", target)
            self.assertEqual(run.status, 1)
            text = run.out if target == "-" else (self.work / "s.xml").read_text()
            self.assertEqual([(entry.tag, entry.find("MasterFile").text)
                              for entry in xml.etree.ElementTree.fromstring(text)],
                             [("TestCasePassDiff", "../suite/Masters/A&B.html"),
                              ("TestCaseFailureDiff", "../suite/Masters/C.html")])
            self.assertIn("differs  ", run.err if target == "-" else run.out)

    def test_a_harness_log_has_a_test_case_per_report_and_ends_with_the_table(self):
        self.report("Bare")
        run = self.verify("--harness-log", "h.mxr", MOX_EFFECTIVE_WORKING_DIR="/tmp")
        self.assertEqual(run.status, 2)
        self.assertRegex(self.harness_log(), r"(?s)Not verified: no selected format has a master\."
                         r".*>>  FAILED: nothing to verify.*= TOTALS .* >> FAIL =\n")
        self.report("Same", "<p>x</p>", "<p>x</p>")
        self.report("Other", "<p>1,284</p>", "<p>1,248</p>")
        for level, has_dump in (("concise", False), ("normal", True)):
            run = self.verify("--harness-log", "h.mxr", "--log-level", level)
            self.expect(run, 1)
            self.assertNotIn("MOX Test Harness", run.out)
            log = self.harness_log()
            self.assertEqual("Offset: 0X6 (6)" in log, has_dump)
            self.assertIn("Start Test: Other\n", log)
            self.assertIn("PASSED: Contents are equivalent: ../suite/Masters/Same.html", log)
            self.assertRegex(log, r"= TOTALS  +0  +1  +1  +0  +>> FAIL =\n=+\n\Z")
