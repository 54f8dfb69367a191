#!/bin/sh
# check-installed.sh PREFIX: what a build installs is there: the library, its headers, both packages, the tool
# and its pages, and the pages for users of the library.
set -eu
cd "$1"
for file in include/yax/registry/Registry.h include/yax/framework/YAX.h bin/yaxreg \
  share/man/man1/yaxreg.1 share/bash-completion/completions/yaxreg \
  share/fish/vendor_completions.d/yaxreg.fish share/yaxreg/magic share/zsh/vendor-completions/_yaxreg \
  share/doc/YAX/guide/README.md share/doc/YAX/performance.md share/doc/YAX/performance/get.svg; do
  [ -s "$file" ] || { echo "$1/$file is missing" >&2 && exit 1; }
done
for name in libYAX.so yax.pc YAXConfig.cmake; do
  [ -n "$(find . -name "$name")" ] || { echo "$name is missing in $1" >&2 && exit 1; }
done
