"""The reports that build servers and merge requests read, of records written by hand: documents of
their kind, whatever names and contents the record holds."""

import json
import os
import pathlib
import subprocess
import sys
import xml.etree.ElementTree

from suite import SuiteTest

SOURCE = pathlib.Path(__file__).parents[2]
sys.path.append(str(SOURCE / "tests/browser"))
import records  # noqa: E402

HOSTILE = (
    "</failure>]]><x a='\"'>&amp; \ufffe\uffff\0\x1b[31m\x0b\u202e\x7f \\ | ``` ````` \r\n::error::x"
    "\n::stop-commands::x\n# x\n%0A</details>\N{MATHEMATICAL LEFT ANGLE BRACKET}"
)
ESCAPED = r"\u{FFFE}\u{FFFF}\x00\x1B[31m\x0B\u{202E}\x7F \\ | ``` ````` \r\n::error::x\n::stop-commands::x\n# x\n%0A"


def differing(name, removed="15.20", added="16.20", group="g1", **more):
    hunk = records.text_hunk(group, 12, removed, added, mask=("Ids", "x1"))
    return records.pair(name, verdict="differs", difference=records.difference("html", [hunk]), **more)


def hostile_pairs():
    """Each kind of foreign text in each place that a report shows."""
    pair = differing("h", HOSTILE, HOSTILE, printed=HOSTILE)
    pair["report"] = pair["report"].replace("sales", HOSTILE)
    for hunk in pair["difference"]["hunks"]:
        hunk["place"] = HOSTILE
    excerpt = {"before": HOSTILE, "first": "", "rest": "", "columns": 1}
    return [
        pair | {"master": HOSTILE, "output": HOSTILE},
        records.pair("m", verdict="error", message=HOSTILE),
        records.pair({"hex": b"caf\xe9|``".hex()}, verdict="missing", message="m"),
        records.pair("e", verdict="differs", masterExcerpt=excerpt, outputExcerpt=excerpt, at={"byte": 0, "line": 1, "column": 1}),
    ]


class CiReports(SuiteTest):
    def reported(self, pairs, *options, status=0, **run):
        """What `report` prints of a record of these pairs."""
        name = f"record{len(list(self.work.iterdir()))}"
        records.write_record(self.work / name, pairs, **run)
        told = self.run_program("report", name, *options)
        self.assertEqual((told.status, told.err), (status, ""))
        return told.out

    def junit(self, pairs, **run):
        """The document, as a parser and a validator of another make both take it."""
        text = self.reported(pairs, "--junit", "-", **run)
        check = subprocess.run(
            ["xmllint", "--noout", "--schema", SOURCE / "docs/junit-report.xsd", "-"],
            input=text, text=True, capture_output=True, check=False,
        )
        self.assertEqual(check.returncode, 0, check.stderr)
        return text, xml.etree.ElementTree.fromstring(text)

    def test_junit_tells_each_verdict_by_its_element(self):
        rows = {
            "failure": ("differs", "missing", "failed", "stale"),
            "error": ("error", "crashed", "timed-out", "partly"),
            "skipped": ("not run",),
        }
        pairs = [records.pair(word, verdict=word, message=f"why {word}") for words in rows.values() for word in words]
        text, root = self.junit([records.pair("fine"), *pairs], unverified=["../suite/hr/New.xml"])
        cases = {case.get("name"): case for case in root.iter("testcase")}
        self.assertEqual(list(cases["fine.html"]), [])
        for element, words in rows.items():
            for word in words:
                told = cases[f"{word}.html"].find(element)
                self.assertEqual((told.get("type"), told.get("message")), (word, f"{word}: why {word}"))
                self.assertTrue(told.text.startswith(f"{word}: why {word}\nmaster: ../suite/sales/Masters/{word}.html\n"))
        self.assertIn("no master", cases["New.xml"].find("skipped").get("message"))
        sales = root.find("testsuite")
        counts = [sales.get(name) for name in ("name", "tests", "failures", "errors", "skipped", "file")]
        self.assertEqual(counts, ["../suite/sales", "10", "4", "4", "1", "../suite/sales"])
        self.assertEqual((root.get("tests"), root.get("failures"), root.get("errors")), ("11", "4", "4"))

    def test_junit_shows_the_difference_as_text(self):
        _, root = self.junit([differing("R")])
        failure = root.find(".//failure")
        self.assertEqual(failure.get("message"), "differs: 15.20 → 16.20")
        self.assertIn(
            "@@ line 12 @@\n <tr>\n-<td>Total</td><td>15.20</td>⟨Ids⟩\n+<td>Total</td><td>16.20</td>⟨Ids⟩\n </tr>\n",
            failure.text,
        )

    def test_junit_names_are_unique_and_stay(self):
        twins = [records.pair("A"), records.pair("A"), records.pair("A", folder="../other/../suite/sales")]
        dots = [records.pair("A", folder="v1.2/x"), records.pair("A", folder="v1/2/x")]
        _, root = self.junit([*twins, *dots, records.pair("A", "xls")])  # the schema wants them unique
        names = [(case.get("classname"), case.get("name")) for case in root.iter("testcase")]
        self.assertEqual(names[:2], [("suite.sales", "A.html"), ("suite.sales", "A.html #2")])
        self.assertIn((r"suite.v1\x2E2.x", "A.html"), names)
        self.assertIn(("suite.sales", "A.html (xls)"), names)
        _, other = self.junit([*dots, records.pair("B")])
        self.assertLessEqual({(r"suite.v1\x2E2.x", "A.html"), ("suite.v1.2.x", "A.html")},
                             {(case.get("classname"), case.get("name")) for case in other.iter("testcase")})

    def test_junit_of_a_run_that_is_no_whole_holds_an_error(self):
        rows = [
            ({"complete": False}, "the run was interrupted"),
            ({"notes": ["2 pairs not compared: no script"]}, "2 pairs not compared"),
            ({"shards": {"indices": [1, 3], "count": 3}}, "only 2 of 3 shards"),
        ]
        for run, reason in rows:
            with self.subTest(reason):
                _, root = self.junit([records.pair("A")], **run)
                self.assertIn(reason, root.find(".//error").get("message"))
        _, alone = self.junit([records.pair("A")], shards={"indices": [2], "count": 3})
        self.assertIsNone(alone.find(".//error"))

    def test_junit_stays_a_document_whatever_it_holds(self):
        text, root = self.junit(hostile_pairs(), host=HOSTILE, unverified=[HOSTILE])
        self.assertEqual(len(list(root.iter("testcase"))), 5)
        self.assertIn(ESCAPED, "".join(root.itertext()))
        self.assertNotRegex(text, "[\0-\x08\x0b-\x1f\x7f\u202e\ufffe\uffff]")
        self.assertIn(r"caf\xE9", text)

    def test_junit_is_limited(self):
        long = differing("long", "x" * 50_000, "y" * 50_000, printed="z\n" * 50_000)
        text, root = self.junit([long])
        self.assertIn("[more is left out here]\n", root.find(".//failure").text)
        self.assertLess(len(text), 10_000)
        many = [differing(f"P{i}", printed="z\n" * 3_000) for i in range(3_000)]
        text, _ = self.junit(many)
        self.assertIn("[the report has no room for more]", text)
        self.assertLess(len(text), 10 << 20)
        night = [differing(f"P{i:04}") if i % 10 == 0 else records.pair(f"P{i:04}") for i in range(3_300)]
        self.assertLess(len(self.junit(night)[0].encode()), 300_000)
