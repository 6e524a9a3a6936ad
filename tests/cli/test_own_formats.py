"""Formats of the suite's own file, through the program."""

import json

from suite import PROGRAM, SuiteTest
from terminal import Terminal

INVOICES = """version = 1
[[format]]
name = "invoices"
outputs = "Inv"
masters = "Inv"
tail = "*.csv"
compare = "csv"
ignore = ["Printed"]
tolerance = 0.01
"""
SCHEMA = """<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" %s elementFormDefault="qualified">
<xs:element name="a" type="xs:int"/></xs:schema>"""


def own(compare, more=""):
    return f'version = 1\n[[format]]\nname = "own"\noutputs = "Own"\ntail = "*.own"\ncompare = "{compare}"\n{more}'


class OwnFormats(SuiteTest):
    def invoices(self, master, output, config=INVOICES):
        self.write("orvdiff.toml", config)
        self.write("suite/R.xml", "a report")
        self.write("suite/Masters/Inv/R_1.csv", master)
        self.write("webcontent/bi/Inv/R_1.csv", output)

    def test_a_pass_names_the_rules_that_it_rests_on(self):
        self.invoices("Net,Printed\n1.00,mon\n", "Net,Printed\n1.01,tue\n")
        self.expect(self.verify("-v", "--record", "night"), 0, "1 pair: 1 passed",
                    "    ignored column Printed   1", "    tolerance in column Net  1")
        record = json.loads((self.work / "night/pairs.jsonl").read_text().splitlines()[0])
        self.assertEqual((record["format"], record["rules"]),
                         ("invoices", ["tolerance in column Net", "ignored column Printed"]))
        pair = ("../suite/Masters/Inv/R_1.csv", "../webcontent/bi/Inv/R_1.csv")
        self.expect(self.program("explain", "invoices", *pair), 0, "column Printed is ignored",
                    "numbers may be off by 0.01", "pass with the help of:\n    tolerance in column Net")
        self.expect(self.program("diff", "invoices", *pair), 0)

    def test_a_difference_shows_what_the_rules_do_not_allow(self):
        self.invoices("Net,Tax,Printed\n1.00,5,mon\n", "Net,Tax,Printed\n1.01,6,tue\n")
        run = self.verify("-f", "invoices")
        self.expect(run, 1, "row 2, Tax\n          2   - 5\n", "1 differ,")
        self.assertNotIn("Net", run.out)
        self.assertNotIn("mon", run.out)
        self.invoices("Net,Print\n1,mon\n", "Net,Print\n1,mon\n")
        self.expect(self.verify(), 2, "error", 'has no column "Printed", which is to be ignored')

    def test_outputs_are_accepted_from_a_record_if_they_are_valid(self):
        self.invoices("Net,Printed\n1,mon\n", "Net,Printed\n2,tue\n")
        self.assertEqual(self.verify("--record", "night").status, 1)
        with Terminal([PROGRAM, "review", "night"], self.work, columns=100) as terminal:
            terminal.wait_for("a:accept", "Masters/Inv/R_1.csv")
            terminal.press("e", "Format invoices of the suite", "column Printed is ignored")
            terminal.press("x", "a:accept")
            terminal.press("a", "1 master to accept")
            terminal.press("q")
            terminal.status()
        run = self.run_program("accept", "--from", "night", "--no-config", "-y")
        self.expect(run, 1, 'unknown format "invoices"', err=run.err)
        decided = ("accept", "--from", "night", "-f", "invoices", "--list", "night/decisions.jsonl", "-y")
        self.expect(self.run_program(*decided), 0, "Accepted 1 output")
        self.expect(self.run_program("verify", "--strict", "../suite"), 0)

    def test_what_is_missing_keeps_pairs_from_being_compared(self):
        self.write("suite/R.xml", "a report")
        self.write("tool", "no program")
        self.write("suite/Masters/R.own", "<a>1</a>")
        self.write("webcontent/bi/Own/R.own", "<a>1</a>")
        rows = [  # the file, exit status, what is said
            (own("script", 'command = ["cmp", "-s", "{master}", "{output}"]'), 0, "1 passed"),
            (own("script", 'command = ["./tool", "{master}", "{output}"]'), 2, "not executable"),
            (own("script", 'command = ["no-such-tool", "{master}", "{output}"]'), 2, "not in PATH"),
            (own("script", 'command = ["sleep", "9{master}{output}"]'), 2, "status 1, which"),
            (own("script", 'command = ["sh", "-c", "sleep 60", "{master}", "{output}"]\ntimeout = 0.1'),
             2, "did not end within 0.1 seconds"),
            (own("xml", 'schema = "none.xsd"'), 2, "none.xsd cannot be read"),
            (own("xml"), 0, "1 passed"),
        ]
        for config, status, said in rows:
            with self.subTest(said):
                if "sleep" in config and "9{" in config:
                    config += "\ndiffers = [2]"
                self.write("orvdiff.toml", config)
                run = self.verify()
                self.assertEqual(run.status, status, run.out + run.err)
                self.assertIn(said, run.out + run.err)

    def test_xml_is_checked_by_the_schema_of_the_file(self):
        self.write("suite/R.xml", "a report")
        rows = [  # attributes of the schema, the output, whether it passes
            ("", "<a>1</a>", True),
            ("", "<a>x</a>", False),
            ('targetNamespace="urn:x"', '<a xmlns="urn:x">1</a>', True),
            ('targetNamespace="urn:x"', '<a xmlns="urn:x">x</a>', False),
            ('targetNamespace="urn:x"', '<a xmlns="urn:y">1</a>', False),
        ]
        self.write("orvdiff.toml", own("xml", 'schema = "s.xsd"'))
        for attributes, output, passes in rows:
            with self.subTest(output):
                self.write("s.xsd", SCHEMA % attributes)
                self.write("suite/Masters/R.own", output)
                self.write("webcontent/bi/Own/R.own", output)
                self.assertEqual(self.verify().status, 0 if passes else 1)

    def test_a_mistyped_name_is_suggested(self):
        self.write("orvdiff.toml", INVOICES)
        self.expect(self.verify("-f", "invoice"), 2, err='orvdiff: unknown format "invoice"; did you mean invoices...')
