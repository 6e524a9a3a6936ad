"""The page on formats, held to the program and to the example that it quotes."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

BIN = pathlib.Path(os.environ["ORVDIFF_BIN_DIR"])
SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
PAGE = (SOURCE / "docs/formats.md").read_text()


class FormatsPage(unittest.TestCase):
    def test_table_says_what_the_program_says(self):
        listed = subprocess.run([BIN / "orvdiff", "formats"], check=True, capture_output=True,
                                text=True).stdout.splitlines()[1:]
        rows = re.findall(r"^\| `(.*?)` \| (.*?) \| `(.*?)` \| (.*?) \|", PAGE, re.MULTILINE)
        self.assertEqual([re.sub("^--.*", "given by the host", folder.strip("`"))
                          for _, folder, _, _ in rows],
                         [re.sub("^--.*", "given by the host", re.split("  +", line)[1])
                          for line in listed])
        self.assertEqual([[name, masters, how] for name, _, masters, how in rows],
                         [re.split("  +", line)[:1] + re.split("  +", line)[2:]
                          for line in listed])

    def test_quoted_code_is_the_example(self):
        blocks = re.findall(r"```cpp\n(.*?)```", PAGE, re.DOTALL)
        self.assertEqual(len(blocks), 1)
        self.assertIn(blocks[0], (SOURCE / "examples/custom_engine.cpp").read_text())

    def test_example_verifies_server_logs(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in {"suite/Masters/ServerLog/R_1.log": "07:00:00 up\r\n",
                               "suite/Masters/ServerLog/R_2.log": "07:00:01 up\n",
                               "webcontent/bi/serverLog/R_1.log": "09:30:00 up\n",
                               "webcontent/bi/serverLog/R_2.log": "09:30:01 down\n"}.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, newline="")
            (root / "work").mkdir()
            run = subprocess.run([BIN / "orvdiff_custom_engine", "../suite/R.xml"],
                                 cwd=root / "work", check=True, capture_output=True, text=True)
        self.assertEqual(run.stdout, "right  ../webcontent/bi/serverLog/R_1.log\n"
                                     "WRONG  ../webcontent/bi/serverLog/R_2.log\n")


if __name__ == "__main__":
    unittest.main()
