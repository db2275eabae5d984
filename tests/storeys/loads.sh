#!/usr/bin/env bash
# loads.sh COMMAND DRAWING-COMMAND: the command loads neither a graphics library nor the one that sorts names, while
# the one that draws does.
set -uo pipefail

graphics='libQt|libGL|libX11|libxcb|libfontconfig|libfreetype|libpng'

# The lists are kept whole: a pipe into "grep -q" would end ldd by a signal whenever grep is done first.
command_loads=$(ldd "$1") || exit 1
drawing_loads=$(ldd "$2") || exit 1

if grep -E "$graphics" <<<"$command_loads"; then
  echo "$1 loads a graphics library"
  exit 1
fi
if grep -E 'libicu' <<<"$command_loads"; then
  echo "$1 loads the library that sorts names, before any name is to be sorted"
  exit 1
fi
if ! grep -qE 'libQt' <<<"$drawing_loads"; then
  echo "$2 loads no graphics library, so the check above proves nothing"
  exit 1
fi
