#!/bin/sh
# Runs the demonstration of the command-line tool: run.sh FOLDER, where FOLDER holds yaxreg.
set -eu
PATH=$1:$PATH
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

show() {
  echo "\$ $*"
  "$@"
}

echo "== yaxreg: a registry from the shell"
show yaxreg create device.rce
show yaxreg mkkey -p device.rce network/eth0 --default 7
show yaxreg add device.rce network/eth0 mtu --int 1500
show yaxreg add device.rce network/eth0 name --string uplink
show yaxreg rights device.rce network/eth0 rwcd:r
show yaxreg tree device.rce

echo "== Moved as JSON, and compared"
echo "\$ yaxreg export device.rce network | yaxreg import copy.rce network"
yaxreg export device.rce network | yaxreg import copy.rce network
show yaxreg set copy.rce network/eth0 mtu --int 1400
show yaxreg diff device.rce copy.rce || echo "(exit code $?: they differ)"

echo "== Damaged, and repaired"
cp device.rce damaged.rce
printf '\377' | dd of=damaged.rce bs=1 seek=4192 conv=notrunc 2>/dev/null # where a table lies
show yaxreg check damaged.rce || echo "(exit code $?: damaged)"
show yaxreg repair damaged.rce -o saved.rce
show yaxreg diff device.rce saved.rce && echo "(exit code 0: the same)"

echo "== Worn, and compacted"
for i in 1 2 3 4 5 6 7 8; do
  yaxreg add device.rce network/eth0 temporary --string "value $i"
  yaxreg rm device.rce network/eth0 temporary
done
show yaxreg stat device.rce
show yaxreg compact device.rce
echo "== Done"
