# Sourced by ./run and ./test: what both need of a fresh machine.

packages='g++ cmake ninja-build pkgconf libgtest-dev libgmock-dev libbenchmark-dev libfmt-dev libcli11-dev libedit-dev nlohmann-json3-dev mandoc binutils util-linux'

# Installs the Debian packages that are missing.
install_packages() {
  local missing=() package as_root=()
  for package in $packages; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "installing: ${missing[*]}"
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [TARGET ...]: configures and builds it, in silence unless something is wrong.
build() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}; } >"$log" 2>&1; then
    cat "$log"
    rm -f "$log"
    echo "building the preset $preset failed" >&2
    return 1
  fi
  rm -f "$log"
}
