#!/usr/bin/env bash
# The MSI of dist/ under Wine, in a fresh prefix:
#   - for each bitness, the keys its feature alone writes in HKEY_CLASSES_ROOT
#     (both views) are those regsvr32 of that bitness writes for its DLL
#     alone, key for key and value for value;
#   - installed, the four classes are made from the 64-bit and the 32-bit
#     script host, ReadAll reads a Toolbar key, ostrel.exe runs from its folder;
#   - a repair brings back a deleted file and deleted registry keys;
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

# For each bitness: what regsvr32 writes for its DLL alone, at the path the
# package uses, against what the package's feature of that bitness writes.
declare -A feature=([64]=x64 [32]=x86) folder=([64]="$x64" [32]="$x86")
for bits in 64 32; do
  name="${feature[$bits]}"
  dll="$(winepath -w "${folder[$bits]}")\\Ostrel.dll"
  mkdir -p "${folder[$bits]}" && cp "$stage/$name/Ostrel.dll" "${folder[$bits]}/"
  wine_builtin "$bits" regsvr32 /s "$dll"
  classes "regsvr32-$name"
  wine_builtin "$bits" regsvr32 /s /u "$dll"
  rm -rf "${folder[$bits]}"
  msiexec /i "$(winepath -w "$msi")" ADDLOCAL="$name" /qn
  classes "msi-$name"
  msiexec /x "$(winepath -w "$msi")" /qn
  diff "$work/regsvr32-$name.txt" "$work/msi-$name.txt" >"$work/$name.diff" || head -n 30 "$work/$name.diff" # < regsvr32, > package
  check "$name: the rows of its feature are the keys and values its regsvr32 writes" test ! -s "$work/$name.diff"
done

check "msiexec /i $(basename "$msi") /qn" msiexec /i "$(winepath -w "$msi")" /qn
wine_builtin 32 reg add 'HKLM\SOFTWARE\QUORL\Toolbar\Alpha' /v PartNumber /d QRL-2040 /f >/dev/null 2>&1
for bits in 64 32; do
  if run_vbs "$bits" "$here/installed.vbs"; then ok "installed.vbs, $bits-bit"; else fail "installed.vbs, $bits-bit (see above)"; fi
done
check "ostrel.exe --version from Program Files\\Ostrel" \
  grep -q "$version" <("$(wine_of 64)" "$x64/ostrel.exe" --version 2>/dev/null)

# A repair puts back a file and keys of the package that were deleted. It is
# started with the properties msiexec /famus sets: Wine's msiexec hands a
# package given to /f to the call that takes a product code, and has no repair
# by product code.
rm "$x86/part-numbers.txt"
wine_builtin 64 reg delete 'HKCR\Ostrel.wncPCInfo' /f >/dev/null 2>&1
wine_builtin 64 reg delete 'HKCR\CLSID\{9EF49E03-09E0-47D1-B36C-D209FBBBCC02}' /reg:32 /f >/dev/null 2>&1
check "msiexec /i REINSTALL=ALL REINSTALLMODE=amus (repair)" \
  msiexec /i "$(winepath -w "$msi")" REINSTALL=ALL REINSTALLMODE=amus /qn
check "the repair put back the deleted file" test -f "$x86/part-numbers.txt"
for bits in 64 32; do
  check "the repair put back the deleted keys ($bits-bit script host)" run_vbs "$bits" "$here/installed.vbs"
done

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
