# KELMORA_SANITIZE: a list for -fsanitize=, empty for none. A finding ends the program.

set(KELMORA_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")

if(KELMORA_SANITIZE)
    add_compile_options(-fsanitize=${KELMORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${KELMORA_SANITIZE})
endif()

# The fuzzer steers by the coverage of the code under test: of the storeys, not of what is added after
# kelmora_end_coverage().
if(KELMORA_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

macro(kelmora_end_coverage)
    get_directory_property(options COMPILE_OPTIONS)
    list(REMOVE_ITEM options -fsanitize=fuzzer-no-link)
    set_directory_properties(PROPERTIES COMPILE_OPTIONS "${options}")
endmacro()
