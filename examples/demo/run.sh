#!/bin/sh
# Tells in chapters what the library does: run.sh EXAMPLES [TOOL MAP]
#   EXAMPLES  the folder of the example programs and components
#   TOOL      the folder of yaxreg; without it the programs are run alone
#   MAP       where the map of a file is drawn to; a page of another one, device.html, is put beside it
# Folders may be relative. NO_COLOR is obeyed.
set -eu

absolute() { (cd "$1" && pwd); }
examples=$(absolute "$1")
PATH=$examples:$PATH
map=
if [ $# -gt 1 ]; then
  PATH=$(absolute "$2"):$PATH
  map=$(absolute "$(dirname "$3")")/$(basename "$3")
fi

folder=$(mktemp -d)
watcher=
finish() {
  [ -z "$watcher" ] || kill "$watcher" 2>/dev/null || true
  rm -rf "$folder"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM
cd "$folder"

bold='' dim='' accent='' plain='' pause=0
if [ -t 1 ] && [ "${TERM:-dumb}" != dumb ]; then
  pause=1
  if [ -z "${NO_COLOR:-}" ]; then
    bold=$(printf '\033[1m') dim=$(printf '\033[2m') accent=$(printf '\033[33m')
    plain=$(printf '\033[0m')
  fi
fi

number=0
chapter() {
  [ "$number" -eq 0 ] || sleep "$pause"
  number=$((number + 1))
  printf '\n%s%d. %s%s\n' "$bold" "$number" "$1" "$plain"
}

tell() { printf '%s  %s%s\n' "$dim" "$1" "$plain"; }

# answers STATUS COMMAND...: shows a command and what it prints; it must exit with the status.
answers() {
  wanted=$1
  shift
  [ "$1" != yaxreg ] || [ -n "$map" ] || return 0
  printf '%s$ %s%s\n' "$accent" "$*" "$plain"
  status=0
  "$@" >answer 2>&1 || status=$?
  sed 's/^./  &/' answer
  [ "$status" -eq "$wanted" ] || { echo "exit status $status instead of $wanted" >&2 && exit 1; }
}

show() { answers 0 "$@"; }

# The next line of the watcher, which ends when it waits in vain.
hear_watcher() {
  IFS= read -r line <&3 || { echo "the other process has ended" >&2 && exit 1; }
  printf '%s  The other process: %s%s\n' "$bold" "$line" "$plain"
}

chapter "A program writes settings: keys and values, in one small file"
show demo_settings device.rce
show yaxreg tree device.rce

chapter "A change, and who sees it"
tell "Another process has the file open, and looks at one value of it."
mkfifo watched
demo_watch device.rce network/eth0 mtu 2 >watched 2>&1 &
watcher=$!
exec 3<watched
hear_watcher
show cp device.rce before.rce
show demo_change device.rce network.backup
hear_watcher
answers 1 yaxreg diff before.rce device.rce
show demo_restore device.rce network network.backup
hear_watcher
show yaxreg diff before.rce device.rce
exec 3<&-
wait "$watcher"
watcher=
tell "All is as it was before."

chapter "Speed, measured on this machine now"
show demo_speed house.rce

chapter "Hostile files are answered with a status"
show demo_hostile device.rce hostile.rce

if [ -n "$map" ]; then
  chapter "Damage is found, and repaired"
  tell "One byte is overwritten. It told where the names of the keys lie."
  cp device.rce damaged.rce
  printf '\377' | dd of=damaged.rce bs=1 seek=4192 conv=notrunc 2>/dev/null
  answers 3 yaxreg check damaged.rce
  show yaxreg repair damaged.rce -o saved.rce
  show yaxreg diff device.rce saved.rce
  tell "The file that was saved has no difference from the one before."

  chapter "The map of a file"
  tell "Chapter 3 has left a file with some hundred keys, others are deleted."
  show yaxreg stat house.rce --map house.svg
  cp house.svg "$map"
  tell "Every slot of the file, to open with a browser: $3"
fi

chapter "Components: found by identifier, loaded on demand, unloaded when they agree"
show demo_register device.rce "$examples"
show yaxreg comp verify device.rce
show demo_use device.rce

chapter "Several threads"
show demo_threads device.rce

page=
if [ -n "$map" ]; then
  chapter "A file as a page: to browse, to search, and to see what differs"
  show yaxreg view before.rce device.rce -o device.html
  cp device.html "$(dirname "$map")/device.html"
  page=$(dirname "$3")/device.html
  tell "It needs no server and no network. Open it with a browser: xdg-open $page"
fi

printf '\n%sThat is libYAX.%s Read on in examples/%s\n' "$bold" "$plain" "${page:+, and open $3 and $page}"
