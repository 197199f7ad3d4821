#!/usr/bin/env bash
# check-exports.sh LIBRARY LIST [MEMBERS]: compares what a binary exports with the lists, in both directions.
# LIBRARY is an ELF library or a Windows DLL. LIST holds plain functions and classes: a line of "+ name" is built; in a list
# without plus signs every name is. MEMBERS holds the qualified names of the members of the built classes.
set -eu
library=$1
list=$2
members=${3:-}
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

case $library in
  *.dll)
    "${OBJDUMP:-i686-w64-mingw32-objdump}" -p "$library" |
      awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && NF == 0 { exit } on { print $NF }' >"$work/raw"
    ;;
  *) "${NM:-nm}" -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' >"$work/raw" ;;
esac
[ -s "$work/raw" ] || { echo "$library exports nothing"; exit 1; }

grep '^_Z' "$work/raw" | c++filt |
  grep -vE '^(vtable|VTT|typeinfo|typeinfo name|guard variable|construction vtable|(non-)?virtual thunk|covariant return thunk) ' |
  sed -E 's/ \[clone.*//; s/\(.*//; s/ const$//' >"$work/cxx.all" || true
# "operator const char*" and the like keep their words; everything else is the last word (no return types in these names).
# Members in lowerCamelCase are internal; a class record is not.
awk '{ at = index($0, "operator"); print at ? $0 : $NF }' "$work/cxx.all" | sort -u |
  awk '!/::[a-z]/ || /::(class[A-Z]|m_|operator)/' >"$work/cxx"
# A native module's resources are a symbol of it; every module has one.
grep -v -e '^_Z' -e '^korResourceTable$' "$work/raw" | sort -u >"$work/plain"

if grep -q '^+ ' "$list"; then sed -n 's/^+ //p' "$list" >"$work/built"; else grep -vE '^(#|$)' "$list" >"$work/built"; fi
# A class is a listed name that starts with C and a capital (or is CRuntimeClass and kin); functions never do, but for Cow...
grep -E '^C[A-Z]|^FileData$' "$work/built" | sort -u >"$work/classes" || true
grep -vE '^C[A-Z]|^FileData$' "$work/built" | sort -u >"$work/functions" || true

result=0
say() { # title, file
  [ -s "$2" ] || return 0
  echo "$1:"
  sed 's/^/  /' "$2"
  result=1
}
comm -23 "$work/functions" "$work/plain" >"$work/d1"
say "listed as built, not exported" "$work/d1"
comm -13 "$work/functions" "$work/plain" >"$work/d2"
say "exported, not listed as built" "$work/d2"
sed -E 's/::.*//' "$work/cxx" | sort -u >"$work/exported-classes"
comm -23 "$work/classes" "$work/exported-classes" >"$work/d3"
say "classes listed as built, without an exported member" "$work/d3"
comm -13 "$work/classes" "$work/exported-classes" >"$work/d4"
say "C++ names exported that belong to no listed class" "$work/d4"
if [ -n "$members" ]; then
  grep -vE '^(#|$)' "$members" | sort -u >"$work/members"
  comm -23 "$work/members" "$work/cxx" >"$work/d5"
  say "members listed, not exported" "$work/d5"
  comm -13 "$work/members" "$work/cxx" >"$work/d6"
  say "members exported, not listed" "$work/d6"
fi
[ "$result" -ne 0 ] || echo "$(wc -l <"$work/functions") functions, $(wc -l <"$work/classes") classes, $(wc -l <"$work/cxx") members: as listed"
exit "$result"
