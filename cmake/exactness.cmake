# The same picture everywhere: one floating-point arithmetic on all targets.

add_library(kelmora_exactness INTERFACE)
target_compile_options(kelmora_exactness INTERFACE
    -ffp-contract=off   # a fused multiply-add rounds once where the others round twice
    -fno-math-errno     # lets rounding become one instruction; changes no value
    -fno-trapping-math) # likewise; exceptions are masked while the library computes

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 loses (double)(float)x where it makes a vector of two of them: the rounding is gone.
    target_compile_options(kelmora_exactness INTERFACE -fno-tree-slp-vectorize)
endif()

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Without these, 32-bit code computes in x87 registers, with excess precision, and a host that aligns
    # its stack to 4 bytes breaks the first 16-byte spill.
    target_compile_options(kelmora_exactness INTERFACE
        -march=pentium4 -msse2 -mfpmath=sse -mstackrealign)
endif()

if(CMAKE_CXX_FLAGS MATCHES "-ffast-math|-Ofast|-funsafe-math")
    message(FATAL_ERROR "Fast-math flags change pictures; build without them")
endif()

# Pixel loops want -O3 in any optimised build: GCC leaves loops over bytes scalar at -O2.
function(kelmora_pixel_code target)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O3>)
endfunction()
