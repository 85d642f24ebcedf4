# Warnings for all of our own code. They are errors: a warning that may stay is switched off here, with
# its reason, or at the line.

option(KELMORA_WERROR "Treat warnings as errors" ON)

string(COMPARE EQUAL "${KELMORA_SANITIZE}" memory shadowed)
add_library(kelmora_warnings INTERFACE)
target_compile_options(kelmora_warnings INTERFACE
    -Wall -Wextra -Wconversion -Wdouble-promotion -Wshadow -Wformat=2 -Wnull-dereference
    # A host's thread may have 64 KiB of stack. Unoptimised code keeps every temporary, MemorySanitizer a shadow of
    # each.
    $<$<NOT:$<OR:$<CONFIG:Debug>,$<BOOL:${shadowed}>>>:-Wframe-larger-than=8192>
    $<$<BOOL:${KELMORA_WERROR}>:-Werror>)

# Vectors never cross a function that is not inlined, so how they would be passed does not matter.
target_compile_options(kelmora_warnings INTERFACE -Wno-psabi)
