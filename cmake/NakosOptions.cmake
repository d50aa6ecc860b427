# Warning flags, Qt strictness and sanitizers, carried by an INTERFACE target
# that every target of the project links privately.
add_library(nakos_options INTERFACE)
target_compile_options(nakos_options INTERFACE
    -Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual)
if(NAKOS_WERROR)
    target_compile_options(nakos_options INTERFACE -Werror)
endif()
target_compile_definitions(nakos_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_FOREACH
    NAKOS_VERSION_NUMBER=143)
if(NAKOS_BUILD_FUZZ)
    # Coverage feedback from the libraries, not only from the fuzz targets.
    target_compile_options(nakos_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
    target_link_options(nakos_options INTERFACE -fsanitize=address,undefined)
endif()
if(NAKOS_SANITIZE)
    target_compile_options(nakos_options INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(nakos_options INTERFACE -fsanitize=address,undefined)
endif()

# nakos_add_library(NAME <target> [GUI|WIDGETS] SOURCES ... [LIBS ...])
# Logic libraries link Qt6::Core (and Qt6::Gui with GUI); only WIDGETS
# libraries may link Qt6::Widgets, so a widget include in logic code fails.
function(nakos_add_library name)
    cmake_parse_arguments(ARG "GUI;WIDGETS" "" "SOURCES;LIBS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC Qt6::Core ${ARG_LIBS} PRIVATE nakos_options)
    if(ARG_GUI)
        target_link_libraries(${name} PUBLIC Qt6::Gui)
    endif()
    if(ARG_WIDGETS)
        target_link_libraries(${name} PUBLIC Qt6::Gui Qt6::Widgets)
    endif()
endfunction()
