#!/bin/sh
# as-doxygen.sh HEADER: a header with its comments as Doxygen reads them. A comment belongs to what follows it, one
# behind code on the same line to that; docs/reference/shared-comments.awk tells how far.
sed -e 's|^\( *\)// ----.*$||' -e 's|^\( *\)//$|\1///|' -e 's|^\( *\)// |\1/// |' -e '/}  *\/\/ namespace/!s|\([;,{})]\)  *// |\1 ///< |' \
  -e 's|^/\* ----.*$||' -e 's|^\( *\)/\* |\1/** |' -e 's|\([;,{)]\)  */\* |\1 /**< |' -e '1s|^/// |// |' -e '1s|^/\*\* |/* |' "$1" |
  awk -f docs/reference/shared-comments.awk
