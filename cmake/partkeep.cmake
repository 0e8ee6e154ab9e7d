# The project's own target functions: one place for language level, warnings and sanitizers.

find_program(PARTKEEP_CCACHE ccache)
if(PARTKEEP_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${PARTKEEP_CCACHE}")
endif()

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(partkeep_settings_for_all INTERFACE)
target_compile_features(partkeep_settings_for_all INTERFACE cxx_std_20)
target_include_directories(partkeep_settings_for_all INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_options(partkeep_settings_for_all INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # This release sees overlapping copies in std::string assignments that it has inlined itself (GCC bug 105651).
  target_compile_options(partkeep_settings_for_all INTERFACE -Wno-restrict)
endif()
if(PARTKEEP_WERROR)
  target_compile_options(partkeep_settings_for_all INTERFACE -Werror)
endif()
if(PARTKEEP_SANITIZE)
  target_compile_options(partkeep_settings_for_all INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(partkeep_settings_for_all INTERFACE -fsanitize=address,undefined)
endif()
if(PARTKEEP_COVERAGE) # in place of the fuzzer's own counters, whose runtime only its targets have
  # The counters stand in the file all the time, so that a process that is killed has told what it ran too.
  target_compile_options(partkeep_settings_for_all INTERFACE
    -fprofile-instr-generate -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
  target_link_options(partkeep_settings_for_all INTERFACE -fprofile-instr-generate)
elseif(PARTKEEP_FUZZ)
  target_compile_options(partkeep_settings_for_all INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(WIN32)
  target_compile_definitions(partkeep_settings_for_all INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
  target_link_options(partkeep_settings_for_all INTERFACE -static -static-libgcc -static-libstdc++)
endif()

# partkeep_library(<name> SOURCES <files> [LINK <targets>]): a static library of the component.
function(partkeep_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC partkeep_settings_for_all ${arg_LINK})
endfunction()

# partkeep_test(<name> SOURCES <files> [LINK <targets>] [LABELS <labels>] [UNDER <program>]): one test program, one
# CTest entry. UNDER names what runs it; its result 77 means skipped.
function(partkeep_test name)
  cmake_parse_arguments(arg "" "UNDER" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE partkeep_settings_for_all ${arg_LINK} ${PARTKEEP_GTEST})
  if(WIN32)
    # The string table, which is a part of the component only on Windows.
    target_link_libraries(${name} PRIVATE partkeep_test_resources)
  endif()
  if(arg_UNDER)
    add_test(NAME ${name} COMMAND "${arg_UNDER}" $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77)
  else()
    add_test(NAME ${name} COMMAND ${name})
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT 900 LABELS "${arg_LABELS}")
  if(PARTKEEP_SANITIZE)
    set_tests_properties(${name} PROPERTIES ENVIRONMENT
      "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/leaks.supp:print_suppressions=0")
  endif()
endfunction()

# partkeep_fuzz(<name> SOURCES <files> [LINK <targets>]): one libFuzzer program.
function(partkeep_fuzz name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE partkeep_settings_for_all ${arg_LINK})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()

# partkeep_benchmark(<name> SOURCES <files> [LINK <targets>]): one Google Benchmark program.
function(partkeep_benchmark name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE partkeep_settings_for_all ${arg_LINK} benchmark::benchmark)
endfunction()
