import os
import re
import shutil

from suite import SuiteTest


class Pairs(SuiteTest):
    def test_one_pair_by_the_rule_of_a_format_or_number_by_number(self):
        rows = [  # command, master, actual, status, what is said
            ("compare html", "<p id=\"a\">x</p>\n", "<p id=\"b\">x</p>", 0),
            ("compare html", "<p>x</p>", "<p>y</p>", 1, "1   - <p>x</p>\n"),
            ("compare html-png", "a\n", "a\r\n", 1, "differs  one -> other"),
            ("compare html", None, "x", 1, "the master does not exist"),
            ("compare html", "x", None, 1, "the actual output does not exist"),
            ("compare cgs", "x", "x", 0),
            ("numdiff", "x = 1.0", "y = 1.00000000000001", 0),
            ("numdiff", "a 1\nb 100.25\n", "a 1\nbb 100.26\n", 1, "master: 100.25 at 2:3",
             "actual: 100.26 at 2:4", "difference 0.01, tolerance 1e-12"),
            ("numdiff", "1 2", "1", 1, "master: 2 at 1:3", "actual: no more numbers"),
            ("numdiff", "1", None, 1, "the actual output does not exist"),
            ("numdiff", "1\0 2", "1", 2, "one contains a NUL byte; only the text before it"),
            ("compare xml", "1", "1\0 2", 2, "other contains a NUL byte")]
        for command, master, actual, status, *said in rows:
            with self.subTest(command, master=master, actual=actual):
                for name, content in (("one", master), ("other", actual)):
                    (self.work / name).unlink(missing_ok=True)
                    if content is not None:
                        self.write("work/" + name, content)
                run = self.run_program(*command.split(), "one", "other")
                self.expect(run, status, *said)
                if command != "numdiff":
                    self.assertEqual(bool(run.out), status != 0)

    def test_normalised_text_is_printed(self):
        for name, text, normalised, err in [("xls", "<script>1</script>a\r\nb", "a\nb", ""),
                                            ("html", "<p id=\"x\">a\r\nb</p>", "<p>ab</p>", ""),
                                            ("xml", b"seen\x00unseen", "seen", "NUL...")]:
            self.write("work/one", text)
            self.expect(self.run_program("normalize", name, "one"), 0, out=normalised, err=err)


class Usage(SuiteTest):
    def test_a_missing_program_is_named_with_the_package_to_install(self):
        self.write("work/file", "x")
        run = self.run_program("diff", "pdf", "file", "file", PATH="/nowhere")
        self.expect(run, 2, err="not in PATH (/nowhere); install the Debian package python-is-python3...")

    def test_version_names_the_libraries_in_use(self):
        plain, verbose = self.run_program("--version").out, self.run_program("--version", "-v").out
        self.assertRegex(plain, r"^orvdiff \d+\.\d+\.\d+\n$")
        self.assertTrue(verbose.startswith(plain))
        for library in ("ICU", "Xerces-C++", "libpng", "zlib", "xxHash", "CLI11", "JSON for Modern C++",
                        r"toml++"):
            self.assertRegex(verbose, rf"(?m)^{re.escape(library)} \d+\.\d+")

    def test_mistakes_end_with_trouble_and_a_message(self):
        self.write("work/file", "x")
        shutil.rmtree(self.scripts)
        os.truncate(self.write("work/large"), 1 << 31)
        (self.work / "empty").mkdir()
        rows = [
            *((line.split(), "") for line in ("", "frobnicate", "verify", "verify --frob x",
                                              "verify --color mauve .", "verify -q -v .",
                                              "compare html one", "normalize html a b",
                                              "-C nowhere formats", "verify \x1b[2J --x\x1b")),
            (("verify", "-f", "HTML", "."), "did you mean html"),
            (("verify", "--shard", "5/4", "."), "--shard 5/4 is not a share"),
            (("verify", "-f", "qqqqqq", "."), 'unknown format "qqqqqq"; "orvdiff formats"'),
            (("verify", "-f", "html,,nope", "."), 'unknown format "nope"'),
            (("verify", "-f", "cgs", "."), "needs --cgs-output-dir"),
            (("verify", "--cgs-suffix", "x", "."), "--cgs-output-dir"),
            (("compare", "xhtm", "a", "b"), "did you mean xhtml"),
            (("compare", "html", "file", "large"), "large: .*2 GiB"),
            (("numdiff", "file", "large"), "large: files of 2 GiB .* compared$"),
            (("numdiff", "file", "file"), "nothing was compared: neither file nor file contains"),
            (("compare", "pdf", "file", "file"), "script .*/diffPdfFiles.py does not exist"),
            (("verfy", "."), "verfy"), (("verify", "--summary=", "file"), "--summary= needs"),
            (("verify", "--summary", "", "."), "--summary: needs a value"),
            (("verify", "--log-level", "Normal", "."), '"Normal" is not one of minimal'),
            (("verify", "--layout-schema", "nowhere", "."), "schema nowhere does not exist"),
            (("verify", "--strict=invalid", "."), "--strict=invalid is none of: all, sub-folders"),
            (("verify", "--sub-folder", "a/../..", "."), "--sub-folder a/../.. is not below"),
            (("compare", "html", "--max-diffs", "-1", "file", "file"), "--max-diffs: "),
            (("explain", "html-png", "nowhere"), "nowhere does not exist"),
            (("explain", "html", ""), "FILE: needs a value"),
            (("audit", "empty"), "no reports"),
            (("normalize", "html", "large"), "large: .*2 GiB"),
            (("normalize", "html-png", "file"), "byte identity"),
            (("normalize", "html", "nowhere"), "nowhere does not exist"),
            (("normalize", "html", "."), r"\. is a folder")]
        for arguments, message in rows:
            with self.subTest(arguments):
                run = self.run_program(*arguments)
                self.assertEqual((run.status, run.out), (2, ""))
                self.assertRegex(run.err, "^orvdiff: .*" + message)
                self.assertNotIn("\x1b", run.err)
        for line, text in [("--version", "orvdiff "), ("--help", "verify"),
                           ("verify --help", "--strict [=KINDS]")]:
            self.expect(self.run_program(*line.split()), 0, text)
