# GoogleTest from the distribution's sources, so that every target (sanitized, 32-bit, Windows) gets a
# build of its own.

set(KELMORA_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest source tree")
set(INSTALL_GTEST OFF CACHE INTERNAL "")
add_subdirectory(${KELMORA_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

include(GoogleTest)

# kelmora_test(NAME SOURCES ... LIBRARIES ...): one test program. Natively each of its cases is a ctest
# entry; for Windows the whole program is one entry, since starting Wine costs more than most cases.
function(kelmora_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE
        ${TEST_LIBRARIES} kelmora_test_support GTest::gtest_main kelmora_warnings kelmora_exactness)
    # Most of a build's time goes into the tests, which need no optimisation of their own.
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        # GCC then takes the room within a string for all there is.
        target_compile_options(${name} PRIVATE
            -O1 "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>")
    endif()
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <algorithm> <cmath> <string> <vector>)
    if(CMAKE_CROSSCOMPILING)
        add_test(NAME ${name} COMMAND ${name})
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600)
    endif()
endfunction()
