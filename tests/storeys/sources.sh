#!/usr/bin/env bash
# sources.sh ROOT: what no source of the lower storeys may contain. Prints each place and fails if there is any.
set -uo pipefail

cd "$1" || exit 2
for folder in platform settings preview panes appselect themes; do
  [ -d "$folder" ] || { echo "$1 has no folder $folder"; exit 2; }
done

failures=0
# report WHAT PLACES: places are lines of file:line:text.
report() {
  [ -z "$2" ] && return
  printf '%s:\n%s\n' "$1" "$2"
  failures=1
}
# places PATTERN [GREP OPTIONS...] FOLDERS...
places() {
  grep -rnE --include='*.h' --include='*.cpp' "$@"
}

report "relative includes" "$(places '#[[:space:]]*include[[:space:]]*["<]([^">]*/)?\.\./' platform settings preview panes appselect themes)"

report "the toolkit outside of platform/coregraphics/raster" \
  "$(places '\b(Qt[0-9A-Z]*|Q[A-Z][a-z]+[A-Za-z]*)\b' platform settings preview panes appselect themes |
    grep -v '^platform/coregraphics/raster/')"

report "the toolkit in the drawing's public header" \
  "$(places '\b(Qt[0-9A-Z]*|Q[A-Z][a-z]+[A-Za-z]*)\b' platform/coregraphics/raster/RasterGraphics.h /dev/null)"

# Standard headers have neither an ending nor a folder.
report "system headers in the bundle" \
  "$(places '#[[:space:]]*include[[:space:]]*<[^>]*[./]' settings preview panes appselect themes)"

# One header of the platform is its own affair: it names the bus library for two sources beside it.
report "system headers in the platform's headers" \
  "$(grep -rnE --include='*.h' '#[[:space:]]*include[[:space:]]*<[^>]*[./]' platform |
    grep -vE '^platform/(coregraphics/raster/|corefoundation/SessionBus\.h)')"

exit $failures
