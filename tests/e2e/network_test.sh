#!/usr/bin/env bash
# End to end: the network commands against tests/fixtures/network.reg, and
# on the live machine (Linux synthesises the keys when no file is named).
# Usage: network_test.sh PATH_TO_OSTREL
set -uo pipefail
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
ostrel="$1"
unset OSTREL_REGISTRY
card1='{7A1C5D22-0B3E-4F51-9C10-2D6E8B1F0A01}'
card2='{E03F9A6B-4C2D-4B8E-A7F1-5C3D2E1B9F04}'
run() { "$ostrel" --registry "$fixtures/network.reg" "$@"; }

# The fixture's cards (their order and each interface's values: the Network suite).
expect "adapters --json" "[\"$card1\",\"$card2\"]" "$(run network adapters --json | tr -d ' \n')"

# Named files are the whole registry: nothing of this machine is added.
expect "files alone" "||" "$(OSTREL_REGISTRY="$fixtures/catalogue.reg" "$ostrel" network adapters | paste -sd '|')|$(run network interface lo --json | tr -d ' \n' | sed 's/{}//')|"

# The live machine: every interface an adapter, the loopback's own address.
expect "live adapters" "$(ls /sys/class/net | sort | paste -sd ' ')" "$("$ostrel" network adapters | sort | paste -sd ' ')"
expect "live cards: each with a device behind it" "" "$("$ostrel" network cards | while read -r card; do [ -e "/sys/class/net/$card/device" ] || echo "$card"; done)"
expect "live loopback" '"127.0.0.1"' "$("$ostrel" network interface lo --json | python3 -c 'import json,sys; print(json.dumps(json.load(sys.stdin)["IPAddress"]))')"
expect "usage: interface needs a name" "2" "$("$ostrel" network interface >/dev/null 2>&1; echo $?)"

finish network_test
