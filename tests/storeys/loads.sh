#!/usr/bin/env bash
# loads.sh COMMAND DRAWING-COMMAND: the command loads no graphics library, while the one that draws does.
set -uo pipefail

graphics='libQt|libGL|libX11|libxcb|libfontconfig|libfreetype|libpng'

loaded() {
  ldd "$1" || exit 1
}

if loaded "$1" | grep -E "$graphics"; then
  echo "$1 loads a graphics library"
  exit 1
fi
if ! loaded "$2" | grep -qE 'libQt'; then
  echo "$2 loads no graphics library, so the check above proves nothing"
  exit 1
fi
