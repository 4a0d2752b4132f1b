# What ./run, ./test and .ci/run share. Sourced by them; it leaves them in the top folder of the checkout.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
program=$(basename "$0")

say() { printf '%s: %s\n' "$program" "$*"; }

# Always the last line of a script.
fail() {
  say "failed: $*"
  exit 1
}

# with_progress LABEL LOG COMMAND...   Runs COMMAND with its output in LOG and shows how far it is, from its lines that
# begin with a count such as "[3/40]": one updating line on a terminal, a line each quarter of the way elsewhere.
with_progress() {
  local label=$1 log=$2 line count total quarter=0 status=0
  shift 2
  mkdir -p "$(dirname "$log")"
  "$@" 2>&1 | tee "$log" | while IFS= read -r line; do
    [[ $line =~ ^[[:space:]\[]*([0-9]+)/([0-9]+)(.*) ]] || continue
    count=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]}
    if [ -t 1 ]; then
      line="$label $count/$total${BASH_REMATCH[3]}"
      printf '\r\033[K%s' "${line:0:$(($(tput cols 2>/dev/null || echo 80) - 1))}"
    elif ((count * 4 / total > quarter)); then
      quarter=$((count * 4 / total))
      say "$label: $count of $total"
    fi
  done || status=$?
  [ ! -t 1 ] || printf '\r\033[K'
  return $status
}

# Installs PACKAGES as root and counts what is done, for with_progress.
install_as_root() {
  local apt_get=(env DEBIAN_FRONTEND=noninteractive apt-get -o Dpkg::Use-Pty=0)
  [ "$(id -u)" = 0 ] || apt_get=(sudo "${apt_get[@]}")
  "${apt_get[@]}" update
  "${apt_get[@]}" install -y --no-install-recommends "$@" |
    awk '/ newly installed/ { total = $1 + $3 } /^Setting up/ { printf "[%d/%d] %s\n", ++n, total, $3 } { print; fflush() }'
}

# install_packages GROUP...   Installs what scripts/packages lists for the groups and is not there yet.
install_packages() {
  command -v dpkg-query >/dev/null || {
    say "not a Debian system: taking for granted that the packages in scripts/packages are there"
    return
  }
  local wanted missing
  mapfile -t wanted < <(awk -v groups=" $* " '!/^#/ && NF && index(groups, " " $1 " ") { print $2 }' scripts/packages)
  mapfile -t missing < <(printf '%s\n' "${wanted[@]}" | grep -vxFf <(
    dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null | awk '$2 == "installed" { print $1 }'))
  [ ${#missing[@]} -gt 0 ] || return 0

  if [ "$(id -u)" != 0 ] && ! sudo -n true 2>/dev/null && ! { [ -t 0 ] && command -v sudo >/dev/null; }; then
    fail "root rights are needed for: apt-get install ${missing[*]}"
  fi
  say "installing ${missing[*]}"
  with_progress installing build/packages.log install_as_root "${missing[@]}" || {
    tail -n 20 build/packages.log
    fail "apt-get could not install the packages (build/packages.log)"
  }
}

# build PRESET [TARGET]   Configures when need be, and builds. One build at a time in each folder.
build() {
  local folder=build/$1
  mkdir -p "$folder"
  exec 9>"$folder/.lock"
  flock 9
  if [ ! -f "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
    say "configuring $1"
    cmake --preset "$1" >"$folder/configure.log" 2>&1 || {
      cat "$folder/configure.log"
      fail "cannot configure $1 ($folder/configure.log)"
    }
  fi
  NINJA_STATUS='[%f/%t] ' with_progress "building $1" "$folder/build.log" \
    cmake --build --preset "$1" ${2:+--target "$2"} || {
    grep -vE '^\[[0-9]+/[0-9]+\]' "$folder/build.log" || :
    fail "cannot build $1 ($folder/build.log)"
  }
  exec 9>&-
}
