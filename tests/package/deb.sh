#!/usr/bin/env bash
# The .deb of dist/: lintian finds no error; installed, the tool runs and
# finds its data in /usr/share/ostrel (the German texts); its manual page is
# found; removed, it leaves no file behind.
#
#   bash tests/package/deb.sh [DIST]      (run as root: it installs the package)
set -euo pipefail
dist="${1:-$(cd "$(dirname "$0")/../.." && pwd)/dist}"
deb=$(ls "$dist"/ostrel_*_amd64.deb)
version=$(dpkg-deb -f "$deb" Version)
failures=0
check() { local what="$1"; shift; if "$@" >/dev/null; then echo "ok   $what"; else echo "FAIL $what"; failures=$((failures + 1)); fi; }

check "lintian: no error" lintian --fail-on error "$deb" "$dist"/ostrel-dbgsym_"$version"_amd64.deb
dpkg -i "$deb" >/dev/null
files=$(dpkg -L ostrel)
check "ostrel --version names $version" grep -q "^ostrel $version" <(/usr/bin/ostrel --version)
check "the German texts from /usr/share/ostrel" \
  grep -q "^Info über" <(OSTREL_LANGUAGE=de /usr/bin/ostrel language text 312)
check "man -w ostrel" man -w ostrel
dpkg -r ostrel >/dev/null
# Left behind: a file, a link, or the package's own folders.
left=$(while read -r f; do if [ -f "$f" ] || [ -L "$f" ] || [[ -d "$f" && "$f" =~ ^/usr/share/(doc/)?ostrel$ ]]; then echo "$f"; fi; done <<<"$files")
check "dpkg -r leaves no file (${left:-none left})" [ -z "$left" ]
echo "deb: $failures failure(s)"
[ "$failures" = 0 ]
