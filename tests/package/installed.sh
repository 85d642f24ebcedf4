#!/usr/bin/env bash
# Installs the build, moves the installation, and builds the host of docs/host_author.md against it, with CMake and
# with pkg-config. It must list all effects and render a frame.
#   installed.sh SOURCE_FOLDER BUILD_FOLDER CMAKE CXX TOOLCHAIN EMULATOR      the last two may be empty
set -euo pipefail

source=$1 build=$2 cmake=$3 cxx=$4 toolchain=$5 emulator=$6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "installed.sh: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$work/first" >"$work/log" || { cat "$work/log" >&2; exit 1; }
mv "$work/first" "$work/moved"
sed -n '/^## The whole program/,/^## From here/{/^```cpp$/,/^```$/{/^```/!p}}' "$source/docs/host_author.md" \
    >"$work/small_host.cpp"

# Runs a host with the library file $2.
run() {
    (cd "$work" && rm -f picture.ppm && ${emulator:+"$emulator"} "$1" "$2" | tr -d '\r' >said) || fail "$1 fails"
    for name in "Larkvee Kelmora" "100  3D Confetti" "101  3D Pizza Boxes" "102  Color Melt" "103  Paper Collage" \
        "104  Smear" "105  Active Camera" "106  Air Brush" "107  Crop Borders" "108  Detail Enhancer" \
        "109  Water Color"; do
        grep -qx "$name" "$work/said" || fail "$1 does not know $name"
    done
    [ "$(head -c 15 "$work/picture.ppm")" = "P6 320 240 255" ] || fail "$1 wrote no picture"
    [ "$(stat -c %s "$work/picture.ppm")" = $((15 + 320 * 240 * 3)) ] || fail "$1 wrote half a picture"
    # Half-way there is red left, and blue already.
    tail -c +16 "$work/picture.ppm" | od -An -v -tu1 -w3 | sort | uniq -c | sort -rn >"$work/colours"
    grep -q ' 0   0 255$' "$work/colours" || fail "the second picture is not seen"
    grep -q ' 255   0   0$' "$work/colours" || fail "the first picture is not seen"
}

config=$(dirname "$(find "$work/moved" -name KelmoraConfig.cmake)")
compiler=-DCMAKE_CXX_COMPILER=$cxx
[ -z "$toolchain" ] || compiler=-DCMAKE_TOOLCHAIN_FILE=$toolchain
"$cmake" -S "$source/tests/package/small_host" -B "$work/cmake" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DSMALL_HOST_SOURCE="$work/small_host.cpp" -DKelmora_DIR="$config" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" \
    "$compiler" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "the host does not configure"; }
"$cmake" --build "$work/cmake" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "the host does not build"; }
module=$(cat "$work/cmake/module")
[[ $module == "$work/moved/"* ]] || fail "find_package gives $module"
run "$(find "$work/cmake" -maxdepth 1 -name 'small_host*' -type f)" "$module"

if [ -n "$toolchain" ]; then
    exit # pkg-config and the shell's files are Linux's own
fi

PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name kelmora.pc)")
export PKG_CONFIG_PATH
read -r -a flags < <(pkg-config --cflags --libs kelmora)
"$cxx" -std=c++20 "$work/small_host.cpp" -o "$work/by_hand" "${flags[@]}"
run "$work/by_hand" "$(pkg-config --variable=module kelmora)"

[ "$("$work/moved/bin/kelmora" list | wc -l)" = 10 ] || fail "kelmora does not find the library"
grep -q '^\.TH KELMORA 1' "$work/moved/share/man/man1/kelmora.1" || fail "there is no manual page"
