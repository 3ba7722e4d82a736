# Shared by the scripts of this folder: paths, messages to the user, and how to run Wine.
# Sourced, never run.

set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_dir=$top/build/win32
deps_dir=$top/build/deps
wine_dir=$top/build/wine
export DEPS_ROOT=$deps_dir

say() { printf '== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  shift
  for line in "$@"; do printf '  %s\n' "$line" >&2; done
  exit 1
}

# Prints the comment block at the head of the calling script, which is its manual.
show_help() {
  sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$0"
}

# The Wine settings that every run shares. A prefix is always below build/wine, never in the home directory.
wine_environment() {
  export WINEPREFIX=$1 WINEARCH=win32 WINEDEBUG=${WINEDEBUG:--all}
  # winedbg would print pages for a crashed test, winemenubuilder write into the home directory, and the other two
  # would ask for downloads.
  export WINEDLLOVERRIDES='winedbg.exe=d;winemenubuilder.exe=d;mscoree=;mshtml='
  export LC_ALL=C LANG=C
  unset DISPLAY WAYLAND_DISPLAY WINEPATH
}

# Makes the prefix that all others are copies of, once. Takes about 10 seconds the first time.
make_base_prefix() {
  local base=$wine_dir/base
  mkdir -p "$wine_dir"
  exec 9>"$wine_dir/base.lock"
  flock 9
  if [ ! -e "$base/.ready" ]; then
    say "making a Wine prefix (about 10 seconds)"
    rm -rf "$base"
    (
      wine_environment "$base"
      wineboot -i </dev/null >"$wine_dir/wineboot.log" 2>&1 ||
        die "wineboot failed; its output is in build/wine/wineboot.log"
      wineserver -w
    ) 9>&-
    touch "$base/.ready"
  fi
  exec 9>&-
}

# copy_prefix TARGET: a fresh prefix with its own service database, registry and named events. The 600 MB of the system's
# libraries are shared by hard links; what a program may change in place is copied.
copy_prefix() {
  local base=$wine_dir/base
  rm -rf "$1"
  mkdir -p "$(dirname "$1")"
  cp -al "$base" "$1"
  cp -a --remove-destination "$base"/*.reg "$1"
  cp -a --remove-destination "$base"/drive_c/windows/*.ini "$1/drive_c/windows"
}

# start_prefix: starts the server of $WINEPREFIX and keeps it, so that each process starts in some 20 ms.
start_prefix() {
  wineserver -p </dev/null >/dev/null 2>&1
  # The first process starts the background services, which would keep a piped output open for ever.
  wine cmd /c exit </dev/null >/dev/null 2>&1
}

# stop_prefix: ends every process of $WINEPREFIX, and of no other.
stop_prefix() {
  wineserver -k >/dev/null 2>&1 || true
  wineserver -w >/dev/null 2>&1 || true
}
