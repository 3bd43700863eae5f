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
    # What ccache has to overlook in order to work with precompiled headers.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE_PROGRAM})
endif()

add_library(kelp-flags INTERFACE)
# Some libraries ask for threads, and a precompiled header is only for those who are compiled alike.
target_compile_options(kelp-flags INTERFACE -pthread)
target_compile_options(kelp-flags INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor
    -Wno-missing-field-initializers # members have defaults
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>) # g++ 12 suspects every std::optional
if(CCACHE_PROGRAM)
    target_compile_options(kelp-flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()
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

# Qt's and the standard library's headers, parsed once: they are most of what a compiler reads.
function(kelp_headers name)
    file(WRITE ${CMAKE_BINARY_DIR}/${name}.cpp "")
    add_library(${name} STATIC ${CMAKE_BINARY_DIR}/${name}.cpp)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
    target_link_libraries(${name} PRIVATE kelp-flags Qt6::Widgets Qt6::Network ${ARGN})
endfunction()
kelp_headers(kelp-headers)
target_precompile_headers(kelp-headers PRIVATE
    <QHash> <QImage> <QJsonObject> <QObject> <QPainter> <QPixmap> <QPointer> <QString> <QStringList> <QUrl>
    <QVariantAnimation> <QWidget> <algorithm> <cmath> <functional> <memory> <optional> <utility> <variant> <vector>)
# kelp_library(<folder> [WITHOUT_WIDGETS] SOURCES <file>... [USES <library>...])
# Builds src/<folder> as the static library kelp-<folder>. USES are its public dependencies; WITHOUT_WIDGETS, when Qt's
# are not among them.
function(kelp_library folder)
    cmake_parse_arguments(ARG "WITHOUT_WIDGETS" "" "SOURCES;USES" ${ARGN})
    add_library(kelp-${folder} STATIC ${ARG_SOURCES})
    target_link_libraries(kelp-${folder} PUBLIC kelp-flags ${ARG_USES})
    if(NOT ARG_WITHOUT_WIDGETS)
        target_precompile_headers(kelp-${folder} REUSE_FROM kelp-headers)
    endif()
endfunction()

# kelp_wayland_protocol(<xml>)
# Builds the library kelp-wayland-protocols with the C code and the header <name>.h of the protocol described there.
function(kelp_wayland_protocol xml)
    get_filename_component(name ${xml} NAME_WE)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/wayland)
    set(source ${CMAKE_CURRENT_SOURCE_DIR}/${xml})
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(OUTPUT ${folder}/${name}.c ${folder}/${name}.h DEPENDS ${source}
        COMMAND ${WAYLAND_SCANNER} private-code ${source} ${folder}/${name}.c
        COMMAND ${WAYLAND_SCANNER} client-header ${source} ${folder}/${name}.h)
    add_library(kelp-wayland-protocols STATIC ${folder}/${name}.c ${folder}/${name}.h)
    set_target_properties(kelp-wayland-protocols PROPERTIES AUTOMOC OFF AUTORCC OFF)
    target_include_directories(kelp-wayland-protocols SYSTEM PUBLIC ${folder})
    target_link_libraries(kelp-wayland-protocols PUBLIC PkgConfig::WAYLAND)
endfunction()

# The environment of a unit test: no display, one zone, one locale, no user's folders. Clang's runtime takes blocks of
# thread-local memory that begin 16 bytes into a page for those of an old C library, reads where they are from the bytes
# before, and LeakSanitizer crashes there; they come from malloc, and are looked through as such.
set(KELP_TEST_ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen" "TZ=UTC" "LC_ALL=C.UTF-8" "QT_LOGGING_RULES=kelp.*=false"
    "HOME=${CMAKE_BINARY_DIR}/test-home" "XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-home/config"
    "XDG_DATA_HOME=${CMAKE_BINARY_DIR}/test-home/data" "XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/test-home/run"
    "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent" "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent"
    "ASAN_OPTIONS=detect_leaks=1:intercept_tls_get_addr=0" "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/leaks.txt:print_suppressions=0" "UBSAN_OPTIONS=print_stacktrace=1"
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
    target_link_libraries(${name} PRIVATE kelp-flags Qt6::Test Qt6::Widgets Qt6::Network ${ARG_USES})
    target_precompile_headers(${name} REUSE_FROM kelp-test-headers)
    add_test(NAME ${folder}.${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${folder}.${name} PROPERTIES LABELS ${folder} TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "${KELP_TEST_ENVIRONMENT}")
endfunction()

# kelp_test_again(<folder>/<tst_Type> <variant> [SLOW] ENVIRONMENT <name=value>...)
# Registers a test once more under the name of a variant, with more in its environment. SLOW ones run with --all only.
function(kelp_test_again path variant)
    cmake_parse_arguments(ARG "SLOW" "" "ENVIRONMENT" ${ARGN})
    get_filename_component(type ${path} NAME)
    get_filename_component(folder ${path} DIRECTORY)
    set(name ${folder}.${type}.${variant})
    set(labels ${folder})
    if(ARG_SLOW)
        list(APPEND labels slow)
    endif()
    add_test(NAME ${name} COMMAND ${type})
    set_tests_properties(${name} PROPERTIES LABELS "${labels}" TIMEOUT 300
        ENVIRONMENT "${KELP_TEST_ENVIRONMENT};${ARG_ENVIRONMENT}")
endfunction()
