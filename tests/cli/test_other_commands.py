import os
import unittest

from suite import SuiteTest


class Numdiff(SuiteTest):
    def test_shows_the_first_pair_out_of_tolerance(self):
        rows = [  # master, actual, status, what is said
            ("x = 1.0", "y = 1.00000000000001", 0, ()),
            ("a 1\nb 100.25\n", "a 1\nbb 100.26\n", 1,
             ("master: 100.25 at 2:3", "actual: 100.26 at 2:4", "differ by 0.01; 1e-12 is")),
            ("1 2", "1", 1, ("master: 2 at 1:3", "actual: no further number")),
            ("1", None, 1, ("the actual output is not there",)),
        ]
        for master, actual, status, said in rows:
            with self.subTest(master=master, actual=actual):
                self.pair(master, actual)
                run = self.run_program("numdiff", "one", "other")
                self.assertEqual((run.status, run.err), (status, ""))
                for text in said:
                    self.assertIn(text, run.out)


class Usage(SuiteTest):
    def test_mistakes_end_with_trouble_and_a_message(self):
        self.write("work/file", "x")
        os.truncate(self.write("work/large"), 1 << 31)
        rows = [
            ((), ""), (("frobnicate",), ""), (("verify",), ""), (("verify", "--frob", "x"), ""),
            (("verify", "--color", "mauve", "."), ""), (("verify", "-q", "-v", "."), ""),
            (("compare", "html", "one"), ""), (("normalize", "html", "a", "b"), ""),
            (("-C", "nowhere", "formats"), ""), (("verify", "\x1b[2J", "--x\x1b"), ""),
            (("verify", "-f", "htm", "."), "did you mean html"),
            (("verify", "-f", "HTML", "."), "did you mean html"),
            (("verify", "-f", "qqqqqq", "."), 'no format "qqqqqq"; "orvdiff formats"'),
            (("verify", "-f", "html,,nope", "."), 'no format "nope"'),
            (("verify", "-f", "cgs", "."), "needs --cgs-output-dir"),
            (("verify", "--cgs-suffix", "x", "."), "--cgs-output-dir"),
            (("compare", "xhtm", "a", "b"), "did you mean xhtml"),
            (("compare", "html", "file", "large"), "large: .*2 GiB"),
            (("normalize", "html", "large"), "large: .*2 GiB"),
            (("normalize", "html-png", "file"), "byte identity"),
            (("normalize", "html", "nowhere"), "nowhere is not there"),
            (("normalize", "html", "."), r"\. is a folder"),
        ]
        for arguments, message in rows:
            with self.subTest(arguments):
                self.expect_trouble(message, *arguments)

    def test_help_and_version(self):
        for arguments, text in [(("--version",), "orvdiff "), (("--help",), "verify"),
                                (("verify", "--help"), "--save-normalized")]:
            with self.subTest(arguments):
                run = self.run_program(*arguments)
                self.assertEqual((run.status, run.err), (0, ""))
                self.assertIn(text, run.out)

    def test_formats_says_where_files_lie(self):
        run = self.run_program("formats")
        self.assertEqual(run.status, 0)
        rows = {tuple(line.split()[:3]) for line in run.out.splitlines()}
        self.assertLessEqual({("html", "v5DebugHTML", "Masters/REPORT*.html"),
                              ("xlwa", "v5DebugXLWA", "Masters/XLWA/REPORT.mht"),
                              ("cgs", "--cgs-output-dir", "Masters/REPORT*.cgs")}, rows)


class Compare(SuiteTest):
    def test_one_pair_by_the_rule_of_a_format(self):
        rows = [  # format, master, actual, status, what is said
            ("html", "<p id=\"a\">x</p>\n", "<p id=\"b\">x</p>", 0, ""),
            ("html", "<p>x</p>", "<p>y</p>", 1, "at 1:4 in the normalised text"),
            ("xml", "<a/>\n", "<a/>\r\n", 0, ""),
            ("html-png", "a\n", "a\r\n", 1, "differs  one -> other"),
            ("html", None, "x", 1, "the master is not there"),
            ("html", "x", None, 1, "the actual output is not there"),
            ("cgs", "x", "x", 0, ""),
        ]
        for name, master, actual, status, said in rows:
            with self.subTest(format=name, master=master, actual=actual):
                self.pair(master, actual)
                run = self.run_program("compare", name, "one", "other")
                self.assertEqual((run.status, run.err), (status, ""))
                self.assertIn(said, run.out)
                self.assertEqual(bool(run.out), status != 0)

class Normalize(SuiteTest):
    def test_text_as_it_is_compared(self):
        rows = [  # format, text, normalised
            ("xls", "<script>1</script>a\r\nb", "a\nb"),
            ("html", "<p id=\"x\">a\r\nb</p>", "<p>ab</p>"),
            ("xml", "<a>\r\n</a>\r", "<a>\n</a>"),
            ("xml", "\r\r", ""),
        ]
        for name, text, normalised in rows:
            with self.subTest(format=name, text=text):
                self.write("work/file", text)
                run = self.run_program("normalize", name, "file")
                self.assertEqual((run.status, run.err), (0, ""))
                self.assertEqual(run.out, normalised)

    def test_a_text_that_ends_early_says_so(self):
        self.write("work/file", b"seen\x00unseen")
        run = self.run_program("normalize", "xml", "file")
        self.assertEqual((run.status, run.out), (0, "seen"))
        self.assertIn("NUL", run.err)

if __name__ == "__main__":
    unittest.main()
