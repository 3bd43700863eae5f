#!/usr/bin/env bash
# run.sh TARGET CORPUS [OPTIONS...]: runs a fuzz target from the files in the folder CORPUS, which stays as it is, with
# the words of CORPUS's dictionary. An input that fails is left in the folder "failed" beside the target.
set -euo pipefail
target=$1
corpus=$2
shift 2
what=$(basename "$corpus")
[ -n "$(ls "$corpus")" ] || { echo "there is nothing in $corpus"; exit 1; }

# Files in memory, where the system has such a place: the disk would be what takes the time.
[ ! -w /dev/shm ] || export TMPDIR=/dev/shm
# Freed memory that is kept back to find who still uses it. Pictures are large: with the usual amount a long run reached
# the limit below.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}quarantine_size_mb=32
# What the run finds goes to the first folder.
found=$(mktemp -d)
trap 'rm -rf "$found"' EXIT
failed=$(dirname "$target")/failed
mkdir -p "$failed"
dictionary=$(dirname "$(dirname "$corpus")")/$what.dict
options=(-max_len=4096 -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$failed/$what-")
[ ! -f "$dictionary" ] || options+=(-dict="$dictionary")
"$target" "${options[@]}" "$@" "$found" "$corpus"
