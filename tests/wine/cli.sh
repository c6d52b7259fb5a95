#!/usr/bin/env bash
# The tool's end-to-end tests against ostrel.exe under Wine, each build
# through the loader of its bitness (run by scripts/test with its throwaway
# WINEPREFIX).
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/../.." && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
[ -n "${WINEPREFIX:-}" ] || new_wine_prefix
status=0
for bits in 64 32; do
  echo "--- win$bits"
  bash "$root/tests/e2e/cli_test.sh" "$(wine_of "$bits")" "$root/build/win$bits/bin/ostrel.exe" || status=1
done
exit $status
