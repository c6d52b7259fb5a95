#!/usr/bin/env bash
# The WMI inventory under Wine, whose WMI answers all the classes: ostrel.exe
# inventory of each bitness, its --json replayed by the Windows and the Linux
# tool (wncServices.WmiInfo: vbs/services.vbs).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
wine_test_setup
work="$(mktemp -d)"
# The server is gone before the next script starts: one still going down
# makes that script's first registry writes fail.
trap 'rm -rf "$work"; wineserver -k >/dev/null 2>&1 || true; wineserver -w >/dev/null 2>&1 || true' EXIT

for bits in 64 32; do
  tool=("$(wine_of "$bits")" "$root/build/win$bits/bin/ostrel.exe")
  [ -x "${tool[1]}" ] || { fail "win$bits: no ostrel.exe"; continue; }
  "${tool[@]}" inventory >"$work/text" 2>/dev/null || fail "win$bits inventory: exit $?"
  same "win$bits inventory: CR LF line ends (lines without CR)" 0 "$(grep -c $'[^\r]$' "$work/text")"
  "${tool[@]}" inventory --json >"$work/pc.json" 2>/dev/null || fail "win$bits inventory --json: exit $?"
  "${tool[@]}" --wmi "$(winepath -w "$work/pc.json")" inventory >"$work/replay" 2>/dev/null
  cmp -s <(tail -n +2 "$work/text") <(tail -n +2 "$work/replay") &&
    ok "win$bits --wmi replays --json" || fail "win$bits --wmi replay differs: $(diff <(cat -A "$work/text") <(cat -A "$work/replay"))"
  if [ -x "$root/build/linux/bin/ostrel" ]; then
    "$root/build/linux/bin/ostrel" --wmi "$work/pc.json" inventory >"$work/linux"
    passes "win$bits --json replayed by the Linux tool" cmp -s <(tail -n +2 "$work/text") <(tail -n +2 "$work/linux")
  fi
done
[ "$failures" = 0 ]
