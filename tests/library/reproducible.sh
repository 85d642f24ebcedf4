#!/usr/bin/env bash
# Builds the library file from a copy of the sources in another folder and compares: the same bytes.
#   reproducible.sh SOURCE_FOLDER BUILT_FILE CMAKE [CMAKE_ARGUMENTS...]
set -euo pipefail

source=$1
built=$2
cmake=$3
shift 3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/sources"
tar -C "$source" --dereference --exclude=./.git --exclude=./build --exclude=./samples -cf - . | tar -C "$work/sources" -xf -
"$cmake" -S "$work/sources" -B "$work/build" -G Ninja -DKELMORA_TESTS=OFF "$@" >"$work/log"
"$cmake" --build "$work/build" --target kelmora_module >"$work/log" || { cat "$work/log" >&2; exit 1; }
cmp "$built" "$work/build/$(basename "$built")"
