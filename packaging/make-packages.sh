#!/bin/sh
# make-packages.sh FOLDER: builds the Debian packages of this source tree in an empty folder, looks at them with
# lintian, and tries them where they are unpacked: the tool, clients by pkg-config and CMake, Python.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
rm -rf "$1"
mkdir -p "$1/libyax" "$1/unpacked/run"
folder=$(cd "$1" && pwd)
tar -C "$root" -c --exclude=./build --exclude='./build-*' --exclude=./.git . | tar -C "$folder/libyax" -x
cd "$folder/libyax"
# What is needed has been looked for already, wherever it comes from.
DEB_BUILD_OPTIONS="parallel=${JOBS:-2}" dpkg-buildpackage -b -d -us -uc

cd "$folder"
lintian --allow-root --fail-on error libyax_*.changes

for package in *.deb; do
  case $package in *-dbgsym_*) ;; *) dpkg -x "$package" unpacked ;; esac
done
prefix=$folder/unpacked/usr
libdir=$(cd "$prefix" && find lib -name libYAX.so -printf '%h\n')
export LD_LIBRARY_PATH="$prefix/$libdir"
for script in UsePkgConfig UseCMakePackage; do
  cmake -DCXX="${CXX:-c++}" -DPREFIX="$prefix" -DLIBDIR="$libdir" -DVERSION="$("$root/packaging/version.sh")" \
    -DPKG_CONFIG=pkg-config -DSOURCE="$root/tests/build/consumer/settings.cpp" -DWORK="$folder/$script" \
    -P "$root/tests/build/$script.cmake" >/dev/null
done
cd unpacked/run
"$prefix/bin/yaxreg" create a.rce
PYTHONPATH=$prefix/lib/python3/dist-packages /usr/bin/python3 -B -c '
import yax
with yax.open("a.rce") as registry:
    registry["network/eth0"]["mtu"] = 1400'
"$prefix/bin/yaxreg" get a.rce network/eth0 mtu | grep -qx 1400
echo "The packages are in $folder and work."
