# nakos_add_test(<name> SOURCES ... LIBS ...)
# One Qt Test executable per library or class, run headless by CTest.
function(nakos_add_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE Qt6::Test ${ARG_LIBS} nakos_options)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE
        NAKOS_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data"
        NAKOS_BINARY_DIR="${PROJECT_BINARY_DIR}")
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;NAKOS_TEST_RUN=1;ASAN_OPTIONS=detect_leaks=0")
endfunction()
