"""The tools that make and check the documents."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(os.environ.get("ORVDIFF_SOURCE_DIR", pathlib.Path(__file__).parents[2]))
sys.dont_write_bytecode = True
sys.path.append(str(ROOT / "tools"))

import github_markdown  # noqa: E402

HEADER = """class OrvDiffNewEngine {
 public:
  explicit OrvDiffNewEngine(const char* subFolder);

  /// Of both,
  /// that is.
  int first();
  int second();  ///< not a comment of its own

  struct Inner {
    /// Of one.
    int third;
  };
};
"""


class Documents(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)

    def test_links_that_lead_nowhere_are_named(self):
        (self.folder / "sub dir").mkdir()
        (self.folder / "sub dir/b.html").write_text('<h1 id="here">b</h1><a href="../a.html#top">up</a>')
        good = ["sub%20dir/b.html#here", "sub%20dir", "#place", "a.html", "https://example.com/x", "mailto:a@b", "#"]
        bad = ["b.html", "sub%20dir/b.html#there", "#nowhere", "../", "/etc/passwd"]
        links = "".join(f'<a href="{link}">x</a>' for link in good + bad) + '<img src="no.png"><p id="place">'
        (self.folder / "a.html").write_text(links)
        run = subprocess.run([ROOT / "tools/check_links", self.folder], capture_output=True, text=True)
        self.assertEqual([line.split(": ")[1] for line in run.stdout.splitlines()], [*bad, "no.png"])
        self.assertEqual(run.returncode, 1)

    @unittest.skipUnless(shutil.which("cmark-gfm"), "needs cmark-gfm")
    def test_headings_have_the_ids_of_github(self):
        page = github_markdown.to_html("# `a-b`: C_d & *e*!\n## Twice\n## Twice\n## \u00c4\u00df 1.2\n")
        self.assertRegex(page, 'id="a-b-c_d--e".*\n.*id="twice".*\n.*id="twice-1".*\n.*id="\u00e4\u00df-12"')

    def test_doxygen_is_told_what_a_comment_is_about(self):
        (self.folder / "a.h").write_text(HEADER)
        run = subprocess.run([ROOT / "tools/doxygen_input", self.folder / "a.h"], capture_output=True, text=True)
        self.assertIn("///@{\n  /// Of both,\n", run.stdout)
        self.assertIn("second();  ///< not a comment of its own\n///@}\n", run.stdout)
        self.assertIn("///@{\n    /// Of one.\n    int third;\n///@}\n  };", run.stdout)
        self.assertRegex(run.stdout, r"/// `subFolder` is one .*\n.*\n  explicit OrvDiffNewEngine")
        self.assertEqual(run.stdout.count("@{"), run.stdout.count("@}"))
