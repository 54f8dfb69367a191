#!/bin/sh
# make-packages.sh FOLDER: builds the Debian packages of this source tree in an empty folder, looks at them with
# lintian, and tries them where they are unpacked (try-installed.sh).
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
rm -rf "$1"
mkdir -p "$1/libyax" "$1/unpacked"
folder=$(cd "$1" && pwd)
tar -C "$root" -c --exclude=./build --exclude='./build-*' --exclude=./.git . | tar -C "$folder/libyax" -x
cd "$folder/libyax"
# What is needed has been looked for already, wherever it comes from.
DEB_BUILD_OPTIONS="parallel=${JOBS:-2}" dpkg-buildpackage -b -d -us -uc

cd "$folder"
lintian --allow-root --display-info --fail-on error,warning,info libyax_*.changes &
lintian=$!

for package in *.deb; do
  case $package in *-dbgsym_*) ;; *) dpkg -x "$package" unpacked ;; esac
done
prefix=$folder/unpacked/usr
libdir=$(cd "$prefix" && find lib -name libYAX.so -printf '%h\n')
export LD_LIBRARY_PATH="$prefix/$libdir"
for page in guide/README.md performance.md reference/index.html; do
  [ -s "$prefix/share/doc/libyax-dev/$page" ] || { echo "libyax-dev has no $page" >&2 && exit 1; }
done
sh "$root/packaging/try-installed.sh" "$prefix" "$libdir" "$folder/tried"
wait "$lintian"
echo "The packages are in $folder and work."
