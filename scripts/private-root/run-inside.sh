# The part of ./run that happens in the private root, as the ordinary user. Its outcome, "core started (pid N)" or
# "failed: WHY", is left in the file outcome, and the launcher's process id in launcher.pid as soon as it runs, both in the
# folder QUILLMARK_FILES (/tmp). Arguments: whether to keep the root up (yes or no), and a log level or "".
# shellcheck shell=bash
set -euo pipefail
keep=$1 level=$2 files=${QUILLMARK_FILES-/tmp}
app=/Applications/Quillmark.app
launcher=$app/Contents/MacOS/Quillmark
core=$app/Contents/Resources/QuillmarkCore.app/Contents/MacOS/QuillmarkCore
log_folder=~/Library/Logs/Quillmark/Quillmark
core_log=~/Library/Logs/Quillmark/QuillmarkCore/QuillmarkCore.log
patience=30 # seconds that the launcher may take where nobody can answer its questions, or the core to appear or quit

say() { printf 'run: %s\n' "$*"; }
# leave FILE TEXT   The file appears whole or not at all: others look for it meanwhile.
leave() { echo "$2" >"$1.new" && mv "$1.new" "$1"; }
outcome() { leave "$files/outcome" "$*"; }
fail() {
  outcome "failed: $*"
  exit 1
}

# within SECONDS COMMAND...   Repeats COMMAND until it succeeds.
within() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    ((SECONDS < end)) || return 1
    sleep 0.05
  done
}

# The process id that the core wrote into its log, provided that the process is there and is the core.
core_pid() {
  local pid
  pid=$(sed -n 's/.*QuillmarkCore\[\([0-9]*\)\] running$/\1/p' "$core_log" 2>/dev/null | tail -n 1)
  [ -n "$pid" ] && [ "$(readlink "/proc/$pid/exe")" = "$core" ] && echo "$pid"
}
ended() { ! kill -0 "$1" 2>/dev/null; }
log_or_end() { compgen -G "$log_folder/*.log" >/dev/null || ended "$1"; }

if [ -n "${DISPLAY-}" ]; then
  say "using the display $DISPLAY"
else
  Xvfb -displayfd 5 -screen 0 1280x1024x24 -nolisten tcp 5>"$files/display" >/dev/null 2>&1 &
  within 20 test -s "$files/display" || fail "Xvfb does not start"
  DISPLAY=:$(cat "$files/display")
  export DISPLAY
  say "no display here, using a new one without a screen"
fi

if [ -n "$level" ]; then
  mkdir -p ~/Library/Preferences
  cat >~/Library/Preferences/com.quillmark.QuillmarkLauncher.plist <<PLIST
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>FileLogging</key><string>$level</string></dict></plist>
PLIST
fi

say "starting $launcher"
# A person may have to answer the launcher's questions; on a display without a screen nobody can.
[ -s "$files/display" ] && limit=(timeout "$patience") || limit=()
"${limit[@]}" "$launcher" </dev/null >"$files/launcher.out" 2>"$files/launcher.err" &
pid=$!
leave "$files/launcher.pid" $pid
within "$patience" log_or_end "$pid" || :
if log=$(compgen -G "$log_folder/*.log" | head -n 1); then
  say "the launcher's log, $log:"
  tail -n +1 -s 0.05 -f --pid="$pid" "$log" | sed 's/^/    /'
fi
status=0
wait "$pid" || status=$?
cat "$files/launcher.err"
[ "$status" != 124 ] || fail "the launcher still waits for an answer after $patience seconds"
[ "$status" != 1 ] || fail "components are at fault, and the log above says which"
[ "$status" = 0 ] || fail "the launcher ended with status $status"

within "$patience" core_pid >"$files/pid" || fail "the launcher ended, but no core runs"
pid=$(cat "$files/pid")
say "process $pid is $core"
if [ "$keep" = yes ]; then
  outcome "core started (pid $pid)"
  exec >/dev/null 2>&1
  # The root is up as long as this script runs.
  until ended "$pid"; do sleep 1; done
else
  kill -TERM "$pid"
  within "$patience" ended "$pid" || fail "the core does not quit when asked"
  say "the core has quit when asked"
  outcome "core started (pid $pid)"
fi
