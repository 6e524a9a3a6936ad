"""What the program writes is there whole, or the exit status says that it is not; and whatever ends
a run early leaves nothing that looks whole."""

import os
import resource
import signal
import stat
import subprocess

from suite import SuiteTest

WHOLE_SUMMARY = r"^<TestSummary>\n.*\n</TestSummary>\n$"


def limit_file_size():
    resource.setrlimit(resource.RLIMIT_FSIZE, (700, 700))


class FilesTest(SuiteTest):
    def setUp(self):
        super().setUp()
        self.summary = self.work / "s.xml"

    def tree(self):
        """Every file below the server folder with its contents, temporary ones included."""
        return {path: path.read_bytes() for path in self.server.rglob("*") if path.is_file()}


class Places(FilesTest):
    def test_nothing_that_the_run_reads_is_written_over(self):
        self.report("R", "x", "x")
        self.report("S", "x")
        (self.server / "link").symlink_to("suite/Masters/R.html")
        os.link(self.outputs / "R.html", self.server / "hard")
        (self.server / "dangling").symlink_to(self.outputs / "S.html")
        self.write("work/schema.xsd", "<a/>")
        before = self.tree()
        rows = [
            ("../suite/R.xml", "R.xml is a report"), ("../suite/new.xml", "new.xml is a report"),
            ("../suite/Masters/R.html", "R.html is a master"), ("../link", "R.html is a master"),
            ("../suite/Masters/R_2.html", "R_2.html is a master"),
            ("../hard", "R.html is an output"), ("../dangling", "S.html is an output"),
            ("../webcontent/bi/../bi/v5DebugHTML/S.html", "S.html is an output"),
            ("../webcontent/bi/v5DebugHTML/R.html.normalized_master", "is a normalised text"),
            ("schema.xsd", "schema.xsd is the layout-data schema"),
            ("/proc/self/fd/2", "standard error is redirected")]
        for number, (target, reason) in enumerate([*rows, *rows[:1], *rows[-1:]]):
            option = ("--summary", "--harness-log")[number >= len(rows)]
            with self.subTest(option, target=target), open(self.server / "err", "wb+") as err:
                run = self.program("verify", option, target, "--save-normalized", "--layout-schema",
                                   "schema.xsd", "../suite", stderr=err)
                message = (self.server / "err").read_text()
                (self.server / "err").unlink()
                self.assertEqual((run.status, run.out), (2, ""))
                what = option[2:].replace("-", " ")
                self.assertRegex(message, f"the {what} .* cannot be written: .*{reason}")
                self.assertEqual(self.tree(), before)
        self.assertEqual(self.verify("--list", "--summary", "../hard").status, 0)
        (self.work / "other").symlink_to("a")
        run = self.verify("--summary", "a", "--harness-log", "other")
        self.expect(run, 2, err="the summary and the harness log cannot both be other...")
        self.assertFalse((self.work / "a").exists())

    def test_names_that_are_no_files_of_their_own(self):
        self.report("R", "x", "y")
        os.mkfifo(self.work / "pipe")
        reader = subprocess.Popen(["cat", "pipe"], cwd=self.work, stdout=subprocess.PIPE)
        piped, printed = self.verify("--summary", "pipe"), self.verify("--summary", "/dev/stdout")
        with open(self.server / "out", "wb") as out:
            redirected = self.program("verify", "--summary", "/dev/stdout", "../suite", stdout=out)
        for run, text in [(piped, reader.communicate()[0].decode()), (printed, printed.out),
                          (redirected, (self.server / "out").read_text())]:
            self.assertEqual(run.status, 1, run.err)
            self.assertRegex(text, WHOLE_SUMMARY)
        self.expect(self.verify("--summary", "/dev/null", "--harness-log", "/dev/null"), 1)

    def test_links_and_permissions(self):
        self.report("R", "<p>a</p>\r\n", "<p>b</p>\r\n")
        victim = self.server / "victim"
        victim.write_text("kept")
        for name in ("R.html.normalized_master", "R.html.normalized_actual"):
            (self.outputs / name).symlink_to(victim)
        self.write("deep/target")
        (self.server / "deep/target").chmod(0o606)
        self.summary.symlink_to("../deep/target")
        run = self.program("verify", "--summary", "s.xml", "--save-normalized", "../suite",
                           preexec_fn=lambda: os.umask(0o027))
        self.expect(run, 1)
        self.assertEqual(victim.read_text(), "kept")  # nobody asked for this name
        self.assertEqual((self.outputs / "R.html.normalized_actual").read_bytes(), b"<p>b</p>")
        self.assertTrue(self.summary.is_symlink())  # the user did ask for this one
        self.assertIn("</TestSummary>", (self.server / "deep/target").read_text())
        for path, mode in ((self.outputs / "R.html.normalized_master", 0o640),
                           (self.server / "deep/target", 0o606)):
            self.assertEqual(stat.S_IMODE(path.lstat().st_mode), mode)

    def test_a_folder_in_which_only_the_file_may_be_written(self):
        self.report("R", "x", "x")
        self.summary.write_text("an earlier and longer one" * 100)
        self.summary.chmod(0o666)
        self.work.chmod(0o555)
        self.expect(self.run_as_nobody("verify", "--summary", "s.xml", "../suite"), 0)
        self.assertRegex(self.summary.read_text(), WHOLE_SUMMARY)


class Incomplete(FilesTest):
    def test_what_cannot_be_written_to_its_end(self):
        for number in range(9):  # the harness log's banner fits, its first checks do too
            self.report(f"R{number}", "<p>x</p>", "<p>y</p>" * 100)
        before = self.tree()
        for line, limit, name, stays in [  # how much room there is, the file, whether some stays
                ("--summary s.xml", limit_file_size, "s.xml", False),
                ("--harness-log h.mxr", limit_file_size, "h.mxr", True),
                ("--save-normalized", limit_file_size, "R0.html.normalized_actual", False),
                ("--summary /dev/full --harness-log h.mxr", None, "/dev/full", True),
                ("--harness-log /dev/full", None, "/dev/full", False),
                ("--harness-log nowhere/h.mxr --summary s.xml", None, "h.mxr", False),
                ("--summary .", None, ".", False)]:
            with self.subTest(line):
                if "s.xml" in line and limit:  # an earlier one must not pass for this run's
                    self.summary.write_text("<TestSummary>\n</TestSummary>\n")
                run = self.program("verify", *line.split(), "../suite", preexec_fn=limit)
                self.assertEqual(run.status, 2)
                self.assertRegex(run.err, rf"{name} (could not be|cannot be) (written|saved)")
                log = self.work / "h.mxr"
                self.assertEqual(log.exists(), stays)
                if stays:
                    self.assertNotRegex(log.read_text(), "TOTALS .* PASS =")
                    log.unlink()
                for text in self.outputs.glob("*.normalized_master"):
                    text.unlink()  # the short ones
                self.assertEqual(self.tree(), before)
        for path in self.outputs.iterdir():
            path.write_text("<p>x</p>")
        run = self.verify("--summary", "/dev/full", "--harness-log", "h.mxr")
        self.assertEqual((run.status, "All passed" in run.out), (2, False))
        self.assertIn("FAILED: the summary /dev/full", self.harness_log())

    def test_standard_output_that_takes_nothing(self):
        self.report("R", "x", "y")
        unread, pipe = os.pipe()
        os.close(unread)
        full = os.open("/dev/full", os.O_WRONLY)
        self.addCleanup(lambda: [os.close(each) for each in (pipe, full)])
        master = "../suite/Masters/R.html"
        scripts = {**os.environ, "PATH": self.interpreter("exit 1\n")}
        for line in ("--help", "--version", "verify --help", "formats", f"normalize html {master}",
                     f"compare html {master} {self.outputs}/R.html",
                     f"compare pdf {master} {self.outputs}/R.html", "verify --list ../suite",
                     "verify --summary - ../suite", "verify --harness-log h.mxr ../suite"):
            for said, options in ((True, {"stdout": full}), (False, {"stdout": pipe}),
                                  (True, {"preexec_fn": lambda: os.close(1)})):
                with self.subTest(line, **options):
                    run = self.program(*line.split(), env=scripts, **options)
                    self.assertEqual((run.status, run.err.count("orvdiff: ")), (2, int(said)))
                    if said:
                        self.assertRegex(run.err, "(output|summary -) could not be written")
        # No file that is opened gets the place of the closed stream, and what was meant for that.
        self.assertNotIn("differs ", self.harness_log())


class EndedEarly(FilesTest):
    def setUp(self):
        """Three reports; a script compares the second's pair and waits at a gate."""
        super().setUp()
        self.report("A", "<p>a</p>", "<p>b</p>")
        self.report("C", "<p>c</p>", "<p>d</p>")
        self.pair("B", "PDF", "B.pdf")
        self.gate = self.server / "gate"
        os.mkfifo(self.gate)
        self.path = self.interpreter(f"read word < '{self.gate}'\nexit 130\n")

    def start(self, *options):
        return self.popen("verify", *options, "-j", "1", "-f", "html,pdf", "--summary", "s.xml",
                          "--harness-log", "h.mxr", "../suite",
                          env={**os.environ, "PATH": self.path})

    def test_by_a_signal(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with self.subTest(number):
                running = self.start()
                with open(self.gate, "w"):  # waits until the script runs, and then holds it up
                    running.send_signal(number)
                    run = self.finished(running)
                self.expect(run, status, "Interrupted after 1 of 3 reports. "
                                         "1 report, 1 pair: 0 passed, 1 differ")
                self.assertEqual(len(run.lines("differs")), 1)  # what was kept for the end
                self.assertNotIn("Not verified", run.out)
                summary = self.summary.read_text()
                self.assertEqual(summary.count("<TestCase"), 1)
                self.assertNotIn("</TestSummary>", summary)  # nobody takes it for the whole
                self.assertRegex(self.harness_log(),
                                 r"(?s)>>  FAILED: interrupted.* >> FAIL =\n=+\n\Z")

    def test_by_a_second_signal(self):
        running = self.start()
        with open(self.gate, "w"):
            # Stopped, so that it cannot end between the two.
            for number in (signal.SIGSTOP, signal.SIGINT, signal.SIGTERM, signal.SIGCONT):
                running.send_signal(number)
            self.assertIn(running.wait(60), (-signal.SIGINT, -signal.SIGTERM))
        self.finished(running)
        self.assertFalse(self.summary.exists())

    def test_by_a_reader_that_goes_away(self):
        running = self.start("--no-groups")
        running.stdout.readline()
        running.stdout.close()
        running.stdout = None
        with open(self.gate, "w") as writer:
            writer.write("the result of this pair finds no reader\n")
        self.expect(self.finished(running), 2)
        self.assertIn("</TestCase", self.summary.read_text())
        self.assertNotIn("</TestSummary>", self.summary.read_text())
