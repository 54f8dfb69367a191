#!/bin/sh
# Runs the demonstration: run.sh FOLDER, where FOLDER holds its programs.
set -eu
programs=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

echo "== A registry on a real file: what one program writes, another one reads"
"$programs/demo_write" "$folder/demo.rce"
echo
echo "The file has $(wc -c <"$folder/demo.rce") bytes and begins with:"
od -A d -t x1 -N 16 "$folder/demo.rce" | head -n 1
"$programs/demo_change" "$folder/demo.rce"
"$programs/demo_carry" "$folder/demo.rce" "$folder/network.bak"
"$programs/demo_read" "$folder/demo.rce"
echo "== Done"
