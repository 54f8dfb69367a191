#!/bin/sh
# The version of libYAX, which CMakeLists.txt tells.
sed -n 's/^project(YAX VERSION \([0-9.]*\).*/\1/p; s/^project(YAX VERSION \([0-9.]*\)$/\1/p' \
  "$(dirname "$0")/../CMakeLists.txt" | head -n 1
