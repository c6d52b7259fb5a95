#!/usr/bin/env bash
# The tool's end-to-end tests against the win64 build, under Wine (run by
# scripts/test with its throwaway WINEPREFIX).
set -euo pipefail
root="$(cd "$(dirname "$0")/../.." && pwd)"
bash "$root/tests/e2e/cli_test.sh" wine "$root/build/win64/bin/ostrel.exe"
