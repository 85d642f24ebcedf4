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

# The sanitizers of Clang 14 want their shadow at fixed places, which much randomness can occupy. Prints the command
# that runs one without.
without_randomness() {
    [ "$(cat /proc/sys/vm/mmap_rnd_bits 2>/dev/null || echo 28)" -le 28 ] || echo "setarch -R"
}

# What programs of a sanitizer are told: a finding ends them, and reports have names and lines.
sanitizer_settings() {
    export ASAN_OPTIONS=allocator_may_return_null=1:detect_stack_use_after_return=1:strict_string_checks=1
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
    export TSAN_OPTIONS=halt_on_error=1:allocator_may_return_null=1
    local symbolizer=/usr/lib/llvm-14/bin/llvm-symbolizer
    [ ! -x $symbolizer ] || export {ASAN,UBSAN,TSAN,MSAN}_SYMBOLIZER_PATH=$symbolizer
}
