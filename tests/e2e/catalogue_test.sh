#!/usr/bin/env bash
# End to end: the tool's catalogue commands against tests/fixtures/catalogue.reg
# and the built-in sample. Usage: catalogue_test.sh PATH_TO_OSTREL
set -uo pipefail
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
ostrel="$1"
registry="$fixtures/catalogue.reg"
unset OSTREL_REGISTRY
export OSTREL_PART_NUMBERS="$fixtures/catalogue-part-numbers.txt"
run() { "$ostrel" --registry "$registry" "$@"; }
field() { grep -E "\"($1)\"" | sed 's/^ *//; s/,$//' | tr '\n' ' '; } # KEY|KEY...: their lines of a JSON dump

# By character code; the duplicate, "temp" and the unknown number left out.
expect "catalogue --json" '"ProductName": "Alpha" "ApplicationPath": "\\" "VersionMinor": 0 "ProductName": "Gamma" "ApplicationPath": "C:\\Gamma\\" "VersionMinor": 123 "ProductName": "Beta" "ApplicationPath": "C:\\Beta\\\\" "VersionMinor": 30 ' \
    "$(run catalogue --json | field 'ProductName|ApplicationPath|VersionMinor')"

# Written record by record, laid out as one JSON dump would be, escapes and
# all: quotes, backslashes, control characters and letters beyond ASCII.
escapes="$work/escapes.reg"
printf 'Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Say "\xc3\xa4"\t!]\n"PartNumber"="a-1"\n"ApplicationPath"="\\\\x"\n"Label"=hex(1):41,00,01,00,1f,00,7f,00,00,00\n' >"$escapes"
expect "a name that needs escapes" '"ProductName": "Say \"ä\"\t!", "ApplicationPath": "\\x\\", "Label": "A\u0001\u001f",' \
    "$("$ostrel" --registry "$escapes" catalogue --json | grep -E 'ProductName|ApplicationPath|Label' | sed 's/^ *//' | paste -sd ' ')"
for file in "$registry" "$escapes"; do
    expect "catalogue --json as one dump: $(basename "$file")" "" "$("$ostrel" --registry "$file" catalogue --json |
        python3 -c 'import json, sys; d = sys.stdin.read(); print("" if json.dumps(json.loads(d), indent=2, ensure_ascii=False) + "\n" == d else d)')"
done

stderr="$work/stderr"
text="$(run --trace catalogue 2>"$stderr")"
expect "catalogue: the registry on stderr, only the table on stdout" "Registry: the registry file(s) $registry|a-1 B-10 b-2" \
    "$(head -n 1 "$stderr")|$(tail -n +2 <<<"$text" | head -n 3 | awk '{print $1}' | xargs)"

# Columns aligned by display width: a letter with a combining mark, wide CJK letters.
printf 'Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\\xc3\x9cbersicht]\n"PartNumber"="a-1"\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\\xe6\xb5\x8b\xe7\xbb\x98 Plan]\n"PartNumber"="b-2"\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Cafe\xcc\x81]\n"PartNumber"="B-10"\n' >"$stderr"
expect "columns aligned by display width" "1" "$("$ostrel" --registry "$stderr" catalogue 2>/dev/null | head -n 4 | python3 -c '
import re, sys, unicodedata as u
width = lambda s: sum(0 if u.combining(c) else 2 if u.east_asian_width(c) in "WF" else 1 for c in s)
print(len({tuple(width(line[:m.end()]) for m in re.finditer("  +", line)) for line in sys.stdin}))')"

expect "product --json" '"DisplayName": "Beta Planner" "BuildID": "9300003" ' "$(run product Beta --json | field 'DisplayName|BuildID')"

# No match: an empty line (the values as they stand: the Toolbar suite).
expect "toolbar-key" "Beta|" "$(for p in B-2 q-0; do run toolbar-key "$p"; done | paste -sd '|')"
printf 'Windows Registry Editor Version 5.00\n' >"$stderr"
expect "install-dir and catalogue without keys" "|[]" "$("$ostrel" --registry "$stderr" install-dir)|$("$ostrel" --registry "$stderr" catalogue --json)"

trace="$(OSTREL_PART_NUMBERS=/nonexistent/p.txt run --trace catalogue --json 2>&1 >/dev/null | tr -d '\r' | grep -v '^Registry: ')"
expect "unreadable table" "[gfblnIsKnownPartNumber] No part number is known: the table \"/nonexistent/p.txt\" can't be read (53-File not found)" "$trace"

unset OSTREL_PART_NUMBERS
sample="$("$ostrel" catalogue 2>"$work/err")"
expect "sample: labelled on stderr, with the way to a real export" "Registry: the built-in sample registry (no --registry, no OSTREL_REGISTRY)|1|QRL-2040 QRL-2041 qrl-3100 qrl-3200 QRL-4010 QRL-5001 QRL-6000 QRL-900" \
    "$(head -n 1 "$work/err")|$(grep -c "sample products.*--registry" "$work/err")|$(tail -n +2 <<<"$sample" | head -n -2 | awk '{print $1}' | xargs)"

finish catalogue_test
