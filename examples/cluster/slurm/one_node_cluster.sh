#!/usr/bin/env bash
# Starts a Slurm cluster of this machine alone, runs a command with it, and stops it again. For
# trying a job script out; nothing but the loopback address is listened on, nothing is kept.
#
#   one_node_cluster.sh COMMAND...
#
# Needs Debian's slurm-wlm and munge; uses no cgroups, so it runs in containers too.
set -euo pipefail
folder=$(mktemp -d)
daemons=()
command=

# within SECONDS COMMAND...: whether a command succeeds before the time is over
within() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.1
  done
}

no_jobs() { [ -z "$(squeue --noheader 2>/dev/null)" ]; }
node_is_idle() { [ "$(sinfo --noheader --format=%T 2>/dev/null)" = idle ]; }
has_ended() { ! kill -0 "$1" 2>/dev/null; }

stop() {
  local i
  [ -z "$command" ] || kill "$command" 2>/dev/null || true
  if [ ${#daemons[@]} -eq 3 ] && ! no_jobs; then
    scancel --user="$(id -un)" || true
    within 10 no_jobs || echo "one_node_cluster: jobs are still running" >&2
  fi
  for ((i = ${#daemons[@]} - 1; i >= 0; i--)); do
    kill "${daemons[i]}" 2>/dev/null || true
    within 10 has_ended "${daemons[i]}" || kill -KILL "${daemons[i]}" 2>/dev/null || true
    wait "${daemons[i]}" 2>/dev/null || true
  done
  rm -rf "$folder"
}
trap stop EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# start LOG COMMAND...: runs a daemon until the end
start() {
  local log=$folder/$1
  shift
  PATH=$PATH:/usr/sbin "$@" >"$log" 2>&1 &
  daemons+=($!)
}

fail() {
  echo "one_node_cluster: $1" >&2
  tail -n 20 "$folder"/*.log >&2
  exit 1
}

read -r control_port node_port < <(python3 -c '
import socket
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(2)]
print(*[s.getsockname()[1] for s in sockets])')
mkdir "$folder/state" "$folder/spool"
cat >"$folder/cgroup.conf" <<<'CgroupPlugin=cgroup/v1'
cat >"$folder/slurm.conf" <<END
ClusterName=one
SlurmctldHost=localhost(127.0.0.1)
SlurmctldPort=$control_port
SlurmdPort=$node_port
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthType=auth/munge
AuthInfo=socket=$folder/munge.socket
StateSaveLocation=$folder/state
SlurmdSpoolDir=$folder/spool
SlurmctldPidFile=$folder/slurmctld.pid
SlurmdPidFile=$folder/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0
MailProg=/bin/true
NodeName=localhost NodeAddr=127.0.0.1 CPUs=$(nproc)
PartitionName=all Nodes=localhost Default=YES State=UP
END
export SLURM_CONF=$folder/slurm.conf

(umask 077 && head -c 1024 /dev/urandom >"$folder/munge.key")
start munged.log munged --foreground --force --key-file="$folder/munge.key" \
  --socket="$folder/munge.socket" --pid-file="$folder/munged.pid" \
  --log-file="$folder/munged-own.log" --seed-file="$folder/munge.seed"
within 15 test -S "$folder/munge.socket" || fail "munged did not start"
start slurmctld.log slurmctld -D -i
start slurmd.log slurmd -D -N localhost
within 30 node_is_idle || fail "the node did not come up"

# In the background, so that a signal is acted on at once.
"$@" <&0 &
command=$!
wait "$command"
