"""orvdiff probe: which stream says what, the patterns it writes, and what it refuses."""

import os
import pathlib
import re
import shutil
import subprocess

from suite import SuiteTest

SOURCE = pathlib.Path(__file__).parents[2]
PAGE = "<html><h1>Sales {number}</h1><p>Net {amount}</p><i>Build {build}, printed {day}</i></html>"


class Probe(SuiteTest):
    def runs(self, count=3):
        """Two runs of some pages, of which every footer differs."""
        for run, (build, day) in enumerate([("4711", "2026-11-23 08:14"), ("4720", "2026-11-24 21:03")], 1):
            for number in range(count):
                page = PAGE.format(number=number, amount=100 + number, build=build, day=day)
                self.write(f"work/run{run}/{number}.html", page)

    def probe(self, *arguments):
        return self.run_program("probe", "html", "run1", "run2", *arguments)

    def toml(self):
        return (self.work / "orvdiff.toml").read_bytes().decode()

    def test_patterns_and_findings_have_a_stream_each(self):
        self.runs()
        run = self.probe()
        self.assertEqual(run.status, 0)
        self.assertTrue(run.out.startswith("[[pattern]]\nname = 'build-number'\nexpression = 'Build [0-9]+'\n"), run.out)
        for text in ("3 html files in 2 runs; 3 differ.", "With these 2 patterns the runs agree.", "reach       nothing else"):
            self.assertIn(text, run.err)
        self.assertRegex(run.err, r"Of (\d+) changes planted in visible numbers and words, \1 are still found")
        self.assertFalse((self.work / "orvdiff.toml").exists())
        self.assertEqual(self.probe("-q").err.count("\n"), 3)
        self.assertEqual(self.probe().out, run.out)

    def test_appended_patterns_make_the_runs_agree(self):
        self.runs()
        before = "# ours\nversion = 1\r\n[suite]\nstrict = true"
        self.write("work/orvdiff.toml", before)
        self.expect(self.probe("--append"), 0, "2 patterns appended to orvdiff.toml.\n")
        after = self.toml()
        self.assertTrue(after.startswith(before + "\n\n[[pattern]]\n"))
        self.expect(self.probe("--append"), 0, "The runs agree; no pattern is needed.\n")
        self.expect(self.probe("--no-config", "--append"), 0, "0 patterns appended", "2 were there already.")
        self.assertEqual(self.toml(), after)
        self.write("work/run2/0.html", PAGE.format(number=0, amount=117, build=1, day="2026-11-24 21:03"))
        run = self.probe()
        self.assertEqual((run.status, run.out), (1, ""))
        self.assertIn("0.html:1:30  1 place in 1 file\n      - 100\n      + 117\n        may be data", run.err)

    def test_a_name_that_is_taken_is_not_used_again(self):
        self.runs()
        self.write("work/orvdiff.toml", """version = 1
[[pattern]]
name = "build-number"
expression = "Plan [0-9]+"
formats = ["html"]
why = "plans"
examples = [{before = "Plan 1", after = ""}, {stays = "Plan"}]
""")
        self.expect(self.probe("--append", "orvdiff.toml"), 0, "2 patterns appended")
        self.assertIn("name = 'build-number-2'", self.toml())

    def test_files_of_one_run_are_named(self):
        self.runs()
        self.write("work/run2/new\x1b.html", "x")
        self.write("work/run1/other.css", "x")
        run = self.probe()
        self.assertEqual(run.status, 1)
        self.assertIn("1 file not in all runs:\n    new\\x1B.html is only in run2\n", run.err)
        self.write("work/run1/0.html", b"cut\0")
        self.assertIn("run1/0.html contains a NUL byte; only", self.probe("-q").err)
        self.assertIn("(1 file with other endings not looked at)", run.err)

    def test_bad_input(self):
        self.runs()
        self.write("work/empty/x.css")
        self.write("work/sound.toml", "version = 1\n")
        os.symlink("run1", self.work / "again")
        os.symlink("..", self.work / "run1/loop")  # is not followed for ever
        self.write("work/broken.toml", "version = 1\n[suite\n")
        self.write("work/list.toml", "version = 1\npattern = []\n")
        rows = [
            (("csv", "run1", "run2"), "format csv is compared by byte identity, so no pattern applies to it"),
            (("htm", "run1", "run2"), "unknown format"),
            (("html", "run1"), "RUN"),
            (("html", "run1", "nowhere"), "nowhere does not exist"),
            (("html", "run1", "run2/0.html"), "run2/0.html is not a folder"),
            (("html", "run1", "again"), "run1 and again are the same folder"),
            (("html", "empty", "again/loop/empty"), "are the same folder"),
            (("html", "empty", "webless"), "webless does not exist"),
            (("html", "run1", "run2", "--append", "broken.toml"), "broken.toml:2:7: "),
            (("html", "run1", "run2", "--append", "list.toml"), "list.toml"),
            (("html", "run1", "run2", "--append", "run1"), "run1 cannot be written: Is a directory"),
            (("html", "run1", "run2", "--append", "nowhere/x.toml"), "nowhere/x.toml cannot be written"),
        ]
        kept = {name: (self.work / name).read_text() for name in ("broken.toml", "list.toml")}
        for arguments, message in rows:
            with self.subTest(arguments):
                run = self.run_program("probe", *arguments)
                self.assertEqual((run.status, run.out.count("[[pattern]]")), (2, 0))
                self.assertIn(message, run.err)
        self.assertEqual({name: (self.work / name).read_text() for name in kept}, kept)
        os.remove(self.work / "run1/0.html")
        os.mkfifo(self.work / "run1/0.html")
        self.assertEqual(self.probe().status, 1)  # not a file: only run 2 has one


class Tutorial(SuiteTest):
    """The commands of docs/your-suite.md, in the folder that it starts from."""

    def test_commands_do_what_the_page_says(self):
        page = (SOURCE / "docs/your-suite.md").read_text()
        place = self.server / "tutorial"
        place.mkdir()
        tools = self.server / "tools"
        tools.mkdir()
        (tools / "orvdiff").symlink_to(os.path.join(os.environ["ORVDIFF_BIN_DIR"], "orvdiff"))
        environment = {**os.environ, "PATH": f"{tools}:{os.environ['PATH']}", "NO_COLOR": "1"}
        environment.pop("CI", None)
        self.assertGreater(len(re.findall(r"^```console$", page, re.MULTILINE)), 5)
        for block in re.findall(r"^```console\n(.*?)^```$", page, re.DOTALL | re.MULTILINE):
            for command, shown in re.findall(r"^\$ ((?:.*\\\n)*.*)\n((?:(?!\$ ).*\n)*)", block, re.MULTILINE):
                if "<<" in command:  # what follows is not shown but typed
                    command, shown = f"{command}\n{shown}", ""
                run = subprocess.run(["bash", "-c", command], cwd=place, env=environment, text=True, check=False,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
                told = re.sub(r"\d+\.\d+ s\b", "0.1 s", run.stdout.replace(str(place), "/home/me"))
                expected = re.sub(r"\d+\.\d+ s\b", "0.1 s", shown)
                parts = [re.escape(part) for part in expected.split("...\n")]
                self.assertRegex(told, r"\A" + r"(?:.*\n)*?".join(parts) + r"\Z", command)
        shutil.rmtree(place)
