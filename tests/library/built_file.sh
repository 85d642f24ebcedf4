#!/usr/bin/env bash
# Looks at the built library file, or at the archives that it is made of:
#   built_file.sh exports FILE LIST...      exactly the promised names, and the lists say the same
#   built_file.sh imports FILE              modules of the system alone
#   built_file.sh sections FILE             nothing both writable and executable; hardened
#   built_file.sh constructors ARCHIVE...   nothing of ours runs when the file is loaded
#   built_file.sh writable FILE ARCHIVE...  of ours, exactly the variables below
# NM, OBJDUMP and READELF name the tools.
set -euo pipefail

promised='CanUnloadDLLNow
GetEffectsLibrary'

fail() { printf '%s\n' "$*" >&2; exit 1; }

is_windows() { [[ $1 == *.dll ]]; }

# Fails with $1 and the lines of $2 when there are any.
nothing() { [ -z "$2" ] || fail "$1:"$'\n'"$2"; }

exports() {
    local file=$1 listing list found
    if is_windows "$file"; then
        listing=$("$OBJDUMP" -p "$file")
        found=$(awk '/^\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && !NF { exit } on { print $NF }' <<<"$listing")
    else
        listing=$("$NM" -D --defined-only "$file")
        found=$(awk '{ print $NF }' <<<"$listing")
    fi
    [ "$(sort <<<"$found")" = "$promised" ] || fail "$file exports:"$'\n'"$found"
    shift
    for list in "$@"; do
        case $list in
            *.def) found=$(awk '$1 == "EXPORTS" { on = 1; next } on { print $1 }' "$list") ;;
            *.map) found=$(awk '$1 == "global:" { on = 1; next } $1 == "local:" { exit } on { sub(";", ""); print $1 }' "$list") ;;
        esac
        [ "$(sort <<<"$found")" = "$promised" ] || fail "$list lists:"$'\n'"$found"
    done
}

imports() {
    local file=$1 listing needed known
    if is_windows "$file"; then
        listing=$("$OBJDUMP" -p "$file")
        needed=$(awk '/DLL Name:/ { print tolower($3) }' <<<"$listing")
        known='(kernel32|user32|comdlg32|msvcrt)\.dll'
    else
        listing=$("$READELF" -dW "$file")
        needed=$(awk '/\(NEEDED\)/ { gsub(/[][]/, "", $NF); print $NF }' <<<"$listing")
        known='(libc|libm|libgcc_s|libstdc\+\+|ld-linux.*)\.so\.[0-9]+'
    fi
    [ -n "$needed" ] || fail "$file: nothing could be read of it"
    nothing "$file needs more than the system has" "$(grep -vxE "$known" <<<"$needed" || true)"
}

sections() {
    local file=$1 headers segments
    if is_windows "$file"; then
        headers=$("$OBJDUMP" -h "$file")
        # A section's flags stand on the line behind its sizes.
        grep -qw CODE <<<"$headers" || fail "$file: nothing could be read of it"
        nothing "$file: writable code" "$(grep -w CODE <<<"$headers" | grep -vw READONLY || true)"
        headers=$("$OBJDUMP" -p "$file")
        grep -qw DYNAMIC_BASE <<<"$headers" || fail "$file: its place cannot be random"
        grep -qw NX_COMPAT <<<"$headers" || fail "$file: its data may be executed"
    else
        segments=$("$READELF" -lW "$file")
        nothing "$file: writable code" "$(awk '/^ *(LOAD|GNU_STACK)/ && / RWE /' <<<"$segments")"
        grep -q GNU_STACK <<<"$segments" || fail "$file: the stack may be executed"
        grep -q GNU_RELRO <<<"$segments" || fail "$file: its tables stay writable"
        headers=$("$READELF" -dW "$file")
        grep -q NOW <<<"$headers" || fail "$file: functions are looked up late"
        headers=$("$READELF" -sW "$file")
        nothing "$file: could not be freed" "$(awk '$5 == "UNIQUE"' <<<"$headers")"
    fi
}

constructors() {
    local listing
    listing=$("$NM" -A "$@")
    grep -q LiveObjectCount <<<"$listing" || fail "nothing could be read of $*"
    # TinyXML's header starts the runtime's streams in whoever includes it. What they do at load is nothing of ours.
    nothing 'runs at load' "$(grep '_GLOBAL__sub_I' <<<"$listing" | grep -v ':preset_file\.cpp\.' || true)"
}

# All that objects of several threads share besides code. Each is atomic, locked, or written before the first object.
shared='kelmora::(anonymous namespace)::g_shelf
kelmora::(anonymous namespace)::g_variant
kelmora::(anonymous namespace)::liveObjectCount
kelmora::platform::(anonymous namespace)::PartPath::counter'
# g_shelf          blocks kept between frames, behind a lock of its own
# g_variant        the instruction set in use: an atomic that every thread sets to the same number
# liveObjectCount  what CanUnloadDLLNow asks: an atomic
# counter          sets names of files that are being written apart: an atomic
# g_ownModule      the file's own handle, written once as it is loaded (Windows; elsewhere the system is asked)

writable() {
    local file=$1 found expected
    shift
    if is_windows "$file"; then # whose file has no names left
        found=$("$NM" -C "$@" | sed -nE 's/^[0-9a-f]+ [bBdD] (kelmora::.*)$/\1/p')
        expected=$(sort <<<"$shared"$'\n''kelmora::platform::(anonymous namespace)::g_ownModule')
    else
        found=$("$OBJDUMP" -tC "$file" | sed -nE 's/^.* \.t?(data|bss)[[:space:]]+[0-9a-f]+ +(kelmora::.*)$/\2/p')
        expected=$(sort <<<"$shared")
    fi
    found=$(sed -E 's/PartPath\(.*\)/PartPath/' <<<"$found" | sort)
    [ "$found" = "$expected" ] || fail "$file: shared by all threads:"$'\n'"$found"
}

what=$1
shift
"$what" "$@"
