# Sourced by the scripts that build: what they need of a fresh machine, and how they build.

process_packages='g++ cmake ninja-build'
tool_packages='pkgconf libfmt-dev libcli11-dev libedit-dev nlohmann-json3-dev'
test_packages='libgtest-dev libgmock-dev mandoc binutils util-linux'
# clang brings its fuzzer; llvm names the lines of what is found.
fuzz_packages='clang-14 libclang-rt-14-dev llvm-14'
# GoogleTest's sources are for the other processor; clang and libc++ tell what Android's compiler will say.
emulated_packages='qemu-user-static libgmock-dev googletest clang-14 libc++-14-dev'
coverage_packages='clang-14 libclang-rt-14-dev llvm-14 jq'

# install_packages PACKAGE...: installs the Debian packages that are missing.
install_packages() {
  local missing=() package as_root=()
  for package; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "installing ${missing[*]}"
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# ThreadSanitizer cannot place its shadow memory where the kernel spreads mappings widely, so what it is in runs with
# fixed addresses; where that is not allowed, with a narrower spread.
fixed_addresses=()
fix_addresses() {
  if setarch "$(uname -m)" -R true 2>/dev/null; then
    fixed_addresses=(setarch "$(uname -m)" -R)
  else
    sysctl -qw vm.mmap_rnd_bits=28 || echo 'addresses stay randomised: ThreadSanitizer may refuse to start' >&2
  fi
}

# Shows how far a build is, on one line of a terminal, else every few seconds. What compilers say comes at the end,
# without the commands that ran them.
show_build() {
  local line next=0 command=false said='' width=79
  [ ! -t 1 ] || width=$(($(tput cols 2>/dev/null || echo 80) - 1))
  while IFS= read -r line; do
    case $line in
      \[*/*\]*)
        if [ -t 1 ]; then
          printf '\r\033[K%.*s' $width "$line"
        elif ((SECONDS >= next)); then
          echo "$line"
          next=$((SECONDS + 5))
        fi
        ;;
      FAILED:*) command=true ;;
      ninja:* | '-- '*) ;;
      *) if $command; then command=false; else said+=$line$'\n'; fi ;;
    esac
  done
  [ ! -t 1 ] || printf '\r\033[K'
  printf '%s' "$said" >&2
}

# build PRESET [TARGET...]: configures and builds it, and tells how long that took.
build() {
  local preset=$1 configured started=$SECONDS
  shift
  if ! configured=$(cmake --preset "$preset" 2>&1); then
    echo "$configured" >&2
    return 1
  fi
  if ! cmake --build --preset "$preset" ${1:+--target "$@"} 2>&1 | show_build; then
    echo "building $preset failed" >&2
    return 1
  fi
  echo "built $preset in $((SECONDS - started)) s"
}
