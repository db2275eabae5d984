#!/usr/bin/env bash
# Plants each slip that sources.sh is there to find into a small clean tree, and wants it found.
set -uo pipefail

check=$(dirname "$(readlink -f "$0")")/sources.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

clean() {
  rm -rf "${tree:?}"/*
  mkdir -p "$tree"/platform/{foundation,corefoundation,coregraphics/raster} "$tree"/settings "$tree"/preview "$tree"/{panes,appselect,themes}
  printf '#include "foundation/A.h"\n#include <vector>\n// Quartz, QA\n' >"$tree/platform/foundation/A.cpp"
  printf '#include <fcntl.h>\n' >"$tree/platform/foundation/B.cpp"
  printf '#include <QImage>\n' >"$tree/platform/coregraphics/raster/C.cpp"
  printf '#include <systemd/sd-bus.h>\n' >"$tree/platform/corefoundation/SessionBus.h"
  printf '#include "coregraphics/Canvas.h"\n' >"$tree/platform/coregraphics/raster/RasterGraphics.h"
}

# noticed FILE TEXT WHAT
noticed() {
  clean
  printf '%s\n' "$2" >"$tree/$1"
  said=$("$check" "$tree") && { echo "not noticed: $2 in $1"; failures=1; return; }
  if ! grep -q "^$3" <<<"$said" || ! grep -qF "$1:1:" <<<"$said"; then
    echo "$1: noticed as: $said"
    failures=1
  fi
}

clean
"$check" "$tree" || { echo "a clean tree was not found clean"; failures=1; }
noticed preview/P.cpp '#include "../settings/S.h"' 'relative includes'
noticed platform/foundation/P.h '#  include <foundation/../B.h>' 'relative includes'
noticed settings/S.cpp '#include <QImage>' 'the toolkit outside'
noticed preview/P.h '// drawn by Qt' 'the toolkit outside'
noticed platform/coregraphics/P.cpp 'QPainter painter;' 'the toolkit outside'
noticed platform/coregraphics/raster/RasterGraphics.h 'class QImage;' "the toolkit in the drawing's"
noticed settings/S.cpp '#include <unistd.h>' 'system headers in the bundle'
noticed preview/P.cpp '#include <sys/stat.h>' 'system headers in the bundle'
noticed panes/P.cpp '#include <sys/stat.h>' 'system headers in the bundle'
noticed platform/foundation/P.h '#include <fcntl.h>' "system headers in the platform's"
rm -rf "${tree:?}"/preview
"$check" "$tree" >/dev/null && { echo "a missing folder was not noticed"; failures=1; }
exit $failures
