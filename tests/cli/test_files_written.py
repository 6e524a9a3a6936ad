"""What the program writes is there whole, or the exit status says that it is not; and whatever ends
a run early leaves nothing that looks whole."""

import os
import resource
import signal
import stat
import subprocess
import unittest

from suite import SuiteTest


WHOLE_SUMMARY = r"^<TestSummary>\n.*\n</TestSummary>\n$"


def limit_file_size():
    resource.setrlimit(resource.RLIMIT_FSIZE, (700, 700))


class FilesTest(SuiteTest):
    def setUp(self):
        super().setUp()
        self.outputs = self.server / "webcontent/bi/v5DebugHTML"
        self.summary = self.server / "work/s.xml"

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
            ("schema.xsd", "schema.xsd is the layout-data schema"), ("/proc/self/fd/2", "standard error is redirected"),
        ]
        for option, what in (("--summary", "summary"), ("--harness-log", "harness log")):
            for target, reason in rows:
                with self.subTest(option, target=target), open(self.server / "err", "wb+") as err:
                    run = self.program(
                        "verify", option, target, "--save-normalized", "--layout-schema",
                        "schema.xsd", "../suite", stderr=err)
                    message = (self.server / "err").read_text()
                    (self.server / "err").unlink()
                    self.assertEqual((run.status, run.out), (2, ""))
                    self.assertRegex(message, f"the {what} .* cannot be written: .*{reason}")
                    self.assertEqual(self.tree(), before)
        self.assertEqual(self.verify("--list", "--summary", "../hard").status, 0)
        (self.server / "work/other").symlink_to("a")
        run = self.verify("--summary", "a", "--harness-log", "other")
        self.assertIn("the summary and the harness log cannot both be other", run.err)
        self.assertEqual((run.status, (self.server / "work/a").exists()), (2, False))

    def test_names_that_are_no_files_of_their_own(self):
        self.report("R", "x", "y")
        os.mkfifo(self.server / "work/pipe")
        reader = subprocess.Popen(["cat", "pipe"], cwd=self.server / "work", stdout=subprocess.PIPE)
        runs = [(self.verify("--summary", "pipe"), reader.communicate()[0].decode())]
        runs += [(run, run.out) for run in [self.verify("--summary", "/dev/stdout")]]
        with open(self.server / "out", "wb") as out:
            run = self.program("verify", "--summary", "/dev/stdout", "../suite", stdout=out)
        runs.append((run, (self.server / "out").read_text()))
        for run, text in runs:
            self.assertEqual(run.status, 1, run.err)
            self.assertRegex(text, WHOLE_SUMMARY)
        nowhere = self.verify("--summary", "/dev/null", "--harness-log", "/dev/null")
        self.assertEqual((nowhere.status, nowhere.err), (1, ""))

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
        self.assertEqual((run.status, run.err), (1, ""))
        self.assertEqual(victim.read_text(), "kept")  # nobody asked for this name
        self.assertEqual((self.outputs / "R.html.normalized_actual").read_bytes(), b"<p>b</p>")
        self.assertTrue(self.summary.is_symlink())  # the user did ask for this one
        self.assertIn("</TestSummary>", (self.server / "deep/target").read_text())
        self.assertEqual([stat.S_IMODE(path.lstat().st_mode) for path in (
            self.outputs / "R.html.normalized_master", self.server / "deep/target")],
                         [0o640, 0o606])

    def test_a_folder_in_which_only_the_file_may_be_written(self):
        self.report("R", "x", "x")
        self.summary.write_text("an earlier and longer one" * 100)
        self.summary.chmod(0o666)
        (self.server / "work").chmod(0o555)
        run = self.run_as_nobody("verify", "--summary", "s.xml", "../suite")
        self.assertEqual((run.status, run.err), (0, ""))
        self.assertRegex(self.summary.read_text(), WHOLE_SUMMARY)

    def test_processes_that_write_the_same_files_at_once(self):
        self.report("R", "<p>a</p>" * 5000, "<p>b</p>" * 5000)
        for _ in range(3):
            running = [self.popen("verify", "--summary", "s.xml", "--save-normalized", "../suite")
                       for _ in range(12)]
            for run in map(self.finished, running):
                self.assertEqual((run.status, run.err), (1, ""))
            self.assertEqual((self.outputs / "R.html.normalized_actual").stat().st_size, 40000)
            self.assertIn("</TestSummary>", self.summary.read_text())
        self.assertFalse([path for path in self.tree() if path.name.startswith(".")])


class Incomplete(FilesTest):
    def test_what_cannot_be_written_to_its_end(self):
        for number in range(9):  # the harness log's banner fits, its first checks do too
            self.report(f"R{number}", "<p>x</p>", "<p>y</p>" * 100)
        before = self.tree()
        rows = [  # arguments, how much room there is, the file, whether some of it stays
            (["--summary", "s.xml"], limit_file_size, "s.xml", False),
            (["--harness-log", "h.mxr"], limit_file_size, "h.mxr", True),
            (["--save-normalized"], limit_file_size, "R0.html.normalized_actual", False),
            (["--summary", "/dev/full"], None, "/dev/full", False),
            (["--harness-log", "/dev/full"], None, "/dev/full", False),
            (["--summary", "/dev/full", "--harness-log", "h.mxr"], None, "/dev/full", True),
            (["--summary", "nowhere/s.xml"], None, "nowhere/s.xml", False),
            (["--harness-log", "nowhere/h.mxr", "--summary", "s.xml"], None, "h.mxr", False),
            (["--summary", "."], None, ".", False),
        ]
        for arguments, limit, name, stays in rows:
            with self.subTest(arguments):
                if "s.xml" in arguments and limit:  # an earlier one must not pass for this run's
                    self.summary.write_text("<TestSummary>\n</TestSummary>\n")
                run = self.program("verify", *arguments, "../suite", preexec_fn=limit)
                self.assertEqual(run.status, 2)
                self.assertRegex(run.err, rf"{name} (could not be|cannot be) (written|saved)")
                log = self.server / "work/h.mxr"
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
        self.assertIn("FAILED: the summary /dev/full", (self.server / "work/h.mxr").read_text())

    def test_standard_output_that_takes_nothing(self):
        self.report("R", "x", "y")
        unread, pipe = os.pipe()
        os.close(unread)
        full = os.open("/dev/full", os.O_WRONLY)
        self.addCleanup(lambda: [os.close(each) for each in (pipe, full)])
        pair = ["html", "../suite/Masters/R.html", "../webcontent/bi/v5DebugHTML/R.html"]
        scripts = {**os.environ, "PATH": self.interpreter("exit 1\n")}
        rows = [["--help"], ["--version"], ["verify", "--help"], ["formats"],
                ["normalize", *pair[:2]], ["compare", *pair], ["compare", "pdf", *pair[1:]],
                ["verify", "--list", "../suite"],
                ["verify", "--summary", "-", "../suite"], ["verify", "../suite"],
                ["verify", "--harness-log", "h.mxr", "../suite"]]
        for arguments in rows:
            for said, options in ((True, {"stdout": full}), (False, {"stdout": pipe}),
                                  (True, {"preexec_fn": lambda: os.close(1)})):
                with self.subTest(arguments, **options):
                    run = self.program(*arguments, env=scripts, **options)
                    self.assertEqual(run.status, 2)
                    self.assertEqual(run.err.count("orvdiff: "), int(said))
                    if said:
                        self.assertRegex(run.err, "(output|summary -) could not be written")
        # No file that is opened gets the place of the closed stream, and what was meant for that.
        self.assertNotIn("differs ", (self.server / "work/h.mxr").read_text())


class EndedEarly(FilesTest):
    def setUp(self):
        """Three reports; a script compares the second's pair and waits at a gate."""
        super().setUp()
        self.report("A", "<p>a</p>", "<p>b</p>")
        self.report("C", "<p>c</p>", "<p>d</p>")
        self.pair("B", "PDF", "v5DebugPDF", "B.pdf", "", "")
        self.gate = self.server / "gate"
        os.mkfifo(self.gate)
        self.path = self.interpreter(f"read word < '{self.gate}'\nexit 130\n")

    def start(self):
        return self.popen("verify", "-j", "1", "-f", "html,pdf", "--summary", "s.xml",
                          "--harness-log", "h.mxr", "../suite",
                          env={**os.environ, "PATH": self.path})

    def test_by_a_signal(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with self.subTest(number):
                running = self.start()
                with open(self.gate, "w") as writer:  # waits until the script runs
                    running.send_signal(number)
                    writer.write("stopped by Ctrl-C as well\n")
                run = self.finished(running)
                self.assertEqual((run.status, run.err), (status, ""))
                self.assertIn(
                    "Interrupted after 1 of 3 reports. 1 report, 1 pair: 0 passed, 1 differ", run.out)
                self.assertNotIn("Not verified", run.out)
                summary = self.summary.read_text()
                self.assertEqual(summary.count("<TestCase"), 1)
                self.assertNotIn("</TestSummary>", summary)  # nobody takes it for the whole
                log = (self.server / "work/h.mxr").read_text()
                self.assertRegex(log, r"(?s)>>  FAILED: interrupted.* >> FAIL =\n=+\n\Z")

    def test_by_a_second_signal(self):
        running = self.start()
        with open(self.gate, "w"):
            running.send_signal(signal.SIGINT)
            running.send_signal(signal.SIGTERM)
            self.assertIn(running.wait(60), (-signal.SIGINT, -signal.SIGTERM))
        self.finished(running)
        self.assertFalse(self.summary.exists())

    def test_by_a_reader_that_goes_away(self):
        running = self.start()
        running.stdout.readline()
        running.stdout.close()
        running.stdout = None
        with open(self.gate, "w") as writer:
            writer.write("the result of this pair finds no reader\n")
        run = self.finished(running)
        self.assertEqual((run.status, run.err), (2, ""))
        self.assertIn("</TestCase", self.summary.read_text())
        self.assertNotIn("</TestSummary>", self.summary.read_text())


if __name__ == "__main__":
    unittest.main()
