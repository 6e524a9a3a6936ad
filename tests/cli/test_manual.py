"""Holds manual pages, help texts and the parser to one another."""

import os
import pathlib
import re

from suite import SuiteTest

MANUAL = pathlib.Path(os.environ["ORVDIFF_BIN_DIR"]).parent / "share/man/man1"
PAGES = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"]) / "docs/man"
CELL = r" *((?:[^|\\]|\\.)*?) *"
ROW = re.compile(rf"^\|{CELL}\|{CELL}\|$", re.MULTILINE)


def spelled(text):
    """The options in the text of a page or of a help text, with the value's name if it has one."""
    return {name: value for name, value in re.findall(r"(--?[a-zA-Z][\w-]*)(?: ?(\[?=?[A-Z][A-Z/|]*\]?))?", text)}


def page_of(verb):
    return (PAGES / f"orvdiff{'-' if verb else ''}{verb}.1.md").read_text("utf-8")


class Manual(SuiteTest):
    def help_of(self, verb):
        return self.run_program(*verb.split(), "--help").out

    def options_in_help(self, verb):
        lines = re.findall(r"^  (-\S+(?: \S+)?)", self.help_of(verb), re.MULTILINE)
        return spelled("\n".join(line.split("  ")[0].replace(" not", "").replace(" requires:", "") for line in lines))

    def options_of_tables(self, verb):
        cells = [row[0] for row in ROW.findall(page_of(verb))]
        return spelled("\n".join(cell.replace("\\|", "|") for cell in cells if cell.startswith("`-")))

    def options_in_page(self, verb):
        """Those in the first columns of its tables, and those of a page that it refers to."""
        options = self.options_of_tables(verb)
        others = re.search(r"^Also takes the options of \[orvdiff-(\w+)\(1\)\]\S+( except .*)?", page_of(verb),
                           re.MULTILINE)
        for name, value in self.options_in_page(others[1]).items() if others else ():
            if f"`{name}`" not in (others[2] or ""):
                options.setdefault(name, value)
        return options

    def verbs(self):
        commands = self.help_of("").split("Commands:\n")[1]
        return re.findall(r"^  (\w+)", commands, re.MULTILINE)

    def test_each_option_is_in_help_page_and_completion(self):
        for verb in ["", *self.verbs()]:
            with self.subTest(verb):
                in_help, in_page = self.options_in_help(verb), self.options_in_page(verb)
                if verb:
                    del in_help["-h"], in_help["--help"]  # explained once for all
                self.assertEqual(set(in_help), set(in_page))
                renamed = {name: (value, in_page[name]) for name, value in in_help.items()
                           if value and in_page[name] not in ("", value)}
                self.assertEqual(renamed, {})
                completed = self.run_program("__complete", *verb.split(), "--").out
                common = set() if not verb else {"--directory", "--color", "--quiet", "--verbose"}
                self.assertEqual({line.split("\t")[0] for line in completed.splitlines()} - {"--help"},
                                 ({name for name in in_help if name.startswith("--")} | common) - {"--help"})

    def test_each_command_is_in_the_page_of_the_program(self):
        listed = re.findall(r"^\| \[orvdiff-(\w+)\(1\)\]", page_of(""), re.MULTILINE)
        self.assertEqual(listed, self.verbs())
        completed = self.run_program("__complete", "").out.splitlines()
        self.assertEqual([line.split("\t")[0] for line in completed], listed)

    def test_pages_link_to_what_there_is(self):
        for page in PAGES.glob("*.md"):
            for text, target in re.findall(r"\[([^\]]+)\]\(([^)]+)\)", page.read_text("utf-8")):
                with self.subTest(page.name, link=target):
                    self.assertTrue((PAGES / target.split("#")[0]).exists())

    def test_help_shows_the_page_with_all_options(self):
        if not (MANUAL / "orvdiff-verify.1.gz").exists():
            self.skipTest("the manual was not built")
        for verb in self.verbs():
            shown = self.run_program("help", verb, MANWIDTH="300").out
            self.assertIn(f"ORVDIFF-{verb.upper()}(1)", shown)
            for name, value in self.options_of_tables(verb).items():
                with self.subTest(verb, option=name):
                    self.assertRegex(shown, rf"(?m)^ +(-.*, )?{re.escape((name + ' ' + value).strip().replace(' [=', '[='))}")

    def test_help_shows_the_help_text_without_a_manual(self):
        self.assertIn("Usage: orvdiff verify", self.run_program("help", "verify", PATH="/nowhere").out)
        self.assertIn("Commands:", self.run_program("help", PATH="/nowhere").out)
        self.expect(self.run_program("help", "verfy"), 2, err='orvdiff: unknown command "verfy"...')
