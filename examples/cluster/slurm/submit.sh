#!/usr/bin/env bash
# Verifies a suite on a Slurm cluster: a job array with one task per shard, and a job behind it that
# merges the records. Waits for that job and ends with its status, which is the whole run's.
#
#   submit.sh SHARDS RECORDS [option of "orvdiff verify"]... LOCATION...
#
# Run it from the suite's working folder. RECORDS is a new folder; both must lie on a file system
# that all nodes share. Options for all jobs: SBATCH_PARTITION, SBATCH_ACCOUNT and so on.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
shards=$1 records=$2
shift 2
mkdir "$records" "$records/log"
records=$(cd "$records" && pwd)

array=$(sbatch --parsable --array="1-$shards" --output="$records/log/shard-%a" \
  "$here/shard.sbatch" "$shards" "$records" "$@")
# afterany: also when tasks failed, as those with differences do. Merging misses none in silence.
status=0
sbatch --wait --dependency="afterany:${array%;*}" --output="$records/log/merge" \
  "$here/merge.sbatch" "$records" || status=$?
cat "$records/log/merge"
exit "$status"
