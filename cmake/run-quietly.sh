#!/bin/sh
# run-quietly.sh LOG WHAT COMMAND...
# Runs a command that builds something and says so in one line; on a terminal the line counts up as
# make does. All that the command prints goes to LOG, which is named when it fails. Exits as it does.
set -eu

log=$1 what=$2
shift 2
mkdir -p "$(dirname "$log")"
started=$(date +%s)
again= # goes back to the beginning of the line
if [ -t 1 ]; then
  again=$(printf '\r')
fi

# Copies what comes to the log.
follow() {
  while IFS= read -r line; do
    printf '%s\n' "$line"
    case $line in
      '['*%]*) [ -z "$again" ] || printf '%s%s ...%s ' "$again" "$what" "${line%%]*}]" | tr -d '[]' >&4 ;;
    esac
  done >"$log"
}

exec 4>&1
printf '%s ... ' "$what"
status=$({ { "$@" 2>&1 3>&- 4>&- && echo 0 >&3 || echo $? >&3; } | follow; } 3>&1)
if [ "$status" -ne 0 ]; then
  echo failed
  echo "What it printed is in $log" >&2
  exit "$status"
fi
printf '%sdone in %d s\n' "${again:+$again$what ... }" $(($(date +%s) - started))
