# Sourced by the tool's end-to-end scripts. The caller sets tool (the
# command as an array), work (a scratch folder) and failures=0.

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
