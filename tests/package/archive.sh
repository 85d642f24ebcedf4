#!/usr/bin/env bash
# Packs the build and looks into the archive: what belongs there is, nothing else, and the program runs from it.
#   archive.sh BUILD_FOLDER CPACK EMULATOR      the last one may be empty
set -euo pipefail

build=$1 cpack=$2 emulator=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "archive.sh: $*" >&2; exit 1; }

(cd "$work" && "$cpack" --config "$build/CPackConfig.cmake" -B "$work/packed" >"$work/log" 2>&1) ||
    { cat "$work/log" >&2; fail "cpack fails"; }
archive=$(find "$work/packed" -maxdepth 1 \( -name '*.deb' -o -name '*.zip' \))
case $archive in
    *.deb)
        dpkg-deb -x "$archive" "$work/tree"
        root=$work/tree/usr
        depends=$(dpkg-deb -f "$archive" Depends)
        [[ $depends == *libc6* && $depends == *libstdc++6* ]] || fail "depends on: $depends"
        dpkg-deb -f "$archive" Package Version Maintainer Description >/dev/null
        wanted="bin/kelmora share/man/man1/kelmora.1 share/bash-completion/completions/kelmora
            share/zsh/vendor-completions/_kelmora share/fish/vendor_completions.d/kelmora.fish"
        ;;
    *.zip)
        mkdir "$work/tree"
        (cd "$work/tree" && "${cpack%cpack}cmake" -E tar xf "$archive")
        root=$(find "$work/tree" -mindepth 1 -maxdepth 1)
        wanted="bin/kelmora.exe bin/Kelmora.dll"
        ;;
    *) fail "cpack made no archive" ;;
esac

for file in $wanted include/kelmora/contract/kelmora.h include/kelmora/contract/video_effect.h \
    share/doc/kelmora/host_author.md; do
    [ -s "$root/$file" ] || find "$root" -path "*/$file" | grep -q . || fail "$file is missing"
done
strange=$(find "$root" -type f | grep -vE '/(kelmora|kelmora\.exe|_kelmora|kelmora\.(fish|1|pc)|Kelmora\.(so|dll))$' |
    grep -vE '/(include/kelmora/contract/[a-z_]*\.h|Kelmora/KelmoraConfig(Version)?\.cmake|doc/[^/]*/[a-z_]*\.md)$' || true)
[ -z "$strange" ] || fail "not expected: $strange"

program=$(find "$root/bin" -name 'kelmora*')
[ "$(${emulator:+"$emulator"} "$program" list | wc -l)" = 10 ] || fail "$program does not find the library"
