# The workers of the tests, sourced by scripts/wine and scripts/test after common.sh.
#
# A worker is a directory build/wine/worker-N: a Wine prefix, its server, which keeps running, and a network namespace
# where the system allows one. A program gets a worker to itself by locking worker-N.lock. The lock is inherited by
# everything that the program starts, so a worker is free again when the last of these has ended.
#
# Wine's server creates the sockets of all programs of its prefix, so the server has to be started in the namespace.
# The programs join it too: some ask the system about the network by themselves.

# Seconds until the server of an unused worker ends by itself.
worker_idle_limit=600
# How many workers there may be: more than tests run at once, as a program that is left over keeps its worker.
worker_limit=64

# Sets `own_network` to the command that runs another one in a new network namespace; to nothing, and false, if this
# machine allows none. Without root the namespace belongs to a user namespace of the same user, as Wine wants to find
# its own directories.
find_own_network() {
  own_network=(unshare --net)
  "${own_network[@]}" ip link set lo up 2>/dev/null && return 0
  own_network=(unshare --user --map-current-user --keep-caps --net)
  "${own_network[@]}" ip link set lo up 2>/dev/null && return 0
  own_network=()
  return 1
}

# Locks a free worker, on descriptor 7, and sets `worker`.
take_worker() {
  local slot
  while :; do
    for ((slot = 1; slot <= worker_limit; slot++)); do
      worker=$wine_dir/worker-$slot
      exec 7>"$worker.lock"
      ! flock -n 7 || return 0
    done
    sleep 0.1
  done
}

# True if the server of `worker` runs; then `worker_pid` is a process in its namespace.
worker_runs() {
  worker_pid=$(cat "$worker/pid" 2>/dev/null) &&
    grep -qzxF "WINEPREFIX=$worker/prefix" "/proc/$worker_pid/environ" 2>/dev/null
}

# Starts the server of `worker` and its background services, in about 2 seconds. `wineserver -w` stays with them, as the
# process by which others find the namespace.
start_worker() {
  local starter
  [ -d "$worker/prefix" ] || { copy_prefix "$worker/new" && mv "$worker/new" "$worker/prefix"; }
  rm -f "$worker/pid"
  find_own_network || true
  wine_environment "$worker/prefix"
  # shellcheck disable=SC2016
  setsid "${own_network[@]}" bash -c '
    [ "$1" = 0 ] || ip link set lo up || exit
    wineserver -p"$2" && wine cmd /c exit
    echo $$ >"$3/pid.new" && mv "$3/pid.new" "$3/pid"
    exec wineserver -w' \
    worker ${#own_network[@]} $worker_idle_limit "$worker" </dev/null >/dev/null 2>&1 6>&- 7>&- &
  starter=$!
  until worker_runs; do
    kill -0 $starter 2>/dev/null || die "Wine's server could not be started in ${worker#"$top"/}"
    sleep 0.05
  done
}

# Sets `join_worker` to the command that runs another one in the namespaces of `worker`; to nothing if it has none.
find_way_into_worker() {
  local kind
  join_worker=()
  for kind in user net; do
    [ "/proc/$worker_pid/ns/$kind" -ef "/proc/self/ns/$kind" ] || join_worker+=("--$kind")
  done
  [ ${#join_worker[@]} = 0 ] || join_worker=(nsenter --target "$worker_pid" --preserve-credentials "${join_worker[@]}")
}

# Ends and removes the workers, with every program in them; with "unused" only those that nobody has locked.
remove_workers() {
  local worker
  for worker in "$wine_dir"/worker-*/; do
    worker=${worker%/}
    [ -d "$worker" ] || continue
    (
      exec 7>"$worker.lock"
      flock -n 7 || [ "${1:-}" != unused ] || exit 0
      exec 7>&-
      wine_environment "$worker/prefix"
      stop_prefix
      rm -rf "$worker" "$worker.lock"
    )
  done
}
