#!/usr/bin/env bash
# probe.sh seen|hidden COMPILER OWNER-FOLDERS TARGET-FOLDERS HEADER...
# Succeeds when a source with the target's include folders (joined by ":") can include each header, or cannot
# because it is not found. The header has to exist in the owner's folders, or the probe would prove nothing.
set -uo pipefail

expected=$1 compiler=$2 owner_folders=$3 target_folders=$4
shift 4

IFS=: read -ra owner <<<"$owner_folders"
flags=()
IFS=: read -ra target <<<"$target_folders"
for folder in ${target[@]+"${target[@]}"}; do
  [ -n "$folder" ] && flags+=("-I$folder")
done

failures=0
fail() {
  echo "$1"
  failures=1
}

for header in "$@"; do
  exists=
  for folder in ${owner[@]+"${owner[@]}"}; do
    [ -n "$folder" ] && [ -e "$folder/$header" ] && exists=1
  done
  if [ -z "$exists" ]; then
    fail "$header: its owner has no such header"
    continue
  fi
  said=$(echo "#include \"$header\"" | LC_ALL=C "$compiler" -std=c++20 -fsyntax-only ${flags[@]+"${flags[@]}"} -x c++ - 2>&1)
  status=$?
  if [ "$expected" = seen ]; then
    [ $status = 0 ] || fail "$header: cannot be included: $said"
  elif [ $status = 0 ]; then
    fail "$header: can be included"
  elif ! grep -qF -e "$header: No such file or directory" -e "'$header' file not found" <<<"$said"; then
    fail "$header: cannot be included, but for another reason: $said"
  fi
done
exit $failures
