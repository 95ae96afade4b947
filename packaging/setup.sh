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
  "${admin[@]}" apt-get update -qq &&
    "${admin[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
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
