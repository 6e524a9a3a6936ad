#!/usr/bin/env bash
# Verifies a suite in shards with GNU parallel, and merges their records; ends with the status that
# one run of all would have had.
#
#   parallel.sh SHARDS RECORDS [option of "orvdiff verify"]... LOCATION...
#
# Run it from the suite's working folder. RECORDS is a new folder. ORVDIFF_HOSTS names the machines
# for ssh, as in "build1,build2"; default: this one. Folder and records must be the same there.
# Each machine verifies one shard at a time, on all its cores: two or three times as many shards as
# machines keep all of them busy to the end.
set -euo pipefail
shards=$1 records=$2
shift 2
mkdir "$records"
records=$(cd "$records" && pwd)

# Its status counts the shards that did not pass. Merging tells what they found, and if one is
# missing.
seq "$shards" | parallel -q -I @shard@ --will-cite --jobs 1 --keep-order \
  --sshlogin "${ORVDIFF_HOSTS:-:}" --workdir "$PWD" \
  orvdiff verify --shard "@shard@/$shards" --record "$records/shard-@shard@" "$@" || true
exec orvdiff merge "$records"/shard-*/ -o "$records/merged"
