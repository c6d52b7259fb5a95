#!/usr/bin/env bash
# The language choice of ostrel.exe under Wine, each build through the
# loader of its bitness: the user's interface language (Wine takes it from
# LC_ALL/LANG) under OSTREL_LANGUAGE; the tool copied without its data files,
# and the help viewer it loads (run by scripts/test with its throwaway
# WINEPREFIX). The choice's rules: the LanguageText suite.
set -uo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
wine_test_setup
unset OSTREL_LANGUAGE LC_ALL LC_MESSAGES LANG LANGUAGE
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

lines() { tr -d '\r' | paste -sd ' '; }

for bits in 64 32; do
  exe="$root/build/win$bits/bin/ostrel.exe"
  if [ ! -f "$exe" ]; then echo "--- win$bits: not built, skipped"; continue; fi
  echo "--- win$bits"
  loader=$(wine_of "$bits")
  same "win$bits: the UI language from LC_ALL=de_DE.UTF-8" "de de-DE|Info über " \
      "$(LC_ALL=de_DE.UTF-8 "$loader" "$exe" language suffixes | lines)|$(LC_ALL=de_DE.UTF-8 "$loader" "$exe" language text 312 | lines)"
  same "win$bits: OSTREL_LANGUAGE over the UI language" "en en-GB" \
      "$(LC_ALL=de_DE.UTF-8 OSTREL_LANGUAGE=en-gb "$loader" "$exe" language suffixes | lines)"

  # Copied alone: the built-in texts.
  mkdir -p "$work/win$bits"
  cp "$exe" "$work/win$bits/"
  alone="$work/win$bits/ostrel.exe"
  same "win$bits alone: text 108" "Ostrel" "$("$loader" "$alone" language text 108 2>&1 | lines)"

  # A planted hhctrl.ocx beside the program is never loaded: only the system's.
  # Wine takes its own hhctrl.ocx before any file unless told to prefer native
  # ones, as Windows does.
  gcc=$([ "$bits" = 64 ] && echo x86_64 || echo i686)-w64-mingw32-gcc
  mark=$(winepath -w "$work/win$bits/planted" 2>/dev/null | sed 's/\\/\\\\/g')
  printf '#include <windows.h>\nBOOL WINAPI DllMain(HINSTANCE h, DWORD why, LPVOID r) {\n  if (why == DLL_PROCESS_ATTACH) CloseHandle(CreateFileA("%s", GENERIC_WRITE, 0, 0, CREATE_ALWAYS, 0, 0));\n  return TRUE;\n}\n' "$mark" >"$work/planted.c"
  if "$gcc" -shared -o "$work/win$bits/hhctrl.ocx" "$work/planted.c" 2>/dev/null; then
    touch "$work/win$bits/Guideen.chm"
    WINEDLLOVERRIDES="$WINEDLLOVERRIDES;hhctrl.ocx=n,b" timeout 60 "$loader" "$alone" language help Guide.chm >/dev/null 2>&1
    same "win$bits: a planted hhctrl.ocx beside the program is not loaded" "no" \
        "$([ -e "$work/win$bits/planted" ] && echo yes || echo no)"
  fi
done

if [ "$failures" != 0 ]; then echo "language: $failures failed" >&2; exit 1; fi
echo "language: all passed"
