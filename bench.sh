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

install_packages build bench
build release bench
python3 -B bench/run.py build/release build/bench/report.md || fail "a benchmark ended early"
echo "bench: report in build/bench/report.md"
