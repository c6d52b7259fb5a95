#!/usr/bin/env bash
# The About window of Ostrel.dll under Wine on a virtual X screen: a C++ host
# shows it through wncServices.ShowAbout, reads it back through the window
# API, closes it with Enter and with Escape, and presses System Info where
# the tool's registry keys are missing; a screenshot of the window is kept as
# build/wine-about/about-<build>.png (not committed). Also `ostrel.exe about`
# shows the dialog and Escape ends it. For the win64 and the win32 build,
# each with the built-ins of its own bitness. Uses $WINEPREFIX, or a throwaway
# prefix of its own when unset. Non-zero on any failure.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
wine_test_setup
shots="$root/build/wine-about"

if ! command -v xvfb-run >/dev/null; then
  fail "xvfb-run is missing (scripts/install-deps installs it)"
  exit 1
fi

version="$(sed -n 's/^project(Ostrel VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")"
[ -n "${work:-}" ] || work="$(mktemp -d)"
mkdir -p "$shots"

# The system-information tool counts as absent only while neither of its keys is there.
tool_keys_absent() { # tool_keys_absent <32|64>
  ! wine_builtin "$1" reg query 'HKLM\SOFTWARE\Microsoft\Shared Tools\MSINFO' /v PATH >/dev/null 2>&1 &&
    ! wine_builtin "$1" reg query 'HKLM\SOFTWARE\Microsoft\Shared Tools Location' /v MSINFO >/dev/null 2>&1
}

# On the virtual screen: the host, with a screenshot once the window is up.
# Runs inside xvfb-run (DISPLAY set); everything has a time limit.
on_screen() { # on_screen <bits> <bin folder> <name>
  local bits="$1" bin="$2" name="$3" host_pid waited=0
  rm -f "$work/ready" "$work/go"
  # In a desktop window of Wine's own, which draws the windows' frames (the
  # virtual screen has no window manager to draw them).
  timeout 180 "$(wine_of "$bits")" explorer /desktop=ostrel,1024x768 \
    "$(winepath -w "$bin/ostrel_about_host.exe")" "V$version" \
    "$(winepath -w "$work/ready")" "$(winepath -w "$work/go")" >"$work/host.out" 2>&1 &
  host_pid=$!
  while [ ! -e "$work/ready" ] && kill -0 "$host_pid" 2>/dev/null && [ $((waited++)) -lt 600 ]; do sleep 0.1; done
  [ ! -e "$work/ready" ] ||
    xwd -root -silent -display "$DISPLAY" | xwdtopnm 2>/dev/null | pnmtopng >"$shots/about-$name.png" 2>/dev/null
  touch "$work/go"
  local rc=0
  wait "$host_pid" || rc=$?
  cat "$work/host.out" | tr -d '\r'
  passes "screenshot build/wine-about/about-$name.png" test -s "$shots/about-$name.png"
  # The desktop doesn't hand on the host's exit code: its last line tells.
  [ $rc = 0 ] && grep -q '^about_host: 0 failure' "$work/host.out" && echo "ok   about host: no failure" ||
    echo "FAIL about host (exit $rc)"

  # The tool shows the same window; Escape (posted by the host) ends it.
  timeout 60 "$(wine_of "$bits")" "$bin/ostrel.exe" about >/dev/null 2>&1 &
  local tool_pid=$!
  timeout 60 "$(wine_of "$bits")" "$bin/ostrel_about_host.exe" --escape "About Ostrel" | tr -d '\r' ||
    echo "FAIL escape host exit $?"
  passes "ostrel.exe about ends with Escape, exit 0" wait "$tool_pid"
}

# The script again, inside xvfb-run: only the part on the screen.
if [ "${1:-}" = --on-screen ]; then
  on_screen "$2" "$3" "$4"
  wineserver -k >/dev/null 2>&1 || true
  exit 0
fi

test_build() { # test_build <bin folder> <bits> <name>
  local bin="$1" bits="$2" name="$3" dll output
  [ -e "$bin/Ostrel.dll" ] || { fail "$name: $bin/Ostrel.dll is missing"; return; }
  echo "--- $name"
  dll="$(winepath -w "$bin/Ostrel.dll")"
  passes "regsvr32 Ostrel.dll" wine_builtin "$bits" regsvr32 /s "$dll"
  passes "the system-information tool's keys are absent (else its message can't be tested)" tool_keys_absent "$bits"

  # Wine's desktop takes the display its session started with: a session of
  # its own on the virtual screen, ended before the next test's.
  wineserver -k >/dev/null 2>&1 || true
  wineserver -w >/dev/null 2>&1 || true
  output="$(work="$work" xvfb-run -a -s "-screen 0 1024x768x24" \
    bash "$here/about_window.sh" --on-screen "$bits" "$bin" "$name" 2>&1)" || true
  wineserver -k >/dev/null 2>&1 || true
  wineserver -w >/dev/null 2>&1 || true
  sed '/^$/d; /^\(ok\|FAIL\)/!s/^/     /' <<<"$output"
  failures=$((failures + $(grep -c '^FAIL' <<<"$output" || true)))
  grep -q '^ok  : ShowAbout has the dispatch id 40' <<<"$output" || fail "$name: the host did not run"

  passes "regsvr32 /u Ostrel.dll" wine_builtin "$bits" regsvr32 /u /s "$dll"
}

test_build "$win64" 64 win64
if wine32_runs; then
  test_build "$win32" 32 win32
else
  echo "skip win32: no 32-bit Wine"
fi

rm -rf "$work"
[ "$failures" -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "about_window: all checks passed"
