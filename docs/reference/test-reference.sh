#!/bin/sh
# test-reference.sh: the reference cannot be made where something public has no comment of its own.
set -eu
cd "$(dirname "$0")/../.."
work=build/reference/test
rm -rf "$work"
mkdir -p "$work/docs"
cp -r docs/reference "$work/docs"
cd "$work"
mkdir -p build/reference
: >docs/reference/shared-comments.txt
: >docs/reference/start.dox

# refused NAME: the header on standard input is refused for that name, or not at all for "".
refused() {
  cat >header.h
  judge "$1"
}
# clock NAME: the same with the beginning of a header that has a comment.
clock() {
  { printf '// Of a clock.\n#pragma once\n\n' && cat; } >header.h
  judge "$1"
}
judge() {
  YAX_VERSION=test YAX_HEADERS=header.h doxygen docs/reference/Doxyfile >log 2>&1 && found=no || found=yes
  if [ -z "$1" ] && [ $found = no ]; then return; fi
  if [ -n "$1" ] && [ $found = yes ] && grep -q "Member $1.*is not documented" log; then return; fi
  echo "test-reference.sh: $1 was to be found, and the answer was:" >&2
  cat log >&2
  exit 1
}

clock '' <<EOF
// Starts it.
int Starts();
int Rings();  // its bell
EOF
clock Stops <<EOF
// Starts it.
int Starts();
int Stops();
EOF
refused Starts <<EOF
// The header's comment is nobody else's.
int Starts();
EOF
clock Stops <<EOF
// A clock.
class Clock {
 public:
  Clock(const Clock&) = delete;  // one
  // Whether it was started.
  int Started() const;
  int Stops() const;
};
EOF
refused clock_stops <<EOF
/* Of a clock. */
#pragma once

/* Starts it;
 * once. */
int clock_starts(void);
int clock_stops(void);
EOF
refused CLOCK_MAX <<EOF
/* Of a clock. */
#define CLOCK_MIN 1 /* hours */

#define CLOCK_MAX 2
EOF

# What the list names shares the comment, and nothing else.
echo 'header.h: int Stops();' >docs/reference/shared-comments.txt
clock '' <<EOF
// Starts and stops it.
int Starts();
int Stops();
EOF
clock Halts <<EOF
// Starts and stops it.
int Starts();
int Stops();
int Halts();
EOF
clock Stops <<EOF
// Starts it.
int Starts();

int Stops();
EOF
printf '// Of a clock.\n#pragma once\n\n// Stops it.\nint Stops();\n' >header.h
! sh docs/reference/as-doxygen.sh header.h >/dev/null 2>log || exit 1
grep -q 'a comment to what needs none: int Stops' log
