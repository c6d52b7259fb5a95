#!/usr/bin/env bash
# The command-line tool end to end: bash cli_test.sh /path/to/ostrel
# (a Windows build runs as: bash cli_test.sh wine /path/to/ostrel.exe).
# shellcheck disable=SC2016,SC2034 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
has() { grep -qE -- "$2" <<<"$1"; }

keys="ComputerName UserName ClientSiteName DomainName DomainControllerAddress DomainControllerName ForestName PrimaryDomainController SiteName Groups IsNTPlatform IsNT4 IsX64Based IsXPOrHigher IsXPEmbedded"

# pcinfo as text: every key once, in order, aligned on " : "; names, Nothing, True/False.
run pcinfo
check "pcinfo lists the keys in order" '[ "$rc" = 0 ] && [ "$(cut -d" " -f1 <<<"$out" | xargs)" = "$keys" ]'
check "pcinfo aligns the colons" '[ "$(sed "s/ : .*//" <<<"$out" | awk "{print length}" | sort -u | wc -l)" = 1 ]'
check "pcinfo values" '[ "$(grep -cE "^(Computer|User)Name +: [^ ]|^Groups +: Nothing$|^Is[A-Za-z0-9]+ +: (True|False)$" <<<"$out")" = 8 ]'

# pcinfo --json: one object; strings, a null Groups and booleans, in the same order.
run pcinfo --json
shape=$(sed -E 's/^  "([A-Za-z0-9]+)": (".*"|null|true|false),?$/\1=\2/; s/=".*"$/=text/; s/=(true|false)$/=bool/' <<<"$out" | tr '\n' ' ')
expected="{ "
for key in $keys; do
    case $key in Groups) expected+="$key=null " ;; Is*) expected+="$key=bool " ;; *) expected+="$key=text " ;; esac
done
check "pcinfo --json" '[ "$rc" = 0 ] && [ "$shape" = "$expected} " ]'

if ! $windows; then
    # USERNAME first; where it is unset, the login name.
    out=$(USERNAME=pat.example "${tool[@]}" pcinfo)
    check "UserName from USERNAME" 'has "$out" "^UserName +: pat\.example$"'
    out=$(env -u USERNAME "${tool[@]}" pcinfo)
    check "UserName without USERNAME is the login name" 'has "$out" "^UserName +: $(id -un)\$"'
fi

run --version
check "--version" 'has "$out" "^ostrel [0-9]+\.[0-9]+\.[0-9]+$"'
run --help
check "--help lists pcinfo and --registry" '[ "$rc" = 0 ] && has "$out" pcinfo && has "$out" --registry'

# Usage errors: exit 2, message on stderr, nothing on stdout.
for args in "" "no-such-command" "pcinfo --no-such-option" "--registry"; do
    run $args # split on purpose
    check "usage error '$args'" '[ "$rc" = 2 ] && [ -n "$err" ] && [ -z "$out" ]'
done

# Registry files: a bad one stops the tool naming the file and the line.
good="$work/good.reg"
bad="$work/bad.reg"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Some"="thing"\r\n' >"$good"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Broken"=nonsense\r\n' >"$bad"
run --registry "$good" --registry "$bad" pcinfo
check "a bad registry file exits 1 naming file and line" '[ "$rc" = 1 ] && has "$err" "bad\.reg(:|.*line )4"'
run --registry "$work/missing.reg" pcinfo
check "a missing registry file exits 1 naming it" '[ "$rc" = 1 ] && has "$err" "missing\.reg"'

# Registry files are read as streams; hostile ones are refused by name.
run --registry "$work" pcinfo
check "a directory exits 1 as a directory" '[ "$rc" = 1 ] && has "$err" "is a directory" && has "$err" "${work##*/}"'
printf 'REGEDIT4\n[HKEY_LOCAL_MACHINE\\%s]\n' "$(printf 'k\\%.0s' $(seq 600))x" >"$work/deep.reg"
run --registry "$work/deep.reg" pcinfo
check "a key deeper than 512 levels exits 1 naming file and line" '[ "$rc" = 1 ] && has "$err" "deep\.reg(:|.*line )2"'
if ! $windows; then
    run --registry /proc/self/status pcinfo
    check "a /proc file is read, not taken for empty" '[ "$rc" = 1 ] && has "$err" "status:1: not a registry file"'
    "${tool[@]}" --registry <(cat "$good") --registry /dev/stdin pcinfo <"$good" >"$work/out" 2>"$work/err"
    rc=$?
    check "a process substitution and /dev/stdin are read" '[ "$rc" = 0 ]'
    { printf 'REGEDIT4\n[HKEY_LOCAL_MACHINE\\'; printf 'a\\%.0s' $(seq 200000); printf 'b]\n'; } |
        "${tool[@]}" --registry /dev/stdin pcinfo >"$work/out" 2>"$work/err"
    rc=$?
    err=$(cat "$work/err")
    check "200,000 levels through a pipe: an error, no crash" '[ "$rc" = 1 ] && has "$err" "stdin:2: "'
fi

if $windows; then sep=';'; else sep=':'; fi
export OSTREL_REGISTRY="$good$sep$bad"
run pcinfo
check "OSTREL_REGISTRY is read, every file of the list" '[ "$rc" = 1 ] && has "$err" "bad\.reg"'
run --registry "$good" pcinfo
check "--registry takes the place of OSTREL_REGISTRY" '[ "$rc" = 0 ]'
unset OSTREL_REGISTRY

if ! $windows; then
    # --trace shows the diagnostic output on stderr; it needs the marker to say much.
    mkdir -p "$work/data/QUORL"
    touch "$work/data/QUORL/debug_ot"
    export ProgramData="$work/data"
    run --trace pcinfo --json
    check "--trace writes the banner and the tests to stderr" \
        '[ "$rc" = 0 ] && has "$err" "^\*\*\* START version: " && has "$err" "^OS is XP or higher$"'
    run pcinfo --json
    check "without --trace stderr stays quiet" '[ "$rc" = 0 ] && [ -z "$err" ]'
    unset ProgramData
fi

# Processes: the tool finds itself; a started program is ready once its file is there.
program=$(tr '[:lower:]' '[:upper:]' <<<"$(basename "${tool[-1]}")")
if $windows; then folder='C:\Some\Folder\'; else folder=/some/folder/; fi
run process find "$folder$program"
check "process find: the tool itself, whatever folder and case" '[ "$rc" = 0 ] && [ "$out" -gt 0 ]'
run process find no-such-program
check "process find: 0 and exit 3 for none" '[ "$rc" = 3 ] && [ "$out" = 0 ]'
if $windows; then
    ready="$(winepath -w "$work")\\ready.txt"
    command="cmd.exe /c echo up>\"$ready\""
else
    ready="$work/ready.txt"
    command="sh -c \"echo up > '$ready'; sleep 2\""
fi
run process run --ready-file "$ready" "$command"
check "process run: ready, with the id" '[ "$rc" = 0 ] && has "$out" "^ready [0-9]+$"'
run process run "no-such-program --flag"
check "process run: a program that can't start is not ready" '[ "$rc" = 3 ] && [ "$out" = "not ready" ]'

# The About window as the component builds it (shown only on Windows, so only --json here).
run about --json
flat=$(tr -d ' \n' <<<"$out")
check "about --json: caption, cmdOK in twips and pixels, default and cancel" \
    '[ "$rc" = 0 ] && has "$flat" "\"Caption\":\"AboutOstrel\"" &&
     has "$flat" "\"Name\":\"cmdOK\",\"Kind\":\"CommandButton\",\"Text\":\"OK\",\"TabIndex\":0,\"Twips\":\{\"Left\":1507,\"Top\":1170,\"Width\":1260,\"Height\":345\},\"Pixels\":\{\"Left\":100,\"Top\":78,\"Width\":84,\"Height\":23\},\"Default\":true,\"Cancel\":true" &&
     has "$flat" "\"DefaultButton\":\"cmdOK\",\"CancelButton\":\"cmdOK\""'
check "about --json: the tab order, the logo at its 150 x 56 pixels, the version label" \
    'has "$flat" "\"TabOrder\":\[\"cmdOK\",\"picIcon\",\"cmdSysInfo\",\"lblTitle\",\"lblVersion\"\]" &&
     has "$flat" "\"Pixels\":\{\"Left\":216,\"Top\":8,\"Width\":150,\"Height\":56\}" &&
     has "$flat" "\"Text\":\"V[0-9]+\\.[0-9]+\\.[0-9]+\""'
OSTREL_LANGUAGE=de run about --json
check "about --json: German texts with OSTREL_LANGUAGE=de" '[ "$rc" = 0 ] && has "$out" "\"Caption\": \"Info über Ostrel\""'
if ! $windows; then
    run about
    check "about without --json on Linux: no window, error 429, exit 1" '[ "$rc" = 1 ] && has "$err" "error 429"'
fi

finish cli_test
