#!/bin/sh
# try-installed.sh PREFIX LIBDIR FOLDER: uses what is installed in PREFIX as its users do, in a folder that is theirs:
# clients by pkg-config and CMake, components, the tool, Python.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
prefix=$1
libdir=$2
folder=$3

try() {
  script=$1
  source=$2
  cmake -DCXX="${CXX:-c++}" -DPREFIX="$prefix" -DLIBDIR="$libdir" -DVERSION="$("$root/packaging/version.sh")" \
    -DPKG_CONFIG=pkg-config -DSOURCE="$root/$source" -DWORK="$folder/$script" \
    -P "$root/tests/build/$script.cmake" >/dev/null
}
try UsePkgConfig tests/build/consumer/settings.cpp &
by_pkg_config=$!
try UseCMakePackage tests/build/consumer/settings.cpp &
by_cmake=$!
try Tutorial docs/components.md
wait "$by_pkg_config"
wait "$by_cmake"

mkdir -p "$folder/run"
cd "$folder/run"
"$prefix/bin/yaxreg" create a.rce
PYTHONPATH=$prefix/lib/python3/dist-packages /usr/bin/python3 -B -c '
import yax
with yax.open("a.rce") as registry:
    registry["network/eth0"]["mtu"] = 1400'
"$prefix/bin/yaxreg" get a.rce network/eth0 mtu | grep -qx 1400
