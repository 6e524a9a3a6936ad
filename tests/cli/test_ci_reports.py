"""The reports that build servers and merge requests read, of records written by hand: documents of
their kind, whatever names and contents the record holds."""

import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import xml.etree.ElementTree

import yaml

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
    return [
        pair | {"master": HOSTILE, "output": HOSTILE},
        records.pair("m", verdict="error", message=HOSTILE, printed=HOSTILE + "\n```\n   `````\n<b>"),
        records.pair({"hex": b"caf\xe9|``".hex()}, verdict="missing", message="m"),
        records.pair("e", verdict="differs", at={"byte": 0, "line": 1, "column": 1}),
    ]


class CiReports(SuiteTest):
    def reported(self, pairs, *options, env=None, **run):
        """What `report` prints of a record of these pairs."""
        name = f"record{len(list(self.work.iterdir()))}"
        records.write_record(self.work / name, pairs, **run)
        told = self.run_program("report", name, *options, **(env or {}))
        self.assertEqual((told.status, told.err), (0, ""))
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
                self.assertTrue(told.text.startswith(f"{word}: why {word}\n../suite/sales/Masters/{word}.html -> "))
        self.assertIn("no master", cases["New.xml"].find("skipped").get("message"))
        sales = root.find("testsuite")
        counts = [sales.get(name) for name in ("name", "tests", "failures", "errors", "skipped", "file")]
        self.assertEqual(counts, ["../suite/sales", "10", "4", "4", "1", "../suite/sales"])
        self.assertEqual((root.get("tests"), root.get("failures"), root.get("errors")), ("11", "4", "4"))

    def test_junit_shows_the_difference_as_text(self):
        _, root = self.junit([differing("R")])
        failure = root.find(".//failure")
        self.assertEqual(failure.get("message"), "15.20 → 16.20")
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
        night = [(differing if i % 10 == 0 else records.pair)(f"P{i}", seconds=0.0001) for i in range(3_300)]
        self.assertLess(len(self.junit(night)[0].encode()), 300_000)

    def test_markdown_shows_what_changed_and_how_often(self):
        footer = [differing(f"F{i}", "v1", "v2", "gf") for i in range(60)]
        rare = [differing(f"P{i}", "15.20", f"{i}.20", f"g{i}") for i in range(30)]
        missing = [records.pair(f"M{i}", verdict="missing", message="the master does not exist") for i in range(3)]
        text = self.reported([records.pair("A"), *footer, *rare, *missing], "--markdown", "-", notes=["no script"])
        self.assertTrue(text.startswith("## ❌ orvdiff: 1 of 94 pairs passed\n"))
        for part in (
            "| missing | 3 |", "- `no script`\n", "### 32 changes, rarest first",
            "**1 pair**: `15.20 → 0.20`, first in `../suite/sales/Masters/P0.html`\n\n```diff\n@@ line 12 @@\n <tr>\n-",
            "**60 pairs**: `v1 → v2`, first in `../suite/sales/Masters/F0.html`", "12 more are left out here",
            "### 93 pairs did not pass", "| differs | `html` | `../suite/sales/Masters/F49.html` | `v1 → v2` |\n\n43 more",
        ):
            self.assertIn(part, text)
        self.assertNotIn("F50.html", text)
        self.assertIn("✅", self.reported([records.pair("A")], "--markdown", "-"))
        self.assertIn("❌", self.reported([records.pair("A")], "--markdown", "-", complete=False))

    def test_markdown_keeps_foreign_text_in_code(self):
        text = self.reported(hostile_pairs(), "--markdown", "-", notes=[HOSTILE])
        self.assertIn("``` `````", text)
        fence, outside = None, []
        for line in text.splitlines():
            run = re.match("`*", line)[0]
            if fence is None and len(run) >= 3:
                fence = run
            elif fence is not None and re.fullmatch(f" {{0,3}}{fence}`*", line):
                fence = None
            elif fence is None:
                outside.append(line)
        self.assertIsNone(fence)
        code = re.compile(r"(?<!`)(`+)(?!`)(.*?)(?<!`)\1(?!`)")
        plain = [code.sub("", line) for line in outside]
        self.assertNotRegex("\n".join(plain), "[`<\\\\&]|error::|%0A")
        self.assertEqual({line.count("|") for line in plain if line.startswith("| ")}, {3, 5})
        self.assertEqual({line.count("|") for line in outside if line.startswith("| ")}, {3, 5})

    def test_markdown_fits_a_comment_whatever_the_run(self):
        long = "`|" * 50_000
        pairs = [differing(f"{i}" + "`" * 240, f"{i}{long[:3000]}", long[:3000], f"g{i}") for i in range(300)]
        text = self.reported(pairs, "--markdown", "-", notes=[f"{i}{long}" for i in range(40)])
        self.assertLess(len(text.encode()), 65_536)
        self.assertIn("and 30 more", text)

    def test_annotations(self):
        workspace = self.work / "a,b:c%"
        pairs = [differing(f"F{i}", "v1", "v2", "gf", masterPath=f"{workspace}/F{i}.html") for i in range(20)]
        pairs += [differing(f"P{i}", "15%", f"{i},::x", f"g{i}") for i in range(30)]
        pairs += hostile_pairs()
        text = self.reported(pairs, "--annotations", "github", env={"GITHUB_WORKSPACE": str(workspace)})
        lines = text.splitlines()
        self.assertEqual(len(lines), 10)
        self.assertEqual(lines[-1], "::error title=orvdiff,file=F0.html,line=12::v1 → v2 (20 pairs)")
        self.assertIn("::error title=orvdiff,file=../suite/sales/Masters/P0.html,line=12::15%25 → 0,::x", lines)
        hostile = self.reported(hostile_pairs(), "--annotations", "github", notes=["half"]).splitlines()
        self.assertEqual([line[:9] for line in hostile], ["::error t"] * 5)
        self.assertEqual(hostile[0], "::error title=orvdiff::half")
        text = self.reported(hostile_pairs(), "--annotations", "gitlab")
        self.assertRegex(text, r"\A\x1b\[0Ksection_start:\d+:orvdiff\r\x1b\[0K.*\n(\x1b\[31mERROR\x1b\[0m [^\x1b\r]*\n){4}"
                               r"\x1b\[0Ksection_end:\d+:orvdiff\r\x1b\[0K\n\Z")
        self.assertEqual(self.reported([records.pair("A")], "--annotations", "github"), "")

    def test_full_disk_and_wrong_servers(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (200, 200))

        records.write_record(self.work / "r", [differing("A")])
        full = self.run_program("report", "r", "--junit", "j", "--markdown", "m", preexec_fn=limit)
        self.assertEqual(full.status, 2)
        for what in ("JUnit report j", "Markdown report m"):
            self.assertIn(f"the {what} could not be written completely", full.err)
        self.assertEqual([path.name for path in self.work.iterdir()], ["r"])
        self.assertEqual(self.run_program("report", "r", "--annotations", "jenkins").status, 2)
        both = self.run_program("report", "r", "--annotations", "github", "--json", "-")
        self.assertEqual((both.status, both.out), (2, ""))

    def test_verify_writes_them_too(self):
        self.report("R", "<p>1</p>", "<p>2</p>")
        run = self.verify("--junit", "j", "--markdown", "m", "--annotations", "github", "--record", "r")
        self.assertEqual(run.status, 1)
        self.assertIn("::error title=orvdiff,file=", run.out)
        again = self.run_program("report", "r", "--junit", "-")
        self.assertEqual((self.work / "j").read_text(), again.out)
        self.assertNotIn("--annotations", (self.work / "r/run.json").read_text())


class Recipes(SuiteTest):
    """The commands of docs/ci.md, run on a suite of its own in the folders that they expect."""

    def setUp(self):
        super().setUp()
        page = (SOURCE / "docs/ci.md").read_text()
        self.blocks = dict(zip(("github", "gitlab", "jenkins", "cron"),
                               re.findall(r"^```\w+\n(.*?)^```$", page, re.DOTALL | re.MULTILINE), strict=True))
        self.checkout = self.server.parent
        self.report("Same", "<p>1</p>", "<p>1</p>")
        self.report("Other", "<p>1</p>", "<p>2</p>")
        tools = self.checkout / "tools"
        tools.mkdir()
        (tools / "orvdiff").symlink_to(pathlib.Path(os.environ["ORVDIFF_BIN_DIR"]) / "orvdiff")
        (tools / "mail").write_text('#!/bin/sh\n{ printf "%s\\n" "$@"; cat; } >"$MAILED"\n')
        (tools / "mail").chmod(0o755)
        self.environment = {**os.environ, "PATH": f"{tools}:{os.environ['PATH']}", "MAILED": str(self.checkout / "mailed"),
                            "GITHUB_STEP_SUMMARY": str(self.checkout / "step-summary")}

    def run_lines(self, lines, status, *arguments, **variables):
        run = subprocess.run(["bash", "-e", "-c", lines, "script", *arguments], cwd=self.checkout, text=True,
                             capture_output=True, check=False, env={**self.environment, **variables}, timeout=60)
        self.assertEqual(run.returncode, status, run.stdout + run.stderr)
        return run.stdout

    def assert_published(self, page, junit):
        self.assertIn("<!doctype html>", (self.checkout / page).read_text()[:20].lower())
        names = [case.get("name") for case in xml.etree.ElementTree.parse(self.checkout / junit).iter("testcase")]
        self.assertEqual(names, ["Other.html", "Same.html"])

    def shards(self, verify, merge, variables):
        failed = 0
        for shard in "1234":
            run = subprocess.run(["bash", "-e", "-c", verify], cwd=self.checkout, capture_output=True, check=False,
                                 env={**self.environment, **variables(shard)})
            failed += run.returncode
        self.assertEqual(failed, 1)
        told = self.run_lines(merge, 1)
        self.assert_published("report.html", "junit.xml")
        shutil.rmtree(self.checkout / "record")
        shutil.rmtree(self.checkout / "records/shard-2")
        self.run_lines(merge, 2)
        self.assertIn("only 3 of 4 shards", (self.checkout / "junit.xml").read_text())
        return told

    def test_github(self):
        jobs = yaml.safe_load(self.blocks["github"])["jobs"]
        verify, merge = (next(step["run"] for step in jobs[job]["steps"] if "run" in step) for job in ("verify", "merge"))
        told = self.shards(verify, merge, lambda shard: {"SHARD": shard, "SHARDS": "4"})
        self.assertIn("::error title=orvdiff,file=", told)
        self.assertIn("1 of 2 pairs passed", (self.checkout / "step-summary").read_text())

    def test_gitlab(self):
        jobs = yaml.safe_load(self.blocks["gitlab"])
        told = self.shards(*("\n".join(jobs[job]["script"]) for job in ("verify", "merge")),
                           lambda shard: {"CI_NODE_INDEX": shard, "CI_NODE_TOTAL": str(jobs["verify"]["parallel"])})
        self.assertIn("section_start:", told)
        self.assertEqual(jobs["merge"]["artifacts"]["reports"]["junit"], "junit.xml")

    def test_jenkins(self):
        (lines,) = re.findall(r"\bsh '''(.*?)'''", self.blocks["jenkins"], re.DOTALL)
        for _ in range(2):  # a workspace that an earlier build used
            self.run_lines(lines, 1)
            self.assert_published("report.html", "junit.xml")
        self.assertTrue((self.checkout / "record/run.json").exists())

    def test_cron(self):
        arguments = str(self.checkout), str(self.checkout / "nights"), "team@example.com"
        self.run_lines("set +e\n" + self.blocks["cron"], 1, *arguments)
        (night,) = (self.checkout / "nights").iterdir()
        self.assert_published(night / "report.html", night / "junit.xml")
        mailed = (self.checkout / "mailed").read_text()
        self.assertTrue(mailed.startswith("-s\norvdiff: status 1\n-A\n"), mailed)
        self.assertIn(f"-A\n{night}/report.html\nteam@example.com\n", mailed)
        self.assertIn("Not all passed", mailed)
        shutil.rmtree(night)
        (self.checkout / "mailed").unlink()
        self.report("Other", "<p>1</p>", "<p>1</p>")
        self.run_lines("set +e\n" + self.blocks["cron"], 0, *arguments)
        self.assertFalse((self.checkout / "mailed").exists())
