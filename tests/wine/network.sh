#!/usr/bin/env bash
# The network inventory under Wine: ostrel.exe network and a VBScript on
# wncServices, for the win64 and the win32 build with the built-ins of its
# own bitness, against keys written here into the 32-bit view and removed
# again. Wine keeps network cards of its own (the comparison of
# registry_unchanged.sh sets that key aside). Uses $WINEPREFIX, or a
# throwaway prefix of its own when unset. Non-zero on any failure.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
own_prefix=""
[ -n "${WINEPREFIX:-}" ] || own_prefix=1
wine_test_setup
reg32() { wine_builtin 64 reg "$@" /reg:32 >/dev/null 2>&1; }
# A key the tests need: said aloud when it can't be written.
reg32_add() { reg32 add "$@" || { echo "FAIL reg add $*" >&2; exit 1; }; }
# A server of an earlier script may still be going down.
wineserver -w >/dev/null 2>&1 || true

cards='HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards'
tcpip='HKLM\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters'
if reg32 query "$tcpip\\Adapters"; then
  echo "the prefix has adapters of its own: the tests expect none" >&2
  exit 1
fi
had_interfaces=0
reg32 query "$tcpip\\Interfaces" && had_interfaces=1
cleanup_keys() {
  reg32 delete "$cards\\90001" /f || true
  reg32 delete "$cards\\90002" /f || true
  reg32 delete "$tcpip\\Adapters" /f || true
  if [ $had_interfaces = 1 ]; then
    reg32 delete "$tcpip\\Interfaces\\{OSTREL-ADAPTER-1}" /f || true
  else
    reg32 delete "$tcpip\\Interfaces" /f || true
  fi
}
finish() {
  cleanup_keys
  if [ -n "$own_prefix" ]; then
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
  fi
}
trap finish EXIT
# Wine makes its own NetworkCards key volatile once its network stack has
# started, and no lasting key can be made under a volatile one: it goes
# first (Wine fills it again; the registry comparison sets it aside).
reg32 delete "$cards" /f || true
reg32_add "$cards\\90001" /v ServiceName /d '{OSTREL-SERVICE-A}' /f
reg32_add "$cards\\90002" /v ServiceName /d '{OSTREL-SERVICE-B}' /f
reg32_add "$tcpip\\Adapters\\{OSTREL-ADAPTER-1}" /f
reg32_add "$tcpip\\Adapters\\{OSTREL-ADAPTER-2}" /f
iface="$tcpip\\Interfaces\\{OSTREL-ADAPTER-1}"
reg32_add "$iface" /v IPAddress /t REG_MULTI_SZ /d '10.1.0.5\010.1.0.6' /f
reg32_add "$iface" /v Domain /d lab.example /f
reg32_add "$iface" /v EnableDHCP /t REG_DWORD /d 1 /f

for bits in 64 32; do
  bin="$root/build/win$bits/bin"
  echo "--- win$bits"
  tool=("$(wine_of "$bits")" "$bin/ostrel.exe")
  out="$("${tool[@]}" network adapters 2>/dev/null | tr -d '\r' | paste -sd '|')"
  [ "$out" = '{OSTREL-ADAPTER-1}|{OSTREL-ADAPTER-2}' ] && ok "ostrel.exe network adapters" ||
    fail "ostrel.exe network adapters: '$out'"
  # The cards, the values and their order: network.vbs from the same keys,
  # and the tool's rendering: tests/e2e/network_test.sh.
  out="$("${tool[@]}" network interface '{ostrel-adapter-1}' 2>/dev/null | tr -d '\r' | grep '^IPAddress')"
  [ "$out" = 'IPAddress      : 10.1.0.5 10.1.0.6' ] && ok "ostrel.exe network interface (any case of the name)" ||
    fail "ostrel.exe network interface: '$out'"

  dll="$(winepath -w "$bin/Ostrel.dll")"
  if wine_builtin "$bits" regsvr32 /s "$dll"; then
    if run_vbs "$bits" "$here/vbs/network.vbs"; then
      ok "network.vbs ($bits-bit cscript)"
    else
      fail "network.vbs ($bits-bit cscript, see above)"
    fi
    wine_builtin "$bits" regsvr32 /u /s "$dll" || fail "regsvr32 /u ($bits-bit)"
  else
    fail "regsvr32 Ostrel.dll ($bits-bit)"
  fi
done
echo "network.sh: $failures failure(s)"
[ $failures = 0 ]
