# How targets are made here: one static library a layer, one test program a folder.

# Where and when every test runs, whoever runs it: a zone with summer time, a Monday, nobody's own settings.
set(ORLOCAL_TEST_ENVIRONMENT
    "TZ=Europe/Berlin;LANG=C.UTF-8;LC_ALL=C.UTF-8;ORLOCAL_NOW=2026-11-02T08:00:00Z;ORLOCAL_SETTINGS=")

add_library(orlocal_options INTERFACE)
target_include_directories(orlocal_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(
  orlocal_options
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wnon-virtual-dtor
            -Wold-style-cast
            -Woverloaded-virtual
            -Wconversion
            $<$<BOOL:${ORLOCAL_WERROR}>:-Werror>)
if(ORLOCAL_SANITIZE)
  target_compile_options(orlocal_options INTERFACE -fsanitize=${ORLOCAL_SANITIZE} -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
  target_link_options(orlocal_options INTERFACE -fsanitize=${ORLOCAL_SANITIZE})
endif()

# In builds that join sources, what a source keeps to itself lies in no header all the same.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(orlocal_options INTERFACE -Wno-subobject-linkage)
endif()

# libFuzzer sees only what is instrumented: the layers as well as the targets, but for those that no target calls.
set(ORLOCAL_FUZZED ON)
if(ORLOCAL_FUZZ)
  target_compile_options(orlocal_options
                         INTERFACE $<$<BOOL:$<TARGET_PROPERTY:ORLOCAL_FUZZED>>:-fsanitize=fuzzer-no-link>)
endif()

# orlocal_layer(NAME [SOURCES file…] [USES target…]): the layer's library; without sources its headers.
function(orlocal_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;USES" ${ARGN})
  if(NOT LAYER_SOURCES)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE orlocal_options ${LAYER_USES})
    return()
  endif()
  add_library(${name} STATIC ${LAYER_SOURCES})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                           VISIBILITY_INLINES_HIDDEN ON ORLOCAL_FUZZED ${ORLOCAL_FUZZED})
  target_link_libraries(${name} PUBLIC orlocal_options ${LAYER_USES})
endfunction()

# What is tested is optimised; the tests themselves need not be.
set(ORLOCAL_TEST_OPTIONS -O0)

# orlocal_test(NAME SOURCES file… USES target…): a test program and its cases. Zone, clock and language are pinned.
function(orlocal_test name)
  cmake_parse_arguments(TEST "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE orlocal_options ${TEST_USES} GTest::gmock GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM orlocal_test_headers)
  target_compile_options(${name} PRIVATE ${ORLOCAL_TEST_OPTIONS})
  target_compile_definitions(${name} PRIVATE ORLOCAL_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}")
  set_target_properties(${name} PROPERTIES UNITY_BUILD_BATCH_SIZE 12)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT "${ORLOCAL_TEST_ENVIRONMENT}")
endfunction()

# orlocal_about_threads(NAME): the test is labelled so, and built by the target `threads_tests`: what the thread sanitizer
# is for.
function(orlocal_about_threads name)
  set_tests_properties(${name} PROPERTIES LABELS threads)
  add_dependencies(threads_tests ${name})
endfunction()
