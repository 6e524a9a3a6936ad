"""The recipes of examples/cluster, run on the demo suite as their readers would run them: the record
that they merge is the one of a single run, times aside."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import yaml

SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
RECIPES = SOURCE / "examples/cluster"
SHARDS = 4


def needs(*tools):
    """Skips a test without these tools, except where all of them have to be there."""
    path = f"{os.environ['PATH']}:/usr/sbin"
    there = all(shutil.which(tool, path=path) for tool in tools)
    return unittest.skipUnless(there or "ORVDIFF_REQUIRE_TOOLS" in os.environ, f"needs {tools}")


class Recipes(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="orvdiff test "))
        self.addCleanup(shutil.rmtree, folder)
        self.checkout = shutil.copytree(SOURCE / "examples/demo", folder / "demo")
        self.work = self.checkout / "server/work"
        self.environment = {**os.environ, "PATH": f"{os.environ['ORVDIFF_BIN_DIR']}:"
                                                  f"{os.environ['PATH']}"}
        self.whole = folder / "whole"

    def run_in(self, folder, command, status, **variables):
        """Runs a command, or lines of shell."""
        result = subprocess.run(command, cwd=folder, shell=isinstance(command, str), text=True,
                                capture_output=True, check=False, timeout=120,
                                env={**self.environment, **variables})
        self.assertEqual(result.returncode, status, result.stdout + result.stderr)
        return result.stdout

    def assert_is_whole(self, record, folder, *options):
        self.run_in(folder, ["orvdiff", "verify", *options, "--record", self.whole, "../suite"], 1)
        self.assertEqual(self.content(record), self.content(self.whole))

    def content(self, record):
        times = rb'"(seconds|cpuSeconds|start|end)": ?("[^"]*"|[-+.e0-9]+)'
        return {path.relative_to(record): re.sub(times, b"", path.read_bytes())
                for path in record.rglob("*") if path.is_file() and path.name != ".lock"}

    @needs("parallel")
    def test_gnu_parallel(self):
        self.run_in(self.work, [RECIPES / "parallel.sh", str(SHARDS), "records", "../suite"], 1)
        self.assert_is_whole(self.work / "records/merged", self.work)

    @needs("slurmctld", "slurmd", "munged")
    def test_slurm(self):
        said = self.run_in(self.work, [
            "timeout", "90",  # with a signal that stops the cluster, too
            RECIPES / "slurm/one_node_cluster.sh", RECIPES / "slurm/submit.sh", str(SHARDS),
            "records", "../suite"], 1)
        self.assertIn("11 reports", said)
        self.assert_is_whole(self.work / "records/merged", self.work)

    def continuous_integration(self, verify, merge, variables):
        """One job after the other, each in a checkout of its own with only what was handed on."""
        kept = self.checkout.parent / "kept"
        statuses = []
        for shard in range(1, SHARDS + 1):
            statuses.append(subprocess.run(
                verify, shell=True, cwd=self.checkout, capture_output=True, check=False,
                env={**self.environment, **variables(str(shard))}).returncode)
            # Artefacts are files: empty folders and hidden files stay behind.
            for path in (self.checkout / "records").rglob("[!.]*"):
                if path.is_file():
                    target = kept / path.relative_to(self.checkout)
                    target.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy(path, target)
            shutil.rmtree(self.checkout / "records")
        self.assertEqual(sorted(statuses)[0::SHARDS - 1], [0, 1])
        shutil.copytree(kept, self.checkout, dirs_exist_ok=True)
        self.run_in(self.checkout, merge, 1)
        self.assert_is_whole(self.checkout / "record", self.checkout, "-C", "server/work")
        shutil.rmtree(self.checkout / "record")
        shutil.rmtree(self.checkout / "records/shard-2")
        self.run_in(self.checkout, merge, 2)

    def test_github(self):
        jobs = yaml.safe_load((RECIPES / "github-workflow.yml").read_text())["jobs"]
        verify, merge = jobs["verify"], jobs["merge"]
        self.assertEqual(verify["env"], {"SHARD": "${{ matrix.shard }}",
                                         "SHARDS": "${{ strategy.job-total }}"})
        self.assertEqual(verify["strategy"]["matrix"]["shard"], list(range(1, SHARDS + 1)))
        self.assertIn(merge["needs"], jobs)
        commands = ["\n".join(step["run"] for step in job["steps"] if "run" in step)
                    for job in (verify, merge)]
        self.continuous_integration(
            *commands, lambda shard: {"SHARD": shard, "SHARDS": str(SHARDS)})

    def test_gitlab(self):
        jobs = yaml.safe_load((RECIPES / "gitlab-ci.yml").read_text())
        self.assertEqual(jobs["verify"]["parallel"], SHARDS)
        self.assertEqual([jobs[job]["stage"] for job in ("verify", "merge")], jobs["stages"])
        self.continuous_integration(
            *("\n".join(jobs[job]["script"]) for job in ("verify", "merge")),
            lambda shard: {"CI_NODE_INDEX": shard, "CI_NODE_TOTAL": str(SHARDS)})

    def test_jenkins(self):
        text = (RECIPES / "Jenkinsfile").read_text()
        self.assertIn(f"SHARDS = '{SHARDS}'", text)
        self.assertIn("values " + ", ".join(f"'{i + 1}'" for i in range(SHARDS)), text)
        verify, *rest = re.findall(r"\bsh '''(.*?)'''", text, re.DOTALL)
        clean, merge = re.findall(r"\bsh '([^']+)'", text)
        self.assertEqual((rest, clean), ([], "rm -rf records record"))
        self.continuous_integration("set -e\n" + verify, merge,
                                    lambda shard: {"SHARD": shard, "SHARDS": str(SHARDS)})


if __name__ == "__main__":
    unittest.main()
