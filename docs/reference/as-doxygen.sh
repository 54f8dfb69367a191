#!/bin/sh
# as-doxygen.sh HEADER: a header with its comments as Doxygen reads them. The first one is the header's own. Another
# belongs to what follows it, one behind code on the same line to that;
# docs/reference/shared-comments.awk tells what shares it.
sed -e 's|^\( *\)// ----.*$||' -e 's|^\( *\)//$|\1///|' -e 's|^\( *\)// |\1/// |' -e '/}  *\/\/ namespace/!s|\([;,{})]\)  *// |\1 ///< |' \
  -e 's|^/\* ----.*$||' -e 's|^\( *\)/\* |\1/** |' -e 's|\([;,{)]\)  */\* |\1 /**< |' "$1" |
  awk -v header="${1#"$PWD"/}" -f docs/reference/shared-comments.awk
