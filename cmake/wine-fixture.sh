#!/bin/sh
# wine-fixture.sh start|stop PREFIX: makes the prefix once and keeps one server alive for all test programs.
set -u
export WINEPREFIX="$2" WINEDEBUG=-all LC_ALL=C WINEDLLOVERRIDES="winedbg.exe,mscoree,mshtml="
HOME=$(dirname "$2")
export HOME
unset DISPLAY
# A server in the background must not hold CTest's pipe, or the test never ends.
exec >>"$2.log" 2>&1 </dev/null
case $1 in
  start)
    if [ ! -f "$2/.ready" ]; then
      mkdir -p "$2"
      wine wineboot -i || exit 1
      # Windows, dialogs and message boxes without a display.
      wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f || exit 1
      wineserver -k
      wineserver -w
      touch "$2/.ready"
    fi
    wineserver -p
    wine cmd /c exit 0
    ;;
  stop)
    wineserver -k
    wineserver -w
    exit 0
    ;;
esac
