#!/usr/bin/env bash
# check-package.sh BUILD SOURCE WORK [EMULATOR]: installs, moves what was installed, builds a client against it and runs it.
set -eu
build=$1
source=$2
work=$3
emulator=${4:-}
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/moved"
options=(-G Ninja -DCMAKE_PREFIX_PATH="$work/moved" -DCMAKE_BUILD_TYPE=Release)
# A cross build looks for packages below the target's own root only, unless it is told the folder.
[ -z "$emulator" ] || options+=(-DCMAKE_TOOLCHAIN_FILE="$source/../../cmake/i686-w64-mingw32.cmake"
                                -DKorUtil_DIR="$work/moved/lib/cmake/KorUtil")
cmake -S "$source/client" -B "$work/client" "${options[@]}" >"$work/configure.log" || { cat "$work/configure.log"; exit 1; }
cmake --build "$work/client" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
if [ -n "$emulator" ]; then
  cp "$work/client/client.exe" "$work/moved/bin/"
  printed=$("$emulator" "$work/moved/bin/client.exe" | tr -d '\r')
else
  printed=$("$work/client/client")
  # The command is looked at where it was moved to, without help from the environment.
  "$work/moved/bin/korutil" --version >/dev/null
fi
echo "$printed"
[ "$printed" = "error 0xe0000003 at 4711" ]
