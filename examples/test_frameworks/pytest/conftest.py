"""Lets pytest test the outputs of reports, with the plugin that is installed with orvdiff.

From the working folder of the report server, with a copy of this file in it:

    pytest --orvdiff-verify=../suite              # verifies, and tests what was found
    pytest --orvdiff-verify=../suite -n 4 -k csv  # the same: of four processes, and only CSV
    pytest night                                  # a record that `orvdiff verify --record night` kept
"""

import pathlib
import shutil
import sys

program = shutil.which("orvdiff")
if program is None:
    raise RuntimeError("orvdiff is not installed, or not in a folder that PATH names")
sys.path.append(str(pathlib.Path(program).resolve().parents[1] / "share/orvdiff"))
pytest_plugins = ["pytest_orvdiff"]
