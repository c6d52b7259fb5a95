#!/usr/bin/env bash
# Ostrel.dll under Wine: registration and unregistration read back from the
# registry, the VBScript hosts through cscript, and the C++ hosts, each for
# the win64 and the win32 build with the built-ins of its own bitness, in one
# 64-bit (WoW64) prefix. Uses $WINEPREFIX, or a throwaway prefix of its own
# when unset. Non-zero on any failure.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
wine_test_setup

libid='{3E2EAAB4-65B9-49E3-917A-E1D592331BAB}'
classes=(wncSoftwareProducts wncSoftwareProduct wncPCInfo wncServices)
clsids=('{9EF49E03-09E0-47D1-B36C-D209FBBBCC02}' '{DD4285A3-ED52-4D2D-8550-403EBF737B9F}'
  '{3E2DB102-CC0D-49E3-9AC8-9BBC6265BCDA}' '{15A10C40-191D-4F35-B434-7C973B545737}')
iids=('{F730CAFB-2787-4495-BB6B-48EEB37E5578}' '{5ADF2596-D03A-4EF5-9D57-8464F51F0C4F}'
  '{F96FF7B4-5178-4FBE-B0FB-3661D8F2271B}' '{AFBB1CFD-5CFA-46EE-A39F-09FF2BCF52CC}'
  '{20CFA9FE-4058-4CD2-8DB5-B7DDA5A7D390}' '{C4753E71-68D2-48D0-83B9-309F72C16B80}'
  '{7D7F0E86-A961-4295-9586-F014AB18725F}' '{ADD4F1AA-38B7-424F-AD04-4BE8AD871601}'
  '{77D4A628-7265-410B-9E09-EC479AAC462B}' '{72002B29-EC56-11D6-860A-00508B627927}'
  '{1C53F141-137B-4BF3-A441-FADA9011E2B0}' '{432279C8-F5DC-4905-B45D-AEF9F635518D}'
  '{F06D94C2-D8E6-4F9B-9290-608FCE04D3B2}' '{832A1432-3B07-43E3-B024-C42389CECBD0}')

# reg, regsvr32 and cscript of the bitness under test; the class keys of a
# 32-bit server live in the 32-bit view.
fails() { ! "$@"; }
view=64
run_reg() { wine_builtin "$view" reg "$@" "/reg:$view"; }
run_regsvr32() { wine_builtin "$view" regsvr32 "$@"; }

value_of() { # value_of <key> <value name or empty for the default>: prints the data
  local which=(/ve)
  [ -z "$2" ] || which=(/v "$2")
  run_reg query "$1" "${which[@]}" 2>/dev/null | tr -d '\r' | awk '/REG_SZ/ { sub(/^.*REG_SZ[ \t]+/, ""); print; exit }'
}

# Every key that registration owns, as reg query names them.
owned_keys() {
  printf 'HKCR\\Ostrel.%s\n' "${classes[@]}"
  printf 'HKCR\\CLSID\\%s\n' "${clsids[@]}"
  printf 'HKCR\\Interface\\%s\n' "${iids[@]}"
  echo "HKCR\\TypeLib\\$libid"
}

check_registered() { # check_registered <dll path in Windows form> <win32|win64>
  local dll="$1" platform="$2" i key got
  owned_keys_are 0 "registration wrote the CLSID, ProgID, TypeLib and all 14 Interface keys"
  for i in 0 1 2 3; do
    key="HKCR\\CLSID\\${clsids[$i]}"
    got="$(value_of "$key\\InprocServer32" '')|$(value_of "$key\\InprocServer32" ThreadingModel)"
    got+="|$(value_of "$key\\ProgID" '')|$(value_of "HKCR\\Ostrel.${classes[$i]}\\Clsid" '')"
    same "${classes[$i]}: in-process server, ThreadingModel=Apartment, ProgID" \
      "$dll|Apartment|Ostrel.${classes[$i]}|${clsids[$i]}" "$got"
  done
  same "type library 14.15 (e.f), locale 409, $platform" "$dll" "$(value_of "HKCR\\TypeLib\\$libid\\e.f\\409\\$platform" '')"
  same "older identifiers point to the type library and the newest identifier" "${iids[1]}|$libid" \
    "$(value_of "HKCR\\Interface\\${iids[4]}\\Forward" '')|$(value_of "HKCR\\Interface\\${iids[3]}\\TypeLib" '')"
  # Another apartment reaches an object through the type library's proxy (the automation marshaller's).
  same "the interfaces marshal through the type library" '{00020424-0000-0000-C000-000000000046}' \
    "$(value_of "HKCR\\Interface\\${iids[2]}\\ProxyStubClsid32" '')"
}

owned_keys_are() { # owned_keys_are <0 (all there) or 1 (none there)> <what that shows>
  local key there wrong=0
  while read -r key; do
    run_reg query "$key" >/dev/null 2>&1 && there=0 || there=1
    # A reg process that failed to run at all once made a present key look
    # missing: a missing key is asked for a second time, and said so.
    if [ $there = 1 ] && [ "$1" = 0 ] && run_reg query "$key" >/dev/null 2>&1; then
      echo "note: reg query $key failed once, then found it"
      there=0
    fi
    [ $there = "$1" ] || { fail "$2: not so for $key"; wrong=1; }
  done < <(owned_keys)
  [ $wrong = 1 ] || ok "$2"
}
check_unregistered() { owned_keys_are 1 "${1:-}unregistration removed every key"; } # [prefix of the message]

# The Toolbar key of the catalogue test (what ReadAll keeps or passes over:
# the catalogue suite). Written into the 32-bit view only, where the family's
# installers write: both DLLs and both builds of the tool must read it there.
# Two network adapters beside them, one with interface data.
toolbar='HKLM\SOFTWARE\QUORL\Toolbar'
tcpip='HKLM\SYSTEM\CurrentControlSet\Services\Tcpip\Parameters'
reg32() { wine_builtin 64 reg "$@" /reg:32; }
# What the test adds under Interfaces goes, or all of it when it wasn't there.
interfaces="$tcpip\\Interfaces"
reg32 query "$interfaces" >/dev/null 2>&1 && interfaces+='\{OSTREL-ADAPTER-1}'
fill_toolbar() {
  {
    reg32 add "$tcpip\\Adapters\\{OSTREL-ADAPTER-1}" /f
    reg32 add "$tcpip\\Adapters\\{OSTREL-ADAPTER-2}" /f
    reg32 add "$tcpip\\Interfaces\\{OSTREL-ADAPTER-1}" /v Domain /d lab.example /f
    reg32 add "$toolbar\\Alpha" /v PartNumber /d QRL-2040 /f
    reg32 add "$toolbar\\Beta" /v PartNumber /d QRL-3100 /f
    reg32 add "$toolbar\\Beta" /v VersionMajor /t REG_DWORD /d 9 /f
    reg32 add 'HKLM\SOFTWARE\QUORL' /v InstallDir /d 'C:\Program Files\QUORL' /f
  } >/dev/null 2>&1
  passes "the test keys are in the 32-bit view only" fails wine_builtin 64 reg query 'HKLM\SOFTWARE\QUORL' /reg:64
}
empty_toolbar() {
  {
    reg32 delete 'HKLM\SOFTWARE\QUORL' /f
    reg32 delete "$tcpip\\Adapters" /f
    reg32 delete "$interfaces" /f
  } >/dev/null 2>&1 || true
}

run_vbscript() { # run_vbscript <file> [args]: in the script host of the bitness under test
  if run_vbs "$view" "$@"; then ok "$(basename "$1") ${*:2}"; else fail "$(basename "$1") ${*:2} (see above)"; fi
}

test_server() { # test_server <bin folder> <win32|win64>
  local bin="$1" platform="$2" dll data
  dll="$(winepath -w "$bin/Ostrel.dll")"
  echo "--- $platform: $dll"
  # Proof of what runs: a 64-bit test that quietly ran 32-bit proves nothing.
  same "the $view-bit built-ins run as they should" "$([ "$view" = 32 ] && echo x86 || echo AMD64)" "$(builtin_arch "$view")"

  passes "regsvr32 Ostrel.dll, and a second registration over the first" eval 'run_regsvr32 /s "$dll" && run_regsvr32 /s "$dll"'
  check_registered "$dll" "$platform"

  fill_toolbar
  run_vbscript "$here/vbs/products.vbs"
  data="$(winepath -u 'C:\ProgramData')/QUORL"
  mkdir -p "$data"  # for the settings and the ready file the script writes
  TZ=EST5EDT,M3.2.0,M11.1.0 run_vbscript "$here/vbs/services.vbs"
  rm -f "$data/ot_settings.xml" "$data/ready.txt"
  # The tool of the build under test reads the same keys from the system's registry.
  same "ostrel.exe catalogue reads the 32-bit view" "Alpha Beta" "$("$(wine_of "$view")" "$bin/ostrel.exe" catalogue --json \
    2>/dev/null | tr -d '\r' | sed -n 's/^ *"ProductName": "\(.*\)",\{0,1\}$/\1/p' | xargs)"
  if "$(wine_of "$view")" "$bin/ostrel_com_host.exe"; then ok "C++ host"; else fail "C++ host (see above)"; fi
  # A crash ends the host, a hang the time limit; the seed is printed for a re-run.
  if timeout 600 "$(wine_of "$view")" "$bin/ostrel_hostile_host.exe"; then ok "hostile host"; else fail "hostile host (see above)"; fi

  passes "regsvr32 /u Ostrel.dll" run_regsvr32 /u /s "$dll"
  check_unregistered
  empty_toolbar
}

check_shape() { # check_shape <dll> <objdump format>: exactly four exports, the version
  local dll="$1" format="$2" dump exports resources
  [ -e "$dll" ] || { fail "$dll is missing"; return; }
  dump="$(x86_64-w64-mingw32-objdump -p "$dll")"
  passes "$(basename "$(dirname "$(dirname "$dll")")"): $format" grep -q "file format $format" <<<"$dump"
  exports="$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$dump" | awk '/\]/ && !/Table/ { print $NF }' | sort | tr '\n' ' ')"
  same "exactly the four exports" "DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer " "$exports"
  resources="$(x86_64-w64-mingw32-windres --input-format=coff -i "$dll" -O rc 2>/dev/null)"
  grep -q 'VALUE "OLESelfRegister", ""' <<<"$resources" && grep -q 'FILEVERSION 14, 15,' <<<"$resources" &&
    ok "version resource: OLESelfRegister, version 14.15" || fail "version resource"
}

# A registration that can't create a key fails and leaves nothing behind;
# an unregistration that can't unregister the type library (its registered
# file is gone) removes the rest and fails.
test_failures() { # test_failures <bin folder> <win32|win64>
  local bin="$1" dll older="HKCR\\Interface\\${iids[4]}"
  dll="$(winepath -w "$bin/Ostrel.dll")"
  "$(wine_of "$view")" "$bin/ostrel_volatile_key.exe" "${older#HKCR\\}" || fail "volatile_key"
  passes "registration past a key it can't create reports failure" fails run_regsvr32 /s "$dll"
  run_reg delete "$older" /f >/dev/null 2>&1 || true
  check_unregistered "after the failed registration: "

  passes "regsvr32 Ostrel.dll" run_regsvr32 /s "$dll"
  run_reg add "HKCR\\TypeLib\\$libid\\e.f\\409\\$2" /ve /d 'C:\no\such\Ostrel.dll' /f >/dev/null 2>&1
  passes "unregistration that can't unregister the type library reports failure" fails run_regsvr32 /u /s "$dll"
  check_unregistered "after the failed unregistration: "
  passes "a second regsvr32 /u succeeds" run_regsvr32 /u /s "$dll"
  # What the type library's registration wrote in the other view goes only
  # with a clean unregistration.
  passes "registered again and unregistered" eval 'run_regsvr32 /s "$dll" && run_regsvr32 /u /s "$dll"'
}

# Both builds registered side by side in one prefix: each works from the
# cscript of its own bitness, and unregistering one (either) leaves the
# other complete and working.
side_by_side() {
  local -A dll=([64]="$(winepath -w "$win64/Ostrel.dll")" [32]="$(winepath -w "$win32/Ostrel.dll")")
  local first second
  fill_toolbar
  for first in 64 32; do
    second=$((96 - first))
    echo "--- side by side, win$first unregistered first"
    for view in 64 32; do passes "regsvr32 Ostrel.dll ($view-bit)" run_regsvr32 /s "${dll[$view]}"; done
    run_vbscript "$here/vbs/products.vbs"  # the 32-bit one, the 64-bit registered too
    view=$first
    passes "regsvr32 /u Ostrel.dll ($first-bit)" run_regsvr32 /u /s "${dll[$first]}"
    view=$second
    check_registered "${dll[$second]}" "win$second"
    run_vbscript "$here/vbs/products.vbs"
    passes "regsvr32 /u Ostrel.dll ($second-bit)" run_regsvr32 /u /s "${dll[$second]}"
    for view in 64 32; do check_unregistered "$view-bit view: "; done
  done
  empty_toolbar
}

view=64
check_shape "$win64/Ostrel.dll" pei-x86-64
test_server "$win64" win64
test_failures "$win64" win64

view=32
check_shape "$win32/Ostrel.dll" pei-i386
if wine32_runs; then
  test_server "$win32" win32
  test_failures "$win32" win32
  side_by_side
else
  fail "this Wine runs no 32-bit programs: scripts/install-deps installs wine32:i386"
fi

echo "com_server: $failures failed"
[ "$failures" = 0 ]
