#!/usr/bin/env bash
# play_sessions.sh [--record] BIN SESSION...: types recorded sessions again, with the hookctl and the process of folder
# BIN, and tells where something else is shown than stands there; --record puts it there.
#
# "$ " begins what is typed and "> " goes on with it. What is shown stands below, lines of the standard error behind
# "2> ", and the status where it is not 0. A session is one bash in a folder of its own that is empty at first; the
# tree that this file is of is SOURCE.
set -o pipefail

# What differs from one run to the next.
stable() {
  sed -E "s,$SOURCE,/source,g; s,$own,/own,g"'
    s,/handset-\w{6}\b,/handset-######,g
    s/\bprocess [0-9]+ serves/process # serves/
    s/\b([0-9]+)[0-9]{3}\.[0-9] ms\b/\1### ms/
    s/\b[0-9]{1,3}\.[0-9] ms\b/# ms/
    s/("took_ms": [0-9]+)[0-9]{3}\.[0-9]+/\1###/
    s/("took_ms": )[0-9]{1,3}\.[0-9]+/\1#/
    s/("time": [0-9]+\.)[0-9]+/\1#/
    s/^( +[0-9]+\.)[0-9]{3}(  [[:alpha:]])/\1###\2/
    s/\badam_[0-9]{14}\b/adam_##############/g'
}

# run COMMAND: shows it and what comes of it; its functions, variables and jobs stay.
run() {
  local status
  case $1 in
    *$'\n'*) sed '1s/^/$ /; 1!s/^/> /; s/^> $/>/' <<<"$1" ;;
    *) printf '$ %s\n' "$1" ;;
  esac
  eval "$1" >"$streams/out" 2>"$streams/err" </dev/null
  status=$?
  [ ! -s "$streams/out" ] || sed '$a\' "$streams/out"
  [ ! -s "$streams/err" ] || sed 's/^/2> /' "$streams/err"
  [ $status -eq 0 ] || echo "status $status"
}

# play SESSION: shows it as it is now.
play() (
  mapfile -d '' typed < <(awk '
    /^\$ / {if (count++) printf "%c", 0; more = 1; print substr($0, 3); next}
    /^>/ && more {print substr($0, 3); next}
    {more = 0}' "$1")
  mkdir -m 777 "$own" "$TMPDIR"
  cd "$own" || exit
  for command in "${typed[@]}"; do
    run "${command%$'\n'}"
  done
  rmdir "$TMPDIR" || echo 'a folder was left behind'
  rm -rf "$own" "$TMPDIR"
)

record=false
[ "$1" != --record ] || { record=true && shift; }
if [ $# -lt 2 ] || [ ! -x "$1/hookctl" ]; then
  echo "Usage: ${0##*/} [--record] BIN SESSION...; BIN is the folder of a hookctl, like build/asan/bin" >&2
  exit 2
fi
PATH=$(realpath "$1"):$PATH
shift
SOURCE=$(cd "$(dirname "$0")/.." && pwd)
streams=$(realpath "$(mktemp -d)") && [ -d "$streams" ] || exit
trap 'rm -rf "$streams"' EXIT
# The process is another user, who has to get into its folders.
chmod 755 "$streams"
own=$streams/own
export LC_ALL=C.UTF-8 TMPDIR=$streams/tmp XDG_STATE_HOME=$streams
unset HOOKCTL_ROOT COLUMNS LINES

failed=0
for session; do
  grep -q '^\$ ' "$session" || { echo "$session: nothing is typed in it" && failed=1 && continue; }
  play "$session" 2>&1 | stable >"$streams/shown"
  if $record; then
    cp "$streams/shown" "$session"
  else
    diff -u --label "$session" --label 'what is shown' "$session" "$streams/shown" || failed=1
  fi
done
exit $failed
