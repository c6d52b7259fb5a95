#!/usr/bin/env bash
# ostrel.exe under Wine, each build through the loader of its bitness (run by
# scripts/test with its throwaway WINEPREFIX): the tool's end-to-end tests;
# the WMI inventory, which Wine's WMI answers in full, its --json replayed by
# the Windows and the Linux tool (wncServices.WmiInfo: vbs/services.vbs); the
# user's interface language (Wine takes it from LC_ALL/LANG), the tool copied
# without its data files, and the help viewer it loads (the language
# choice's rules: the LanguageText suite).
set -uo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
wine_test_setup
unset OSTREL_LANGUAGE LC_MESSAGES LANGUAGE
work="$(mktemp -d)"
# The server is gone before the next script starts: one still going down
# makes that script's first registry writes fail.
trap 'rm -rf "$work"; wineserver -k >/dev/null 2>&1 || true; wineserver -w >/dev/null 2>&1 || true' EXIT
lines() { tr -d '\r' | paste -sd ' '; }
linux="$root/build/linux/bin/ostrel"

for bits in 64 32; do
  echo "--- win$bits"
  exe="$root/build/win$bits/bin/ostrel.exe"
  tool=("$(wine_of "$bits")" "$exe")
  [ -x "$exe" ] || { fail "win$bits: no ostrel.exe"; continue; }
  bash "$root/tests/e2e/cli_test.sh" "${tool[@]}" || fail "win$bits: cli_test.sh"
  # A program start costs far more under Wine: fewer saves per writer here
  # (the full count: natively, and the lock itself in the Windows suites).
  SAVES=25 bash "$root/tests/e2e/settings_test.sh" "${tool[@]}" || fail "win$bits: settings_test.sh"

  "${tool[@]}" inventory >"$work/text" 2>/dev/null || fail "win$bits inventory: exit $?"
  same "win$bits inventory: CR LF line ends (lines without CR)" 0 "$(grep -c $'[^\r]$' "$work/text")"
  "${tool[@]}" inventory --json >"$work/pc.json" 2>/dev/null || fail "win$bits inventory --json: exit $?"
  same "win$bits --wmi replays --json" "$(tail -n +2 "$work/text" | cat -A)" \
    "$("${tool[@]}" --wmi "$(winepath -w "$work/pc.json")" inventory 2>/dev/null | tail -n +2 | cat -A)"
  [ ! -x "$linux" ] || same "win$bits --json replayed by the Linux tool" "$(tail -n +2 "$work/text")" \
    "$("$linux" --wmi "$work/pc.json" inventory | tail -n +2)"

  same "win$bits: the UI language from LC_ALL=de_DE.UTF-8" "de de-DE|Info über " \
      "$(LC_ALL=de_DE.UTF-8 "${tool[@]}" language suffixes | lines)|$(LC_ALL=de_DE.UTF-8 "${tool[@]}" language text 312 | lines)"
  # Copied alone: the built-in texts.
  alone="$work/win$bits/ostrel.exe"
  install -D "$exe" "$alone"
  same "win$bits alone: text 108" "Ostrel" "$("${tool[0]}" "$alone" language text 108 2>&1 | lines)"

  # A planted hhctrl.ocx beside the program is never loaded: only the system's.
  # Wine takes its own hhctrl.ocx before any file unless told to prefer native
  # ones, as Windows does.
  gcc=$([ "$bits" = 64 ] && echo x86_64 || echo i686)-w64-mingw32-gcc
  mark=$(winepath -w "$work/win$bits/planted" 2>/dev/null | sed 's/\\/\\\\/g')
  printf '#include <windows.h>\nBOOL WINAPI DllMain(HINSTANCE h, DWORD why, LPVOID r) {\n  if (why == DLL_PROCESS_ATTACH) CloseHandle(CreateFileA("%s", GENERIC_WRITE, 0, 0, CREATE_ALWAYS, 0, 0));\n  return TRUE;\n}\n' "$mark" >"$work/planted.c"
  if "$gcc" -shared -o "$work/win$bits/hhctrl.ocx" "$work/planted.c" 2>/dev/null; then
    touch "$work/win$bits/Guideen.chm"
    WINEDLLOVERRIDES="$WINEDLLOVERRIDES;hhctrl.ocx=n,b" timeout 60 "${tool[0]}" "$alone" language help Guide.chm >/dev/null 2>&1
    same "win$bits: a planted hhctrl.ocx beside the program is not loaded" "no" \
        "$([ -e "$work/win$bits/planted" ] && echo yes || echo no)"
  fi
done
echo "cli: $failures failed"
[ "$failures" = 0 ]
