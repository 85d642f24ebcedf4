# Header-only libraries of the distribution, for every target alike.
#
# They lie among all the other headers of this machine. A cross build must not see those, so a folder of
# links to these three alone becomes the include directory.

set(KELMORA_HEADERS ${CMAKE_BINARY_DIR}/header_libraries)
file(MAKE_DIRECTORY ${KELMORA_HEADERS})

# kelmora_link_headers(FOLDER HEADER PACKAGE): <FOLDER/HEADER> comes from the Debian package PACKAGE.
function(kelmora_link_headers folder header package)
    find_path(KELMORA_${folder}_ROOT ${folder}/${header}
        PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH)
    mark_as_advanced(KELMORA_${folder}_ROOT)
    if(NOT KELMORA_${folder}_ROOT)
        message(FATAL_ERROR "<${folder}/${header}> is missing: install ${package}")
    endif()
    if(NOT EXISTS ${KELMORA_HEADERS}/${folder}/${header})
        file(CREATE_LINK ${KELMORA_${folder}_ROOT}/${folder} ${KELMORA_HEADERS}/${folder}
            RESULT failure SYMBOLIC)
        if(failure) # a file system without links
            file(COPY ${KELMORA_${folder}_ROOT}/${folder} DESTINATION ${KELMORA_HEADERS})
        endif()
    endif()
endfunction()

kelmora_link_headers(CLI CLI.hpp libcli11-dev)
kelmora_link_headers(nlohmann json.hpp nlohmann-json3-dev)
kelmora_link_headers(stb stb_image.h libstb-dev)

add_library(kelmora_header_libraries INTERFACE)
target_include_directories(kelmora_header_libraries SYSTEM INTERFACE ${KELMORA_HEADERS})
