"""What the rules hide: the verb explain, and passes that rest on outsized masks."""

import json
import pathlib

import jsonschema

from suite import SuiteTest

SCHEMA = pathlib.Path(__file__).parents[2] / "docs/pair-record.schema.json"
SEEN = "<p>visible</p>\n" * 200  # 3000 bytes


def script(text):
    return f"<script>{text}</script>"


class OutsizedMasks(SuiteTest):
    def test_a_pass_is_warned_of_if_too_much_is_masked_where_the_files_differ(self):
        large = "x" * 1000
        one = "ScriptElement hides 25.4 % of the actual output (line 201), where it differs"
        rows = [  # master, actual, options, what is said of the pass
            (SEEN + script("1"), SEEN + script("2" * 1007), "", one + " from the master"),
            (SEEN + script(f"\n1{large}"), SEEN, "",
             "ScriptElement hides 25.4 % of the master (lines 201-202), where it differs from the a"),
            (SEEN + script("1"), SEEN + script("2" * 1007), "--mask-limit 25.5", ""),
            (SEEN + script("1"), SEEN + script("2" * 1007), "--mask-limit 0", ""),
            (SEEN + script("1"), SEEN + script("2"), "--mask-limit 0.5 --mask-sum-limit 0.5",
             "ScriptElement hides 0.6 % of the master"),
            # A mask that hides the same in both takes nothing from the comparison.
            (SEEN + script(large) + script("1"), SEEN + script(large) + script("2"), "", ""),
            (SEEN + script(large + "\r\n"), SEEN + script(large + "\n"), "", ""),
            (script("1" * 2000), script("2" * 2000), "", ""),  # small files
            (SEEN + script("1" * 400) * 40, SEEN + script("2" * 400) * 40, "",
             "all rules together hide 84.8 % of the master (line"),
            (SEEN + script("1" * 400) * 40, SEEN + script("2" * 400) * 40, "--mask-sum-limit 0", ""),
        ]
        for master, actual, options, said in rows:
            with self.subTest(said, options=options):
                self.report("R", master, actual)
                run = self.verify(*options.split())
                self.assertEqual(run.status, 0, run.err)
                self.assertEqual("outsized mask: " in run.out, bool(said), run.out)
                self.assertIn(said, run.out)
                self.assertEqual(", 1 pass rests on an outsized mask (" in run.out, bool(said))

    def test_the_warning_is_kept_and_shown_again(self):
        self.report("R", SEEN + script("1" * 1000), SEEN + script("2" * 1000))
        self.report("S", SEEN + script("1" * 1000), SEEN + script("2" * 2000))
        printed = self.verify("--record", "night").out
        lines = (self.work / "night/pairs.jsonl").read_text().splitlines()
        pairs = [json.loads(line) for line in lines]
        for pair in pairs:
            jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text())).validate(pair)
        self.assertEqual(pairs[1]["mask"], {"file": "output", "rule": "ScriptElement",
                                            "bytes": 2017, "percent": 40.2, "firstLine": 201,
                                            "lastLine": 201})
        self.assertIn(", 2 passes rest on outsized masks (", self.verify("-q").out)
        shown = self.run_program("show", "night").out
        self.assertEqual(shown.splitlines()[:4], printed.splitlines()[:4])

    def test_what_helped_pairs_to_pass_is_counted(self):
        self.report("R", "<p>a</p>" + script("1"), "<p>a</p>\r\n" + script("2"))
        self.report("S", "<p>b</p>" + script("1"), "<p>b</p>" + script("2"))
        self.report("T", "<p>c</p>" + script("1"), "<p>d</p>" + script("2"))
        self.report("U", "<p>c</p>" + script("1"), "<p>c</p>" + script("1"))
        self.expect(self.verify("-v"), 1, "Pairs that passed with the help of a rule:\n"
                    "    ScriptElement   2\n    CarriageReturn  1\n    LineBreak       1\n")
        self.assertNotIn("with the help", self.verify().out)


class Explain(SuiteTest):
    def explain(self, format, *texts, options=()):
        names = []
        for i, text in enumerate(texts):
            names.append(f"file{i}")
            self.write(f"work/file{i}", text)
        return self.run_program("explain", format, *names, *options)

    def test_one_file(self):
        page = "<p id=\"a\">é</p>\r\n<script>\x1b[2J\n" + "long " * 20 + "</script>"
        self.expect(self.explain("html", page), 0, out="""\
RULE            MATCHES  BYTES   SHARE
CarriageReturn        1      1   0.7 %
    longest: 1 byte in line 1: \\r
LineBreak             2      1   0.7 %
    longest: 1 byte in line 1: \\n
ScriptElement         1    122  87.1 %
    longest: 122 bytes in lines 2-3: <script>\\x1B[2J\\nlong long …ong </script>
IdAttribute           1      7   5.0 %
    longest: 7 bytes in line 1:  id="a"
14 rules without a match (-v lists them)
Masked: 131 of 140 bytes (93.6 %)
""")

    def test_a_pair(self):
        rows = [  # master, actual, what is said
            ("<p>a</p>", "<p>a</p>", "The files are equal.\n"),
            ("<p>a</p>\n", "<p>a</p>", "differ only where the rules mask them: 1 difference.\n"),
            ("<p>a</p>" + script("1"), "<p>b</p>" + script("1"),
             "The files also differ where nothing is masked; the rules hide 0 differences.\n"),
            (script("ab1c") + "z", script("ab2c") + "z", "ScriptElement hides 1 difference\n"
             "    master 1:11  <script>ab1c</script>z\n    actual 1:11  <script>ab2c</script>z\n"),
            ("x\ny" + script("1"), "x\ny", "ScriptElement hides 1 difference\n"
             "    master 2:2  <script>1</script>\n    actual      (nothing)\n"),
            (script("1\r\n"), script("1\n"), "CarriageReturn       1      0       0      0       0"),
            # A match more in front does not shift the others.
            ("a" * 30 + script("1") + "b" * 30 + script("2"),
             script("0") + "a" * 30 + script("1") + "b" * 30 + script("3"), "hides 2 differences"),
            ("a" + script("1") * 4, "a" + script("2") * 4, "    ... and 1 more (-v shows all)\n")]
        for master, actual, said in rows:
            with self.subTest(master=master, actual=actual):
                self.expect(self.explain("html", master, actual), 0, said)

    def test_what_cannot_be_explained_is_said(self):
        nul = "file0 contains a NUL byte; only the text before it is explained\n"
        self.expect(self.explain("csv", "a", "b"), 0, out="Nothing is masked: no rule applies to "
                    "format csv, which is compared by byte identity.\n")
        self.expect(self.explain("html", b"\x89PNG\r\n\0abc"), 0, "Masked: 2 of 6 bytes",
                    err="orvdiff: " + nul)
        self.expect(self.explain("html", b"\0", options=["-q"]), 0,
                    out="Masked: 0 of 0 bytes (0.0 %)\n", err="orvdiff: " + nul)
        self.expect(self.explain("html", script("\xff\u202e").encode("latin-1", "ignore")), 0,
                    "<script>\\xFF</script>")
        self.expect(self.run_program("explain", "html", "nothing"), 2,
                    err="orvdiff: nothing does not exist\n")
