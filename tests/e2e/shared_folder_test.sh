#!/usr/bin/env bash
# A data folder that other users may write, and files that are not what they
# claim to be: bash shared_folder_test.sh /path/to/ostrel. The victim is this
# process (root in CI); the attacker is "nobody", who plants links, pipes and
# files first. Every run is under a time limit, so a hang fails the row
# instead of the suite. Needs root and setpriv; skipped (77) without them.
# shellcheck disable=SC2016 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
if [ "$(id -u)" != 0 ] || ! command -v setpriv >/dev/null; then
  echo "shared_folder_test: skipped (needs root and setpriv)"
  exit 77
fi
chmod 0755 "$work"  # the attacker walks through, and writes only in the data folder
tool=(timeout 10 "${tool[@]}")
export ProgramData="$work/pd" XDG_CONFIG_HOME="$work/config"
data="$ProgramData/QUORL"
settings="$data/ot_settings.xml"
attacker() { setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"; }
denied='[gsubSaveApplicationSetting] Unable to save Ostrel:Settings[Colour] setting.  ERROR: Permission denied'
# fresh MODE: an empty data folder, world-writable as MODE says; root's secret beside it.
fresh() {
  rm -rf "$ProgramData" "$XDG_CONFIG_HOME" "$work/made"
  mkdir -p "$data" && chmod 0755 "$ProgramData" && chmod "$1" "$data"
  printf 'root only\n' >"$work/secret" && chmod 0600 "$work/secret"
}
intact() { [ "$(cat "$work/secret")" = "root only" ] && [ ! -e "$work/made" ] && [ -z "$(ls "$data" | grep '^ot_settings.xml.')" ]; }

# The log: a link, a dangling link, a hard link or a pipe loses its lines; the work is done.
for plant in "ln -s $work/secret ot.log" "ln -s $work/made ot.log" "mkfifo ot.log"; do
  fresh 1777
  attacker sh -c "cd '$data' && touch debug_ot && $plant"
  try "ot.log planted (${plant//$work\//}): nothing written through it, no hang" '[ "$rc" = 0 ] && intact' pcinfo
done
fresh 0777
touch "$data/debug_ot" && ln "$work/secret" "$data/ot.log"
try "ot.log a hard link of root's file: left alone" '[ "$rc" = 0 ] && intact' pcinfo

# The settings file: a link is neither read nor written through, a pipe neither hangs.
printf '<Settings><Colour>secret</Colour></Settings>' >"$work/secret.xml" && chmod 0600 "$work/secret.xml"
for plant in "symbolic link:ln -s $work/secret.xml" "fifo:mkfifo"; do
  fresh 1777
  attacker sh -c "${plant#*:} '$settings'"
  try "ot_settings.xml a ${plant%%:*}: the default at once" '[ "$rc" = 0 ] && [ "$out" = none ]' settings get Settings Colour --default none
  try "ot_settings.xml a ${plant%%:*}: the save refused, it and the link's target kept" \
    'has "$err" "$denied" && [ "$(stat -c %F "$settings")" = "${plant%%:*}" ] && [ "$(cat "$work/secret.xml")" = "<Settings><Colour>secret</Colour></Settings>" ] && intact' --trace settings set Settings Colour blue
done

# A file the saver could not write stays as it is, also for root; one it could keeps its mode.
fresh 1777
printf '<Settings><Colour>kept</Colour></Settings>' >"$settings" && chmod 0444 "$settings"
try "a read-only settings file is not replaced, not even by root" \
  'has "$err" "$denied" && [ "$(cat "$settings")" = "<Settings><Colour>kept</Colour></Settings>" ] && [ "$(stat -c %a "$settings")" = 444 ] && intact' --trace settings set Settings Colour red
chmod 0640 "$settings"
try "a replaced file keeps its mode" '[ "$(cat "$settings")" = "<Settings><Colour>red</Colour></Settings>" ] && [ "$(stat -c %a "$settings")" = 640 ]' settings set Settings Colour red
fresh 0777
printf '<Settings><Colour>root</Colour></Settings>' >"$settings" && chmod 0644 "$settings"
err=$(attacker env XDG_CONFIG_HOME="$data/nobody" "${tool[@]}" --trace settings set Settings Colour mine 2>&1 >/dev/null)
check "another user's file in a folder without the sticky bit is not replaced" \
  'has "$err" "$denied" && [ "$(cat "$settings")" = "<Settings><Colour>root</Colour></Settings>" ] && [ "$(stat -c %U:%a "$settings")" = root:644 ] && intact'

# Readers are bounded: a device or a pipe is an error that names it, never all of memory or a hang.
fresh 1777
mkfifo "$work/pipe"
for table in /dev/zero "$work/pipe"; do
  OSTREL_PART_NUMBERS=$table try "part-number table $table: refused by name" '[ "$rc" = 0 ] && has "$err" "the table \"$table\" can'"'"'t be read (75-Path/File access error: \"$table\" is not a regular file)"' --trace catalogue
done
mkdir -p "$XDG_CONFIG_HOME/QUORL" && ln -s /dev/zero "$XDG_CONFIG_HOME/QUORL/program-settings.ini"
try "an older store linked to /dev/zero: the default, the file named" \
  '[ "$out" = none ] && has "$err" "\"$XDG_CONFIG_HOME/QUORL/program-settings.ini\" is a symbolic link"' --trace settings get Settings Colour --default none
# About 1 GB of address space bounds the reader, where no sanitizer needs its
# shadow memory.
limit=1000000000
[ -z "${ASAN_OPTIONS:-}" ] || limit=unlimited
tool=(prlimit --as="$limit" "${tool[@]}")
try "--registry /dev/zero: a line too long, by name" '[ "$rc" != 0 ] && [ "$rc" != 124 ] && [ "$err" = "ostrel: /dev/zero:1: a line is longer than 8 MiB" ]' --registry /dev/zero catalogue

finish shared_folder_test
