# How a script that tries something at length tells what it saw, a line each; to be read by it. $failures counts what was wrong.

failures=0
passed() { printf '  ok    %s\n' "$*"; }
failed() {
  printf '  WRONG %s\n' "$*"
  failures=$((failures + 1))
}
# check TEXT COMMAND...
check() {
  local text=$1
  shift
  if "$@" >/dev/null 2>&1; then passed "$text"; else failed "$text"; fi
}
# Tries a check for so many seconds.
within() {
  local end=$((SECONDS + $1)) text=$2
  shift 2
  until "$@" >/dev/null 2>&1; do
    [ $SECONDS -lt $end ] || { failed "$text"; return 0; }
    sleep 0.2
  done
  passed "$text"
}
section() { printf '%s\n' "$*"; }
