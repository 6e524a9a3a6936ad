"""What the comparison scripts share."""

import sys
import unittest

from running import SCRIPTS, ScriptTest

sys.path.insert(0, str(SCRIPTS))
from comparison import excerpts, same_bytes  # noqa: E402


class ComparisonTest(ScriptTest):
    def test_same_bytes(self):
        large = bytes(3 << 20)
        rows = [
            (b"", b"", True),
            (b"", b"a", False),
            (large, large, True),
            (large + b"a", large + b"b", False),
            (large, large + b"a", False),
        ]
        for index, (master, actual, expected) in enumerate(rows):
            with self.subTest(index):
                paths = [self.folder / "master", self.folder / "actual"]
                for path, content in zip(paths, (master, actual)):
                    path.write_bytes(content)
                self.assertEqual(expected, same_bytes(*paths))

    def test_excerpts(self):
        rows = [
            ("", "", ("", "")),
            ("a\x1b[2Jb", "a\tb", ("a\\x1b[2Jb", "a\\tb")),
            ("x" * 100, "x" * 99, ("..." + "x" * 25, "..." + "x" * 24)),
            ("y" + "x" * 72, "x", ("y" + "x" * 71 + "...", "x")),
        ]
        for master, actual, expected in rows:
            with self.subTest(master=master, actual=actual):
                self.assertEqual(expected, excerpts(master, actual))


if __name__ == "__main__":
    unittest.main()
