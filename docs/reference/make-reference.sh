#!/bin/sh
# make-reference.sh: the reference of all headers that are installed, in build/reference/html.
set -eu
cd "$(dirname "$0")/../.."
mkdir -p build/reference
YAX_VERSION=$(packaging/version.sh)
# As CMakeLists.txt of each folder lists them.
YAX_HEADERS=$(sed -n '/^yax_public_headers(/,/)/p' framework/CMakeLists.txt platform/CMakeLists.txt \
  registry/CMakeLists.txt yax/CMakeLists.txt | grep -o '[A-Za-z_/]*\.h' | tr '\n' ' ')
export YAX_VERSION YAX_HEADERS
# Doxygen does not look at what its filter answers.
for header in $YAX_HEADERS; do
  sh docs/reference/as-doxygen.sh "$header" >/dev/null
done
doxygen docs/reference/Doxyfile
[ -s build/reference/html/index.html ]
