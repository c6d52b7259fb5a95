#!/usr/bin/env bash
# The time and path commands end to end: bash time_path_test.sh /path/to/ostrel
# shellcheck disable=SC2016,SC2034 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"

# US Eastern time: a date-time as the tool reads and writes it (the zone's
# rules, the offset now and the year's end: the SystemTimeZone suite).
export TZ=EST5EDT,M3.2.0,M11.1.0
try "from-gmt in summer, a fraction of a second rounds away" '[ "$out" = "2024-07-15 08:00:01" ]' time from-gmt "2024-07-15 12:00:00.6"
try "to-gmt past the calendar: the error on stderr, exit 1" \
    '[ "$rc" = 1 ] && [ "$err" = "ostrel: error 5: [gfdatConvertToGMT]Invalid procedure call or argument" ]' time to-gmt "9999-12-31 23:59:59"

# The folder dialogue of a terminal (the rules of paths and their deletion:
# the Paths and SystemPaths suites).
mkdir "$work/folder"
try "path browse: the folder typed" '[ "$out" = "$work/folder" ] && [[ "$err" == "Pick one"* ]]' path browse --title "Pick one" --root "$work" <<<"$work/folder"
try "path browse: not a folder, then an empty answer cancels" '[ "$rc" = 0 ] && [ -z "$out" ] && [[ "$err" == *"Not a folder: $work/missing"* ]]' path browse <<<"$work/missing"$'\n'
try "path browse: the end of input cancels" '[ "$rc" = 0 ] && [ -z "$out" ]' path browse </dev/null

finish time_path_test
