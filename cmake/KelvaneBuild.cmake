# Compiler settings shared by every target, and the three functions that make targets.
# A folder of src/ is one library. It links only what stands below it, so that an arrow in the wrong
# direction fails when the tests of that library are linked.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(KELVANE_CCACHE ccache)
if(KELVANE_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${KELVANE_CCACHE})
endif()

add_library(kelvane_flags INTERFACE)
target_include_directories(kelvane_flags INTERFACE ${CMAKE_SOURCE_DIR}/src)
# No contraction: results with floating point are the same on every machine.
target_compile_options(kelvane_flags INTERFACE
    -Wall -Wextra -Wshadow -Wpedantic -Werror -ffp-contract=off)
target_compile_definitions(kelvane_flags INTERFACE _FILE_OFFSET_BITS=64)
if(KELVANE_SANITIZE)
    target_compile_options(kelvane_flags INTERFACE
        -O1 -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kelvane_flags INTERFACE -fsanitize=address,undefined)
    if(KELVANE_FUZZ)
        target_compile_options(kelvane_flags INTERFACE -fsanitize=fuzzer-no-link)
    endif()
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g1 -DNDEBUG")

# kelvane_library(NAME SOURCES file... [LINKS target...])
function(kelvane_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_link_libraries(${name} PUBLIC ${arg_LINKS} kelvane_flags)
endfunction()

# kelvane_test(NAME [LABEL unit|interop|...] SOURCES file... LINKS target...)
# One GoogleTest program; CTest runs each of its tests by itself.
function(kelvane_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL" "SOURCES;LINKS")
    if(NOT arg_LABEL)
        set(arg_LABEL unit)
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${arg_LINKS} kelvane_flags GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} PROPERTIES LABELS ${arg_LABEL} DISCOVERY_TIMEOUT 60)
endfunction()

# kelvane_fuzz(NAME SOURCES file... LINKS target...): one libFuzzer program.
function(kelvane_fuzz name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_link_libraries(${name} PRIVATE ${arg_LINKS} kelvane_flags)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()

# Release builds of the integer kernels are vectorised; the bytes do not depend on it.
function(kelvane_vectorise name)
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O3>)
endfunction()
