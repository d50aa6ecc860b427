# Warning flags, Qt strictness and sanitizers, carried by an INTERFACE target
# that every target of the project links privately.
add_library(nakos_options INTERFACE)
target_compile_options(nakos_options INTERFACE
    -Wall -Wextra -Wnon-virtual-dtor -Woverloaded-virtual)
if(NAKOS_WERROR)
    target_compile_options(nakos_options INTERFACE -Werror)
endif()
target_compile_definitions(nakos_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_FOREACH)
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

# A library under src/ exposes only the headers of its own folder, under
# their path below src/ ("files/datafile.h"): they are linked into an include
# folder of the target's own, so code can include a header only from the
# libraries it links. Elsewhere (tools/) the folder itself is exposed.
function(nakos_expose_headers name)
    file(RELATIVE_PATH _rel ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
    if(_rel MATCHES "^\\.\\.")
        target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
        return()
    endif()
    set(_inc ${PROJECT_BINARY_DIR}/include/${name})
    file(REMOVE_RECURSE ${_inc})
    file(MAKE_DIRECTORY ${_inc}/${_rel})
    file(GLOB _headers CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}
         ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    foreach(_h IN LISTS _headers)
        file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${_h} ${_inc}/${_rel}/${_h} SYMBOLIC)
    endforeach()
    target_include_directories(${name} PUBLIC ${_inc})
endfunction()

# nakos_add_library(NAME <target> [GUI|WIDGETS] SOURCES ... [LIBS ...])
# Logic libraries link Qt6::Core (and Qt6::Gui with GUI); only WIDGETS
# libraries may link Qt6::Widgets, so a widget include in logic code fails.
function(nakos_add_library name)
    cmake_parse_arguments(ARG "GUI;WIDGETS" "" "SOURCES;LIBS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    nakos_expose_headers(${name})
    target_link_libraries(${name} PUBLIC Qt6::Core ${ARG_LIBS} PRIVATE nakos_options)
    if(ARG_GUI)
        target_link_libraries(${name} PUBLIC Qt6::Gui)
    endif()
    if(ARG_WIDGETS)
        target_link_libraries(${name} PUBLIC Qt6::Gui Qt6::Widgets)
    endif()
endfunction()
