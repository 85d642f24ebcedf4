# Shared by the bash programs of this folder: where things are, and how to speak.

repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cache=${KELMORA_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/kelmora}

say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }
die() { say "$*"; exit 1; }

# Runs a command quietly; its output appears only when it fails.
quietly() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1 </dev/null; then
        tail -n 30 "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}
