import json
import os
import signal

from suite import PROGRAM, SuiteTest
from terminal import DOWN, END, ESCAPE, RIGHT, Terminal

HTML = "../webcontent/bi/v5DebugHTML/"
KEYS = "a:accept"  # the last row of a group


class Review(SuiteTest):
    """Six pages with a new footer, of which P1 also has a wrong total; A has lost its output."""

    def setUp(self):
        super().setUp()
        for number in range(6):
            lines = "".join(f"<p>line {number}.{line}</p>\n" for line in range(9))
            page = f'<td id="{{}}">1{number}0</td>\n{lines}<hr/>Version 15.20 {number}'
            other = page.replace("15.20", "16.20").format("new")
            self.report(f"P{number}", page.format("old"),
                        other.replace("110", "-1") if number == 1 else other)
        self.report("A", "never written")
        self.assertEqual(self.verify("--record", "r").status, 1)

    def review(self, *arguments, program=PROGRAM, **options):
        return Terminal([program, "review", "r", *arguments], self.work, **options)

    def masters(self):
        return {name: self.bytes_of(f"suite/Masters/{name}")
                for name in sorted(os.listdir(self.server / "suite/Masters"))}

    def bytes_of(self, path):
        return (self.server / path).read_bytes()

    def accepted(self, *numbers):
        """The masters as they are once these pages are accepted."""
        outputs = {f"P{n}.html": (self.outputs / f"P{n}.html").read_bytes() for n in numbers}
        return {**self.before, **outputs}

    def decisions(self):
        lines = (self.work / "r/decisions.jsonl").read_text().splitlines()
        return {os.path.basename(line["path"])[:-5]: (line["fix"], line.get("note", ""))
                for line in map(json.loads, lines)}

    def test_from_the_rarest_change_to_new_masters(self):
        self.before = self.masters()
        with self.review() as terminal:
            modes = terminal.modes()
            terminal.wait_for("Group 1 of 3", "0 of 7 pairs decided", "missing from the same folder")
            terminal.press("a", "Cannot be accepted: there is nothing to accept")
            terminal.press("rlost\n", "Group 2 of 3", "only here: `110` \u2192 `-1`", "It is in group 3, too")
            terminal.press("r", "Note (Enter: none")
            terminal.press("no \u0141\u00e1ss\x7f\x7f\x7f total\n", "Group 3 of 3",
                           "6 pairs, same change: `15.20` \u2192 `16.20`",
                           "for example ../suite/Masters/P0.html", "fault   ../suite/Masters/P1.html")
            shown = terminal.press("a", "Summary", "5 masters to accept", "2 faults:",
                                   "P1.html: no \u0141 total", "A.html: lost", "accepted: 5 pairs")
            self.assertNotIn("not decided", shown)
            self.assertEqual(self.masters(), self.before)
            terminal.press("y", "Accepted 5 outputs", "orvdiff undo", "2 faults:")
            self.assertEqual(terminal.status(), 1)
            self.assertTrue(terminal.raw.startswith(b"\033[?1049h"))
        self.assertEqual(self.masters(), self.accepted(0, 2, 3, 4, 5))
        self.assertEqual(self.decisions()["P1"], ("fault", "no \u0141 total"))
        self.assertEqual(len(self.verify().lines("differs", "missing")), 2)
        with self.review() as terminal:
            terminal.wait_for("5 masters accepted already", "b:back")
            self.assertNotIn("y:accept", terminal.text())
            terminal.press("q")
            self.assertEqual(terminal.status(), 1)

    def test_goes_on_where_it_stopped(self):
        rows = [  # keys, what the next review shows first, decisions
            ("r\n", "Group 2 of 3", {"A": ("fault", "")}),
            ("s", "Group 2 of 3", {"A": ("skip", "")}),
            (RIGHT + "a", "Group 1 of 3", {"P1": ("skip", "")}),  # which waits for its footer
            (RIGHT + RIGHT + "r\n" + "a", "Group 1 of 3", {f"P{n}": ("fault", "") for n in range(6)}),
            (RIGHT + "aa", "Group 1 of 3", {f"P{n}": ("accept", "") for n in range(6)}),
            (RIGHT + RIGHT + "a", "Group 1 of 3", {**{f"P{n}": ("accept", "") for n in (0, 2, 3, 4, 5)},
                                                   "P1": ("skip", "")}),
            (RIGHT + RIGHT + "psasga", "Group 1 of 3",
             {"P0": ("skip", ""), "P1": ("accept", ""), "P2": ("skip", ""), "P3": ("accept", ""),
              "P4": ("accept", ""), "P5": ("accept", "")}),
            (RIGHT + RIGHT + "pagr\n", "Group 1 of 3",
             {"P0": ("accept", ""), **{f"P{n}": ("fault", "") for n in range(1, 6)}}),
            ("r\nuuu", "Group 1 of 3", {}),
        ]
        for keys, shown, decisions in rows:
            with self.subTest(keys):
                path = self.work / "r/decisions.jsonl"
                path.unlink(missing_ok=True)
                with self.review() as terminal:
                    terminal.wait_for(KEYS)
                    terminal.press(keys)
                    self.wait_until(lambda: path.exists() and self.decisions() == decisions)
                    terminal.send(signal.SIGTERM)
                    self.assertEqual(terminal.status(), 143)
                with self.review() as terminal:
                    terminal.wait_for(shown)

    def test_what_keys_show(self):
        self.before = self.masters()
        viewer = os.fsdecode(self.write("bin/viewer", '#!/bin/sh\nshift; cat "$@" > shown; '
                                                      'printf "\\n%s" "$@" >> shown\n'))
        os.chmod(viewer, 0o755)
        with self.review(columns=100, NO_COLOR="1", ORVDIFF_VIEWER=f"{viewer} first") as terminal:
            terminal.wait_for(KEYS, "unified")
            terminal.press("o", "A.html was not there")
            terminal.press(RIGHT, "<td\u27e8IdAttribute\u27e9>110</td>\n" + " " * 23 + "^^^")
            terminal.press("d", "\u2502 1 + <td\u27e8IdAttribute\u27e9>-1</td>", "side by side")
            terminal.press("d", "1   - <td>110</td>", "normalised")
            terminal.press("e", "What the rules of html mask", "IdAttribute", "any other key: back")
            terminal.press("\n", "Group 2 of 3")
            terminal.press("?", "undo the last decision")
            terminal.press(ESCAPE, "Group 2 of 3")
            terminal.press("/p4.HTML\n", "Group 3, pair 5 of 6")
            terminal.press("g", "Group 3 of 3")
            terminal.press("/nowhere\n", 'no group, name or change with "nowhere"')
            terminal.press("/\n" + DOWN + END, KEYS)
            terminal.press("\033[200~aaqqyy\033[201~", "pasted text is not taken for keys")
            output = self.outputs / "P0.html"
            changed = output.read_bytes()
            output.unlink()
            terminal.press("o", "Group 3 of 3")
            self.wait_until(lambda: (self.work / "shown").exists() and (self.work / "shown").read_bytes().endswith(b"P0.html"))
            shown = (self.work / "shown").read_bytes()
            self.assertTrue(shown.startswith(self.bytes_of("suite/Masters/P0.html") + changed))
            copy = shown.splitlines()[-1]
            self.assertTrue(os.path.exists(copy), copy)
            terminal.press("qq")
            self.assertEqual(terminal.status(), 1)
        self.assertFalse(os.path.exists(copy))
        self.assertNotRegex(terminal.raw, rb"\x1b\[[\d;]*[1-9]m")
        self.assertEqual(self.masters(), self.before)

    def test_masters_only_as_they_were_reviewed(self):
        self.before = self.masters()
        with self.review() as terminal:
            terminal.wait_for(KEYS)
            terminal.press(RIGHT + RIGHT + "a", "Group 1 of 3")
            terminal.press("q", "5 masters to accept")
            self.write("suite/Masters/P2.html", "just fixed")
            (self.outputs / "P3.html").unlink()  # the record has it
            output = self.outputs / "P4.html"
            output.write_bytes(output.read_bytes() + b"newer")
            self.before["P2.html"] = b"just fixed"
            terminal.press("y", "Left as they are:", "P2.html: ", "Accepted 4 outputs")
            self.assertEqual(terminal.status(), 1)
        self.assertIn(b"16.20 3", self.masters()["P3.html"])
        self.assertNotIn(b"newer", self.masters()["P4.html"])
        self.assertEqual(self.masters()["P2.html"], b"just fixed")

    def test_eager_writes_and_takes_back_at_once(self):
        self.before = self.masters()
        with self.review("--eager") as terminal:
            terminal.wait_for(KEYS)
            terminal.press(RIGHT + RIGHT + "a", "5 masters written (u: undo)", "Group 1 of 3")
            self.assertEqual(self.masters(), self.accepted(0, 2, 3, 4, 5))
            terminal.press("u", "the last decision is taken back", "Group 3 of 3")
            self.assertEqual(self.masters(), self.before)
            terminal.press("pa", "1 master written", "pair 2 of 6")
            self.assertEqual(self.masters(), self.accepted(0))
            terminal.press("qq")
            self.assertEqual(terminal.status(), 1)

        with self.review("--eager", "--journal", "none") as terminal:
            terminal.wait_for(KEYS)
            terminal.press(RIGHT + RIGHT + "a", "4 masters written")
            terminal.press("u", "not undone: masters were written, and no journal is kept")
        self.assertEqual(self.masters(), self.accepted(0, 2, 3, 4, 5))

    def test_decisions_are_a_list_to_accept(self):
        self.before = self.masters()
        with self.review() as terminal:
            terminal.wait_for(KEYS)
            terminal.press("r\n" + RIGHT + "aqq")
            terminal.status()
        self.expect(self.run_program("accept", "--from", "r", "--list", "r/decisions.jsonl", "-y"), 0,
                    "Accepted 5 outputs")
        self.assertEqual(self.masters(), self.accepted(0, 2, 3, 4, 5))

    def test_nothing_is_accepted_unseen(self):
        self.report("P0", "<p>same</p>\n" * 9, "".join(f"<p>new {n}</p>\n" for n in range(9)))
        self.report("K", "known 1", "known 2")
        self.write("suite/orvdiff.toml", 'version = 1\n[[known]]\npair = "Masters/K.html"\nverdict = "differs"\n'
                                         'why = "planned"\nuntil = 2999-12-31\n')
        (self.work / "r/pairs.jsonl").unlink()
        self.verify("--record", "k")
        path = self.work / "k/pairs.jsonl"
        pairs = [json.loads(line) for line in path.read_text().splitlines()]
        for pair in pairs:
            if "P0" in pair["master"]:
                pair["difference"].update(hunks=[])
        path.write_text("".join(json.dumps(pair) + "\n" for pair in pairs))
        with Terminal([PROGRAM, "review", "k"], self.work, columns=120, ORVDIFF_VIEWER="true") as terminal:
            terminal.wait_for(KEYS, "0 of 7 pairs decided")  # K is none of them
            terminal.press("/P0.html\n", "The record keeps no place that shows it")
            terminal.press("a", "Not seen yet: open the files (o)")
            terminal.press("o")
            terminal.press("a", "accepted: ")

    def test_any_size(self):
        for rows, columns in ((24, 80), (60, 200), (5, 20), (1, 1)):
            with self.subTest((rows, columns)), self.review() as terminal:
                terminal.wait_for(KEYS)
                terminal.resize(rows, columns)
                terminal.press("\033[C\033[C", *(["a:accept r:fault"[:columns - 1]] if rows > 1 else []))
                if columns >= 80:
                    terminal.wait_for("unified\n" + KEYS)
                terminal.send(signal.SIGTERM)
                self.assertEqual(terminal.status(), 143)

    def test_the_terminal_comes_back(self):
        endings = [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 143),
                   (signal.SIGSEGV, -signal.SIGSEGV), (signal.SIGQUIT, -signal.SIGQUIT)]
        for number, status in endings:
            with self.subTest(number), self.review() as terminal:
                modes = terminal.modes()
                terminal.wait_for(KEYS)
                self.assertNotEqual(terminal.modes(), modes)
                terminal.press("s", "Group 2 of 3")
                terminal.send(number)
                self.assertEqual(terminal.status(), status)
                self.assertIn(b"\033[?1049l", terminal.raw)
                self.assertEqual(self.decisions(), {"A": ("skip", "")})
                (self.work / "r/decisions.jsonl").unlink()
        with self.review() as terminal:
            terminal.wait_for(KEYS)
            os.close(terminal.descriptor)  # the line is cut
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(terminal.process, 0)[1]), 143)
            terminal.process, terminal.descriptor = 0, os.open("/dev/null", os.O_RDONLY)

    def test_suspended_and_resumed(self):
        with Terminal(["sh", "-i"], self.work, PS1="$ ") as terminal:
            terminal.wait_for("$")
            modes = terminal.modes()
            terminal.press(f"{PROGRAM} review r\n", KEYS)
            terminal.press("\x1a", "Stopped")
            self.assertEqual(terminal.modes(), modes)
            terminal.press("fg\n", KEYS, "Group 1 of 3")
            terminal.press("s", "Group 2 of 3")
            terminal.press("qq", "Go on with: orvdiff review r")
            terminal.press("exit\n")
            terminal.status()

    def test_refusals(self):
        self.expect(self.run_program("review", "r"), 2,
                    err="orvdiff: review needs a terminal for its standard input and output; ...")
        with self.review() as first:
            first.wait_for(KEYS)
            with self.review() as second:
                second.wait_for("someone else is reviewing")
                self.assertEqual(second.status(), 2)
        path = self.work / "r/decisions.jsonl"
        path.write_text('{"fix":"fault","path":"other"}\n{"fix":"accep","path":"x"}\n')
        with self.review(columns=200) as terminal:
            terminal.wait_for("decisions.jsonl, line 2 is not a decision")
            self.assertEqual(terminal.status(), 2)
        with self.review() as terminal:
            path.unlink()
            terminal.wait_for(KEYS)
            terminal.press(RIGHT + "s", "1 of 7 pairs decided")
        kept = path.read_text()
        for old, new, count in (('"report"', '"for people"', 1),
                                ('"outputHash":"', '"outputHash":"0', 0)):  # of other contents
            path.write_text(kept.replace(old, new))
            with self.review() as terminal:
                terminal.wait_for(KEYS, f"{count} of 7 pairs decided")
        path.write_text('{"fix":"fault","path":"other"}\n')  # about something else: it stays
        with self.review() as terminal:
            terminal.wait_for(KEYS)
            terminal.press("s", "Group 2 of 3")
        self.assertEqual(self.decisions(), {"other"[:-5]: ("fault", ""), "A": ("skip", "")})

    def test_nothing_to_review(self):
        for number in range(6):
            self.report(f"P{number}", "same", "same")
        self.report("A", "same", "same")
        self.assertEqual(self.verify("--record", "passed").status, 0)
        run = json.loads((self.work / "passed/run.json").read_text())
        for is_complete, status in ((True, 0), (False, 1)):
            (self.work / "passed/run.json").write_text(json.dumps({**run, "complete": is_complete}))
            with Terminal([PROGRAM, "review", "passed"], self.work) as terminal:
                terminal.wait_for("Nothing to review", *([] if is_complete else ["not come to its end"]))
                self.assertEqual(terminal.status(), status)

    def test_hostile_texts_are_only_shown(self):
        hostile = "\033]0;title\a\033[2J\u202egnp.exe \u4e2d\u6587 \\"
        name = "N\033[31m\u202e\u4e2d"
        self.report(name, "a", hostile)
        self.verify("--record", "h", locations=[f"../suite/{name}.xml"])
        with Terminal([PROGRAM, "review", "h"], self.work) as terminal:
            terminal.wait_for("Group 1 of 1", "\\x1B]0;title\\x07\\x1B[2J\\u{202E}gnp.exe")
            terminal.press("r", "Note")
            terminal.press(f"{hostile}\033[200~\033\u202e\033[201~")
            terminal.press("\n", "Summary", "1 fault:", "N\\x1B[31m\\u{202E}")
            terminal.press("q")
            terminal.status()
        for bytes_of_file in ("\033]0;", "\u202e", "\033[2J\u202e", "\033[31m\u202e"):
            self.assertNotIn(bytes_of_file.encode(), terminal.raw)
