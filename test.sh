#!/usr/bin/env bash
# Sets up what is missing, builds, and runs every test: the native suite, then the Windows one under Wine.
#   --native    leave the Windows target out
#   --windows   fail when the Windows target cannot be built here
# KORUTIL_TEST_SCALE scales the counts of random cases (default 1).
set -u
cd "$(dirname "$0")" || exit 1

windows=if-possible
for argument in "$@"; do
  case $argument in
    --native) windows=no ;;
    --windows) windows=required ;;
    --help | -h) sed -n '2,5s/^# \{0,1\}//p' "$0"; exit 0 ;;
    *) echo "test.sh: unknown argument $argument (--native, --windows)" >&2; exit 2 ;;
  esac
done

counts=$(mktemp)
trap 'rm -f "$counts"' EXIT
result=0
scripts/setup-native.sh || exit 1
scripts/suite.sh native "$counts" || result=1

if [ "$windows" != no ]; then
  if reason=$(scripts/setup-windows.sh); then
    scripts/suite.sh win32 "$counts" || result=1
  elif [ "$windows" = required ]; then
    echo "The Windows target cannot be tested here: ${reason#setup: }" >&2
    echo "0 1 0" >>"$counts"
    result=1
  else
    echo "The Windows target is left out: ${reason#setup: }."
  fi
fi

awk '{ p += $1; f += $2; s += $3 } END { printf "%d passed, %d failed, %d skipped\n", p, f, s }' "$counts"
exit "$result"
