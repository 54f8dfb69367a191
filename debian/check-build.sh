#!/bin/sh
# check-build.sh FOLDER: the C, C++ and Python interfaces with the library that was built there.
set -eu
built=$(cd "$1" && pwd)
work=$built/check
mkdir -p "$work"
(
  cd python
  PYTHONDONTWRITEBYTECODE=1 YAX_LIBRARY=$built/libYAX.so YAXREG=$built/tools/yaxreg/yaxreg \
    LD_LIBRARY_PATH=$built /usr/bin/python3 -m pytest --basetemp="$work/pytest"
) &
python=$!
${CC:-cc} -std=c99 -pedantic-errors -I. tests/yax/CInterfaceTest.c -o "$work/c" -L"$built" -lYAX -pthread
LD_LIBRARY_PATH=$built "$work/c" "$work"
${CXX:-c++} -std=c++17 -I. tests/build/consumer/settings.cpp -o "$work/cpp" -L"$built" -lYAX
(cd "$work" && LD_LIBRARY_PATH=$built ./cpp)
wait "$python"
