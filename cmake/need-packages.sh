#!/bin/sh
# need-packages.sh PACKAGE...
# Makes sure that what these Debian packages provide is there. As root it installs what is missing;
# otherwise it names it in one line and fails. Looks for the files, not for the packages, so that
# tools from elsewhere count too.
set -eu

have() {
  case "$1" in
    bats | clang-format | clang-tidy | cmake | cppcheck | file | fish | g++ | gcovr | make | mypy | pkg-config | shellcheck | zsh)
      command -v "$1"
      ;;
    bsdutils) command -v script ;;
    chromium) command -v chromium || command -v chromium-browser ;;
    clang-14) command -v clang++-14 ;;
    debhelper) command -v dh ;;
    debootstrap) command -v debootstrap ;;
    dh-python) command -v dh_python3 ;;
    doxygen) command -v doxygen ;;
    dpkg-dev) command -v dpkg-buildflags ;;
    g++-aarch64-linux-gnu) command -v aarch64-linux-gnu-g++ ;;
    g++-arm-linux-gnueabihf) command -v arm-linux-gnueabihf-g++ ;;
    g++-i686-linux-gnu) command -v i686-linux-gnu-g++ ;;
    googletest) test -f /usr/src/googletest/googletest/src/gtest-all.cc ;;
    lintian) command -v lintian ;;
    libbenchmark-dev) test -f /usr/include/benchmark/benchmark.h ;;
    libleveldb-dev) test -f /usr/include/leveldb/db.h ;;
    liblmdb-dev) test -f /usr/include/lmdb.h ;;
    libsqlite3-dev) test -f /usr/include/sqlite3.h ;;
    libtdb-dev) test -f /usr/include/tdb.h ;;
    libcli11-dev) test -f /usr/include/CLI/CLI.hpp ;;
    libedit-dev) test -f /usr/include/histedit.h ;;
    nlohmann-json3-dev) test -f /usr/include/nlohmann/json.hpp ;;
    python3-pytest) /usr/bin/python3 -c 'import pytest' 2>/dev/null ;;
    qemu-user-static) command -v qemu-arm-static ;;
    util-linux) command -v setpriv ;;
    *) echo "need-packages.sh: how to look for $1 is not known" >&2 && exit 2 ;;
  esac >/dev/null
}

missing() {
  list=
  for package in "$@"; do
    have "$package" || list="$list $package"
  done
  echo "$list"
}

list=$(missing "$@")
[ -n "$list" ] || exit 0

if [ "$(id -u)" -ne 0 ] || ! command -v apt-get >/dev/null; then
  echo "Missing packages, please install them (as root: apt-get install$list)" >&2
  exit 1
fi

echo "Installing$list"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
# $list is a list of words on purpose.
# shellcheck disable=SC2086
apt-get install -y -qq --no-install-recommends $list >/dev/null

list=$(missing "$@")
[ -z "$list" ] || { echo "Still missing after the installation:$list" >&2 && exit 1; }
