#!/usr/bin/env bash
# The main job: stores the set-up of a measurement as a parameter tree, shows it, changes it, shows what changed;
# then keeps it as a settings file, with a user's own values over the installation's.
# Usage: measurement.sh KORUTIL [FILE]   (FILE: where the tree goes; default measurement.tag beside KORUTIL's folder;
# the settings files get its name with -lab.ini and -user.ini)
set -eu
korutil=$1
file=${2:-$(dirname "$(dirname "$korutil")")/measurement.tag}
json=$(dirname "$0")/measurement.json
keys=$(dirname "$0")/measurement-keys.json
lab=${file%.*}-lab.ini
user=${file%.*}-user.ini
before=$(mktemp)
after=$(mktemp)
trap 'rm -f "$before" "$after"' EXIT

say() { printf '\n\033[1m$ korutil %s\033[0m\n' "$*"; }
[ -t 1 ] || say() { printf '\n$ korutil %s\n' "$*"; }
run() {
  say "$@"
  "$korutil" "$@"
}

echo "A measurement is set up in $json (examples/README.md explains the ids)."
echo "Stored as a parameter tree, it is a file that every module of the application reads:"
run tree from-json "$json" "$file"
run tree show "$file"

echo
echo "What was stored gives back the JSON text, byte for byte:"
say tree show "$file" --json "| cmp - $json"
"$korutil" tree show "$file" --json | cmp - "$json"
echo "no difference"

echo
echo "The green channel (section 400/2) needs a longer exposure, and the camera a lower temperature:"
"$korutil" tree show "$file" >"$before"
run tree set "$file" 400/2/4 double 180
run tree set "$file" 100/8 long -40
"$korutil" tree show "$file" >"$after"
echo
echo "What changed:"
diff "$before" "$after" || [ $? -eq 1 ]

echo
echo "The installation keeps the set-up as a settings file; $keys names the ids."
echo "What settings cannot give back is told:"
rm -f "$lab" "$user"
run tree to-profile "$file" "$lab" --keys "$keys" 2>&1 || [ $? -eq 3 ] # done, with what was told

echo
echo "A user's own file lies over it and holds only what differs:"
run profile set "$user" Setup Operator.Str "Ann Öztürk"
run profile set "$user" Setup.Channels.GFP Exposure.Flt 250 --double
echo
echo "Which value comes from where:"
run profile list "$user" Setup.Channels.GFP --application "$lab" --origin
run profile get "$user" Setup Operator.Str --application "$lab" --origin

cat <<END

What you may try next:
  $korutil tree set $file 4 string "a note with µ and ü"
  $korutil tree delete $file 400/3
  $korutil tree show $file --json
  $korutil profile check $lab
  $korutil profile delete $user Setup.Channels.GFP Exposure.Flt
  $korutil tree from-profile $lab ${file%.*}-back.tag --keys $keys
  $korutil path relative 'Z:\\data\\cells\\a.tif' --base 'Z:\\data\\setup.ini'
  $korutil errors
  $korutil --help
END
