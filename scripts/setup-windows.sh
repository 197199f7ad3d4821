#!/usr/bin/env bash
# Installs the compiler and Wine for the Windows target where they are missing. Asks nothing.
# Removes no package; takes none back to an older version unless CI or KORUTIL_ALLOW_DOWNGRADES is set.
# Exit status 0: ready. 77: cannot be had here; the one line on standard output says why.
set -u

packages=(g++-mingw-w64-i686-posix wine wine32:i386 libgtest-dev)

ready() {
  command -v i686-w64-mingw32-g++-posix >/dev/null && command -v wine >/dev/null &&
    [ -f /usr/src/googletest/CMakeLists.txt ] &&
    { ! command -v dpkg-query >/dev/null ||
      dpkg-query -W -f='${db:Status-Status}' wine32:i386 2>/dev/null | grep -qx installed; }
}
give_up() {
  echo "setup: $1"
  exit 77
}

ready && exit 0
command -v apt-get >/dev/null || give_up "no package manager that installs ${packages[*]}"
as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null && sudo -n true 2>/dev/null || give_up "root or sudo is needed to install ${packages[*]}"
  as_root=(sudo -n)
fi

echo "setup: installing ${packages[*]} (a minute or two)" >&2
log=$(mktemp "${TMPDIR:-/tmp}/korutil-setup.XXXXXX")
work=$(mktemp -d "${TMPDIR:-/tmp}/korutil-apt.XXXXXX")
chmod 755 "$work"
trap 'rm -rf "$work"' EXIT
run() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive timeout 900 "$@" >>"$log" 2>&1 </dev/null; }

# Installs with the given apt options; twice, since a mirror may be between two states.
install_with() {
  local try
  for try in 1 2; do
    echo "== $* (try $try)" >>"$log"
    run apt-get -q -o Acquire::Retries=3 "$@" update &&
      run apt-get -q "$@" "${extra[@]}" install -y --no-remove --no-install-recommends "${packages[@]}" && return 0
    sleep 5
  done
  return 1
}

run dpkg --add-architecture i386
extra=()
if ! install_with -o Dpkg::Use-Pty=0; then
  # The security suite's i386 packages can lag behind its amd64 ones, which then exclude each other:
  # the main suite alone is always consistent.
  uri=$(awk '/^URIs:/{print $2; exit}' /etc/apt/sources.list.d/debian.sources 2>/dev/null)
  [ -n "$uri" ] || uri=$(awk '$1=="deb"{for(i=2;i<=NF;i++) if($i ~ /:\/\//){print $i; exit}}' /etc/apt/sources.list 2>/dev/null)
  release=$(. /etc/os-release 2>/dev/null && echo "${VERSION_CODENAME:-bookworm}")
  mkdir -p "$work/lists/partial"
  chmod 777 "$work/lists" "$work/lists/partial"
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $uri $release main" >"$work/main.list"
  main_only=(-o Dir::Etc::sourcelist="$work/main.list" -o Dir::Etc::sourceparts=/dev/null -o Dir::State::lists="$work/lists")
  if ! install_with "${main_only[@]}" && [ "${CI:-}${KORUTIL_ALLOW_DOWNGRADES:-}" != "" ]; then
    # Newer amd64 libraries go back to the main suite's: on a throw-away machine, or when the user says so.
    printf 'Package: *\nPin: release n=%s,l=Debian\nPin-Priority: 1001\n' "$release" >"$work/preferences"
    extra=(--allow-downgrades)
    install_with "${main_only[@]}" -o Dir::Etc::preferences="$work/preferences"
  fi
fi
if ready; then
  rm -f "$log"
  exit 0
fi
reason=$(grep -hE '^E:|unmet|Depends:' "$log" | tail -n 1 | sed 's/^ *//')
give_up "g++-mingw-w64-i686-posix and wine32:i386 could not be installed (${reason:-see $log}); with KORUTIL_ALLOW_DOWNGRADES=1 newer libraries may be taken back to the main suite's"
