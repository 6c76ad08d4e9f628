# shellcheck shell=bash
# What ./run, ./test and the other commands share: install what is missing, configure, build. To be sourced.
#
# Everything here talks on standard error, so that standard output belongs to the program that is run. Nothing changes
# the working directory of the caller.

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
modules=$root/grammars/node_modules
logs=$root/build/logs

say() { printf '%s\n' "$*" >&2; }
fail() {
  say "$@"
  exit 1
}
on_terminal() { [[ -t 2 && ${TERM:-dumb} != dumb ]]; }

# --- Debian packages ---

has_command() { command -v "$1" >/dev/null; }

has_recent_cmake() {
  local version
  has_command cmake && version=$(cmake --version) && [[ $version =~ ([0-9]+)\.([0-9]+) ]] &&
    ((BASH_REMATCH[1] > 3 || (BASH_REMATCH[1] == 3 && BASH_REMATCH[2] >= 25)))
}

# needed_packages [MORE…]: one name to a line. What a command shows to be there in another way isn't asked for.
needed_packages() {
  printf '%s\n' ninja-build ccache clang-19 lld-19 libclang-rt-19-dev libstdc++-12-dev libicu-dev libfmt-dev \
    libgtest-dev libgmock-dev libbenchmark-dev libasio-dev libcurl4-openssl-dev pkg-config git "$@"
  has_recent_cmake || echo cmake
  has_command node || echo nodejs
  has_command npm || echo npm
}

installed_packages() {
  # Fails where one of the names is unknown to it, which is no failure here.
  dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p' || true
}

# missing_packages [MORE…]: one name to a line.
missing_packages() {
  local needed
  mapfile -t needed < <(needed_packages "$@" | sort -u)
  comm -23 <(printf '%s\n' "${needed[@]}") <(installed_packages "${needed[@]}" | sort -u)
}

# install_packages [MORE…]: what the build needs, and MORE.
install_packages() {
  local missing reason=
  mapfile -t missing < <(missing_packages "$@")
  ((${#missing[@]})) || return 0
  ((EUID == 0)) || reason="this user isn't root"
  has_command apt-get || reason="there is no apt-get"
  [[ ! $reason ]] || fail "These Debian packages are missing, and can't be installed from here, since $reason:
  ${missing[*]}
As root, run:
  apt-get update && apt-get install --no-install-recommends ${missing[*]}"
  quietly "Installing ${#missing[@]} packages" packages apt_install "${missing[@]}"
}

apt_install() {
  export DEBIAN_FRONTEND=noninteractive
  # A source that can't be reached doesn't matter if the others have what we need.
  apt-get update || true
  apt-get install -y --no-install-recommends "$@"
}

# --- Showing progress ---

# quietly WHAT LOG COMMAND…: runs the command with its output in a log, whose end is shown if it fails.
quietly() {
  local what=$1 log=$logs/$2.log
  shift 2
  mkdir -p "$logs"
  say "$what …"
  "$@" >"$log" 2>&1 </dev/null && return
  tail -n 40 "$log" >&2
  fail "$what failed; the whole output is in $log."
}

# Copies ninja's output to a log and shows only how far it is: on a terminal in one line that comes and goes.
show_ninja_progress() {
  local preset=$1 line told=
  while IFS= read -r line; do
    printf '%s\n' "$line"
    [[ $line =~ ^(\[[1-9][0-9]*/[0-9]+\]) ]] || continue
    if on_terminal; then
      printf '\rBuilding %s %s\033[K' "$preset" "${BASH_REMATCH[1]}" >&2
    elif [[ ! $told ]]; then
      say "Building $preset …"
    fi
    told=yes
  done
  if on_terminal && [[ $told ]]; then printf '\r\033[K' >&2; fi
}

# --- Grammars ---

npm_ci() { (cd "$root/grammars" && npm ci --no-progress); }

# Succeeds if what is in node_modules is what the lock file asks for, whoever put it there.
grammars_match_lock() {
  [[ -e $modules/.package-lock.json ]] && node - "$root/grammars/package-lock.json" "$modules/.package-lock.json" <<'NODE'
const [wanted, present] = process.argv.slice(2).map(path => JSON.parse(require("fs").readFileSync(path)).packages);
const isThere = ([path, { version, optional }]) => path === "" || optional || present[path]?.version === version;
process.exit(Object.entries(wanted).every(isThere) ? 0 : 1);
NODE
}

install_grammars() {
  local stamp=$modules/.velmar-lock lock
  lock=$(sha256sum <"$root/grammars/package-lock.json")
  [[ -f $stamp && $(<"$stamp") == "$lock" ]] && return
  if ! grammars_match_lock; then
    # npm empties the folder first, which isn't ours to do through a link.
    [[ ! -L $modules ]] || fail "$modules is a link to a folder that holds other packages than package-lock.json asks for."
    quietly "Installing the grammars" grammars npm_ci
  fi
  # A folder that can't be written is looked through each time.
  { printf '%s\n' "$lock" >"$stamp"; } 2>/dev/null || true
}

# --- Configuring and building ---

# configure PRESET: unless it was done with the same presets in the same place; other changes ninja notices.
configure() {
  local preset=$1 stamp=$root/build/$1/.velmar-configured key
  key=$({ cat "$root/CMakePresets.json" && echo "$root"; } | sha256sum)
  [[ -f $root/build/$preset/build.ninja && -f $stamp && $(<"$stamp") == "$key" ]] && return
  quietly "Configuring $preset" "configure-$preset" run_cmake "$preset"
  printf '%s\n' "$key" >"$stamp"
}

# Afresh, since the answers in the cache may be those of another place or compiler.
run_cmake() { (cd "$root" && cmake --fresh --preset "$1"); }

# build PRESET [TARGET…]
build() {
  local preset=$1 log=$logs/build-$1.log
  shift
  mkdir -p "$logs"
  ninja -C "$root/build/$preset" -j "$(nproc)" "$@" 2>&1 </dev/null | show_ninja_progress "$preset" >"$log" && return
  sed -n '/^FAILED: /,$p' "$log" | grep -v '^\[[0-9]*/[0-9]*\]' | head -n 150 >&2 || tail -n 20 "$log" >&2
  fail "Building $preset failed; the whole output is in $log."
}

# set_up [MORE PACKAGES…]: all that comes before configuring. Holds a lock, so that two commands that are started
# together take turns; release_lock lets the next one in.
set_up() {
  install_packages "$@"
  mkdir -p "$logs" 2>/dev/null || true
  [[ -w $logs ]] || fail "$root/build can't be written by this user."
  exec {lock_descriptor}>"$root/build/.lock"
  flock "$lock_descriptor"
  use_caches_of_our_own
  install_grammars
}

release_lock() { exec {lock_descriptor}>&-; }

# Where there is no home to keep them in, the caches of npm and ccache go into the build folder.
use_caches_of_our_own() {
  [[ -w ${HOME:-/nonexistent} ]] && return
  export CCACHE_DIR=${CCACHE_DIR:-$root/build/ccache} npm_config_cache=${npm_config_cache:-$root/build/npm-cache}
}
