#!/usr/bin/env bash
# End to end: the tool's catalogue commands against tests/fixtures/catalogue.reg
# and the built-in sample. Usage: catalogue_test.sh PATH_TO_OSTREL
set -uo pipefail
ostrel="$1"
fixtures="$(cd "$(dirname "$0")/../fixtures" && pwd)"
registry="$fixtures/catalogue.reg"
unset OSTREL_REGISTRY
export OSTREL_PART_NUMBERS="$fixtures/catalogue-part-numbers.txt"
failures=0

expect() { # NAME EXPECTED ACTUAL
    if [ "$2" == "$3" ]; then echo "ok: $1"; return; fi
    echo "FAIL: $1"
    diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") | sed 's/^/    /'
    failures=$((failures + 1))
}
run() { "$ostrel" --registry "$registry" "$@"; }
field() { grep -F "\"$1\"" | sed 's/^ *//; s/,$//' | tr '\n' ' '; } # KEY: its lines of a JSON dump

# By character code; the duplicate, "temp" and the unknown number left out.
json="$(run catalogue --json)"
expect "catalogue --json: order" '"ProductName": "Alpha" "ProductName": "Gamma" "ProductName": "Beta" ' \
    "$(field ProductName <<<"$json")"
expect "catalogue --json: part numbers as stored" '"PartNumber": "a-1" "PartNumber": "B-10" "PartNumber": "b-2" ' \
    "$(field PartNumber <<<"$json")"
expect "catalogue --json: numbers" '"VersionMinor": 0 "VersionMinor": 123 "VersionMinor": 30 ' \
    "$(field VersionMinor <<<"$json")"
expect "catalogue --json: paths" '"ApplicationPath": "\\" "ApplicationPath": "C:\\Gamma\\" "ApplicationPath": "C:\\Beta\\\\" ' \
    "$(field ApplicationPath <<<"$json")"

stderr="$(mktemp)"
text="$(run --trace catalogue 2>"$stderr")"
expect "catalogue: first line names the registry" "Registry: the registry file(s) $registry" "$(head -n 1 <<<"$text")"
expect "catalogue: table rows" "a-1 B-10 b-2" "$(tail -n +4 <<<"$text" | head -n 3 | awk '{print $1}' | xargs)"
expect "catalogue: the dropped duplicate is logged" \
    "[ReadAllProducts] Multiple toolbar entries exist for part number: 'a-1'(Alpha and Alpha Copy).  Alpha will be used and Alpha Copy discarded." \
    "$(tr -d '\r' <"$stderr")"

json="$(run product Beta --json)"
expect "product --json" '"DisplayName": "Beta Planner" "BuildID": "9300003" "Label": "Beta" ' \
    "$(field DisplayName <<<"$json")$(field BuildID <<<"$json")$(field Label <<<"$json")"
expect "product of a missing key" '"BuildID": "" "Label": "" ' \
    "$(run product Missing --json | field BuildID)$(run product Missing --json | field Label)"
expect "product: text" "Label           : 0" "$(run product "Alpha Copy" | grep '^Label')"

# The stored value as it stands: " A-1 " doesn't match, the copy's "a-1" does.
expect "toolbar-key" "Alpha Copy|Beta|Other|" "$(for p in A-1 B-2 z-9 q-0; do run toolbar-key "$p"; done | paste -sd '|')"
expect "toolbar-key of nothing prints an empty line" "1" "$(run toolbar-key q-0 | wc -l)"
expect "install-dir as it stands" " D:\\Quorl " "$(run install-dir)"
printf 'Windows Registry Editor Version 5.00\n' >"$stderr"
expect "install-dir and catalogue without keys" "|[]" "$("$ostrel" --registry "$stderr" install-dir)|$("$ostrel" --registry "$stderr" catalogue --json)"

trace="$(OSTREL_PART_NUMBERS=/nonexistent/p.txt run --trace catalogue --json 2>&1 >/dev/null | tr -d '\r')"
expect "unreadable table" "[gfblnIsKnownPartNumber] No part number is known: the table \"/nonexistent/p.txt\" can't be read (53-File not found)" "$trace"
rm -f "$stderr"

unset OSTREL_PART_NUMBERS
sample="$("$ostrel" catalogue)"
expect "sample: first line" "Registry: the built-in sample registry (no --registry, no OSTREL_REGISTRY)" "$(head -n 1 <<<"$sample")"
expect "sample: order" "QRL-2040 QRL-2041 qrl-3100 qrl-3200 QRL-4010 QRL-5001 QRL-6000 QRL-900" \
    "$(tail -n +4 <<<"$sample" | head -n -2 | awk '{print $1}' | xargs)"

[ "$failures" -eq 0 ] || { echo "$failures failure(s)"; exit 1; }
