# One place for the language standard, the warnings and the sanitizers; every target links spares_options.
add_library(spares_options INTERFACE)
target_compile_features(spares_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
target_compile_options(spares_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
target_compile_definitions(spares_options INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
    $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
target_include_directories(spares_options INTERFACE ${PROJECT_SOURCE_DIR})

# Damaged files are read here: what is handed out checks its buffers and cannot have its jump tables overwritten.
target_compile_options(spares_options INTERFACE $<$<CONFIG:RelWithDebInfo>:-fstack-protector-strong>)
target_compile_definitions(spares_options INTERFACE $<$<CONFIG:RelWithDebInfo>:_FORTIFY_SOURCE=2>)
target_link_options(spares_options INTERFACE -Wl,-z,relro,-z,now)

option(SPARES_SANITIZE "Build everything with the address and undefined behaviour sanitizers" OFF)
if(SPARES_SANITIZE)
    target_compile_options(spares_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer)
    target_link_options(spares_options INTERFACE -fsanitize=address,undefined)
endif()

option(SPARES_COVERAGE "Count the lines that the tests run through" OFF)
if(SPARES_COVERAGE)
    target_compile_options(spares_options INTERFACE --coverage)
    target_link_options(spares_options INTERFACE --coverage)
endif()

# For libFuzzer, which comes with Clang only. GCC judges the warnings.
option(SPARES_FUZZ "Build the fuzz targets of tests/fuzz and what they need, nothing else" OFF)
if(SPARES_FUZZ)
    target_compile_options(spares_options INTERFACE -O1 -g -Wno-error -Wno-sign-conversion
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_definitions(spares_options INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(spares_options INTERFACE -fsanitize=address,undefined)
endif()

# A compiler cache, where there is one, keeps the second build short.
find_program(SPARES_CCACHE ccache)
if(SPARES_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${SPARES_CCACHE})
endif()

# Qt 6.4's moc cannot read GCC 12's <concepts>; with its include guard set it passes over that header.
set(CMAKE_AUTOMOC_MOC_OPTIONS -D_GLIBCXX_CONCEPTS)

# spares_library(NAME SOURCES... [LINK TARGETS...]): a static library with the common options.
function(spares_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC spares_options ${ARG_LINK})
endfunction()

# spares_test(NAME SOURCES... [LINK TARGETS...]): a Qt Test program, run by ctest with a fixed environment.
function(spares_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/bin)
    target_link_libraries(${name} PRIVATE spares_options Qt6::Test ${ARG_LINK})
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC;LC_ALL=C.UTF-8;SPARES_FIXTURES=${PROJECT_SOURCE_DIR}/../shared/fixtures;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/leaks_of_others.txt")
endfunction()
