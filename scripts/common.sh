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

# Installs PACKAGES as root and counts what is done, for with_progress: what was fetched, then what was set up.
install_as_root() {
  local apt_get=(env DEBIAN_FRONTEND=noninteractive LC_ALL=C apt-get -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=120
    -o Acquire::Retries=1 -o Acquire::http::Timeout=15 -o Acquire::https::Timeout=15)
  [ "$(id -u)" = 0 ] || apt_get=(sudo "${apt_get[@]}")
  "${apt_get[@]}" update
  "${apt_get[@]}" install -y --no-install-recommends "$@" | awk '
    / newly installed/ { total = $1 + $3 }
    /^Get:/ && n < total { printf "[%d/%d] fetching %s\n", ++n, 2 * total, $5 }
    /^Setting up/ { n = n < total ? total + 1 : n + 1; printf "[%d/%d] %s\n", n, 2 * total, $3 }
    { print; fflush() }'
}

# What scripts/packages lists for GROUPS and is not there, neither by its own name nor as part of another package.
missing_packages() {
  awk -v groups=" $* " '
    NR == FNR { if ($1 == "installed") for (i = 2; i <= NF; ++i) there[$i]; next }
    !/^#/ && NF && index(groups, " " $1 " ") && !($2 in there) { print $2 }
  ' <(dpkg-query -W -f '${db:Status-Status} ${Package} ${Provides}\n' | tr -d ,) scripts/packages
}

# install_packages GROUP...   Installs what scripts/packages lists for the groups and is not there yet.
install_packages() {
  local missing=() name
  if ! command -v dpkg-query >/dev/null; then
    for name in "${CXX-c++}" cmake ninja pkg-config openssl bsdtar python3 unshare setpriv; do
      command -v "$name" >/dev/null || missing+=("$name")
    done
    [ ${#missing[@]} = 0 ] || fail "not a Debian system, and these programs are missing: ${missing[*]} (see scripts/packages)"
    say "not a Debian system: taking for granted that what scripts/packages lists is there"
    return
  fi
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0

  if [ "$(id -u)" != 0 ] && ! sudo -n true 2>/dev/null && ! { [ -t 0 ] && command -v sudo >/dev/null; }; then
    fail "root rights are needed, and sudo gives none here; as root: apt-get install ${missing[*]}"
  fi
  say "installing ${#missing[@]} packages and what they need: ${missing[*]}"
  with_progress installing build/packages.log install_as_root "${missing[@]}" ||
    fail "apt-get could not install the packages: $(grep -m 1 '^E: ' build/packages.log || tail -n 1 build/packages.log) (build/packages.log)"
}

# Whether the build folder is configured as the presets and the variables (-DNAME=VALUE) want it.
is_configured() { # FOLDER VARIABLE...
  local folder=$1 variable
  shift
  [ -f "$folder/build.ninja" ] && [ ! CMakePresets.json -nt "$folder/build.ninja" ] || return 1
  for variable in "${@#-D}"; do
    grep -qs "^${variable%%=*}:[A-Z]*=${variable#*=}\$" "$folder/CMakeCache.txt" || return 1
  done
}

# build PRESET "TARGET..." [-DNAME=VALUE...]   Configures when need be, and builds. One build at a time in each folder.
build() {
  local preset=$1 targets=() folder=build/$1 missing
  read -ra targets <<<"$2"
  shift 2
  mkdir -p "$folder"
  exec 9>"$folder/.lock"
  flock 9
  if ! is_configured "$folder" "$@"; then
    say "configuring $preset"
    cmake --preset "$preset" "$@" >"$folder/configure.log" 2>&1 || {
      missing=$(sed -n 's/^-- missing: //p' "$folder/configure.log")
      [ -z "$missing" ] || fail "the build needs what is missing here: $missing (scripts/packages names Debian's packages)"
      cat "$folder/configure.log"
      fail "cannot configure $preset ($folder/configure.log)"
    }
  fi
  NINJA_STATUS='[%f/%t] ' with_progress "building $preset" "$folder/build.log" \
    cmake --build --preset "$preset" --target "${targets[@]}" || {
    grep -vE '^\[[0-9]+/[0-9]+\]' "$folder/build.log" || :
    fail "cannot build $preset ($folder/build.log)"
  }
  exec 9>&-
}
