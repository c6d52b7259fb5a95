# Sourced by scripts/test and tests/wine/*.sh: how each bitness is started.
# Once wine32 is installed, `wine` is the 32-bit loader, and a built-in named
# without a path (cscript or reg after the loader) runs in its 32-bit form and sees
# the 32-bit registry view. So a 64-bit built-in starts through the 64-bit
# loader by its system32 path, a 32-bit one by its syswow64 path, and neither
# is ever named bare.

wine64_loader=/usr/lib/wine/wine64
[ -x "$wine64_loader" ] || wine64_loader=wine

# wine_of <32|64>: the loader for a program of that bitness.
wine_of() { if [ "$1" = 32 ]; then echo wine; else echo "$wine64_loader"; fi; }

# wine_builtin <32|64> <program> [args]: one of the prefix's own programs (cscript,
# reg, regsvr32, cmd) in the given bitness.
wine_builtin() {
  local bits="$1" program="$2" folder=system32
  shift 2
  [ "$bits" = 32 ] && folder=syswow64
  "$(wine_of "$bits")" "C:\\windows\\$folder\\$program.exe" "$@"
}

# A 32-bit Wine is there when the prefix runs its 32-bit cmd.
wine32_runs() { wine_builtin 32 cmd /c exit 0 >/dev/null 2>&1; }

# builtin_arch <32|64>: the PROCESSOR_ARCHITECTURE a built-in of that
# bitness sees (AMD64 or x86), so that a test can prove what it ran.
builtin_arch() { wine_builtin "$1" cmd /c 'echo %PROCESSOR_ARCHITECTURE%' 2>/dev/null | tr -d '\r'; }

# new_wine_prefix: a throwaway 64-bit prefix (WoW64 when wine32 is there),
# exported as WINEPREFIX; its wineserver is stopped and the folder removed on
# exit.
new_wine_prefix() {
  WINEPREFIX="$(mktemp -d /tmp/ostrel-wine.XXXXXX)"
  export WINEPREFIX WINEARCH=win64
  export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$WINEPREFIX"' EXIT
  "$wine64_loader" wineboot -i >/dev/null 2>&1 || true
  # Only a 64-bit prefix has a syswow64 folder.
  if [ ! -d "$WINEPREFIX/drive_c/windows/syswow64" ]; then
    echo "the Wine prefix $WINEPREFIX is not a 64-bit prefix" >&2
    return 1
  fi
}
