#!/usr/bin/env bash
# Installs what the native build needs and is missing. Asks nothing; does nothing when all is there.
set -u

needed=(g++ cmake ninja-build libgtest-dev libbenchmark-dev)
# Without these the build leaves something out and says so: faster rebuilds, the fuzz targets,
# tests under a locale whose numbers have a comma.
welcome=(ccache clang libclang-rt-14-dev locales)

installed() { dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null | grep -qx installed; }

missing=()
for package in "${needed[@]}"; do installed "$package" || missing+=("$package"); done
# A tool that did not come from a package serves as well.
usable() {
  command -v g++ >/dev/null && command -v cmake >/dev/null && command -v ninja >/dev/null &&
    [ -f /usr/include/gtest/gtest.h ] && [ -f /usr/include/benchmark/benchmark.h ]
}
wanted=()
if [ "${#missing[@]}" -eq 0 ] || usable; then
  missing=()
fi
for package in "${welcome[@]}"; do installed "$package" || wanted+=("$package"); done
[ "${#missing[@]}" -eq 0 ] && [ "${#wanted[@]}" -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" != 0 ]; then
  if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    as_root=(sudo -n)
  elif [ "${#missing[@]}" -eq 0 ]; then
    exit 0
  else
    echo "setup: these packages are missing and need root or sudo to install: ${missing[*]}" >&2
    exit 1
  fi
fi

log=$(mktemp "${TMPDIR:-/tmp}/korutil-setup.XXXXXX")
export DEBIAN_FRONTEND=noninteractive
apt() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive timeout 600 apt-get -q -o Acquire::Retries=2 "$@" >>"$log" 2>&1 </dev/null; }

marker=${XDG_CACHE_HOME:-$HOME/.cache}/korutil-optional-packages-tried
if [ "${#missing[@]}" -ne 0 ]; then
  echo "setup: installing ${missing[*]}"
  apt update
  if ! apt install -y --no-install-recommends "${missing[@]}"; then
    echo "setup: could not install ${missing[*]}; the last lines of $log:" >&2
    tail -n 5 "$log" >&2
    exit 1
  fi
elif [ -e "$marker" ] && [ -z "$(find "$marker" -mmin +1440 2>/dev/null)" ]; then
  rm -f "$log"
  exit 0 # tried today, and not to be had
else
  apt update
fi
[ "${#wanted[@]}" -eq 0 ] || echo "setup: installing, where they are to be had, ${wanted[*]}"
for package in "${wanted[@]}"; do
  apt install -y --no-install-recommends "$package" || echo "setup: $package is not to be had here; going on without it"
done
mkdir -p "$(dirname "$marker")" 2>/dev/null && touch "$marker" 2>/dev/null
rm -f "$log"
exit 0
