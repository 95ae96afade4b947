#!/usr/bin/env bash
# try-service.sh [BUILD [FOLDER]]: runs the unit of the service under a service manager of its own. Installs a build,
# that of ./run where none is named, into a small Debian, boots it in a virtual machine without a network, and makes the
# checks of try-service/checks.py there. Ends with 0 when each of them held. The Debian without the build, about 600 MB,
# is kept in FOLDER where one is named, and taken from there the next time. For those who change the unit; needs root.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/app} folder=${2:-}
suite=bookworm
seconds=900 # for everything in the machine; an emulated one takes about 150

fail() { echo "$1" >&2; exit 1; }

[ "$(id -u)" -eq 0 ] || fail "Please run this as root: the files of a Debian belong to several users."
[ -f "$build/cmake_install.cmake" ] || fail "$build is no build folder. Please run ./run, or name another one."
. "$root/packaging/setup.sh"
need vm

work=$(mktemp -d)
machine=''
finish() {
  [ -z "$machine" ] || kill "$machine" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$work"
}
trap finish EXIT
trap 'exit 130' INT TERM

# Where this machine gets its packages from.
read -r mirror < <(apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' 'Created-By: Packages' |
  awk -v suite=$suite '$1 == suite && $2 == "main" { print $3; exit }') || fail "No source of apt has $suite main."
eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
export http_proxy

system=$work/system
if [ -n "$folder" ] && [ -d "$folder" ]; then
  cp -a --reflink=auto "$folder" "$system"
else
  guest=$(awk '$1 == "guest" { print $2 }' "$root/packaging/debian-packages" | paste -sd,)
  # In a mount namespace of its own: what is mounted in the new system ends with it.
  unshare --mount debootstrap --variant=minbase --include="$guest" $suite "$system" "$mirror" >"$work/log" 2>&1 ||
    { tail -n 20 "$work/log" >&2; fail "The Debian could not be made."; }
  [ -z "$folder" ] || { cp -a --reflink=auto "$system" "$folder.new" && mv -T "$folder.new" "$folder"; }
fi

DESTDIR=$system cmake --install "$build" --prefix /usr >"$work/log" 2>&1 ||
  { tail -n 20 "$work/log" >&2; fail "$build could not be installed; is it built?"; }
[ -x "$system/usr/lib/quarl/quarld" ] || fail "$build installs no /usr/lib/quarl/quarld."
mkdir -p "$system/opt/try"
cp "$root/packaging/try-service/checks.py" "$system/opt/try"
cp "$root/packaging/try-service/try-service.service" "$system/etc/systemd/system"
ln -s ../try-service.service "$system/etc/systemd/system/multi-user.target.wants/try-service.service"

mke2fs -q -t ext4 -d "$system" "$work/disk" 2G >/dev/null || fail "The disk of the machine could not be made."
cp "$system"/boot/vmlinuz-* "$work/kernel"
cp "$system"/boot/initrd.img-* "$work/initrd"
rm -rf "$system"

# boot ACCELERATOR
boot() {
  : >"$work/console"
  : >"$work/findings"
  timeout "$seconds" qemu-system-x86_64 -accel "$1" -cpu max -smp 2 -m 2G -nic none -display none -monitor none \
    -no-reboot -kernel "$work/kernel" -initrd "$work/initrd" \
    -drive "file=$work/disk,format=raw,if=virtio,cache=unsafe" -append "root=/dev/vda rw console=ttyS0 panic=-1" \
    -serial "file:$work/console" -serial "file:$work/findings" >"$work/log" 2>&1 &
  machine=$!
  # A host that is a virtual machine itself may have a KVM that does not get as far as the first line of the kernel.
  for _ in $(seq 100); do
    sleep 0.1
    kill -0 "$machine" 2>/dev/null || break
    ! grep -q 'Linux version' "$work/console" || return 0
  done
  kill "$machine" 2>/dev/null || true
  wait "$machine" 2>/dev/null || true
  machine=''
  return 1
}
boot kvm || { echo "No KVM here: the machine is emulated."; boot tcg; } ||
  { cat "$work/log" "$work/console" >&2; fail "The machine did not start."; }

# Shows the findings as they come.
tail -n +1 -s 0.2 -f --pid "$machine" "$work/findings" | tr -d '\r' &
ended=0
wait "$machine" || ended=$?
machine=''
wait
if ! grep -q '^Checks: ' "$work/findings"; then
  tail -n 40 "$work/console" | tr -d '\r' >&2
  [ "$ended" -ne 124 ] || fail "The machine did not end within $seconds s."
  fail "The machine ended before its checks."
fi
grep -q '^Checks: [1-9][0-9]* held, 0 failed' "$work/findings"
