#!/usr/bin/env bash
# Shows which branches of the process its tests take; --help tells more.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh

least=95
list=docs/proof.md
heading='## Branches that no test takes'
results=build/coverage/branches

usage() {
  cat <<TEXT
Usage: ./prove coverage

Installs what is missing, builds the process so that it counts its branches, runs the tests, and shows for each folder
of src/, but for what stands in for the handset, how many of its branches they took; and each branch that none took.

A condition has two branches: it is true or false. So has each part of one that is made with && or ||, and each case of
a switch; what none of its cases is for goes to its default.

Status 0 when the tests take at least $least % of the branches, and the others are those that $list
lists, each with the reason why no test takes it; else 1. It takes a minute behind the first build.
TEXT
}

case "$#:${1-}" in
  0:) ;;
  1:-h | 1:--help)
    usage
    exit
    ;;
  *)
    printf './prove coverage %s: it takes no such thing\n\n' "$*" >&2
    usage >&2
    exit 2
    ;;
esac

# run_tests NAME OPTION...: those that ctest takes the options for; what they say goes into NAME.log. One that fails on a
# busy machine is run again: whether it may is for ./test to say.
run_tests() {
  local name=$1
  shift
  ctest --test-dir build/coverage --no-tests=error --output-on-failure --repeat until-pass:3 -j 6 "$@" \
    >$results/"$name".log 2>&1 && return
  sed -n '/tests passed/,$p' $results/"$name".log
  echo "What the tests take is only told when they pass: let ./test pass first. Their words are in $results/$name.log"
  exit 1
}

# count_branches NAME: the branches that were counted so far, into NAME.tsv: file, where the condition begins and ends,
# outcome, how often it came. A branch in a header or a template counts once, wherever it was compiled.
count_branches() {
  local program programs=()
  for program in qmi_kesext_hook faulty_process platform_tests unit_tests; do
    programs+=(-object build/coverage/bin/$program)
  done
  llvm-profdata-14 merge -o $results/"$1".profdata $results/profiles/*.profraw
  # What a program has of a header and never uses has no counts, and is no news.
  llvm-cov-14 export -instr-profile $results/"$1".profdata "${programs[@]}" \
    2> >(grep -v 'functions have mismatched data' >&2) |
    jq -r '
      # A condition that was come to, and had neither outcome, is a constant.
      def reached($segments): . as $at | [$segments[] | select(.[:2] <= $at)] | last | .[2] > 0;
      .data[0].files[]
      | (.filename | sub(".*/src/"; "src/")) as $file
      | select($file | test("^src/(?!platform/[^/]+/)"))
      | .segments as $segments
      | .branches | group_by(.[:4])[]
      | .[0][:4] as $place | (map(.[4]) | add) as $true | (map(.[5]) | add) as $false
      | select($true + $false > 0 or ($place[:2] | reached($segments) | not))
      | [$file, $place[], "true", $true], [$file, $place[], "false", $false]
      | @tsv' | sort -V >$results/"$1".tsv
}

# show_folders: how many branches the tests took of each folder and of all, and of all with some calls failing too.
# Status 1 when the tests alone took too few.
show_folders() {
  awk -F '\t' -v least=$least '
    function show(name, branches, taken) {
      printf "%-26s %8d %8d %7.1f %%\n", name, branches, taken, 100 * taken / branches
    }
    faults {
      all_faults += $7 > 0
      next
    }
    {
      split($1, path, "/")
      branches[path[2]]++
      taken[path[2]] += $7 > 0
      all++
      all_taken += $7 > 0
    }
    END {
      printf "%-26s %8s %8s\n", "", "branches", "taken"
      count = split("core qmi nv generic adam carrier nam platform", folders, " ")
      for (i = 1; i <= count; i++)
        if (branches[folders[i]]) show("src/" folders[i], branches[folders[i]], taken[folders[i]])
      show("all", all, all_taken)
      show("all, some calls failing too", all, all_faults)
      exit 100 * all_taken < least * all
    }' $results/tests.tsv faults=1 $results/faults.tsv
}

# untaken: the branches that the tests did not take: file, text of the condition, outcome, line. That a switch has no
# case for a value is its default.
untaken() {
  awk -F '\t' '
    $7 == 0 {
      condition = ""
      outcome = $6
      for (line = 1; line <= $4 && (getline text <$1) > 0; line++) {
        if (line < $2) continue
        if (line == $4) text = substr(text, 1, $5 - 1)
        if (line == $2 && substr(text, 1, $3 - 1) ~ /switch \($/) outcome = "default"
        if (line == $2) text = substr(text, $3)
        sub(/^ +/, "", text)
        condition = condition (condition == "" ? "" : " ") text
      }
      close($1)
      printf "%s\t%s\t%s\t%d\n", $1, condition, outcome, $2
    }' $results/tests.tsv
}

# listed: the branches of the list: file, text of the condition, outcome.
listed() {
  awk -F ' *[|] *' -v heading="$heading" '
    /^## / { inside = $0 == heading }
    inside && $2 ~ /^`src\// {
      gsub(/`/, "")
      printf "%s\t%s\t%s\n", $2, $3, $4
    }' $list
}

# hold_against_list: shows each branch that was not taken. Status 1 unless they are those of the list.
hold_against_list() {
  awk -F '\t' -v list=$list '
    list_is_read == 0 {
      listed[$1 FS $2 FS $3]++
      next
    }
    {
      count++
      unlisted += missing = listed[$1 FS $2 FS $3]-- <= 0
      printf "%-42s %-8s %s%s\n", $1 ":" $4, $3, $2, missing ? "   <- not listed" : ""
    }
    END {
      if (count == 0) print "none"
      if (unlisted > 0)
        printf "%d of these %s does not list: let a test take them, take out what nothing can reach, or list them with a reason\n",
               unlisted, list
      for (key in listed)
        if (listed[key] > 0) {
          split(key, branch, FS)
          printf "%s lists what a test takes, or what is no more: %s, %s, %s; take it off\n", list, branch[1], branch[2],
                 branch[3]
          unlisted++
        }
      exit unlisted > 0
    }' <(listed) list_is_read=1 <(untaken)
}

install_packages $process_packages $tool_packages $test_packages $coverage_packages
build coverage
rm -rf $results
mkdir -p $results/profiles
export LLVM_PROFILE_FILE=$PWD/$results/profiles/%c%m.profraw
run_tests tests -E '^(linkage|manual_pages|faults)$'
count_branches tests
run_tests faults -R '^faults$'
count_branches faults
echo "ran the tests, $SECONDS s since the start"
echo

status=0
show_folders || {
  status=1
  echo "that is less than the $least % that the tests have to take: let them take some of these"
}
printf '\nNever taken:\n'
hold_against_list || status=1
exit $status
