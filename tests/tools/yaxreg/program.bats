#!/usr/bin/env bats
# Drives yaxreg as it is built. From the environment:
#   YAXREG             the program
#   YAXREG_EMULATOR    words before it, of machines that are emulated
#   YAXREG_VERSION     its version
#   YAXREG_LINES       the source that reads lines of a terminal
#   YAXREG_MAN         the manual page as built
#   YAXREG_COMPLETION  the completion as built; those of other shells lie beside it, the file "magic"
#                      in the folder above
# Every test has a folder of its own, with "device.rce" in it.

setup_file() {
  # Users without rights on the build folder run a copy.
  mkdir "$BATS_FILE_TMPDIR/bin"
  cp "$YAXREG" "$BATS_FILE_TMPDIR/program"
  printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$YAXREG_EMULATOR" "$BATS_FILE_TMPDIR/program" \
    >"$BATS_FILE_TMPDIR/bin/yaxreg"
  chmod 755 "$BATS_FILE_TMPDIR/bin" "$BATS_FILE_TMPDIR/bin/yaxreg" "$BATS_FILE_TMPDIR/program"
  chmod a+x "$BATS_RUN_TMPDIR" "${BATS_FILE_TMPDIR%/*}" "$BATS_FILE_TMPDIR"
  export PATH=$BATS_FILE_TMPDIR/bin:$PATH
  cd "$BATS_FILE_TMPDIR" || return
  yaxreg create sample.rce
  yaxreg mkkey -p sample.rce 'network/my eth'
  yaxreg add sample.rce 'network/my eth' mtu --int 1500
  yaxreg add sample.rce network mode --string static
}

setup() {
  chmod a+x "${BATS_TEST_TMPDIR%/*}" "$BATS_TEST_TMPDIR"
  cd "$BATS_TEST_TMPDIR" || return
  cp "$BATS_FILE_TMPDIR/sample.rce" device.rce
}

# answers CODE COMMAND...: the command ends with that code; $out and $err are what it printed.
answers() {
  local expected=$1 code=0
  shift
  "$@" >"$BATS_TEST_TMPDIR/.out" 2>"$BATS_TEST_TMPDIR/.err" || code=$?
  out=$(cat "$BATS_TEST_TMPDIR/.out")
  # The profiler, where coverage is counted, says when it cannot.
  err=$(sed '/^profiling:/d' "$BATS_TEST_TMPDIR/.err")
  [ "$code" -eq "$expected" ] || {
    echo "exit code $code instead of $expected: $*" "$out" "$err"
    return 1
  }
}

is() {
  [ "$1" = "$2" ] || {
    printf 'is       %q\nexpected %q\n' "$1" "$2"
    return 1
  }
}

# The command as a user whom the modes of files stop.
as_nobody() {
  if [ "$(id -u)" -ne 0 ]; then
    "$@"
    return
  fi
  # Where coverage is counted, the counts of this user go elsewhere.
  mkdir -p "$BATS_TEST_TMPDIR/counts"
  chmod 777 "$BATS_TEST_TMPDIR/counts"
  GCOV_PREFIX=$BATS_TEST_TMPDIR/counts \
    setpriv --reuid 65534 --regid 65534 --clear-groups "$@"
}

# completes REPLY... -- WORD...: after these words, the last of them unfinished, bash offers these.
# A word of only : or = is one that bash has cut there. A reply of -- is written as \--.
completes() {
  local expected=() word
  while [ "$1" != -- ]; do
    expected+=("${1#\\}")
    shift
  done
  shift
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMP_LINE=
  for word in "$@"; do
    if [[ -n $COMP_LINE && $word != [:=] && $COMP_LINE != *[:=] ]]; then COMP_LINE+=' '; fi
    COMP_LINE+=$word
  done
  COMP_POINT=${#COMP_LINE}
  # shellcheck source=/dev/null
  source "$YAXREG_COMPLETION"
  _yaxreg 2>"$BATS_TEST_TMPDIR/.err"
  is "$(cat "$BATS_TEST_TMPDIR/.err")" ''
  is "$(printf '[%s]' "${COMPREPLY[@]}")" "$(printf '[%s]' "${expected[@]}")"
}

@test "tells its version" {
  answers 0 yaxreg --version
  is "$out" "yaxreg $YAXREG_VERSION"
  is "$err" ''
}

@test "makes a registry, changes it and shows it" {
  answers 0 yaxreg tree device.rce
  is "$out" "/
└── network/
    ├── mode = \"static\"
    └── my eth/
        └── mtu = 1500

3 keys, 2 values"
  answers 0 yaxreg set device.rce 'network/my eth' mtu --int 1400
  answers 0 yaxreg get device.rce 'network/my eth' mtu
  is "$out" 1400
}

@test "takes key and value as one word, and patterns of both" {
  answers 0 yaxreg set device.rce 'network/my eth:mtu' --int 1400
  answers 0 yaxreg get device.rce '**:m*'
  is "$out" 'network:mode = "static"
network/my eth:mtu = 1400'
  answers 0 yaxreg ls device.rce '*'
  is "$out" 'network/:
mode
my eth/'
  answers 1 yaxreg get device.rce '**:none'
}

@test "puts, copies, moves and deletes in one call each" {
  answers 0 yaxreg put device.rce new/key:v --string x
  answers 0 yaxreg cp device.rce new/key new/copy
  answers 0 yaxreg mv device.rce new/copy:v network:v
  answers 0 yaxreg get device.rce '**:v'
  is "$out" 'network:v = "x"
new/key:v = "x"'
  answers 1 yaxreg mv device.rce new network
  is "$err" 'yaxreg: device.rce: network: the key exists already; --force replaces it (status 17)'
  answers 0 yaxreg rm -f device.rce new/copy:v
  answers 0 yaxreg rmkey -f device.rce new/none
}

@test "imports exactly what a document holds" {
  yaxreg export device.rce >before.json
  yaxreg put device.rce network/more:v --int 1
  yaxreg put device.rce network:other --int 1
  answers 0 yaxreg import --exact device.rce <before.json
  is "$(yaxreg export device.rce)" "$(cat before.json)"
  answers 0 yaxreg check --quiet device.rce
}

@test "applies what diff tells, and takes it back" {
  cp device.rce other.rce
  yaxreg put other.rce network/more:v --int 1
  yaxreg rm other.rce network:mode
  yaxreg diff --json device.rce other.rce >patch.json || true
  answers 0 yaxreg import device.rce <patch.json
  answers 0 yaxreg diff device.rce other.rce
  answers 0 yaxreg import --reverse device.rce <patch.json
  answers 0 yaxreg diff device.rce "$BATS_FILE_TMPDIR/sample.rce"
  yaxreg set device.rce network:mode --string dhcp
  answers 1 yaxreg import device.rce <patch.json
  is "$err" 'yaxreg: device.rce: network: is not as the patch expects it'
}

@test "runs a batch as one change" {
  printf '%s\n' 'put network:a --int 1' "put 'network/my eth:b' --int 2" 'get network:a' >commands
  answers 0 yaxreg batch device.rce commands
  is "$out" 1
  answers 1 yaxreg batch device.rce - <<<$'put network:c --int 1\nget network:none'
  is "$err" 'yaxreg: line 2: device.rce: network: there is no value none (status 2)'
  answers 1 yaxreg get device.rce network:c
}

@test "registers a component and takes it out" {
  id={1FBF55FC-0F15-45CC-8F3F-DE86A5640CB5}
  answers 1 yaxreg comp add device.rce $id "$PWD/commands"
  yaxreg put device.rce "YAX_ROOT/$id:CompName" --string clock
  answers 0 yaxreg comp set device.rce $id --name watch
  is "$(yaxreg get device.rce "YAX_ROOT/$id:CompName")" watch
  answers 0 yaxreg comp rm device.rce $id
  answers 1 yaxreg comp rm device.rce $id
}

@test "tells what is watched in words" {
  answers 0 yaxreg watch device.rce network values,below
  answers 0 yaxreg watch device.rce network
  is "$out" '33: values are created, set or deleted; all that for the keys below, too'
  answers 2 yaxreg watch device.rce network everything
}

@test "says that it waits, for whom, and no longer than it may" {
  mkdir side
  YAX_SIDE_FOLDER=$PWD/side yaxreg monitor device.rce >monitored &
  monitor=$!
  # Where no memory can be shared it ends at once.
  for _ in {1..100}; do
    [ -n "$(ls side)" ] || ! kill -0 $monitor && break
    sleep 0.05
  done
  if kill -0 $monitor; then
    answers 4 yaxreg put device.rce network:mtu --int 1 --timeout 2
    [[ $err == 'yaxreg: device.rce: waiting for another program; '*' has it open'$'\n'* ]]
    [[ $err == *'another program keeps the registry, waited for 2 seconds; '*' has it open' ]]
    kill $monitor
  fi
  wait $monitor || true
  answers 0 yaxreg put device.rce network:mtu --int 1 --timeout 2
  is "$err" ''
}

@test "tells owners by name" {
  answers 0 yaxreg import device.rce <<<'{"keys":[{"path":"network/eth9","owner":1000}]}'
  printf 'anna:x:1000:1000:Anna:/home/anna:/bin/sh\n' >users
  answers 0 yaxreg export device.rce network/eth9 --users users
  [[ $out == *'"owner":"anna"'* ]]
  answers 0 yaxreg import copy.rce --users users <<<"$out"
  [[ $(yaxreg rights copy.rce /) == 'owner 1000, '* ]]
  answers 2 yaxreg import copy.rce --users users <<<'{"keys":[{"path":"","owner":"bert"}]}'
}

@test "tries out what a device keeps, and leaves nothing" {
  mkdir disk
  answers 0 yaxreg selftest disk --time 0
  [[ $out == '1 kills while something was changed: 0 mixed, '*'all is as promised' ]]
  is "$(ls -A disk)" ''
  answers 4 yaxreg selftest absent --time 0
}

@test "edits a key in the user's editor" {
  EDITOR='sed -i s/static/dynamic/' answers 0 yaxreg edit device.rce network
  is "$out" '0 keys and 1 value changed'
  is "$(yaxreg get device.rce network:mode)" dynamic
  EDITOR=true answers 0 yaxreg edit device.rce network
  is "$out" 'nothing is changed'
  VISUAL='sed -i s/values/valuez/' TMPDIR=$PWD EDITOR=true answers 2 yaxreg edit device.rce network
  [[ $err == *"; the document is kept in $PWD/yaxreg-"* ]]
  grep -q dynamic yaxreg-*.json
}

@test "takes commands from a pipe and at a prompt" {
  answers 1 yaxreg shell device.rce <<<$'put network:a --int 1\nget network:none\nget network:a # the last'
  is "$out" 1
  is "$err" 'yaxreg: device.rce: network: there is no value none (status 2)'
  # libedit keeps the name of a function that it is given.
  export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0
  script -qec 'yaxreg shell device.rce' typed <<<$'get network:mode\nexit' >/dev/null
  grep -q '^device.rce> ' typed
  # Without libedit what is typed is not shown behind the prompt.
  grep -qE '^(device.rce> )?static' typed
  [ "$YAXREG_LINES" = TerminalLinesEdited.cpp ] || return 0
  # A tabulator completes what is typed, ^P goes back to the line before.
  { sleep 0.5; printf 'ge\tnetw\t:mo\t\n'; sleep 0.5; printf 'ls\n'; sleep 0.5; printf '\020\020\n'; sleep 0.5
    printf 'exit\n'; } | TERM=vt100 script -qec 'yaxreg shell device.rce' typed >/dev/null
  is "$(grep -c '^static' typed)" 2
}

@test "finds keys and values, and what takes the most" {
  answers 0 yaxreg find device.rce '**' --value 'stat*'
  is "$out" network:mode
  answers 1 yaxreg find device.rce --name none
  is "$err" ''
  answers 0 yaxreg du device.rce network
  is "$out" '   bytes    keys  values  blocks  key
     216       2       2       1  network/
      76       1       1       0  network/my eth/'
}

@test "shows files as a page, damaged ones too" {
  answers 0 yaxreg view device.rce
  is "${out%%$'\n'*}" '<!doctype html>'
  [[ $out == *'{"name":"mtu","type":0,"number":1500}'* && $out == *'</html>' ]]
  cp device.rce other.rce
  yaxreg rm other.rce 'network/my eth:mtu'
  answers 0 yaxreg view device.rce other.rce -o page.html
  is "$out$err" ''
  grep -q '"change":"changed"' page.html
  truncate -s 12000 other.rce
  answers 3 yaxreg view device.rce other.rce
  [[ $out == *'"severity":"loss"'* && $err == *other.rce* ]]
  answers 4 sh -c 'yaxreg view device.rce > /dev/full'
}

@test "ends with 1 when there is no such key" {
  answers 1 yaxreg tree device.rce network/none
  is "$out" ''
  is "$err" 'yaxreg: device.rce: network/none: there is no such key (status 2)'
}

@test "ends with 1 when a file to make is there already" {
  answers 1 yaxreg create device.rce
  is "$(printf '%s\n' "$err" | wc -l)" 1
  cmp device.rce "$BATS_FILE_TMPDIR/sample.rce"
}

@test "ends with 2 when the command line is wrong" {
  answers 2 yaxreg tree
  is "$out" ''
  is "$(printf '%s\n' "$err" | wc -l)" 1
  [[ $err == 'yaxreg: '* ]]
  answers 2 yaxreg nonsense device.rce
  is "$(printf '%s\n' "$err" | wc -l)" 1
}

@test "ends with 3 when the file is no registry" {
  head -c 75888 /dev/zero >zero.rce
  answers 3 yaxreg tree zero.rce
  is "$out" ''
  is "$err" 'yaxreg: zero.rce: is no registry file (status 59)'
  : >empty.rce
  answers 3 yaxreg ls empty.rce
}

@test "ends with 4 when there is no such file, and makes none" {
  answers 4 yaxreg tree none.rce
  is "$(printf '%s\n' "$err" | wc -l)" 1
  [[ $err == 'yaxreg: none.rce: '* ]]
  answers 4 yaxreg mkkey none.rce network
  [ ! -e none.rce ]
}

@test "ends with 4 at a folder and at a pipe without waiting" {
  mkfifo pipe
  mkdir folder
  answers 4 yaxreg tree folder
  answers 4 timeout 60 yaxreg tree pipe
  is "$(printf '%s\n' "$err" | wc -l)" 1
}

@test "ends with 4 when the output cannot be written" {
  code=0
  yaxreg tree device.rce >/dev/full 2>err || code=$?
  is "$code" 4
  is "$(cat err)" 'yaxreg: the output cannot be written'
  code=0
  yaxreg ls -l --json device.rce >/dev/full 2>err || code=$?
  is "$code" 4
}

@test "ends with 4 when the help cannot be written" {
  for words in --help --version 'tree --help'; do
    code=0
    # shellcheck disable=SC2086
    yaxreg $words >/dev/full 2>err || code=$?
    is "$code" 4
    is "$(cat err)" 'yaxreg: the output cannot be written'
  done
}

@test "ends with 4 when a file may grow no further, and leaves nothing half made" {
  # Where coverage is counted, these calls are not: the counts are files that may not grow either.
  limited() { (ulimit -f 20 && GCOV_PREFIX=/dev/null "$@"); }
  answers 4 limited yaxreg create new.rce
  is "$(printf '%s\n' "$err" | wc -l)" 1
  answers 4 limited yaxreg backup device.rce network new.bak
  answers 4 limited yaxreg add device.rce network new --string text
  is "$err" 'yaxreg: device.rce: network: the file cannot be written, the change is lost (status 5)'
  answers 0 yaxreg check --quiet device.rce
  is "$(find . -type f ! -name .out ! -name .err)" ./device.rce
}

@test "keeps the changes of several calls at the same time" {
  for process in a b c; do
    for i in {1..20}; do yaxreg add device.rce network "$process$i" --int "$i"; done &
  done
  wait
  answers 0 yaxreg check --quiet device.rce
  is "$(yaxreg ls device.rce network | grep -c '^[abc][0-9]')" 60
}

@test "works without a folder for temporary files" {
  answers 0 yaxreg backup device.rce network network.bak
  answers 0 env TMPDIR="$PWD/none" yaxreg restore device.rce network network.bak
  is "$(find . -name '.yaxreg*')" ''
}

@test "works on files with the longest names" {
  name=$(printf '%0255d' 0)
  mv device.rce "$name"
  answers 0 yaxreg mkkey "$name" log
  answers 0 yaxreg compact "$name"
  answers 0 yaxreg create "${name/0/1}"
  answers 0 yaxreg backup "$name" network "${name/0/2}"
  answers 0 yaxreg restore "$name" log "${name/0/2}"
  is "$(find . -name '.yaxreg*')" ''
}

@test "brings no control character to a terminal" {
  escape=$(printf '\033')
  yaxreg set device.rce network mode --string "${escape}[2J"
  is "$(yaxreg get device.rce network mode)" "${escape}[2J"
  for colour in '' 1; do
    shown=$(NO_COLOR=$colour script -qec 'yaxreg get device.rce network mode' /dev/null </dev/null)
    is "$shown" '\x1b[2J'$'\r'
  done
}

@test "says one line when the reader has ended" {
  mkfifo pipe
  exec 8<>pipe 9>pipe 8>&-
  trap '' PIPE
  code=0
  yaxreg tree device.rce >&9 2>err || code=$?
  exec 9>&-
  is "$code" 4
  is "$(cat err)" 'yaxreg: the output cannot be written'
  is "$(yaxreg tree device.rce | head -n 1)" /
}

@test "is plain in a pipe, coloured on a terminal and plain there with NO_COLOR" {
  escape=$(printf '\033')
  [[ $(yaxreg tree device.rce) != *"$escape"* ]]
  shown=$(env -u NO_COLOR script -qec 'yaxreg tree device.rce' /dev/null </dev/null)
  [[ $shown == *"${escape}[1;34mnetwork/${escape}[0m"* ]]
  shown=$(NO_COLOR=1 script -qec 'yaxreg tree device.rce' /dev/null </dev/null)
  [[ $shown == *network/* && $shown != *"$escape"* ]]
  shown=$(NO_COLOR="" script -qec 'yaxreg tree device.rce' /dev/null </dev/null)
  [[ $shown == *"$escape"* ]]
}

@test "shows a file that must not be written, and leaves it alone" {
  chmod 444 device.rce
  answers 0 as_nobody yaxreg get device.rce 'network/my eth' mtu
  is "$out" 1500
  answers 4 as_nobody yaxreg set device.rce 'network/my eth' mtu --int 1
  is "$out" ''
  is "$(printf '%s\n' "$err" | wc -l)" 1
  answers 4 as_nobody yaxreg compact device.rce
  cmp device.rce "$BATS_FILE_TMPDIR/sample.rce"
}

@test "ends with 4 at a file and a folder that must not be read" {
  mkdir folder
  mv device.rce folder/device.rce
  chmod 000 folder
  answers 4 as_nobody yaxreg tree folder/device.rce
  is "$err" 'yaxreg: folder/device.rce: cannot be opened: Permission denied'
  chmod 755 folder
  chmod 000 folder/device.rce
  answers 4 as_nobody yaxreg tree folder/device.rce
  is "$err" 'yaxreg: folder/device.rce: cannot be opened: Permission denied'
  chmod 644 folder/device.rce
}

@test "makes nothing in a folder that must not be written" {
  mkdir -m 555 folder
  answers 4 as_nobody yaxreg create folder/new.rce
  is "$(printf '%s\n' "$err" | wc -l)" 1
  [ ! -e folder/new.rce ]
}

@test "monitor prints what other programs change" {
  local code=0 i
  yaxreg monitor device.rce network --value mode --count 1 --timeout 100 >lines 2>errors &
  for i in $(seq 1000); do
    [ ! -s lines ] && kill -0 $! 2>/dev/null || break
    yaxreg set device.rce network mode --string "new$i"
    sleep 0.02
  done
  wait $! || code=$?
  [ "$code" -eq 0 ]
  grep -qE '^network mode = "new[0-9]+"$' lines
  [ "$(wc -l <lines)" -eq 1 ]
}

@test "the manual page tells the version and every verb of the help" {
  grep -q "^\.TH YAXREG 1 .*\"yaxreg $YAXREG_VERSION\"$" "$YAXREG_MAN"
  verbs=$(yaxreg --help | sed -n 's/^  \([a-z]\{2,\}\) .*/\1/p')
  [ "$(wc -w <<<"$verbs")" -ge 20 ]
  for verb in $verbs; do grep -q "^\.SS $verb" "$YAXREG_MAN"; done
}

@test "the completion is a correct script" {
  bash -n "$YAXREG_COMPLETION"
  answers 0 bash -uc "source '$YAXREG_COMPLETION' && complete -p yaxreg"
  is "$out" 'complete -F _yaxreg yaxreg'
}

@test "completes verbs and the verbs below a group" {
  completes restore repair -- yaxreg re
  completes ls verify add set rm -- yaxreg comp ''
  completes verify -- yaxreg comp v
  completes --help --version -- yaxreg -
}

@test "completes the options of a verb" {
  completes --depth -- yaxreg tree --d
  completes --root -- yaxreg comp verify device.rce --r
  completes -a --all -f --force --user --uid --timeout --json --help '\--' -- yaxreg rm device.rce -
  completes '' -- yaxreg rm -- -
}

@test "completes names of files" {
  mkdir other
  touch 'de vice.rce' 'de"vice.rce'
  completes 'de vice.rce' 'de"vice.rce' device.rce -- yaxreg tree de
  completes 'de vice.rce' -- yaxreg tree 'de\ '
  completes 'de vice.rce' -- yaxreg tree '"de v'
  completes device.rce -- yaxreg diff other dev
  completes device.rce -- yaxreg backup x.rce network dev
  completes other -- yaxreg comp verify --root o
  completes "$BATS_TEST_TMPDIR/device.rce" -- yaxreg tree "$BATS_TEST_TMPDIR/dev"
  HOME=$BATS_TEST_TMPDIR
  completes '~/device.rce' -- yaxreg tree '~/dev'
  completes '' -- yaxreg tree none
}

@test "completes values of options" {
  completes device.rce -- yaxreg repair x.rce -o dev
  completes device.rce -- yaxreg stat x.rce --map = dev
  completes '' -- yaxreg get x.rce --user dev
  completes 0 1 2 3 4 5 -- yaxreg set x.rce a b --type ''
  completes 4 -- yaxreg set x.rce a b --type = 4
  completes aarch64 aarch64_be -- yaxreg comp verify x.rce --machine aa
  completes device.rce -- yaxreg repair -o x.rce dev
}

@test "completes keys of the file on the command line, and their values" {
  cp device.rce 'a b:c.rce'
  completes network/ -- yaxreg tree device.rce ''
  completes /network/ -- yaxreg tree -d 1 device.rce /n
  completes 'network/my eth/' -- yaxreg set device.rce network/
  completes 'network/my eth/' -- yaxreg set device.rce 'network/my\ e'
  completes mtu -- yaxreg get device.rce 'network/my\ eth' ''
  completes mode -- yaxreg get device.rce network ''
  completes mode -- yaxreg get device.rce network : m
  completes mtu -- yaxreg rm device.rce 'network/my\ eth' :
  completes '' -- yaxreg tree device.rce network : m
  completes network/ -- yaxreg diff device.rce none.rce n
  completes network/ -- yaxreg tree 'a\ b' : c.rce n
  completes network/ -- yaxreg diff device.rce 'a\ b\:c.rce' n
  HOME=$BATS_TEST_TMPDIR
  completes network/ -- yaxreg ls '~/device.rce' n
}

@test "offers -- for names that begin with a dash, and the names behind it" {
  yaxreg mkkey -- device.rce -eth
  yaxreg add --int 1 -- device.rce network -x
  completes network/ '\--' -- yaxreg tree device.rce ''
  completes -eth/ network/ -- yaxreg tree -- device.rce ''
  completes -eth/ -- yaxreg tree -- device.rce -e
  completes mode '\--' -- yaxreg get device.rce network ''
  completes -x -- yaxreg get -- device.rce network -
  touch -- -file.rce
  completes device.rce '\--' -- yaxreg tree ''
  completes -file.rce -- yaxreg repair x.rce -o -f
}

@test "is silent about keys that cannot be completed" {
  completes '' -- yaxreg tree none.rce ''
  completes '' -- yaxreg tree device.rce none/
  completes '' -- none tree device.rce n
}

@test "runs nothing of the command line that it completes" {
  completes '' -- yaxreg tree '$(touch' 'made)' x
  completes '' -- yaxreg tree '`touch made`' ''
  completes '' -- yaxreg tree 'x"$(touch made)"'
  [ ! -e made ]
}

# fish_completes WORD... -- LINE: what fish offers.
fish_completes() {
  local expected=()
  while [ "$1" != -- ]; do
    expected+=("$1")
    shift
  done
  answers 0 fish --no-config -c "source '$YAXREG_COMPLETION.fish'; complete -C '$2'"
  is "$err" ''
  is "$(printf '%s' "$out" | cut -f 1)" "$(printf '%s\n' "${expected[@]}")"
}

@test "completes in fish" {
  export HOME=$BATS_TEST_TMPDIR
  fish_completes get -- 'yaxreg ge'
  fish_completes add ls rm set verify -- 'yaxreg comp '
  fish_completes device.rce -- 'yaxreg tree dev'
  fish_completes network/ -- 'yaxreg get device.rce '
  fish_completes network/ -- 'yaxreg get --user x device.rce n'
  fish_completes 'network/my eth/' -- 'yaxreg ls device.rce network/'
  fish_completes mode -- 'yaxreg get device.rce network '
  fish_completes --depth -- 'yaxreg tree device.rce --d'
}

@test "has a completion that zsh takes" {
  answers 0 zsh -f -n "${YAXREG_COMPLETION%/*}/_yaxreg"
  is "$err" ''
}

@test "has its files known by file" {
  answers 0 file -b -m "${YAXREG_COMPLETION%/*/*}/magic" device.rce
  is "$out" 'libYAX registry, format 2.1, 75888 bytes'
}

@test "wraps its help at the width of the terminal" {
  shown=$(script -qec 'stty cols 60; yaxreg batch --help' /dev/null </dev/null | tr -d '\r')
  is "$(printf '%s\n' "$shown" | awk 'length > 60' | head -n 1)" ''
  [[ $shown == *'without the words'* ]]
  answers 0 yaxreg batch --help
  [ -n "$(printf '%s\n' "$out" | awk 'length > 200')" ]
}
