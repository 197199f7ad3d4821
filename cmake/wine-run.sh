#!/bin/sh
# wine-run.sh PROGRAM ARGUMENTS...: runs a Windows test program in the prefix that CTest gives in WINEPREFIX.
: "${WINEPREFIX:?WINEPREFIX is not set}"
# Without the first override a crash waits for a debugger that nobody sees.
export WINEDEBUG="${WINEDEBUG:--all}" LC_ALL=C WINEDLLOVERRIDES="winedbg.exe,mscoree,mshtml="
exec wine "$@"
