#!/bin/bash
# wmq_cases_test.sh [CASE...]: the program on the command line, as told by the files under cases/.
#
# Lines that begin with two blanks are what a terminal shows: "$ " a command, "> " its further lines, then all
# that it prints, on both streams, and "[N]" when its exit status is N and not 0. Other lines are remarks.
# The commands of a file run in one shell, in an empty directory. WMQ is the program under test.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
program=$(realpath -e "${WMQ:?is to be the program under test}") || exit

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"
ln -s "$program" "$work/bin/wmq"

# What the cases may rely on.
export PATH=$work/bin:$PATH LC_ALL=C.UTF-8 TZ=UTC0
export EXAMPLES=$here/../../examples/data DOCS=$here/../../docs
unset NO_COLOR
umask 022

# Runs the command at hand and shows what comes of it.
run_command() {
  [[ -n $command ]] || return 0
  eval "$command" >"$output" 2>&1 </dev/null
  local status=$?
  sed 's/^/  /' "$output"
  # The shell drops a line end at the end, and nothing else.
  [[ ! -s $output || -z $(tail -c 1 "$output") ]] || echo ' (no line end)'
  ((status == 0)) || echo "  [$status]"
  command=
}

# The case with what really happens in it.
play() {
  local case_file=$1 output=$work/output command='' line
  mkdir "$work/directory"
  cd "$work/directory" || exit
  while IFS= read -r line; do
    case $line in
      '  $ '*) run_command; command=${line:4}; printf '%s\n' "$line" ;;
      '  > '*) command+=$'\n'${line:4}; printf '%s\n' "$line" ;;
      '  '*) ;;
      *) run_command; printf '%s\n' "$line" ;;
    esac
  done <"$case_file"
  run_command
}

failures=0
cases=("$@")
((${#cases[@]})) || cases=("$here"/cases/*.t)
for case_file in "${cases[@]}"; do
  case_file=$(realpath "$case_file")
  (play "$case_file") >"$work/actual"
  diff -u --label "${case_file##*/}" --label "what happens" "$case_file" "$work/actual" || ((++failures))
  chmod -R u+w "$work/directory"
  rm -rf "$work/directory"
done
echo "${#cases[@]} cases, $failures failed"
((failures == 0))
