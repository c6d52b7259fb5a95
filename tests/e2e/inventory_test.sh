#!/usr/bin/env bash
# The WMI inventory end to end: bash inventory_test.sh /path/to/ostrel
# shellcheck disable=SC2016,SC2034 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
unset OSTREL_WMI

# This machine, through the Linux provider, as the tool writes it (the stamp
# and the lines: the WmiInventory and LinuxWmi suites).
try "inventory of this machine: every line ends in CR LF" '[ "$rc" = 0 ] && [ -s "$work/out" ] && [ "$(grep -c $'\''[^\r]$'\'' "$work/out")" = 0 ]' inventory
cp "$work/out" "$work/native.txt"

# What --json saves, --wmi (or OSTREL_WMI) replays: the same text but the stamp.
"${tool[@]}" inventory --json >"$work/pc.json"
try "the replay gives the same text" '[ "$rc" = 0 ] && diff <(tail -n +2 "$work/native.txt") <(tail -n +2 "$work/out") >&2' --wmi "$work/pc.json" inventory
OSTREL_WMI="$work/pc.json" try "OSTREL_WMI names the file; saving it again gives the same file" 'cmp -s "$work/pc.json" "$work/out"' inventory --json
try "a pipe is read for its content" '[ "$rc" = 0 ] && diff <(tail -n +2 "$work/native.txt") <(tail -n +2 "$work/out") >&2' --wmi <(cat "$work/pc.json") inventory

# A saved machine with the quirks: an absent class and property, null and
# numbers as text, accounts absent, empty and named (the lines: WmiInventory).
cat >"$work/quirks.json" <<'JSON'
{
  "Win32_ComputerSystem": [{"Manufacturer": "Quux", "Model": null, "SystemType": "x64-based PC",
    "TotalPhysicalMemory": "2147483648", "DNSHostName": "pc1", "Domain": "WORKGROUP",
    "Workgroup": null, "name": "PC1"}],
  "Win32_Processor": [
    {"name": "Fast", "MaxClockSpeed": "2999.6", "NumberOfCores": 4, "AddressWidth": 64,
     "version": null, "DeviceId": "CPU0", "ProcessorId": null}],
  "Win32_VideoController": [{"name": "Card", "VideoProcessor": "GPU", "DriverVersion": "1.2",
    "AdapterRAM": 1, "VideoModeDescription": null}],
  "Win32_OperatingSystem": [{"name": "Sys 10|C:\\WINDOWS|", "ServicePackMajorVersion": 2,
    "ServicePackMinorVersion": 0}],
  "Win32_LogonSession": [
    {"LogonId": "1"},
    {"LogonId": "2", "Accounts": []},
    {"LogonId": "3", "Accounts": [{"Caption": "X\\bo", "Description": null, "Domain": "X",
      "FullName": null, "name": "bo"}]}]
}
JSON
run --wmi "$work/quirks.json" --trace inventory
expected='//Quux, x64-based PC, 2.0GB, PC1.WORKGROUP  
//Win32_BIOS not supported
//CPU_0 Fast, 3000Mhz  
//Video_0 Card, GPU, 1.2  
////Win32_LogonSession USER count:3
//Win32_LogonSession USER count:3'
check "the quirks of a saved machine" '[ "$rc" = 0 ] && [ "$(tail -n +2 <<<"$out")" = "$expected" ]'
check "the absent property fails at its read" \
    '[ "$err" = "GetWmiOSInfo ERR(438) Object doesn'\''t support this property or method
GetWmiUserAccountInfo ERR(0) " ]'

# As Windows PowerShell's > writes it: UTF-16 with a byte order mark.
for order in LE:'\xff\xfe' BE:'\xfe\xff'; do
    { printf "${order#*:}"; iconv -f UTF-8 -t "UTF-16${order%%:*}" "$work/quirks.json"; } >"$work/wide.json"
    try "UTF-16${order%%:*} reads as UTF-8 does" '[ "$rc" = 0 ] && [ "$(tail -n +2 <<<"$out")" = "$expected" ]' --wmi "$work/wide.json" --trace inventory
done
printf '\xff\xfe{\0}' >"$work/odd.json"
try "UTF-16 cut in half a character" '[ "$rc" = 1 ] && [ "$err" = "ostrel: $work/odd.json:1: the file ends in half a UTF-16 character (an odd number of bytes)" ]' --wmi "$work/odd.json" inventory

# A file that isn't such an inventory: the file and the line, exit 1.
try "a directory" '[ "$rc" = 1 ] && [ "$err" = "ostrel: $work: is a directory" ]' --wmi "$work" inventory
try "a missing file" '[ "$rc" = 1 ] && [[ "$err" == "ostrel: $work/missing.json: can'\''t open the file"* ]]' --wmi "$work/missing.json" inventory
printf '{\n "Win32_BIOS": [\n  {"name": "x"\n' >"$work/cut.json"
try "a truncated file" '[ "$rc" = 1 ] && [[ "$err" == "ostrel: $work/cut.json:4: "*"unexpected end of input"* ]]' --wmi "$work/cut.json" inventory
printf '{"Win32_BIOS": [{"name": "\xe2\x82"}]}' >"$work/utf8.json"
try "a truncated UTF-8 character" '[ "$rc" = 1 ] && [[ "$err" == "ostrel: $work/utf8.json:1: "*UTF-8* ]]' --wmi "$work/utf8.json" inventory
{ printf '{"Win32_BIOS": [{"name": '; head -c 100000 /dev/zero | tr '\0' '['; } >"$work/deep.json"
try "deep nesting" '[ "$rc" = 1 ] && [ "$err" = "ostrel: $work/deep.json:1: the value of name must be a string, a number, true, false or null" ]' --wmi "$work/deep.json" inventory
printf '{"Win32_BIOS": [{"name": "a"},\n {"NAME": 1, "Name": 2}]}' >"$work/twice.json"
try "a property twice" '[ "$rc" = 1 ] && [ "$err" = "ostrel: $work/twice.json:2: the property Name is there twice" ]' --wmi "$work/twice.json" inventory
head -c 17000000 /dev/zero | tr '\0' ' ' >"$work/huge.json"
try "a huge file" '[ "$rc" = 1 ] && [[ "$err" == "ostrel: $work/huge.json: larger than 16 MiB"* ]]' --wmi "$work/huge.json" inventory

finish inventory_test
