#!/usr/bin/env bash
# Settings and the named lock through real processes: bash settings_test.sh
# /path/to/ostrel (a Windows build: bash settings_test.sh wine /path/to/ostrel.exe,
# in the WINEPREFIX of the caller). SAVES sets how many saves each of the four
# concurrent writers makes (default 500).
# shellcheck disable=SC2016 # check evaluates its condition, quoted as given
set -u
# shellcheck source=harness.bash
. "$(dirname "$0")/harness.bash" "$@"
saves=${SAVES:-500}
if $windows; then
  # The prefix's own data folder and the current user's program-settings tree.
  data="$(winepath -u 'C:\ProgramData' 2>/dev/null)/QUORL"
  # HKCU\Software is one key for both bitnesses: the tool's own loader will do.
  wine_reg() { "${tool[0]}" 'C:\windows\system32\reg.exe' "$@"; }
  older_key='HKCU\Software\VB and VBA Program Settings\Ostrel'
  put_older() { wine_reg add "$older_key\\$1" /v "$2" /d "$3" /f >/dev/null 2>&1; }
  clean_older() { wine_reg delete "$older_key" /f >/dev/null 2>&1; }
else
  export ProgramData="$work/pd" XDG_CONFIG_HOME="$work/config" XDG_RUNTIME_DIR="$work/run"
  mkdir -m 700 "$XDG_RUNTIME_DIR"  # the test's locks in a folder of its own
  data="$ProgramData/QUORL"
  ini="$XDG_CONFIG_HOME/QUORL/program-settings.ini"
  put_older() { mkdir -p "$(dirname "$ini")" && printf '[Ostrel\\%s]\n%s=%s\n' "$1" "$2" "$3" >>"$ini"; }
  clean_older() { rm -rf "$XDG_CONFIG_HOME"; }
fi
settings="$data/ot_settings.xml"
trap 'kill $(jobs -p) 2>/dev/null; wait 2>/dev/null; rm -rf "$work" "$data"; clean_older' EXIT
rm -rf "$data"
clean_older
mkdir -p "$data"

# hold NAME MS: a process that holds the lock; returns once it has it. The
# holds are long and end by a kill, so that a slow start of the next process
# (a loaded machine, Wine) never outlasts them.
hold() {
  "${tool[@]}" mutex --hold "$2" "$1" >"$work/holder" 2>/dev/null &
  disown  # killed on purpose below: no word from the shell about it
  for _ in $(seq 200); do
    [ -s "$work/holder" ] && break
    sleep 0.05
  done
}

# gone PATTERN: the holder killed with -9, the program itself too and not
# only a launcher (wine's start.exe), and waited for.
gone() {
  pkill -9 -f "$1"
  while pgrep -f "$1" >/dev/null; do sleep 0.05; done
}

# Reads and saves through the real file and the real older store (the registry
# on Windows, an ini file elsewhere), which takes a second section.
try "a missing setting gives the default" '[ "$rc" = 0 ] && [ "$out" = fallback ] && [ ! -e "$settings" ]' settings get Settings Missing --default fallback
try "a save prints nothing" '[ "$rc" = 0 ] && [ -z "$out" ]' settings set --app Other Settings Colour blue
try "read back" '[ "$out" = blue ]' settings get Settings Colour
put_older Settings Moved older
try "an older value moves into the file" '[ "$out" = older ] && has "$(cat "$settings")" "<Moved>older</Moved>"' settings get Settings Moved
try "a second section goes to the older store" '[ "$rc" = 0 ] && has "$err" "[mfobjCreateXmlElement] Unable to add newline to xml doc.  ERROR: "' --trace settings set Second Key value
try "and is read back from there" '[ "$out" = value ]' settings get Second Key

# A holder in another process past the time-out: 0, one line, the whole wait.
name="ostrel-e2e-$$"
hold "$name" 60000
start=$(date +%s%3N)
run --trace mutex --timeout 500 "$name"
took=$(($(date +%s%3N) - start))
check "a lock held elsewhere is not obtained" '[ "$rc" = 3 ] && [ "$out" = 0 ] && [ "$(grep -c "Failed getting mutex($name)" <<<"$err")" = 1 ]'
check "and the whole time-out is spent ($took ms)" '[ "$took" -ge 450 ]'
try "a time-out of 0 answers at once" '[ "$rc" = 3 ] && [ "$out" = 0 ]' --trace mutex --timeout 0 "$name"
# A waiter keeps the lock in being (on Windows it goes with its last
# handle) while its holder is killed: the waiter gets it, abandoned. A waiter
# that started too late (a loaded machine, Wine) found the lock gone and got
# it plain: that round shows nothing, and runs again with more time.
for delay in 0.5 2 5; do
  ( run --trace mutex --timeout 30000 "$name"; echo "$rc" >"$work/rc" ) &
  waiter=$!
  sleep "$delay"
  gone "mutex --hold 60000 $name"
  wait "$waiter"
  rc=$(cat "$work/rc") out=$(tr -d '\r' <"$work/out") err=$(tr -d '\r' <"$work/err")
  { [ "$rc" = 0 ] && ! has "$err" "Obtained abandoned mutex("; } || break
  hold "$name" 60000
done
check "a holder killed with -9 leaves the lock abandoned" '[ "$rc" = 0 ] && [ "$out" -gt 0 ] && has "$err" "Obtained abandoned mutex($name,$out)"'
try "and then plain again" '[ "$rc" = 0 ] && ! has "$err" abandoned' --trace mutex "$name"

# Linux, as root: the lock lies where no other user reaches it. The attacker
# is nobody; daemon is a second victim, one without a runtime folder.
if ! $windows && [ "$(id -u)" = 0 ]; then
  attacker() { setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"; }
  daemon_lock() { local tool=(setpriv --reuid=daemon --regid=daemon --clear-groups env -u XDG_RUNTIME_DIR "${tool[@]}"); try "$@" --trace mutex --timeout 0 "$lockname"; }
  lockname="ostrel-e2e-lock-$$"
  attacker sh -c "head -c 64 /dev/zero | tr '\\0' '\\1' >/dev/shm/ostrel-0-$lockname"
  try "a file another user made in shared memory is not root's lock" '[ "$rc" = 0 ] && [ "$out" -gt 0 ]' --trace mutex --timeout 0 "$lockname"
  rm -f "/dev/shm/ostrel-0-$lockname"
  theirs=$(attacker mktemp -d)
  XDG_RUNTIME_DIR=$theirs try "nor is another user's runtime folder taken" '[ "$rc" = 0 ] && [ -z "$(ls -A "$theirs")" ]' --trace mutex --timeout 0 "$lockname"
  private=/tmp/ostrel-$(id -u daemon)
  for plant in "mkdir -m 777 $private" "ln -s $theirs $private"; do
    rm -rf "$private"
    attacker sh -c "$plant"
    daemon_lock "a lock folder another user made first is refused ($plant)" '[ "$rc" = 3 ] && has "$err" "Failed creating mutex($lockname)" && [ -z "$(ls -A "$theirs")" ]'
  done
  rm -rf "$private"
  daemon_lock "without one, the user makes its own lock folder" '[ "$rc" = 0 ] && [ "$(stat -c "%U %a" "$private")" = "daemon 700" ]'
  rm -rf "$private" "$theirs"
fi

# Four writers saving distinct keys at once: every save reloads under the
# lock, so nothing is lost.
rm -f "$settings"
writer() {
  for i in $(seq "$saves"); do "${tool[@]}" settings set Settings "W$1_$i" "$i" >/dev/null 2>&1; done
}
for w in 1 2 3 4; do writer "$w" & done
wait
count=$(grep -o '<W[0-9]*_[0-9]*>' "$settings" | sort -u | wc -l)
check "4 writers x $saves saves: all $((4 * saves)) keys are in the file ($count)" '[ "$count" = $((4 * saves)) ]'

finish "settings_test ${tool[*]}"
