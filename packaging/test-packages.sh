#!/bin/sh
# test-packages.sh FOLDER: installs the packages that make-packages.sh has built in the folder into a clean system of
# this machine's release, runs debian/tests there, and looks that nothing stays when they are removed. As root. The
# system comes from where this machine's own packages come from.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(cd "$1" && pwd)
clean=$folder/clean
[ "$(id -u)" -eq 0 ] || { echo "test-packages.sh: a clean system is made by root only" >&2 && exit 1; }
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
mirror=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' |
  awk -v codename="$codename" '$2 == codename && $3 == "main" { print $1; exit }')
[ -n "$mirror" ] || { echo "test-packages.sh: apt knows no source of $codename" >&2 && exit 1; }

rm -rf --one-file-system "$clean"
debootstrap --variant=minbase "$codename" "$clean" "$mirror"
mkdir "$clean/packages" "$clean/source" "$clean/tried"
for package in "$folder"/*.deb; do
  case $package in *-dbgsym_*) ;; *) cp "$package" "$clean/packages" ;; esac
done
tar -C "$root" -c --exclude=./build --exclude='./build-*' --exclude=./.git . | tar -C "$clean/source" -x

# debian/tests/control names what a test needs besides the packages themselves.
needs=$(sed -n 's/^Depends: @, //p' "$root/debian/tests/control" | tr -d ,)
cat >"$clean/tried/run.sh" <<EOF
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C AUTOPKGTEST_TMP=/tried
apt-get install -y -qq --no-install-recommends /packages/*.deb $needs
cd /source
for test in \$(sed -n 's/^Tests: //p' debian/tests/control); do
  debian/tests/\$test
done
rm -rf /tried/*/ # what the tests have made
apt-get purge -y -qq libyax0 libyax-dev yaxreg python3-yax
left=\$(find / -xdev -iname '*yax*' ! -path '/source/*' ! -path '/packages/*' ! -path '/proc/*' ! -path '/sys/*')
[ -z "\$left" ] || { echo "left after the packages were removed: \$left" >&2 && exit 1; }
EOF
chroot "$clean" sh /tried/run.sh
rm -rf --one-file-system "$clean"
echo "The packages install into a clean system, work there, and leave nothing behind."
