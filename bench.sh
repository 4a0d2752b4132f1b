#!/bin/bash
# Measures the launcher beside other programs. See --help.
. "$(dirname "$0")/scripts/common.sh"

usage() {
  cat <<HELP
Usage: ./bench.sh

Installs what is missing, builds the launcher and the benchmarks (preset release), runs them, and writes the table that
it shows to build/bench/report.md: for each path the least that is possible (floor), what another program takes (peer),
what we take, and the target. It takes two minutes. A missed target is no failure; the last line is "bench: report in
build/bench/report.md" or "bench.sh: failed: WHY".

The starts are measured beside a hundred idle processes, in a process table of their own where the machine allows one. A
start that launches no core is a failure and no figure.

  --help  show this text
HELP
}

case ${1-} in
--help)
  usage
  exit
  ;;
'') ;;
*) fail "unknown option $1, see --help" ;;
esac

install_packages build run repair test bench
build release bench -DQUILLMARK_BENCHMARKS=ON
# Every process on the machine makes the questions to its process table longer, and a core would keep ours from starting.
if [ "$(id -u)" = 0 ]; then alone=(unshare); else alone=(unshare --user --map-root-user); fi
alone+=(--pid --fork --kill-child --mount-proc)
"${alone[@]}" true 2>/dev/null || {
  echo "bench: no process table of its own here: the machine's other processes are measured too"
  alone=()
}
"${alone[@]}" python3 -B bench/run.py build/release build/bench/report.md || fail "a benchmark ended early"
echo "bench: report in build/bench/report.md"
