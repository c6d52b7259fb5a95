#!/usr/bin/env bash
# The tool end to end over 10,000 products: `ostrel catalogue --json` beside
# a run that only loads the same .reg file (install-dir, which reads one
# value), best of N runs each, and the peak resident size of each.
# Target: the catalogue within twice the load-only run, peak under 50 MB.
# Usage: bench/cli_catalogue.sh PATH_TO_OSTREL [runs]
set -euo pipefail
ostrel="$1"
runs="${2:-15}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The products of bench/catalogue_bench.cpp: eleven values each, part numbers
# in a shuffled order, all of them known.
awk -v reg="$work/toolbar.reg" -v table="$work/part-numbers.txt" 'BEGIN {
    srand(42)
    n = 10000
    for (i = 1; i <= n; i++) number[i] = i
    for (i = n; i > 1; i--) { j = int(rand() * i) + 1; t = number[i]; number[i] = number[j]; number[j] = t }
    printf "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar]\r\n\r\n" > reg
    for (i = 0; i < n; i++) {
        part = "QRL-" number[i + 1]
        print part > table
        printf "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Product %d]\r\n", i > reg
        printf "\"DisplayName\"=\"Quorl Product %d\"\r\n", i > reg
        printf "\"ApplicationPath\"=\"C:\\\\Program Files\\\\QUORL\\\\Product %d\"\r\n", i > reg
        printf "\"PartNumber\"=\"%s\"\r\n", part > reg
        printf "\"VersionMajor\"=dword:%08x\r\n\"VersionMinor\"=dword:%08x\r\n", i % 20, i % 100 > reg
        printf "\"VersionRevisionMajor\"=dword:%08x\r\n\"VersionRevisionMinor\"=dword:%08x\r\n", i % 7, i % 31 > reg
        printf "\"Label\"=\"Product %d\"\r\n\"IconFile\"=\"product.ico\"\r\n", i > reg
        printf "\"Revision\"=\"R%d\"\r\n\"Tooltip\"=\"Starts product %d\"\r\n\r\n", i % 5, i > reg
    }
}'
export OSTREL_PART_NUMBERS="$work/part-numbers.txt"
unset OSTREL_REGISTRY

# best ARGS...: the fastest of $runs runs, in milliseconds.
best() {
    local fastest=""
    for _ in $(seq "$runs"); do
        local start end
        start=$(date +%s%N)
        "$ostrel" --registry "$work/toolbar.reg" "$@" >/dev/null
        end=$(date +%s%N)
        local ms=$(((end - start) / 1000))
        if [ -z "$fastest" ] || [ "$ms" -lt "$fastest" ]; then fastest=$ms; fi
    done
    echo "$fastest"
}
peak() {
    if [ -x /usr/bin/time ]; then
        /usr/bin/time -f %M "$ostrel" --registry "$work/toolbar.reg" "$@" 2>&1 >/dev/null | tail -n 1
    else
        echo "?"
    fi
}

load=$(best install-dir)
catalogue=$(best catalogue --json)
printf 'load only          %6d us  peak %s kB\n' "$load" "$(peak install-dir)"
printf 'catalogue --json   %6d us  peak %s kB\n' "$catalogue" "$(peak catalogue --json)"
awk -v c="$catalogue" -v l="$load" 'BEGIN { printf "ratio              %6.2f (target 2)\n", c / l }'
