#!/usr/bin/env bash
# picture.sh PROGRAM FILE: starts the console on a virtual display, waits for its main window, and leaves a picture of it.
set -euo pipefail
program=$1 file=$2
work=$(mktemp -d)
server='' console=''
finish() {
  [ -z "$console" ] || kill "$console" 2>/dev/null || true
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT

Xvfb -displayfd 3 -screen 0 1600x1200x24 -nolisten tcp 3>"$work/display" >"$work/server.log" 2>&1 &
server=$!
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
[ -s "$work/display" ] || { echo "The virtual display did not start:" >&2; cat "$work/server.log" >&2; exit 1; }
export DISPLAY=:$(cat "$work/display")

QT_QPA_PLATFORM=xcb "$program" 2>"$work/console.log" &
console=$!
# The start-up window closes after four seconds; the picture is of the main window alone.
for _ in $(seq 150); do
  kill -0 "$console" 2>/dev/null || { echo "The console ended early:" >&2; cat "$work/console.log" >&2; exit 1; }
  windows=$(xdotool search --all --onlyvisible --pid "$console" --name '.*' 2>/dev/null || true)
  main=$(xdotool search --all --onlyvisible --pid "$console" --name '^Quarl Console$' 2>/dev/null | head -n 1 || true)
  [ -n "$main" ] && [ "$(wc -w <<<"$windows")" -eq 1 ] && break
  sleep 0.2
done
[ -n "${main:-}" ] || { echo "The main window did not come:" >&2; cat "$work/console.log" >&2; exit 1; }
sleep 0.5
eval "$(xdotool getwindowgeometry --shell "$main")"
mkdir -p "$(dirname "$file")"
scrot --overwrite --autoselect "$X,$Y,$WIDTH,$HEIGHT" "$file"
