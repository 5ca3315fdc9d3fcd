#!/usr/bin/env bash
# Fuzzes the process; --help tells how. Two fuzzers run at a time.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/setup.sh

# Each target with each sanitizer that it is built with.
runs='
requests asan
indications asan
requests msan
indications msan
frames asan
both tsan
frames msan
frames tsan
'
targets=$(awk 'NF && !seen[$1]++ {print $1}' <<<"$runs")
seconds=60
only=$targets
input=
keep=false
tree=$PWD
kept=$tree/tests/fuzz/corpus
work=$tree/build/fuzz

usage() {
  cat <<TEXT
Usage: ./prove fuzz [--seconds N] [--only TARGET] [--input FILE | --keep]

Fuzzes the process with what its parent and its modem may send. It stops at the first finding, with a line that
reproduces it. Status 0 when nothing was found.

  --seconds N    for each target and sanitizer, 60 by default
  --only TARGET  one of: ${targets//$'\n'/, }
  --input FILE   plays that input, and nothing else, with each sanitizer of the target
  --keep         does not fuzz: makes the kept corpus anew, of what it has and of what the runs so far have
                 in build/fuzz

  requests     the dispatch loop with requests of every kind and length; the modem answers what the input says
  indications  the modem's indications and the packets of its logs, with a log directory that others disturb
  frames       the workstation's link, with a modem whose frames are not those of the contract
  both         requests and indications at once
TEXT
}

refuse() {
  printf './prove fuzz: %s; --help tells what there is\n' "$1" >&2
  exit 2
}

while [ $# -gt 0 ]; do
  case $1 in
    -h | --help)
      usage
      exit
      ;;
    --keep) keep=true ;;
    --seconds | --only | --input)
      [ $# -gt 1 ] || refuse "$1 takes a value"
      printf -v "${1#--}" %s "$2"
      shift
      ;;
    *) refuse "there is no $1" ;;
  esac
  shift
done
[[ $seconds =~ ^[1-9][0-9]*$ ]] || refuse "--seconds $seconds is no number of seconds"
[ "$only" = "$targets" ] || grep -qxF -- "$only" <<<"$targets" || refuse "there is no target $only"
[ -z "$input" ] || { [ -f "$input" ] && [ "$only" != "$targets" ]; } ||
  refuse "--input takes a file that there is, and --only its target"
[ -z "$input" ] || ! $keep || refuse "--keep plays no --input"

install_packages $process_packages $test_packages $fuzz_packages
for sanitizer in asan msan tsan; do
  mapfile -t wanted < <(grep -F " $sanitizer" <<<"$runs" | grep -wF "$only" | sed 's/\(.*\) .*/fuzz_\1/')
  [ ${#wanted[@]} -eq 0 ] || build fuzz-$sanitizer "${wanted[@]}"
done

fix_addresses

# The handset's files are written and deleted all the time, and a disk would be most of it.
memory=$(mktemp -d /dev/shm/fuzz.XXXXXX)
# Each run is a process group, so that its fuzzer goes with it; at once, as one with ThreadSanitizer may hang in its own end.
set -m
trap 'exec 2>/dev/null; for group in $(jobs -p); do kill -KILL -- "-$group" 2>/dev/null || true; done; wait; rm -rf "$memory"' EXIT
# What clang's ThreadSanitizer does not know: that its fuzzer's counters, behind all that has a name, are everybody's.
echo 'race:^__TMC_END__$' >"$memory/suppressions"
export TSAN_OPTIONS=halt_on_error=1:atexit_sleep_ms=0:suppressions=$memory/suppressions

# fuzzer TARGET SANITIZER ARGUMENT...
fuzzer() {
  (cd "$memory" && exec "${fixed_addresses[@]}" "$tree/build/fuzz-$2/bin/fuzz_$1" -max_len=600 -timeout=25 \
    -verbosity=0 "${@:3}")
}

# fuzz TARGET SANITIZER: one run, and a line of what came of it.
fuzz() {
  local log=$work/$1-$2.log found=$work/$1-$2.input started=$SECONDS status=0 executions
  mkdir -p "$work/$1"
  rm -f "$found"
  fuzzer "$1" "$2" -max_total_time="$seconds" -print_final_stats=1 -exact_artifact_path="$found" \
    "$work/$1" "$kept/$1" &>"$log" || status=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | sed -E ':a; s/([0-9])([0-9]{3})(,|$)/\1,\2\3/; ta')
  printf '%-12s %s  %11s executions in %d s, %s inputs\n' "$1" "$2" "${executions:-0}" $((SECONDS - started)) \
    "$(find "$work/$1" -type f | wc -l)"
  [ $status -ne 0 ] || return 0
  grep -m 1 -E '^SUMMARY|Assertion|ERROR' "$log" || tail -n 1 "$log"
  if [ -e "$found" ]; then
    echo "found: ./prove fuzz --only $1 --input ${found#"$tree/"}"
  else
    echo "it did not run to its end: ${log#"$tree/"} has what it said"
  fi
  return 1
}

if [ -n "$input" ]; then
  while read -r target sanitizer; do
    [ "$target" = "$only" ] || continue
    echo "$target $sanitizer"
    fuzzer "$target" "$sanitizer" "$(realpath "$input")" || exit 1
  done <<<"$runs"
  exit
fi
if $keep; then
  for target in $only; do
    sanitizer=$(awk -v target="$target" '$1 == target {print $2; exit}' <<<"$runs")
    mkdir "$memory/$target"
    fuzzer "$target" "$sanitizer" -use_counters=0 -use_cmp=0 -set_cover_merge=1 "$memory/$target" "$kept/$target" "$work/$target" 2>/dev/null
    rm -rf "${kept:?}/$target"
    mv "$memory/$target" "$kept/"
    printf '%-12s %3d inputs kept\n' "$target" "$(find "$kept/$target" -type f | wc -l)"
  done
  exit
fi

started=()
while read -r target sanitizer; do
  grep -qxF -- "$target" <<<"$only" || continue
  if [ "$(jobs -rp | wc -l)" -ge 2 ]; then wait -n; fi
  fuzz "$target" "$sanitizer" &
  started+=($!)
done <<<"$(grep . <<<"$runs")"
while [ -n "$(jobs -rp)" ]; do wait -n; done
# Of two that end together the above hears of one.
for run in "${started[@]}"; do wait "$run"; done
