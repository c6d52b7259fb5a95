#!/usr/bin/env bash
# The component only reads the registry: runs the given Wine host tests
# (scripts/test gives it the other tests/wine/*.sh) between two exports of
# HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER and HKEY_CLASSES_ROOT by the 64-bit
# reg, which sees both views, and requires the exports to be byte for byte
# the same. Registration registers and unregisters, so it leaves nothing
# either. Set aside, key by key:
#   - the older settings store, HKCU\Software\VB and VBA Program Settings,
#     which the settings members write by design;
#   - what Wine itself changes whatever runs (listed in wine_churn below).
# Uses $WINEPREFIX, or a throwaway prefix of its own when unset. Non-zero when
# a test fails or the registry changed.
#
#   bash registry_unchanged.sh TEST.sh...
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
[ -n "${WINEPREFIX:-}" ] || new_wine_prefix
# Inside the prefix: gone with it.
snapshots="$WINEPREFIX/registry-snapshots"
mkdir -p "$snapshots"

older='HKEY_CURRENT_USER\Software\VB and VBA Program Settings'
# What Wine changes on its own, whatever runs (the key and all below it):
#   - its network driver lists the machine's adapters a while after a
#     session starts (both views);
#   - each process that sets up the display, with no X server here, writes
#     a display device key of a new name under Control\Video, counts up
#     Control\ServiceCurrent, rewrites the DriverDateData of the display
#     adapter and drops the default values of the display adapter and
#     monitor classes;
#   - the system parameters Wine keeps for the current session only, such as
#     the system colours, under its Temporary System Parameters key;
#   - its plug and play links and unlinks the device interfaces of its
#     virtual display and input devices as sessions come and go (the
#     "Linked" values under Control\DeviceClasses);
#   - the fonts it registers in the 32-bit view when a 32-bit program first
#     draws text (the About window's host on a virtual X screen).
wine_churn=(
  'HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\NetworkCards'
  'HKEY_LOCAL_MACHINE\Software\Wow6432Node\Microsoft\Windows NT\CurrentVersion\NetworkCards'
  'HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Video'
  'HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\ServiceCurrent'
  'HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Class\{4D36E968-E325-11CE-BFC1-08002BE10318}'
  'HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Class\{4D36E96E-E325-11CE-BFC1-08002BE10318}'
  'HKEY_CURRENT_USER\Software\Wine\Temporary System Parameters'
  'HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\DeviceClasses'
  'HKEY_LOCAL_MACHINE\Software\Wow6432Node\Microsoft\Windows\CurrentVersion\Fonts'
)

# The empty folders of Windows Installer's own bookkeeping, which msiexec
# makes on first use and never removes (on Windows they are always there):
# set aside as keys only, so that a product, feature or component left in
# them still shows.
installer_keys=(
  'HKEY_CLASSES_ROOT\Installer'{,'\Features','\Products','\UpgradeCodes'}
  'HKEY_LOCAL_MACHINE\Software\Classes\Installer'{,'\Features','\Products','\UpgradeCodes'}
  'HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Installer\'{UpgradeCodes,UserData,'UserData\S-1-5-18'{,'\Components','\Products'}}
)

# One more is made to happen before the first export rather than set aside:
# the first start of Wine's script host of each bitness registers its type
# library (IHost, IArguments2 and a TypeLib value of another interface).
warm_up() {
  local script
  script="$(mktemp --suffix=.vbs -p "$snapshots")"
  echo 'WScript.Quit 0' >"$script"
  wine_builtin 64 cscript //nologo "$(winepath -w "$script")" >/dev/null 2>&1
  if wine32_runs; then wine_builtin 32 cscript //nologo "$(winepath -w "$script")" >/dev/null 2>&1; fi
}

# export_registry <folder>: each root as UTF-8 text, keys and values as reg wrote them.
export_registry() {
  local root
  mkdir -p "$1"
  for root in HKLM HKCU HKCR; do
    wine_builtin 64 reg export "$root" "$(winepath -w "$1/$root.reg")" /y >/dev/null 2>&1 ||
      { echo "reg export $root failed" >&2; return 1; }
    iconv -f UTF-16LE -t UTF-8 "$1/$root.reg" | tr -d '\r' >"$1/$root.txt"
  done
}

# set_aside <file>: the export without the sections of the keys set aside.
set_aside() {
  { printf '%s\n' "$older" "${wine_churn[@]}"; printf '=%s\n' "${installer_keys[@]}"; } | awk '
    NR == FNR {
      if (substr($0, 1, 1) == "=") exact[tolower(substr($0, 2))] = 1
      else if ($0 != "") skip[tolower($0)] = 1
      next
    }
    /^\[/ {
      key = tolower(substr($0, 2, length($0) - 2)); out = !(key in exact)
      for (k in skip) if (key == k || index(key, k "\\") == 1) out = 0
    }
    out' - "$1"
}

warm_up
export_registry "$snapshots/before"
failures=0
for test in "$@"; do
  echo "=== $test"
  bash "$test" || failures=$((failures + 1))
done
export_registry "$snapshots/after"

changed=0
for root in HKLM HKCU HKCR; do
  if ! cmp -s <(set_aside "$snapshots/before/$root.txt") <(set_aside "$snapshots/after/$root.txt"); then
    echo "FAIL the tests changed $root:"
    diff <(set_aside "$snapshots/before/$root.txt") <(set_aside "$snapshots/after/$root.txt") | head -n 40 || true
    changed=1
  fi
done
[ $changed = 0 ] && echo "ok   the registry is as it was (HKLM, HKCU, HKCR; the older settings store and Wine's own keys aside)"
echo "registry_unchanged: $failures test script(s) failed"
[ $failures = 0 ] && [ $changed = 0 ]
