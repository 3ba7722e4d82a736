# Progress of long commands, sourced by scripts/test and scripts/demo after common.sh.

# How far a command is, by the last lines of its log: steps of a build, tests of CTest, or a heading. What scripts/build
# compiles is in a log of its own.
progress_of() { # progress_of LOG
  local log=$1
  [ ! "$top/build/build.log" -nt "$log" ] || log=$top/build/build.log
  tail -n 40 "$log" |
    sed -nE -e 's/^\[([0-9]+)\/([0-9]+)\] .*/\1 of \2/p' \
      -e 's/^ *([0-9]+)\/([0-9]+) Test +#.*/\1 of \2 tests/p' -e 's/^== (.*)/\1/p' | tail -n 1
}

# Prints the progress: to a terminal each second, over the last line, otherwise a line in 30 seconds.
show_progress() { # show_progress HEADING LOG
  local start=$SECONDS next=30 seconds line
  while sleep 1; do
    seconds=$((SECONDS - start))
    [ -t 1 ] || [ $seconds -ge $next ] || continue
    next=$((seconds + 30))
    line="$1: $(progress_of "$2"), $seconds s"
    if [ -t 1 ]; then
      printf '\r\033[K%.*s' $(($(tput cols 2>/dev/null || echo 80) - 1)) "$line"
    else
      printf '%s\n' "$line"
    fi
  done
}

ticker=
stop_ticker() {
  [ -z "$ticker" ] || { kill "$ticker" && wait "$ticker"; } 2>/dev/null || true
  ticker=
  [ ! -t 1 ] || printf '\r\033[K'
}

# run_with_progress HEADING LOG COMMAND...: shows the progress of the command, whose output goes to LOG. Returns its exit
# code. The caller has to call stop_ticker when it ends.
run_with_progress() {
  local heading=$1 log=$2 code=0
  shift 2
  : >"$log"
  [ -t 1 ] || printf '%s\n' "$heading"
  show_progress "$heading" "$log" 6>&- &
  ticker=$!
  ("$@") >"$log" 2>&1 || code=$?
  stop_ticker
  return $code
}
