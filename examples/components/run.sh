#!/bin/sh
# Runs the component demonstration: run.sh FOLDER, where FOLDER holds its programs and components.
set -eu
programs=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

echo "== Components: found by identifier, loaded on demand, unloaded when they agree"
"$programs/demo_register" "$folder/device.rce" "$programs"
"$programs/demo_use" "$folder/device.rce"
echo "== Done"
