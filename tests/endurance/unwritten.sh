#!/usr/bin/env bash
# Renders twice, with fresh memory that holds one value and another: unwritten.sh RENDER_SWEEP
# No picture may depend on what an allocation happened to contain. glibc fills the blocks, also those that it has
# given before if it keeps none at hand.
set -euo pipefail

pictures() {
    GLIBC_TUNABLES=glibc.malloc.tcache_count=0:glibc.malloc.perturb=$2 "$1" --every-preset
}

first=$(pictures "$1" 90)
second=$(pictures "$1" 254)
echo "$first"
[ "$first" = "$second" ] || { echo "and with other memory:"$'\n'"$second"; exit 1; }
