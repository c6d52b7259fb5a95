#!/usr/bin/env bash
# The MSI of dist/ under Wine, in a fresh prefix:
#   - the keys it writes in HKEY_CLASSES_ROOT are those regsvr32 writes for
#     both DLLs, key for key and value for value;
#   - installed, the four classes are made from the 64-bit and the 32-bit
#     script host, ReadAll reads a Toolbar key, ostrel.exe runs from its folder;
#   - a package of a higher version installs over it;
#   - removed, the program folders are gone, and the registry is as before
#     (run it under tests/wine/registry_unchanged.sh, as scripts/test does).
#
#   bash tests/package/msi.sh [DIST]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=../wine/loaders.bash
. "$here/../wine/loaders.bash"
wine_test_setup
dist="${1:-$root/dist}"
msi=$(ls "$dist"/Ostrel-*-x64.msi)
version=$(basename "$msi" | sed 's/^Ostrel-\(.*\)-x64\.msi$/\1/')
stage="$root/build/package/windows"
work="$(mktemp -d -p "$WINEPREFIX")"
c="$WINEPREFIX/drive_c"
x64="$c/Program Files/Ostrel" x86="$c/Program Files (x86)/Ostrel"
msiexec() { wine_builtin 64 msiexec "$@" >/dev/null 2>&1; }
check() { local what="$1"; shift; if "$@" >/dev/null 2>&1; then ok "$what"; else fail "$what"; fi; }

# classes <name>: HKCR as the 64-bit reg exports it, without the installer's own keys.
classes() {
  wine_builtin 64 reg export HKCR "$(winepath -w "$work/$1.reg")" /y >/dev/null 2>&1
  iconv -f UTF-16LE -t UTF-8 "$work/$1.reg" | tr -d '\r' |
    awk '/^\[/ { out = index($0, "[HKEY_CLASSES_ROOT\\Installer") != 1 } out' >"$work/$1.txt"
}

# What regsvr32 writes, for both DLLs at the paths the package uses.
mkdir -p "$x64" "$x86"
cp "$stage/x64/Ostrel.dll" "$x64/" && cp "$stage/x86/Ostrel.dll" "$x86/"
wine_builtin 64 regsvr32 /s 'C:\Program Files\Ostrel\Ostrel.dll'
wine_builtin 32 regsvr32 /s 'C:\Program Files (x86)\Ostrel\Ostrel.dll'
classes regsvr32
wine_builtin 64 regsvr32 /s /u 'C:\Program Files\Ostrel\Ostrel.dll'
wine_builtin 32 regsvr32 /s /u 'C:\Program Files (x86)\Ostrel\Ostrel.dll'
rm -rf "$x64" "$x86"

check "msiexec /i $(basename "$msi") /qn" msiexec /i "$(winepath -w "$msi")" /qn
classes msi
if diff "$work/regsvr32.txt" "$work/msi.txt" >"$work/classes.diff"; then
  ok "the package's rows are the keys and values regsvr32 writes"
else
  fail "the package's rows and regsvr32's keys differ (< regsvr32, > package):"
  head -n 30 "$work/classes.diff"
fi

toolbar='HKLM\SOFTWARE\QUORL\Toolbar'
wine_builtin 32 reg add "$toolbar\\Alpha" /v PartNumber /d QRL-2040 /f >/dev/null 2>&1
for bits in 64 32; do
  if run_vbs "$bits" "$here/installed.vbs"; then ok "installed.vbs, $bits-bit"; else fail "installed.vbs, $bits-bit (see above)"; fi
done
check "ostrel.exe --version from Program Files\\Ostrel" \
  grep -q "$version" <("$(wine_of 64)" "$x64/ostrel.exe" --version 2>/dev/null)

# The same package one patch level up installs over it (a major upgrade).
higher="${version%.*}.$((${version##*.} + 1))"
sed "s/Version=\"$version\"/Version=\"$higher\"/" "$stage/Ostrel.wxs" >"$stage/Ostrel-higher.wxs"
(cd "$stage" && wixl -a x64 -o "$work/higher.msi" Ostrel-higher.wxs 2>/dev/null)
rm -f "$stage/Ostrel-higher.wxs"
check "msiexec /i of $higher over $version" msiexec /i "$(winepath -w "$work/higher.msi")" /qn
check "the upgrade keeps the classes registered" run_vbs 64 "$here/installed.vbs"
wine_builtin 32 reg delete 'HKLM\SOFTWARE\QUORL' /f >/dev/null 2>&1
check "msiexec /x /qn" msiexec /x "$(winepath -w "$work/higher.msi")" /qn
check "the program folders are gone" test ! -e "$x64" -a ! -e "$x86"
echo "msi: $failures failure(s)"
[ "$failures" = 0 ]
