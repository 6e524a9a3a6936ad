"""Completes command lines in the shells that people use, with the completion that is installed."""

import os
import pathlib
import pty
import re
import select
import shutil
import subprocess
import time
import unittest

from suite import PROGRAM, SuiteTest

COMPLETIONS = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"]) / "cli/completions"
SETUP = {
    "bash": (["bash", "--norc", "--noprofile", "-i"],
             "PS1=; . /usr/share/bash-completion/bash_completion; . COMPLETIONS/orvdiff.bash; "
             "bind -x '\"\\C-x\": echo \"<$READLINE_LINE>\"'\n"),
    "zsh": (["zsh", "-f", "-i"],
            "PS1=; fpath=(COMPLETIONS $fpath); autoload -Uz compinit; compinit -u -D; unsetopt auto_param_slash; "
            "show() { print -r -- \"<$BUFFER>\" }; zle -N show; bindkey '^X' show\n")}

# What is typed, and what the line is when TAB has completed it.
ROWS = [
    ("orvdiff ver", "orvdiff verify "),
    ("orvdiff verify --form", "orvdiff verify --format "),
    ("orvdiff verify --color=al", "orvdiff verify --color=always "),
    ("orvdiff -q verify --color ne", "orvdiff -q verify --color never "),
    ("orvdiff verify -f html,xhtml-p", "orvdiff verify -f html,xhtml-png "),
    ("orvdiff verify --strict=orphans,vac", "orvdiff verify --strict=orphans,vacuous "),
    ("orvdiff report --annotations gith", "orvdiff report --annotations github "),
    ("orvdiff diff html-p", "orvdiff diff html-png "),
    ("orvdiff help form", "orvdiff help formats "),
    ("orvdiff verify ../suite/sal", "orvdiff verify ../suite/sales/"),
    ("orvdiff verify ../suite/sales/Rev", "orvdiff verify ../suite/sales/Revenue.xml "),
    ("orvdiff verify ../suite/sales/Not", "orvdiff verify ../suite/sales/Notes\\ of\\ us.xml "),
    ("orvdiff verify ../suite/sales/Notes\\ o", "orvdiff verify ../suite/sales/Notes\\ of\\ us.xml "),
    ("orvdiff -C .. verify suite/sales/Rev", "orvdiff -C .. verify suite/sales/Revenue.xml "),
    ("orvdiff verify ../loo", "orvdiff verify ../loo"),  # no report: no Masters there
    ("orvdiff show lastn", "orvdiff show lastnight/"),
    ("orvdiff verify --summary ../loo", "orvdiff verify --summary ../loose.txt "),
    ("orvdiff verify -- --form", "orvdiff verify -- --form"),
    ("orvdiff -qC .. verify suite/sales/Rev", "orvdiff -qC .. verify suite/sales/Revenue.xml "),
]


class Shell:
    """An interactive shell at a terminal of its own."""

    def __init__(self, name, folder, environment):
        command, setup = SETUP[name]
        self.terminal, other = pty.openpty()
        self.process = subprocess.Popen(command, cwd=folder, stdin=other, stdout=other, stderr=other,
                                        env=environment, start_new_session=True)
        os.close(other)
        self.send(setup.replace("COMPLETIONS", str(COMPLETIONS)) + "echo ready''.\n")
        self.wait_for(rb"ready\.")

    def send(self, text):
        os.write(self.terminal, text.encode())

    def wait_for(self, pattern):
        output, deadline = b"", time.monotonic() + 60
        while time.monotonic() < deadline:
            if select.select([self.terminal], [], [], 1)[0]:
                output += os.read(self.terminal, 4096)
                match = re.search(pattern, output, re.DOTALL)
                if match:
                    return match
        raise AssertionError(f"{pattern} is not in {output}")

    def completed(self, line):
        self.send(line + "\t")
        self.send("\x18")
        result = self.wait_for(rb"<(orvdiff[^>]*)>")[1].decode()
        self.send("\x15")  # clears the line
        return result

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.terminal)


class Completion(SuiteTest):
    def setUp(self):
        super().setUp()
        self.report("Revenue", "x", "x", folder="suite/sales")
        self.write("suite/sales/Notes of us.xml")
        self.write("loose.txt")
        (self.work / "lastnight").mkdir()
        self.environment = {**os.environ, "HOME": str(self.server), "TERM": "dumb", "LC_ALL": "C",
                            "PATH": f"{os.path.dirname(PROGRAM)}:{os.environ['PATH']}"}

    def requires(self, shell):
        if shutil.which(shell) is None:
            self.assertNotIn("ORVDIFF_REQUIRE_TOOLS", os.environ)
            self.skipTest(f"{shell} is not installed")

    def complete_in(self, name):
        self.requires(name)
        shell = Shell(name, self.work, self.environment)
        self.addCleanup(shell.close)
        for typed, completed in ROWS:
            with self.subTest(typed):
                actual = shell.completed(typed)
                # Behind a path, zsh adds its blank only if it finds the file from where it runs.
                self.assertEqual(actual, completed if name != "zsh" else completed[:len(actual)])
                self.assertGreaterEqual(len(actual), len(completed.rstrip()))

    def test_bash(self):
        self.complete_in("bash")

    def test_zsh(self):
        self.complete_in("zsh")

    def test_groups_of_the_last_record_or_of_the_one_that_is_named(self):
        self.report("Budget", "<p>1</p>", "<p>2</p>")
        self.verify("--record", "night")
        for words in (["--group", ""], ["--from", "night", "--group", ""]):
            self.assertRegex(self.run_program("__complete", "accept", *words).out, r"^[0-9a-f]{8}\t1 pair, text\n$")

    def test_fish(self):
        self.requires("fish")
        for typed, completed in ROWS:
            with self.subTest(typed):
                proposed = subprocess.run(
                    ["fish", "--no-config", "-c", f"source {COMPLETIONS}/orvdiff.fish; complete -C '{typed}'"],
                    cwd=self.work, env=self.environment, stdout=subprocess.PIPE, encoding="utf-8").stdout
                words = [line.split("\t")[0] for line in proposed.splitlines()]
                last = re.split(r"(?<!\\) ", completed.rstrip(" "))[-1]
                self.assertEqual(words, [last.replace("\\", "")] if completed != typed else [])


if __name__ == "__main__":
    unittest.main()
