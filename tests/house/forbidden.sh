#!/usr/bin/env bash
# forbidden.sh ROOT: looks through ROOT/src for what forbidden.txt lists, comments aside.
# Prints each line that has it, and fails when there is one.
set -euo pipefail
table=$(cd "$(dirname "$0")" && pwd)/forbidden.txt
[ -r "$table" ] || exit 1
cd "$1"

files=$(find src -name '*.h' -o -name '*.cpp')
[ -n "$files" ] || { echo "no sources found: is this the right folder?"; exit 1; }
bad=0
while IFS=$'\t' read -r pattern exception instead; do
    hits=$(xargs grep -EnH -- "$pattern" <<<"$files" | grep -vE '^[^:]+:[0-9]+:[[:space:]]*//' | grep -v "^$exception" || true)
    [ -n "$hits" ] || continue
    bad=1
    sed "s|\$|    -- $instead|" <<<"$hits"
done < <(grep -v '^#' "$table")
exit $bad
