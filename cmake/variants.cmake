# Sources that are compiled once per instruction set. Every variant gives the same results; the library picks
# one when it runs (image/primitives/cpu_variant.h). 32-bit builds have the baseline alone: there the newer
# registers cannot be spilled safely on a stack that a host aligned to 4 bytes.

include_guard(GLOBAL)

if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 8 AND NOT WIN32)
    set(KELMORA_AVX_VARIANTS ON CACHE INTERNAL "")
else()
    set(KELMORA_AVX_VARIANTS OFF CACHE INTERNAL "")
endif()

add_library(kelmora_variants INTERFACE)
if(KELMORA_AVX_VARIANTS)
    target_compile_definitions(kelmora_variants INTERFACE KELMORA_HAVE_AVX_VARIANTS)
endif()

# kelmora_variant_sources(TARGET SOURCE...): adds each source to the target, once per variant.
function(kelmora_variant_sources target)
    set(flags_baseline "")
    set(flags_avx2 -mavx2)
    set(flags_avx512 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mprefer-vector-width=512)
    set(variants baseline)
    if(KELMORA_AVX_VARIANTS)
        list(APPEND variants avx2 avx512)
    endif()
    target_link_libraries(${target} PUBLIC kelmora_variants)
    foreach(variant IN LISTS variants)
        set(objects ${target}_${variant})
        add_library(${objects} OBJECT ${ARGN})
        target_compile_definitions(${objects} PRIVATE KELMORA_VARIANT=${variant})
        target_compile_options(${objects} PRIVATE ${flags_${variant}})
        if(variant STREQUAL "avx512" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # GCC 12 sees its own intrinsics' "undefined" operands as uninitialised variables.
            target_compile_options(${objects} PRIVATE -Wno-uninitialized -Wno-maybe-uninitialized)
        endif()
        kelmora_pixel_code(${objects})
        target_include_directories(${objects} PRIVATE ${CMAKE_SOURCE_DIR})
        target_link_libraries(${objects} PRIVATE kelmora_contract kelmora_warnings kelmora_exactness)
        target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
    endforeach()
endfunction()
