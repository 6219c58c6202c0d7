#!/bin/sh
# Throughput and peak memory of `qarq convert -f 37 -t UTF8` against the
# iconv command on the same file, in one run. Figures for docs/performance.md.
#
# usage: bench/tool_convert.sh [BUILD_DIR] [MEGABYTES] [ROUNDS]
#   BUILD_DIR  a configured and built tree (default build/default)
#   MEGABYTES  size of the input (default 200)
#   ROUNDS     runs of each command; the fastest counts (default 3)
#
# The input is the bundled host report in code page 37, repeated; it is made
# in a temporary directory and removed at the end. Both commands read the file
# and write their output to a file beside it, as a user converting a file would. Time and peak resident memory come from
# /usr/bin/time -v (the figure is the whole process, tables and libraries
# included).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/default}
megabytes=${2:-200}
rounds=${3:-3}
tool=$build/bin/qarq
[ -x "$tool" ] || { echo "no $tool: build the qarq_tool target first" >&2; exit 2; }
command -v iconv > /dev/null || { echo "no iconv command" >&2; exit 2; }
[ -x /usr/bin/time ] || { echo "no /usr/bin/time" >&2; exit 2; }

work=$(mktemp -d "${TMPDIR:-/tmp}/qarq-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT INT TERM
sample=$root/data/samples/host-status.cp37
# Double the sample until the input is large enough, then cut it to size.
cp "$sample" "$work/seed"
while [ "$(wc -c < "$work/seed")" -lt 1048576 ]; do
    cat "$work/seed" "$work/seed" > "$work/next" && mv "$work/next" "$work/seed"
done
head -c 1048576 "$work/seed" > "$work/mb"
i=0
: > "$work/input"
while [ $i -lt "$megabytes" ]; do cat "$work/mb" >> "$work/input"; i=$((i + 1)); done
bytes=$(wc -c < "$work/input")

# Both must give the same text, or the comparison means nothing.
head -c 65536 "$work/input" > "$work/head"
"$tool" convert -f 37 -t UTF8 "$work/head" > "$work/a"
iconv -f CP037 -t UTF-8 "$work/head" > "$work/b"
cmp -s "$work/a" "$work/b" || { echo "qarq and iconv disagree on the input" >&2; exit 1; }

# best NAME COMMAND...: fastest of $rounds runs; prints "seconds kilobytes".
best() {
    name=$1
    shift
    bestSeconds=
    bestKb=0
    r=0
    while [ $r -lt "$rounds" ]; do
        rm -f "$work/output"
        /usr/bin/time -v -o "$work/time" "$@" > "$work/output"
        seconds=$(awk -F': ' '/Elapsed \(wall clock\)/ {
            n = split($2, p, ":"); s = 0; for (i = 1; i <= n; i++) s = s * 60 + p[i]; print s }' \
            "$work/time")
        kb=$(awk -F': ' '/Maximum resident set size/ { print $2 }' "$work/time")
        if [ -z "$bestSeconds" ] || awk "BEGIN { exit !($seconds < $bestSeconds) }"; then
            bestSeconds=$seconds
        fi
        [ "$kb" -gt "$bestKb" ] && bestKb=$kb
        r=$((r + 1))
    done
    echo "$bestSeconds $bestKb"
}

set -- $(best qarq "$tool" convert -f 37 -t UTF8 "$work/input")
qarqSeconds=$1 qarqKb=$2
set -- $(best iconv iconv -f CP037 -t UTF-8 "$work/input")
iconvSeconds=$1 iconvKb=$2

awk -v b="$bytes" -v qs="$qarqSeconds" -v qk="$qarqKb" -v is="$iconvSeconds" -v ik="$iconvKb" \
    'BEGIN {
        qmb = b / 1048576 / qs; imb = b / 1048576 / is
        printf "input                 %d bytes, code page 37 to UTF-8\n", b
        printf "qarq convert          %.2f s  %7.1f MiB/s  peak %6.1f MiB\n", qs, qmb, qk / 1024
        printf "iconv                 %.2f s  %7.1f MiB/s  peak %6.1f MiB\n", is, imb, ik / 1024
        printf "throughput ratio      %.2f (qarq / iconv; target at least 6)\n", qmb / imb
        printf "peak memory of qarq   %.1f MiB (target under 16)\n", qk / 1024
    }'
