# What the rings share that live in a Debian of their own; they source it. They say how many seconds a mirror may take
# ($longest).
# shellcheck shell=bash

# quietly LOG COMMAND...: says nothing unless it fails.
quietly() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 && return
  grep -vE '^\[ *[0-9]+(/[0-9]+|%)\] ' "$log" | tail -n 60 >&2 || true
  echo "Failed; all of it is in $log." >&2
  return 1
}

# Root, where it may mount what nobody else sees: not in every container.
can_mount() {
  [ "$(id -u)" -eq 0 ] && unshare --mount --pid --fork mount -t tmpfs tmpfs /tmp 2>/dev/null
}

# A machine that has just been set up has no lists of packages, and apt then knows no mirror.
update_lists() {
  # shellcheck disable=SC2154 # of who sources this
  [ -n "$(apt-get indextargets 'Identifier: Packages' 'Origin: Debian')" ] ||
    timeout --foreground "$longest" apt-get update
}
