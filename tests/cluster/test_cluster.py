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

    def check_jobs(self, verify, merge, shard, shards):
        """Runs lines of shell as jobs that find their shard in these variables: one after the
        other, each in a checkout of its own with only what was handed on."""
        kept, records = self.checkout.parent / "kept", self.checkout / "records"
        statuses = []
        for number in range(1, SHARDS + 1):
            environment = {**self.environment, shard: str(number), shards: str(SHARDS)}
            statuses.append(subprocess.run(verify, shell=True, cwd=self.checkout, check=False,
                                           capture_output=True, env=environment).returncode)
            for path in records.rglob("[!.]*"):  # artefacts: no empty folders, no hidden files
                if path.is_file():
                    target = kept / path.relative_to(self.checkout)
                    target.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copy(path, target)
            shutil.rmtree(records)
        self.assertEqual(set(statuses), {0, 1})
        shutil.copytree(kept, self.checkout, dirs_exist_ok=True)
        self.run_in(self.checkout, merge, 1)
        self.assert_is_whole(self.checkout / "record", self.checkout, "-C", "server/work")
        shutil.rmtree(self.checkout / "record")
        shutil.rmtree(records / "shard-2")
        self.run_in(self.checkout, merge, 2)

    def test_github(self):
        jobs = yaml.safe_load((RECIPES / "github-workflow.yml").read_text())["jobs"]
        self.assertEqual(jobs["verify"]["strategy"]["matrix"]["shard"], [*range(1, SHARDS + 1)])
        self.check_jobs(*("\n".join(step.get("run", "") for step in jobs[job]["steps"])
                          for job in ("verify", "merge")), "SHARD", "SHARDS")

    def test_gitlab(self):
        jobs = yaml.safe_load((RECIPES / "gitlab-ci.yml").read_text())
        self.assertEqual(jobs["verify"]["parallel"], SHARDS)
        self.check_jobs(*("\n".join(jobs[job]["script"]) for job in ("verify", "merge")),
                        "CI_NODE_INDEX", "CI_NODE_TOTAL")

    def test_jenkins(self):
        text = (RECIPES / "Jenkinsfile").read_text()
        self.assertIn("values " + ", ".join(f"'{i + 1}'" for i in range(SHARDS)), text)
        verify, = re.findall(r"\bsh '''(.*?)'''", text, re.DOTALL)
        merge = re.findall(r"\bsh '([^']+)'", text)[-1]
        self.check_jobs("set -e\n" + verify, merge, "SHARD", "SHARDS")


if __name__ == "__main__":
    unittest.main()
