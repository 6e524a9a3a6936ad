import re
import textwrap

from suite import SuiteTest

LONG = "abcdefghij" * 30
PAGE = "<body>" + "".join(f"<tr><td>row {n}</td></tr>" for n in range(60)) + "</body>"


class Hunks(SuiteTest):
    def difference(self, format_name, master, actual, *options):
        """What `diff` prints below its first line, without the indent."""
        self.write("work/one", master)
        self.write("work/other", actual)
        run = self.run_program("diff", format_name, "one", "other", *options)
        head, _, hunks = run.out.partition("\n")
        self.assertEqual((run.status, run.err), (1, ""))
        self.assertIn("  one -> other", head)
        return textwrap.dedent(hunks)

    def test_hunks_are_lines_of_both_files_with_what_changed_marked(self):
        rows = [  # format, master, actual, hunks
            ("xls", "one\ntwo\nthree x", "one\ntwo\nthrew x", """\
                1 1   one
                2 2   two
                3   - three x
                      ^^^^^
                  3 + threw x
                      ^^^^^
                """),
            ("xls", "a\nb", "ab", """\
                1   - a\\n
                       ^^
                2   - b
                  1 + ab
                """),
            ("xls", "a b c\n  x\n", "a  b c\n  x", """\
                1   - a b c
                  1 + a\u00b7 b c
                       ^
                2   -   x\\n
                         ^^
                  2 +   x
                """),
            ("xls", "\U0001F4C8 1", "\U0001F4C9 1", """\
                1   - \U0001F4C8 1
                      ^^
                  1 + \U0001F4C9 1
                      ^^
                """),
            ("xls", b"a\xc3", b"a\xc3\xa9", """\
                1   - a\\xC3
                  1 + a\u00e9
                """),
            ("xls", "\x1b[2J\x07\u202e a", "\x1b[2J\x07\u202e b", """\
                1   - \\x1B[2J\\x07\\u{202E} a
                                          ^
                  1 + \\x1B[2J\\x07\\u{202E} b
                                          ^
                """),
            ("xls", "cafe e\u0301\tX", "cafe\u0301 e\u0301\tX", """\
                1   - cafe e\u0301\\tX
                      ^^^^
                  1 + cafe\u0301 e\u0301\\tX
                      ^^^^
                """),
            ("xls", "\u27e8a\u27e9 b<script>x</script>", "\u27e8a\u27e9 c<script>y</script>", """\
                1   - \\u{27E8}a\\u{27E9} b\u27e8ScriptElement\u27e9
                                        ^
                  1 + \\u{27E8}a\\u{27E9} c\u27e8ScriptElement\u27e9
                                        ^
                """),
            # Line breaks that only a rule removes are where they are in each file.
            ("html", '<p>a</p>\n<p id="k">1.5</p>\n<script>\n1\n</script><b>z</b>',
             '<p>a</p><p id="l">2.5</p><script>2\n</script>\n<b>z</b>', """\
                1 1   <p>a</p>
                2   - <p\u27e8IdAttribute\u27e9>1.5</p>
                                      ^^^
                  1 + \u2026<p\u27e8IdAttribute\u27e9>2.5</p>\u27e8ScriptElement\u27e9
                                       ^^^
                3 3   \u27e8ScriptElement\u27e9<b>z</b>
                """),
            ("xls", "x", "\n".join(map(str, range(1, 31))), "1    - x\n" +
             "".join(f"  {n:2} + {n}\n" for n in range(1, 21)) + "     + \u2026 10 more lines\n")]
        for format_name, master, actual, hunks in rows:
            with self.subTest(master=master[:20], actual=actual[:20]):
                self.assertEqual(self.difference(format_name, master, actual),
                                 textwrap.dedent(hunks))

    def test_a_long_line_is_cut_at_tags_and_between_words(self):
        added = PAGE.replace("<tr><td>row 31", "<tr><td>new</td></tr><tr><td>row 31")
        hunk = self.difference("html", PAGE, added, "--context", "1")
        self.assertIn("  1 + \u2026<tr><td>new</td></tr>\u2026\n", hunk)
        self.assertNotIn(" - ", hunk)
        for width in ("20", "30", "100"):
            hunk = self.difference("xls", LONG + " \u8868X " + LONG, LONG + " \u8868Y " + LONG,
                                   "--width", width, "--color", "always")
            for row in hunk.splitlines():
                plain = re.sub("\x1b\\[[0-9;]*m", "", row)
                self.assertNotIn("\x1b", plain)  # every escape is whole, and ends in its row
                self.assertEqual(row.count("\x1b[0m") * 2, row.count("\x1b["))
                self.assertLessEqual(len(plain) + plain.count("\u8868"), int(width))

    def test_options_say_how_much_is_shown(self):
        master = "".join(f"line {n}\n" for n in range(60))
        actual = master.replace("9", "nine")
        for options, hunks, rest in [((), 3, "3 more differences (--max-diffs)\n"),
                                     (("--max-diffs", "1"), 1, "5 more differences"),
                                     (("--max-diffs", "0"), 6, ""),
                                     (("--context", "5"), 1, "")]:
            shown = self.difference("xml", master, actual, *options)
            self.assertEqual(shown.count("\n--\n") + 1, hunks)
            self.assertIn(rest, shown)
        text = "<p id=\"{}\">{}</p>"
        shown = self.difference("html", text.format("a", 1), text.format("b", 2), "--no-masks")
        self.assertIn("- <p>1</p>\n", shown)

    def test_verify_shows_them_and_a_record_keeps_them(self):
        self.report("R", "<p>a 15.20</p>", "<p>a 16.20</p>")
        hunk = "          1   - <p>a 15.20</p>\n                     ^^^^^\n"
        self.expect(self.verify("--record", "record"), 1, hunk)
        self.expect(self.run_program("show", "record"), 0, hunk)
        self.assertEqual(self.verify("-q").out.count("\n"), 1)
