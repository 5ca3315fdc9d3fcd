#!/usr/bin/env bash
# Tries the Debian packages on a bare Debian: installs them, runs what they bring, and sees that they leave nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
export LC_ALL=C.UTF-8
. /etc/os-release
root=$PWD/build/package-root
packages=build/release/packages

# try WHAT COMMAND...: tells whether it works, and what it said where it does not.
try() {
  local said started=$SECONDS
  if ! said=$("${@:2}" 2>&1); then
    printf '  FAILED  %s\n%s\n' "$1" "$said"
    exit 1
  fi
  printf '  ok      %s%s\n' "$1" "$( ((SECONDS - started < 2)) || echo " ($((SECONDS - started)) s)")"
}

# The bare Debian lives in memory, where only this script and its children see it, and goes with them. What is left is the
# empty folder that it was mounted on.
if [ "${1-}" != inside ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo 'a bare Debian to try the packages on takes root: sudo ./test package' >&2
    exit 1
  fi
  install_packages $process_packages $tool_packages debootstrap dpkg-dev file util-linux
  rm -rf $packages
  build release
  try "the packages, in $packages" cmake --build build/release --target package
  try 'mounts that only this test sees' unshare --mount --pid --fork true
  mkdir -p "$root"
  exec unshare --mount --pid --fork --kill-child "tests/${0##*/}" inside
fi

umask 022
at_root() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive HOME=/ "$@"; }
at_user() { chroot --userspec=nobody:nogroup "$root" env -i PATH=/usr/bin:/bin HOME=/tmp "$@"; }

bare_debian() {
  local mirror
  mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' "Codename: $VERSION_CODENAME" | head -n 1)
  mount -t tmpfs -o mode=755 packages "$root" &&
    debootstrap --variant=minbase "$VERSION_CODENAME" "$root" "${mirror:-http://deb.debian.org/debian}" &&
    mount -t proc proc "$root"/proc && at_root apt-get update -q
}

# All files, but for what apt and dpkg note.
all_files() { chroot "$root" find / -xdev '(' -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache -o -path /var/log ')' -prune -o -print | sort; }

install_both() {
  cp $packages/*.deb "$root"/tmp &&
    at_root sh -c 'apt-get install -q -y --no-install-recommends /tmp/*.deb && rm /tmp/*.deb'
}

nothing_left() {
  at_root apt-get autoremove --purge -q -y &&
    diff <(all_files) <(echo "$before")
}

files_are_there() {
  local file
  for file in bin/hookctl libexec/qmi_kesext_hook share/man/man1/hookctl.1.gz share/man/man8/qmi_kesext_hook.8.gz \
    share/bash-completion/completions/hookctl share/zsh/vendor-completions/_hookctl \
    share/fish/vendor_completions.d/hookctl.fish share/hookctl/scenarios/tour/01_published_properties.json; do
    [ -s "$root"/usr/$file ] || { echo "/usr/$file is missing"; return 1; }
    ! grep -F "$PWD" "$root"/usr/$file || { echo "/usr/$file knows where it was built"; return 1; }
  done
}

tour() { "$@" tour --colour never | tee /dev/stderr | tail -n 1 | grep -qx '\([0-9]*\) of \1 steps as expected'; }

bash_completes() {
  at_root bash -c '. /usr/share/bash-completion/completions/hookctl
    COMP_LINE="hookctl wa" COMP_POINT=10; _hookctl hookctl; [ "$COMPREPLY" = watch ]'
}

# Without the packages, so that it finds nothing else, but with what they need of Debian.
moved_tree() {
  cmake --install build/release --prefix "$root"/opt/before &&
    at_root apt-get purge -q -y hookctl qmi-kesext-hook &&
    mv "$root"/opt/before "$root"/opt/after &&
    tour at_root /opt/after/bin/hookctl &&
    rm -r "$root"/opt/after
}

try "a bare Debian $VERSION_CODENAME" bare_debian
before=$(all_files)
try 'both packages are installed, with what they need of Debian' install_both
try 'programs, manual pages, completions and scenarios are there' files_are_there
try 'the version' at_root hookctl --version
try 'bash completes' bash_completes
try "the tour, as root" tour at_root hookctl
try "the tour, as another user" tour at_user hookctl
try 'an installed scenario' at_user hookctl play /usr/share/hookctl/scenarios/provisioning.json
try 'the tour of an installed tree that was moved' moved_tree
try 'nothing is left of the packages' nothing_left
echo "tried the packages in $SECONDS s"
