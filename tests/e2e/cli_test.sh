#!/usr/bin/env bash
# The command-line tool end to end: bash cli_test.sh /path/to/ostrel
# (a Windows build runs as: bash cli_test.sh wine /path/to/ostrel.exe).
# shellcheck disable=SC2016,SC2034 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
matches() { grep -qE -- "$2" <<<"$1"; }

keys="ComputerName UserName ClientSiteName DomainName DomainControllerAddress DomainControllerName ForestName PrimaryDomainController SiteName Groups IsNTPlatform IsNT4 IsX64Based IsXPOrHigher IsXPEmbedded"

# pcinfo as text: aligned on " : "; names, Nothing, True/False.
try "pcinfo aligns the colons" '[ "$(sed "s/ : .*//" <<<"$out" | awk "{print length}" | sort -u | wc -l)" = 1 ]' pcinfo
check "pcinfo values" '[ "$(grep -cE "^(Computer|User)Name +: [^ ]|^Groups +: Nothing$|^Is[A-Za-z0-9]+ +: (True|False)$" <<<"$out")" = 8 ]'

# pcinfo --json: one object; every key once, in order; strings, a null Groups and booleans.
run pcinfo --json
expect "pcinfo --json" "{ $(sed -E 's/([A-Za-z0-9]+)/\1=text/g; s/Groups=text/Groups=null/; s/(Is[A-Za-z0-9]+)=text/\1=bool/g' <<<"$keys") }" \
    "$(sed -E 's/^  "([A-Za-z0-9]+)": (".*"|null|true|false),?$/\1=\2/; s/=".*"$/=text/; s/=(true|false)$/=bool/' <<<"$out" | paste -sd ' ')"

try "--version: version, commit, build type, target" \
    'matches "$out" "^ostrel [0-9]+\.[0-9]+\.[0-9]+ \(([0-9a-f]{7}|unknown), [^,]+, [^,)]+\)$"' --version

# Usage errors: exit 2, message on stderr, nothing on stdout.
for args in "" "pcinfo --no-such-option" "--registry" "pcinfo extra"; do
    run $args # split on purpose
    check "usage error '$args'" '[ "$rc" = 2 ] && [ -n "$err" ] && [ -z "$out" ]'
done
for args in "catalog --json" "help catalog" "frobnicate"; do
    run $args # split on purpose
    check "unknown command '$args'" '[ "$rc" = 2 ] && [ -z "$out" ] && matches "$err" "^ostrel: unknown command '"'"'(catalog|frobnicate)'"'"'( \(did you mean '"'"'catalogue'"'"'\?\))?$"'
done
check "did you mean: only for a near name" '[ "$err" = "ostrel: unknown command '"'"'frobnicate'"'"'" ]'

# Registry files: a bad one stops the tool naming the file and the line.
good="$work/good.reg" bad="$work/bad.reg"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Some"="thing"\r\n' >"$good"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Broken"=nonsense\r\n' >"$bad"
try "a bad registry file exits 1 naming file and line" '[ "$rc" = 1 ] && matches "$err" "bad\.reg(:|.*line )4"' --registry "$good" --registry "$bad" pcinfo

if $windows; then list="$good;$bad"; else list="$good:$bad"; fi
OSTREL_REGISTRY=$list try "OSTREL_REGISTRY is read, every file of the list" '[ "$rc" = 1 ] && matches "$err" "bad\.reg"' pcinfo
OSTREL_REGISTRY=$list try "--registry takes the place of OSTREL_REGISTRY" '[ "$rc" = 0 ]' --registry "$good" pcinfo

# Processes: a started program is ready once its file is there (the tool
# finding itself, and none: the --json rows below).
if $windows; then
    ready="$(winepath -w "$work")\\ready.txt" command="cmd.exe /c echo up>\"$ready\""
else
    ready="$work/ready.txt" command="sh -c \"echo up > '$ready'; sleep 2\""
fi
# Ready with its id; where ids pass 32767 the component's 16-bit id takes
# its failure path, and the tool says so.
overflow="^started as ([0-9]+); an id above 32767 is reported as a failure by the component$"
try "process run: ready with the id, or started with an id the component can't hold" \
    '{ [ "$rc" = 0 ] && matches "$out" "^ready [0-9]+$"; } || { [ "$rc" = 3 ] && [[ "$out" =~ $overflow ]] && [ "${BASH_REMATCH[1]}" -gt 32767 ]; }' process run --ready-file "$ready" "$command"
if ! $windows && unshare --pid --fork --mount-proc true 2>/dev/null; then
    # ids from 39990 in a namespace of its own
    from_39990() { local tool=(unshare --pid --fork --mount-proc sh -c 'echo 39990 >/proc/sys/kernel/ns_last_pid && exec "$@"' sh "${tool[@]}"); try "$@"; }
    from_39990 "process run: an id above 32767 told as such, exit 3" '[ "$rc" = 3 ] && [[ "$out" =~ $overflow ]]' process run "sleep 1"
fi
try "process run: a program that can't start, with the error, exit 4" '[ "$rc" = 4 ] && matches "$out" "^could not start: 53, "' process run "no-such-program --flag"

# The About window as the component builds it (shown only on Windows, so only --json here).
flat=$("${tool[@]}" about --json | tr -d ' \r\n')
check "about --json: the caption, cmdOK in twips and pixels, default and cancel, the tab order, the logo at its 150 x 56 pixels" \
    'matches "$flat" "\"Name\":\"cmdOK\",\"Kind\":\"CommandButton\",\"Text\":\"OK\",\"TabIndex\":0,\"Twips\":\{\"Left\":1507,\"Top\":1170,\"Width\":1260,\"Height\":345\},\"Pixels\":\{\"Left\":100,\"Top\":78,\"Width\":84,\"Height\":23\},\"Default\":true,\"Cancel\":true" &&
     matches "$flat" "\"TabOrder\":\[\"cmdOK\",\"picIcon\",\"cmdSysInfo\",\"lblTitle\",\"lblVersion\"\],\"DefaultButton\":\"cmdOK\",\"CancelButton\":\"cmdOK\"" &&
     matches "$flat" "\"Pixels\":\{\"Left\":216,\"Top\":8,\"Width\":150,\"Height\":56\}" && matches "$flat" "^\{\"Name\":\"frmAbout\",\"Caption\":\"AboutOstrel\","'

# Help and the manual against the command model: every command and
# sub-command that --help lists has a help of its own and a section in the
# manual, which groff renders without a warning.
commands_of() { sed -n '/^Subcommands:/,/^$/p' <<<"$1" | awk 'NR > 1 && NF { print $1 }'; }
manual=$("${tool[@]}" manual | tr -d '\r')
$windows || check "the manual renders without warnings" '[ -z "$(groff -ww -z -man <<<"$manual" 2>&1)" ]'
try "--help lists the exit codes and the environment" 'matches "$out" "^  4  not done" && matches "$out" "OSTREL_LANGUAGE"' --help
for command in $(commands_of "$out"); do
    run help "$command"
    for sub in "" $(commands_of "$out"); do
        [ -z "$sub" ] || run help "$command" "$sub"
        path="$command${sub:+ $sub}"
        check "help and manual: $path" '[ "$rc" = 0 ] && matches "$out" "^Usage: ostrel $path" && grep -qxF ".SS \"${path//-/\\-}\"" <<<"$manual"'
    done
done

# Every command that prints a result, under --json: its exit code, and one
# JSON document on stdout (none after a usage error, whose message shows the
# form expected). The global options go before the command on one row, after
# it on the next.
program=$(tr '[:lower:]' '[:upper:]' <<<"$(basename "${tool[-1]}")")
mkdir -p "$work/store/QUORL" "$work/files"
touch "$work/files/doomed"
printf '<Settings><Colour>blue</Colour></Settings>' >"$work/store/QUORL/ot_settings.xml"
# Windows names for a Windows build (a leading "/" would read as an option there).
native() { if $windows; then winepath -w "$1"; else echo "$1"; fi; }
export ProgramData="$(native "$work/store")"
printf 'REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\n"InstallDir"="C:\\Q"\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Beta]\n"PartNumber"="B-2"\n' >"$good"
files=$(native "$work/files")
nonascii="$files/J$(printf '\xc3\xbc')rgen-$(printf '\xe6\xb5\x8b')"
rows=(
    "0 catalogue" "0 product Beta" "3 product nosuch" "0 toolbar-key b-2" "3 toolbar-key q-0"
    "0 install-dir" "0 pcinfo" "0 settings get Settings Colour --default d" "0 mutex --timeout 100 OSTREL_CLI_TEST"
    "0 process find '$program'" "3 process find no-such-program" "4 process run no-such-program"
    "0 time to-gmt '2026-01-15 12:00:00'" "0 time from-gmt '2026-07-15 12:00:00.5'" "0 time now-gmt"
    "2 time to-gmt '2026-02-30 12:00:00'" "2 time to-gmt '2026-02-28 -1:00:00'"
    "2 time to-gmt '2026-02-28 12:00:1e1'" "2 time to-gmt '2026-13-01 00:00:00'"
    "0 path long '$nonascii'" "0 path delete '$files/doomed'"
    "0 language text 108" "0 language suffixes" "3 language localised-file '$files/none.chm'" "0 network cards"
    "0 network adapters" "3 network interface nope" "0 inventory" "0 about"
)
# (settings set under Wine: tests/e2e/settings_test.sh)
$windows || rows+=("0 settings set Settings Colour red" "4 path delete /proc/version" "0 path browse")
for i in "${!rows[@]}"; do
    eval "args=(${rows[i]})"
    expected=${args[0]}
    if ((i % 2)); then run "${args[@]:1}" --registry "$good" --json </dev/null; else run --registry "$good" --json "${args[@]:1}" </dev/null; fi
    if [ "$expected" = 2 ]; then
        check "${rows[i]}: a usage error naming the form" '[ "$rc" = 2 ] && [ -z "$out" ] && matches "$err" "yyyy-mm-dd hh:nn:ss"'
    else
        check "${rows[i]} --json" '[ "$rc" = "$expected" ] && python3 -m json.tool <<<"$out" >/dev/null'
    fi
done
# A non-ASCII argument comes back as it went in (on Windows: the wide command
# line, UTF-8 out; Wine maps it under a UTF-8 locale).
LANG=C.UTF-8 try "a non-ASCII argument read back" '[ "$(python3 -c "import json,sys; print(json.load(sys.stdin)[\"Path\"])" <<<"$out")" = "$nonascii" ]' --json path long "$nonascii"

unset ProgramData

# What only a Linux build does or shows.
if ! $windows; then
    # USERNAME first; where it is unset, the login name.
    USERNAME=pat.example try "UserName from USERNAME" 'matches "$out" "^UserName +: pat\.example$"' pcinfo
    check "UserName without USERNAME is the login name" 'matches "$(env -u USERNAME "${tool[@]}" pcinfo)" "^UserName +: $(id -un)\$"'

    # Registry files are read as streams (missing, folders and deep keys: the
    # RegFile suite).
    try "a /proc file is read, not taken for empty" '[ "$rc" = 1 ] && matches "$err" "status:1: not a registry file"' --registry /proc/self/status pcinfo
    try "a process substitution and /dev/stdin are read" '[ "$rc" = 0 ]' --registry <(cat "$good") --registry /dev/stdin pcinfo <"$good"

    # --trace shows the diagnostic output on stderr; it needs the marker to say much.
    mkdir -p "$work/data/QUORL"
    touch "$work/data/QUORL/debug_ot"
    ProgramData="$work/data" try "--trace writes the banner and the tests to stderr" \
        '[ "$rc" = 0 ] && matches "$err" "^\*\*\* START version: " && matches "$err" "^OS is XP or higher$"' --trace pcinfo --json
    ProgramData="$work/data" try "without --trace stderr stays quiet" '[ "$rc" = 0 ] && [ -z "$err" ]' pcinfo --json

    try "about without --json: no window, error 429, exit 1" '[ "$rc" = 1 ] && matches "$err" "error 429"' about

    # The bash completion comes from the same model as the help.
    completed=$("${tool[@]}" completion bash | bash -c '. /dev/stdin; COMP_WORDS=(ostrel cat); COMP_CWORD=1; _ostrel; echo "${COMPREPLY[*]}"')
    check "completion: ostrel cat completes to catalogue" '[ "$completed" = catalogue ]'

    # settings set: a value that went nowhere exits 4 with the component's reason.
    ProgramData="$work/no-such-folder" try "settings set: not stored, exit 4 with the reason" '[ "$rc" = 4 ] && matches "$err" "^ostrel: not stored: \[gsubSaveApplicationSetting\] Unable to save"' settings set Settings Colour red
fi

finish cli_test
