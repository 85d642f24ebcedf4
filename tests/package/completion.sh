#!/usr/bin/env bash
# Completes in bash as a user would, with the words that were typed so far.
#   completion.sh PROGRAM
set -euo pipefail

program=$1

fail() { echo "completion.sh: $*" >&2; exit 1; }

compopt() { said="files"; } # outside of a completion there is nothing to set
complete() { :; }
# shellcheck source=/dev/null
source <("$program" completion bash)

# The answers to the words, as lines.
completed() {
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    said=""
    _kelmora
    if [ ${#COMPREPLY[@]} -gt 0 ]; then
        printf '%s\n' "${COMPREPLY[@]}"
    else
        echo "$said"
    fi
}

expect() {
    local wanted=$1 got
    shift
    got=$(completed "$@")
    [ "$got" = "$wanted" ] || fail "$* gives: $got"
}

expect "gallery" g
expect "--version" --v
expect $'active-camera\nair-brush' render a
expect "active-camera" describe acti
expect "files" render air-brush ""
expect "files" render air-brush in.png -o ""
expect "" render air-brush in.png --progress ""
expect $'argb8\nargb32f' render air-brush in.png --format a
expect 'Touch\ Up' render air-brush in.png --preset T
expect 'Touch Up' render air-brush in.png --preset '"T'
expect $'Reset\\ to\\ None' render "detail-enhancer" in.png --preset R
expect "--progress" render air-brush in.png --prog
expect "exports-present" check --only exp
expect "zsh" completion z
