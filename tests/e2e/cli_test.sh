#!/usr/bin/env bash
# The command-line tool end to end: bash cli_test.sh /path/to/ostrel
# (a Windows build runs as: bash cli_test.sh wine /path/to/ostrel.exe).
set -u
[ $# -ge 1 ] || { echo "usage: $0 [wine] /path/to/ostrel" >&2; exit 2; }
tool=("$@")
windows=false
case "${tool[-1]}" in *.exe) windows=true ;; esac

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# run ARGS...: the tool's stdout, stderr (CR removed) and exit code in out, err, rc.
run() {
    "${tool[@]}" "$@" >"$work/out" 2>"$work/err"
    rc=$?
    out=$(tr -d '\r' <"$work/out")
    err=$(tr -d '\r' <"$work/err")
}

# check DESCRIPTION COMMAND...: the command must succeed.
check() {
    local what=$1
    shift
    if ! "$@"; then
        echo "FAIL: $what (rc=$rc)" >&2
        printf '  stdout: %s\n  stderr: %s\n' "$out" "$err" >&2
        failures=$((failures + 1))
    fi
}
has() { grep -qE -- "$2" <<<"$1"; }

keys="ComputerName UserName ClientSiteName DomainName DomainControllerAddress DomainControllerName ForestName PrimaryDomainController SiteName Groups IsNTPlatform IsNT4 IsX64Based IsXPOrHigher IsXPEmbedded"

# pcinfo as text: every key once, in order, aligned on " : ".
run pcinfo
check "pcinfo exits 0" test "$rc" = 0
check "pcinfo lists the keys in order" test "$(cut -d' ' -f1 <<<"$out" | tr '\n' ' ')" = "$keys "
check "pcinfo aligns the colons" test "$(awk -F' : ' '{print length($1)}' <<<"$out" | sort -u | wc -l)" = 1
check "pcinfo has a computer name" has "$out" '^ComputerName +: [^ ]'
check "pcinfo names the user" has "$out" '^UserName +: [^ ]'
check "pcinfo Groups is Nothing" has "$out" '^Groups +: Nothing$'
check "pcinfo shows booleans as True/False" has "$out" '^IsNT4 +: (True|False)$'

# pcinfo --json: one object, strings, null Groups, booleans.
run pcinfo --json
check "pcinfo --json exits 0" test "$rc" = 0
check "--json is one object" has "$(head -1 <<<"$out")$(tail -1 <<<"$out")" '^\{\}$'
for key in ComputerName UserName ClientSiteName DomainName DomainControllerAddress \
    DomainControllerName ForestName PrimaryDomainController SiteName; do
    check "--json $key is a string" has "$out" "^  \"$key\": \".*\",\$"
done
check "--json Groups is null" has "$out" '^  "Groups": null,$'
for key in IsNTPlatform IsNT4 IsX64Based IsXPOrHigher IsXPEmbedded; do
    check "--json $key is a boolean" has "$out" "^  \"$key\": (true|false),?\$"
done
check "--json has 15 keys" test "$(grep -c '^  "' <<<"$out")" = 15

if ! $windows; then
    # USERNAME first; where it is unset, the login name.
    out=$(USERNAME=pat.example "${tool[@]}" pcinfo)
    check "UserName from USERNAME" has "$out" '^UserName +: pat\.example$'
    out=$(env -u USERNAME "${tool[@]}" pcinfo)
    check "UserName without USERNAME is the login name" has "$out" "^UserName +: $(id -un)\$"
fi

run --version
check "--version" has "$out" '^ostrel [0-9]+\.[0-9]+\.[0-9]+$'
run --help
check "--help exits 0 and lists pcinfo and --registry" \
    eval 'test "$rc" = 0 && has "$out" "pcinfo" && has "$out" "--registry"'

# Usage errors: exit 2, message on stderr, nothing on stdout.
for args in "" "no-such-command" "pcinfo --no-such-option" "--registry"; do
    # shellcheck disable=SC2086
    run $args
    check "usage error '$args' exits 2 with a message" \
        eval 'test "$rc" = 2 && test -n "$err" && test -z "$out"'
done

# Registry files: a bad one stops the tool naming the file and the line.
good="$work/good.reg"
bad="$work/bad.reg"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Some"="thing"\r\n' >"$good"
printf 'REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\r\n"Broken"=nonsense\r\n' >"$bad"
run --registry "$good" pcinfo
check "a good registry file is read" test "$rc" = 0
run --registry "$good" --registry "$bad" pcinfo
check "a bad registry file exits 1 naming file and line" \
    eval 'test "$rc" = 1 && has "$err" "bad\.reg(:|.*line )4"'
run --registry "$work/missing.reg" pcinfo
check "a missing registry file exits 1 naming it" eval 'test "$rc" = 1 && has "$err" "missing\.reg"'

if $windows; then sep=';'; else sep=':'; fi
export OSTREL_REGISTRY="$good$sep$bad"
run pcinfo
check "OSTREL_REGISTRY is read, every file of the list" eval 'test "$rc" = 1 && has "$err" "bad\.reg"'
run --registry "$good" pcinfo
check "--registry takes the place of OSTREL_REGISTRY" test "$rc" = 0
unset OSTREL_REGISTRY

if ! $windows; then
    # --trace shows the diagnostic output on stderr; it needs the marker to say much.
    mkdir -p "$work/data/QUORL"
    touch "$work/data/QUORL/debug_ot"
    export ProgramData="$work/data"
    run --trace pcinfo --json
    check "--trace writes the banner and the tests to stderr" \
        eval 'test "$rc" = 0 && has "$err" "^\*\*\* START version: " && has "$err" "^OS is XP or higher$"'
    run pcinfo --json
    check "without --trace stderr stays quiet" eval 'test "$rc" = 0 && test -z "$err"'
    unset ProgramData
fi

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "cli_test: all checks passed"
