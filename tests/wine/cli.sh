#!/usr/bin/env bash
# The tool's end-to-end tests against ostrel.exe under Wine, each build
# through the loader of its bitness (run by scripts/test with its throwaway
# WINEPREFIX). The win32 build runs when a 32-bit Wine is there.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(cd "$here/../.." && pwd)"
# shellcheck source=loaders.bash
. "$here/loaders.bash"
[ -n "${WINEPREFIX:-}" ] || new_wine_prefix
bash "$root/tests/e2e/cli_test.sh" "$(wine_of 64)" "$root/build/win64/bin/ostrel.exe"
if wine32_runs; then
  bash "$root/tests/e2e/cli_test.sh" "$(wine_of 32)" "$root/build/win32/bin/ostrel.exe"
else
  echo "skip win32 ostrel.exe: this Wine runs no 32-bit programs (install wine32:i386)"
fi
