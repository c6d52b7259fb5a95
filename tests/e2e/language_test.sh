#!/usr/bin/env bash
# The language store end to end: bash language_test.sh /path/to/ostrel
# The language chosen from the environment, the files' variants, a tool
# copied without its data files, damaged files, opening help.
# shellcheck disable=SC2016,SC2034 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
built="$1"
unset OSTREL_LANGUAGE LC_ALL LC_MESSAGES LANG

# The choice: OSTREL_LANGUAGE, then LC_ALL, LC_MESSAGES, LANG; English behind.
while IFS='|' read -r vars suffixes caption; do
    read -ra assignments <<<"$vars"
    out=$(env "${assignments[@]}" "$built" language suffixes | paste -sd ' ')
    text=$(env "${assignments[@]}" "$built" language text 312)
    check "$vars: suffixes" '[ "$out" = "$suffixes" ]'
    check "$vars: text 312" '[ "$text" = "$caption" ]'
done <<'CASES'
LANG=de_DE.UTF-8|de de-DE|Info über 
LANG=de_DE.UTF-8 LC_MESSAGES=fr_FR.UTF-8|en en-US|About 
LC_MESSAGES=de_CH LANG=en_US.UTF-8|de de-CH|Info über 
LC_ALL=C LANG=de_DE.UTF-8|en en-US|About 
OSTREL_LANGUAGE=de LC_ALL=en_GB.UTF-8|de de|Info über 
LC_ALL=en_GB.UTF-8|en en-GB|About 
CASES

run language text 338 --insert WNCRegistry --insert 429 --insert "Can't"
check "text with inserts" '[ "$out" = "Unable to create WNCRegistry."$'"'\n'"'"Error 429: Can'"'"'t" ]'
run language text 4711
check "a number without text: error 5 naming it, exit 1" '[ "$rc" = 1 ] && [ "$err" = "ostrel: error 5: There is no text number 4711" ]'

# Both forms of a file's variant, the second suffix first.
mkdir "$work/files"
touch "$work/files/Guide.chm" "$work/files/Guide_de.chm" "$work/files/Guide_de-DE.chm" "$work/files/Guidede.chm"
export LANG=de_DE.UTF-8
run language localised-file "$work/files/Guide.chm"
check "localised-file: suffix2 first" '[ "$out" = "$work/files/Guide_de-DE.chm" ]'
run language localised-file --direct "$work/files/Guide.chm"
check "localised-file --direct: suffix1 when suffix2 is missing" '[ "$out" = "$work/files/Guidede.chm" ]'
run language localised-file "$work/files/Other.chm"
check "localised-file: no variant, an empty line, exit 3" '[ "$rc" = 3 ] && [ -z "$out" ]'

# The tool alone, without its data files: the built-in English texts.
mkdir "$work/alone"
cp "$built" "$work/alone/"
tool=("$work/alone/$(basename "$built")")
export OSTREL_PART_NUMBERS="$fixtures/catalogue-part-numbers.txt"
run --registry "$fixtures/catalogue.reg" catalogue
check "alone: starts silently and reads the catalogue" \
    '[ "$rc" = 0 ] && [ -z "$err" ] && [ "$(tail -n 1 <<<"$out")" = "3 products" ]'
run language text 108
check "alone: text 108 built in" '[ "$out" = "Ostrel" ]'
OSTREL_PART_NUMBERS= run catalogue
check "alone: the part-number table built in" '[ "$rc" = 0 ] && [ "$(tail -n 1 <<<"$out")" = "8 products" ]'
run language suffixes
check "alone: English suffixes" '[ "$(paste -sd " " <<<"$out")" = "en en-US" ]'

# Help: handed to xdg-open, or a clear error when there is none.
touch "$work/alone/Guideen.chm"
mkdir "$work/bin"
printf '#!/bin/sh\necho "$1" >"%s/opened"\n' "$work" >"$work/bin/xdg-open"
chmod +x "$work/bin/xdg-open"
PATH="$work/bin:$PATH" run language help Guide.chm
check "help: the variant handed to xdg-open" \
    '[ "$rc" = 0 ] && [ "$(cat "$work/opened")" = "$work/alone/Guideen.chm" ]'
PATH=/nonexistent "${tool[@]}" language help Guide.chm >/dev/null 2>"$work/err"
rc=$? err=$(cat "$work/err")
check "help without xdg-open: a clear error" \
    '[ "$rc" = 1 ] && [ "$err" = "ostrel: error 53: There is no xdg-open to open the help file $work/alone/Guideen.chm" ]'

# A damaged or odd text file is reported once, by name and line, however
# many product records bind the texts again; start-up goes on to the end.
printf '108=Ostrel\n131=OK\n312=cut \xc3' >"$work/alone/Ostrel.de.txt"
mkdir -p "$work/data/QUORL"
touch "$work/data/QUORL/debug_ot"
ProgramData="$work/data" run --registry "$fixtures/catalogue.reg" catalogue
check "damaged file: one report naming file and line, and the catalogue read" \
    '[ "$err" = "Ostrel: Not UTF-8 at line 3 of $work/alone/Ostrel.de.txt" ] && [ "$(tail -n 1 <<<"$out")" = "3 products" ]'
check "damaged file: diagnostics started" '[ -s "$work/data/QUORL/ot.log" ]'
rm "$work/alone/Ostrel.de.txt"
mkdir "$work/alone/Ostrel.de.txt"
run language text 108
check "a folder for a text file: named, and the English texts stand in" \
    '[ "$err" = "Ostrel: The language file is a folder: $work/alone/Ostrel.de.txt" ] && [ "$out" = "Ostrel" ]'

finish language_test
