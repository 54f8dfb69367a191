#!/bin/sh
# make-symbols.sh LIST: the symbols file of libyax0 for the list of exported symbols.
set -eu
echo 'libYAX.so.0 libyax0 #MINVER#'
echo '* Build-Depends-Package: libyax-dev'
echo ' YAX_0@YAX_0 0.1.0'
sed -e 's/^\([A-Za-z0-9_]*\)$/ \1@YAX_0 0.1.0/' -e 't' -e 's/^\(.*\)$/ (c++)"\1@YAX_0" 0.1.0/' "$1"
