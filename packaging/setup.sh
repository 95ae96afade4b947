# Sourced by ./run and ./test: installs what is missing and builds a preset. Needs $root, the top folder.

# need PURPOSE...: installs the packages of these purposes that are not there yet.
need() {
  local missing=() purpose package
  while read -r purpose package; do
    case " $* " in *" $purpose "*) ;; *) continue ;; esac
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$package")
  done < <(grep -v '^#' "$root/packaging/debian-packages")
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local admin=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Please install as root: apt-get install ${missing[*]}" >&2; return 1; }
    admin=(sudo)
  fi
  "${admin[@]}" bash -s -- "${missing[@]}" <<'END'
set -e
# Some packages bring services, which the tests start themselves: none of them shall run on this machine by itself.
policy=/usr/sbin/policy-rc.d
if [ ! -e "$policy" ]; then
  trap 'rm -f "$policy"' EXIT
  printf '#!/bin/sh\nexit 101\n' >"$policy"
  chmod 755 "$policy"
fi
apt-get update -qq
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null </dev/null
command -v systemctl >/dev/null || exit 0
dpkg -L "$@" | sed -nE 's#^(/usr)?/lib/systemd/system/([^/@]*\.(service|socket))$#\2#p' |
  while read -r unit; do systemctl --quiet disable "$unit" >/dev/null 2>&1 </dev/null || true; done
END
}

# build PRESET [CMAKE ARGUMENT...]: configures where needed and builds.
build() {
  local preset=$1
  shift
  local log
  log=$(mktemp)
  (cd "$root" && cmake --preset "$preset" "$@" >"$log" 2>&1) || { cat "$log" >&2; rm -f "$log"; return 1; }
  rm -f "$log"
  (cd "$root" && cmake --build --preset "$preset")
}
