# Sourced by the tool's end-to-end scripts. The caller sets tool (the
# command as an array), work (a scratch folder) and failures=0; a script
# with a run of its own defines it after sourcing this.

# expect NAME EXPECTED ACTUAL: the two texts must be equal; a diff when not.
expect() { # NAME EXPECTED ACTUAL
    if [ "$2" == "$3" ]; then echo "ok: $1"; return; fi
    echo "FAIL: $1"
    diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") | sed 's/^/    /'
    failures=$((failures + 1))
}


# run ARGS...: the tool's stdout, stderr (CR removed) and exit code in out, err, rc.
run() {
    "${tool[@]}" "$@" >"$work/out" 2>"$work/err"
    rc=$?
    out=$(tr -d '\r' <"$work/out")
    err=$(tr -d '\r' <"$work/err")
}

# check DESCRIPTION CONDITION: the condition (evaluated) must hold.
check() {
    eval "$2" && return
    echo "FAIL: $1 (rc=${rc:-})" >&2
    printf '  stdout: %s\n  stderr: %s\n' "${out:-}" "${err:-}" >&2
    failures=$((failures + 1))
}
