#!/usr/bin/env bash
# layers.sh SRC: checks every #include of one of our own headers below SRC against layers.txt.
# Prints a line for each one that reaches where it may not, and fails when there is one.
set -euo pipefail
table=$(cd "$(dirname "$0")" && pwd)/layers.txt
[ -r "$table" ] || exit 1
cd "$1"

grep -rEn --include='*.h' --include='*.cpp' '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' . |
    sed -E 's|^\./([^:]*:[0-9]+):[^"]*"([^"]*)".*|\1 \2|' |
    awk '
        NR == FNR {
            if ($0 !~ /^#/ && NF) {
                known[$1] = 1
                for (i = 2; i <= NF; ++i)
                    allowed[$1, ++count[$1]] = $i
            }
            next
        }
        function complain(text) { print "src/" $1 ": " text; ++bad }
        {
            folder = $1; sub(/\/.*/, "", folder)
            target = $2; sub(/\/.*/, "", target)
            ++seen
            if ($2 ~ /\.moc$/ || target == folder)
                next
            if ($2 !~ /\//) { complain("\"" $2 "\" does not name its folder"); next }
            if (!(folder in known)) { complain("the folder " folder " is missing in layers.txt"); next }
            for (i = 1; i <= count[folder]; ++i) {
                name = allowed[folder, i]
                if (target == name || index($2, name) == 1 && name ~ /\//)
                    next
            }
            complain(folder " may not include \"" $2 "\"")
        }
        END {
            if (!seen) { print "no includes found: is this the right folder?"; exit 1 }
            print seen " includes, " bad + 0 " against the layers"
            exit bad > 0
        }' "$table" -
