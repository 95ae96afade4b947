#!/usr/bin/env bash
# Checks a CPU second of nagios4, icinga2 and this service, each with the same number of TCP checks a second of a server
# on this machine, check_tcp for the first two. Installs their Debian packages where they are missing, without starting
# their daemons; both run in the foreground from a folder of their own.
#
#   bench/compare-checkers.sh [PROGRAMS [SECONDS]]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
programs=${1:-$root/build/release/quarl}
seconds=${2:-60}

. "$root/packaging/setup.sh"

policy=/usr/sbin/policy-rc.d
if [ "$(id -u)" -eq 0 ] && [ ! -e "$policy" ]; then
  trap 'rm -f "$policy"' EXIT
  printf '#!/bin/sh\nexit 101\n' >"$policy"
  chmod 755 "$policy"
fi
need bench
python3 "$root/bench/compare-checkers.py" "$programs" "$seconds"
