#!/usr/bin/env bash
# Runs every example program against kvn-sim and checks how each one ends.
# Simulators listen on loopback ports the system picks; all of them are stopped
# on exit, whatever happens. Needs a build of the examples and kvn-sim.
#
#   scripts/test-examples.sh [BUILD_DIR]     (default build/default)
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/default}")
sim=$build/tools/sim/kvn-sim
ex=$build/examples
start=$(date +%s)
work=$(mktemp -d)
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM   # so that an interrupted run cleans up too
cd "$work"

fail() { echo "test-examples: $*" >&2; exit 1; }

# wait_for FILE PATTERN: waits up to 10 s for a line of FILE to match PATTERN.
wait_for() {
  for _ in $(seq 100); do grep -q "$2" "$1" 2>/dev/null && return 0; sleep 0.1; done
  fail "no '$2' in $1"
}

# start_sim NAME [OPTIONS]: starts a simulator, sets $NAME to its address, ${NAME}_pid
# to its process. A --listen among the options picks the address instead.
start_sim() {
  local name=$1; shift
  "$sim" --listen 127.0.0.1:0 "$@" >"$name.address" &
  pids+=($!)
  printf -v "${name}_pid" '%s' $!
  wait_for "$name.address" :
  printf -v "$name" '%s' "$(cat "$name.address")"
}

# check CODE PROGRAM ARGS...: runs an example, shows what it printed, expects exit CODE.
check() {
  local expect=$1 rc=0; shift
  echo "\$ $(basename "$1") ${*:2}"
  "$@" >out.txt 2>&1 || rc=$?
  sed 's/^/    /' out.txt
  [ "$rc" = "$expect" ] || fail "$(basename "$1") ended with $rc, expected $expect"
}

# finish NAME PID CODE: waits for an example started in the background, as check does.
finish() {
  local rc=0
  wait "$2" || rc=$?
  echo "\$ $1 (in the background)"
  sed 's/^/    /' "$1.txt"
  [ "$rc" = "$3" ] || fail "$1 ended with $rc, expected $3"
}

start_sim a --prefill-logs 250
start_sim b
check 0 "$ex/hello_terminal" "${a%:*}" "${a#*:}"
check 0 "$ex/enroll_user" "$a" amy 1
check 0 "$ex/enroll_user" "$a" bob 2
check 0 "$ex/clone_users" "$a" "$b"
check 0 "$ex/clone_users" "$b" "$a" amy bob    # back again: both arrived, and replace
check 2 "$ex/clone_users" "$a"

# 250 prefilled entries and two enrolments; a second run finds nothing new.
check 0 "$ex/log_sync" "$a" journal.tsv
check 0 "$ex/log_sync" "$a" journal.tsv
[ "$(wc -l <journal.tsv)" = 252 ] || fail "journal.tsv has $(wc -l <journal.tsv) lines, expected 252"
check 1 "$ex/log_sync" 127.0.0.1:1 journal.tsv

# New events while polling: an enrolment once the poller has read where it starts.
"$ex/poll_events" "$a" 3 >poll_events.txt 2>&1 & poll=$!; pids+=($poll)
wait_for poll_events.txt watching
check 0 "$ex/enroll_user" "$a" carol 3
finish poll_events $poll 0
grep -q "user carol" poll_events.txt || fail "poll_events did not show carol's enrolment"

head -c 300000 /dev/urandom >firmware.bin
check 0 "$ex/firmware_upgrade" "$a" firmware.bin
check 1 "$ex/firmware_upgrade" "$a" missing.bin
# Ctrl-C once the transfer has started, against a terminal slow enough to be caught.
start_sim slow --latency-ms 50
head -c 3000000 /dev/zero >large.bin
"$ex/firmware_upgrade" "$slow" large.bin >firmware_upgrade.txt 2>&1 & upgrade=$!; pids+=($upgrade)
wait_for firmware_upgrade.txt "packet 0 of"
kill -INT $upgrade
finish firmware_upgrade $upgrade 130

# The terminal goes away after the second answer and comes back at the same address.
start_sim c
stdbuf -oL "$ex/reconnect" "$c" 6 >reconnect.txt 2>&1 & rec=$!; pids+=($rec)
wait_for reconnect.txt "^2: "
kill "$c_pid"
sleep 1
start_sim c_again --listen "$c"
finish reconnect $rec 0
grep -q "^reconnected" reconnect.txt || fail "reconnect did not reconnect"

echo "examples: all passed in $(( $(date +%s) - start )) s"
