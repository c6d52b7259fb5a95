# Sourced first by the tool's end-to-end scripts, with the script's own
# arguments ([wine] /path/to/ostrel): sets tool (the command as an array),
# windows (true for a Windows build), fixtures, work (a scratch folder,
# removed on exit) and failures=0. A script with a run of its own defines
# it after sourcing this; finish ends every script.
[ $# -ge 1 ] || { echo "usage: $0 [wine] /path/to/ostrel" >&2; exit 2; }
tool=("$@")
case "${tool[-1]}" in *.exe) windows=true ;; *) windows=false ;; esac
fixtures="$(cd "$(dirname "${BASH_SOURCE[0]}")/../fixtures" && pwd)"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# has TEXT PART: the text holds the part, as it stands (no pattern).
has() { grep -qF -- "$2" <<<"$1"; }

# expect NAME EXPECTED ACTUAL: the two texts must be equal; a diff when not.
expect() { # NAME EXPECTED ACTUAL
    if [ "$2" == "$3" ]; then echo "ok: $1"; return; fi
    echo "FAIL: $1"
    diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") | sed 's/^/    /'
    failures=$((failures + 1))
}

# run ARGS...: the tool's stdout, stderr (CR removed) and exit code in out, err, rc;
# the "Registry: ..." line the commands of the catalogue write to stderr is
# set apart in registry_line.
run() {
    "${tool[@]}" "$@" >"$work/out" 2>"$work/err"
    rc=$?
    out=$(tr -d '\r' <"$work/out")
    err=$(tr -d '\r' <"$work/err" | grep -av '^Registry: ')
    registry_line=$(tr -d '\r' <"$work/err" | grep -a '^Registry: ')
}

# check DESCRIPTION CONDITION: the condition (evaluated) must hold.
check() {
    eval "$2" && return
    echo "FAIL: $1 (rc=${rc:-})" >&2
    printf '  stdout: %s\n  stderr: %s\n' "${out:-}" "${err:-}" >&2
    failures=$((failures + 1))
}

# try DESCRIPTION CONDITION ARGS...: run ARGS, then check CONDITION.
try() {
    local what="$1" condition="$2"
    shift 2
    run "$@"
    check "$what" "$condition"
}

# finish NAME: the summary; exits non-zero when a check failed.
finish() {
    [ "$failures" = 0 ] || { echo "$1: $failures check(s) failed" >&2; exit 1; }
    echo "$1: all checks passed"
    exit 0
}
