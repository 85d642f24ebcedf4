# TinyXML, linked into the library file.
#
# The packaged archive serves native builds. All others (Windows, 32-bit, sanitizers, fuzzing) compile the
# sources of the same package, patches included, which tools/tinyxml puts into the cache.

if(DEFINED ENV{KELMORA_CACHE})
    set(cache $ENV{KELMORA_CACHE})
elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(cache $ENV{XDG_CACHE_HOME}/kelmora)
else()
    set(cache $ENV{HOME}/.cache/kelmora)
endif()
set(KELMORA_TINYXML_SOURCE ${cache}/tinyxml CACHE PATH "TinyXML source tree")

if(CMAKE_CROSSCOMPILING OR CMAKE_SIZEOF_VOID_P EQUAL 4 OR KELMORA_SANITIZE)
    if(NOT EXISTS ${KELMORA_TINYXML_SOURCE}/tinyxml.cpp)
        message(FATAL_ERROR "No TinyXML in ${KELMORA_TINYXML_SOURCE}: run tools/install sources")
    endif()
    add_library(kelmora_tinyxml STATIC
        ${KELMORA_TINYXML_SOURCE}/tinyxml.cpp
        ${KELMORA_TINYXML_SOURCE}/tinyxmlerror.cpp
        ${KELMORA_TINYXML_SOURCE}/tinyxmlparser.cpp)
    target_include_directories(kelmora_tinyxml SYSTEM INTERFACE ${KELMORA_TINYXML_SOURCE})
    target_compile_options(kelmora_tinyxml PRIVATE -w $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
    target_link_libraries(kelmora_tinyxml PRIVATE kelmora_exactness)
else()
    find_path(KELMORA_TINYXML_HEADER tinyxml.h)
    find_library(KELMORA_TINYXML_ARCHIVE libtinyxml.a)
    mark_as_advanced(KELMORA_TINYXML_HEADER KELMORA_TINYXML_ARCHIVE)
    if(NOT KELMORA_TINYXML_HEADER OR NOT KELMORA_TINYXML_ARCHIVE)
        message(FATAL_ERROR "<tinyxml.h> or libtinyxml.a is missing: install libtinyxml-dev")
    endif()
    add_library(kelmora_tinyxml STATIC IMPORTED)
    set_target_properties(kelmora_tinyxml PROPERTIES
        IMPORTED_LOCATION ${KELMORA_TINYXML_ARCHIVE}
        INTERFACE_INCLUDE_DIRECTORIES ${KELMORA_TINYXML_HEADER})
endif()
