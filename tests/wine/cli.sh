#!/usr/bin/env bash
# The tool's end-to-end tests against ostrel.exe under Wine, each build
# through the loader of its bitness (run by scripts/test with its throwaway
# WINEPREFIX).
set -euo pipefail
# shellcheck source=loaders.bash
. "$(dirname "$0")/loaders.bash"
wine_test_setup
status=0
for bits in 64 32; do
  echo "--- win$bits"
  tool=("$(wine_of "$bits")" "$root/build/win$bits/bin/ostrel.exe")
  bash "$root/tests/e2e/cli_test.sh" "${tool[@]}" || status=1
  # A program start costs far more under Wine: fewer saves per writer here
  # (the full count: natively, and the lock itself in the Windows suites).
  SAVES=25 bash "$root/tests/e2e/settings_test.sh" "${tool[@]}" || status=1
done
exit $status
