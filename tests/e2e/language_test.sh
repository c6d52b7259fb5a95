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

# The user's language from LC_ALL, LC_MESSAGES, LANG in that order; English
# behind (OSTREL_LANGUAGE over them: the LanguageText suite).
while IFS='|' read -r vars suffixes caption; do
    read -ra assignments <<<"$vars"
    expect "$vars: suffixes and text 312" "$suffixes|$caption" \
        "$(env "${assignments[@]}" "$built" language suffixes | paste -sd ' ')|$(env "${assignments[@]}" "$built" language text 312)"
done <<'CASES'
LANG=de_DE.UTF-8|de de-DE|Info über 
LANG=de_DE.UTF-8 LC_MESSAGES=fr_FR.UTF-8|en en-US|About 
LC_MESSAGES=de_CH LANG=en_US.UTF-8|de de-CH|Info über 
LC_ALL=C LANG=de_DE.UTF-8|en en-US|About 
CASES

try "text with inserts" '[ "$out" = "Unable to create WNCRegistry."$'"'\n'"'"Error 429: Can'"'"'t" ]' language text 338 --insert WNCRegistry --insert 429 --insert "Can't"
try "a number without text: error 5 naming it, exit 1" '[ "$rc" = 1 ] && [ "$err" = "ostrel: error 5: There is no text number 4711" ]' language text 4711

# --direct asks for the other form of the variant (the order: the
# LocalisedFiles suite).
touch "$work/Guide.chm" "$work/Guide_de.chm" "$work/Guidede.chm"
export LANG=de_DE.UTF-8
try "localised-file --direct" '[ "$out" = "$work/Guidede.chm" ]' language localised-file --direct "$work/Guide.chm"

# The tool alone, without its data files: the built-in English texts.
mkdir "$work/alone"
cp "$built" "$work/alone/"
tool=("$work/alone/$(basename "$built")")
export OSTREL_PART_NUMBERS="$fixtures/catalogue-part-numbers.txt"
try "alone: starts silently and reads the catalogue" \
    '[ "$rc" = 0 ] && [ -z "$err" ] && [ "$(tail -n 1 <<<"$out")" = "3 products" ]' --registry "$fixtures/catalogue.reg" catalogue
OSTREL_PART_NUMBERS= try "alone: the part-number table built in" '[ "$rc" = 0 ] && [ "$(tail -n 1 <<<"$out")" = "8 products" ]' catalogue
try "alone: English suffixes" '[ "$(paste -sd " " <<<"$out")" = "en en-US" ]' language suffixes

# Help: handed to xdg-open, or a clear error when there is none.
touch "$work/alone/Guideen.chm"
mkdir "$work/bin"
printf '#!/bin/sh\necho "$1" >"%s/opened"\n' "$work" >"$work/bin/xdg-open"
chmod +x "$work/bin/xdg-open"
PATH="$work/bin:$PATH" try "help: the variant handed to xdg-open" \
    '[ "$rc" = 0 ] && [ "$(cat "$work/opened")" = "$work/alone/Guideen.chm" ]' language help Guide.chm
tool=(env PATH=/nonexistent "${tool[@]}")
try "help without xdg-open: a clear error" \
    '[ "$rc" = 1 ] && [ "$err" = "ostrel: error 53: There is no xdg-open to open the help file $work/alone/Guideen.chm" ]' language help Guide.chm

# A text file that can't be read is reported on stderr, by name (the
# reports themselves: the LanguageText and Startup suites).
mkdir "$work/alone/Ostrel.de.txt"
try "a folder for a text file: named, and the English texts stand in" \
    '[ "$err" = "Ostrel: The language file is a folder: $work/alone/Ostrel.de.txt" ] && [ "$out" = "Ostrel" ]' language text 108

finish language_test
