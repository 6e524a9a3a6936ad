"""Shows that the layer check accepts what it should and rejects what breaks the layers."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(os.environ.get("ORVDIFF_SOURCE_DIR", pathlib.Path(__file__).parents[2]))

ACCEPTED = {
    "orvdiff/registry/A.h": "orvdiff/platform/B.h", "orvdiff/logs/A.cpp": "orvdiff/harness/B.h",
    "orvdiff/compare/A.cpp": "orvdiff/compare/B.h", "orvdiff/orvdiff.h": "orvdiff/formats/B.h",
    "orvdiff/platform/A.h": "orvdiff/orvdiff_export.h", "cli/A.cpp": "orvdiff/orvdiff.h",
    "orvdiff/compare/C.cpp": "orvdiff/compare/pattern/B.h", "cli/commands/A.cpp": "cli/record/B.h",
    "cli/system/A.cpp": "orvdiff/orvdiff.h", "orvdiff/bridges/A.cpp": "orvdiff/formats/B.h",
}
REJECTED = {
    "orvdiff/registry/A.h": "orvdiff/harness/B.h", "orvdiff/harness/A.h": "orvdiff/registry/B.h",
    "orvdiff/compare/A.cpp": "orvdiff/logs/B.h", "orvdiff/compare/B.cpp": "../engine/B.h",
    "orvdiff/engine/A.cpp": "orvdiff/formats/B.h", "orvdiff/formats/A.cpp": "cli/B.h",
    "orvdiff/formats/B.cpp": "orvdiff/orvdiff.h", "cli/record/A.cpp": "cli/workers/B.h",
    "orvdiff/compare/pattern/A.cpp": "orvdiff/compare/B.h", "cli/diff/A.cpp": "cli/workers/B.h",
    "orvdiff/formats/C.cpp": "orvdiff/bridges/B.h", "orvdiff/newcomer/A.cpp": "orvdiff/platform/B.h",
}



class CheckLayersTest(unittest.TestCase):
    def check(self, includes):
        """What the tool says of a tree whose files have these includes."""
        with tempfile.TemporaryDirectory() as root:
            for name, included in includes.items():
                path = pathlib.Path(root, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(f"#pragma once\n#include <string>\n#include \"{included}\"\n")
            return subprocess.run([sys.executable, ROOT / "tools/check_layers", root],
                                  capture_output=True, text=True)

    def test_accepts_rejects_and_names_the_line(self):
        result = self.check(ACCEPTED)
        self.assertEqual((result.returncode, result.stdout), (0, ""), result.stderr)
        result = self.check(REJECTED)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(sorted(line.split(": ")[0] for line in result.stdout.splitlines()),
                         sorted(f"{name}:3" for name in REJECTED))
