# Sourced by scripts/test and tests/wine/*.sh: how each bitness is started.
# Once wine32 is installed, `wine` is the 32-bit loader, and a built-in named
# without a path (cscript or reg after the loader) runs in its 32-bit form and sees
# the 32-bit registry view. So a 64-bit built-in starts through the 64-bit
# loader by its system32 path, a 32-bit one by its syswow64 path, and neither
# is ever named bare.

wine64_loader=/usr/lib/wine/wine64
[ -x "$wine64_loader" ] || wine64_loader=wine

# wine_of <32|64>: the loader for a program of that bitness.
wine_of() { if [ "$1" = 32 ]; then echo wine; else echo "$wine64_loader"; fi; }

# wine_builtin <32|64> <program> [args]: one of the prefix's own programs (cscript,
# reg, regsvr32, cmd) in the given bitness.
wine_builtin() {
  local bits="$1" program="$2" folder=system32
  shift 2
  [ "$bits" = 32 ] && folder=syswow64
  "$(wine_of "$bits")" "C:\\windows\\$folder\\$program.exe" "$@"
}

# A 32-bit Wine is there when the prefix runs its 32-bit cmd.
wine32_runs() { wine_builtin 32 cmd /c exit 0 >/dev/null 2>&1; }

# builtin_arch <32|64>: the PROCESSOR_ARCHITECTURE a built-in of that
# bitness sees (AMD64 or x86), so that a test can prove what it ran.
builtin_arch() { wine_builtin "$1" cmd /c 'echo %PROCESSOR_ARCHITECTURE%' 2>/dev/null | tr -d '\r'; }

# new_wine_prefix: a throwaway 64-bit prefix (WoW64 when wine32 is there),
# exported as WINEPREFIX; its wineserver is stopped and the folder removed on
# exit.
new_wine_prefix() {
  WINEPREFIX="$(mktemp -d /tmp/ostrel-wine.XXXXXX)"
  export WINEPREFIX WINEARCH=win64
  export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$WINEPREFIX"' EXIT
  "$wine64_loader" wineboot -i >/dev/null 2>&1 || true
  # Only a 64-bit prefix has a syswow64 folder.
  if [ ! -d "$WINEPREFIX/drive_c/windows/syswow64" ]; then
    echo "the Wine prefix $WINEPREFIX is not a 64-bit prefix" >&2
    return 1
  fi
}

# wine_test_setup: the start of a host test script. Sets root (the
# repository), win64 and win32 (the build folders, or OSTREL_WIN64_BIN and
# OSTREL_WIN32_BIN) and failures=0, quietens Wine, and makes a throwaway
# prefix unless WINEPREFIX names one.
wine_test_setup() {
  root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
  win64="${OSTREL_WIN64_BIN:-$root/build/win64/bin}"
  win32="${OSTREL_WIN32_BIN:-$root/build/win32/bin}"
  failures=0
  export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  [ -n "${WINEPREFIX:-}" ] || new_wine_prefix
}

# ok and fail WHAT: one line of a host test; fail counts it in failures.
ok() { echo "ok   $*"; }
fail() {
  echo "FAIL $*"
  failures=$((failures + 1))
}

# same WHAT EXPECTED ACTUAL: a check that the two texts are equal.
same() {
  if [ "$2" == "$3" ]; then ok "$1"; else fail "$1: expected '$2', got '$3'"; fi
}

# passes WHAT COMMAND...: a check that the command succeeds (its output dropped).
passes() {
  local what="$1"
  shift
  if "$@" >/dev/null 2>&1; then ok "$what"; else fail "$what"; fi
}

# run_vbs <32|64> <file> [args]: the VBScript, after vbs/check.vbs (Option
# Explicit and the Check helper), in the script host of that bitness; its
# exit code is the number of failed checks.
run_vbs() {
  local bits="$1" script="$2" joined out status=0
  shift 2
  joined="$(mktemp --suffix=.vbs -p "$WINEPREFIX")"
  # A Guard goes before each Check statement that doesn't itself look at Err
  # (nor is a bare Check True/False in a branch on Err), and before the end.
  {
    cat "$(dirname "${BASH_SOURCE[0]}")/vbs/check.vbs"
    awk '
      function flush() {
        if (statement ~ /^[ \t]*Check / && statement !~ /Err/ && statement !~ /^[ \t]*Check (True|False),/)
          print "Guard " first
        if (statement ~ /^[ \t]*WScript\.Quit failures/) print "Guard " first
        printf "%s", lines
        statement = ""; lines = ""
      }
      {
        if (lines == "") first = FNR
        statement = statement $0; lines = lines $0 "\n"
        if ($0 !~ /_[ \t\r]*$/) flush()
      }
      END { if (lines != "") flush() }' "$script"
  } >"$joined"
  out="$(wine_builtin "$bits" cscript //nologo "$(winepath -w "$joined")" "$@")" || status=$?
  rm -f "$joined"
  printf '%s\n' "$out"
  # A script that doesn't compile runs nothing, and Wine's cscript says so in
  # no way: a run without a single check fails.
  if ! grep -qE '^(ok|FAIL) ' <<<"$out"; then
    echo "FAIL $(basename "$script") ran no check (a syntax error?)"
    status=1
  fi
  return $status
}
