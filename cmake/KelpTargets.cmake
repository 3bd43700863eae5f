# How every target of Kelp is compiled, and the two kinds of target there are:
# kelp_library(folder ...) for a folder of src/ and kelp_test(name ...) for a test.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(kelp-flags INTERFACE)
target_compile_options(kelp-flags INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor
    -Wno-missing-field-initializers # members have defaults
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>) # g++ 12 suspects every std::optional
if(KELP_WERROR)
    target_compile_options(kelp-flags INTERFACE -Werror)
endif()
target_compile_definitions(kelp-flags INTERFACE
    QT_NO_KEYWORDS QT_NO_FOREACH QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_JAVA_STYLE_ITERATORS QT_STRICT_ITERATORS)
target_include_directories(kelp-flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
if(KELP_SANITIZE)
    target_compile_options(kelp-flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(kelp-flags INTERFACE -fsanitize=address,undefined)
endif()
if(KELP_FUZZ)
    target_compile_options(kelp-flags INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(kelp-flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# kelp_library(<folder> SOURCES <file>... [USES <library>...])
# Builds src/<folder> as the static library kelp-<folder>. USES are its public dependencies.
function(kelp_library folder)
    cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
    add_library(kelp-${folder} STATIC ${ARG_SOURCES})
    target_link_libraries(kelp-${folder} PUBLIC kelp-flags ${ARG_USES})
endfunction()

# The environment of a unit test: no display, one zone, one locale, no user's folders.
set(KELP_TEST_ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen" "TZ=UTC" "LC_ALL=C.UTF-8" "QT_LOGGING_RULES=kelp.*=false"
    "HOME=${CMAKE_BINARY_DIR}/test-home" "XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-home/config"
    "XDG_DATA_HOME=${CMAKE_BINARY_DIR}/test-home/data" "XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/test-home/run"
    "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent" "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent"
    "ASAN_OPTIONS=detect_leaks=1" "UBSAN_OPTIONS=print_stacktrace=1"
    "KELP_TEST_DATA=${CMAKE_SOURCE_DIR}/tests/data" "KELP_BINARY_DIR=${CMAKE_BINARY_DIR}")

# kelp_test(<folder>/<tst_Type> [SOURCES <file>...] [USES <library>...] [TIMEOUT <seconds>])
# Builds tests/<folder>/<tst_Type>.cpp and registers it with ctest under the label of its folder.
function(kelp_test path)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;USES" ${ARGN})
    get_filename_component(name ${path} NAME)
    get_filename_component(folder ${path} DIRECTORY)
    add_executable(${name} ${path}.cpp ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE kelp-flags Qt6::Test ${ARG_USES})
    add_test(NAME ${folder}.${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${folder}.${name} PROPERTIES LABELS ${folder} TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "${KELP_TEST_ENVIRONMENT}")
endfunction()
