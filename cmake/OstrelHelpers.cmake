# Helpers that keep each target's declaration to one line.

# ostrel_add_test(Name SOURCE file [LIBS ...]): a GoogleTest program, run by CTest.
function(ostrel_add_test name)
  cmake_parse_arguments(ARG "" "SOURCE" "LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCE})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main GTest::gmock)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
                       PROPERTIES ENVIRONMENT "OSTREL_CORPUS=${OSTREL_CORPUS_DIR}")
endfunction()

# ostrel_add_fuzzer(name SOURCE file LIBS ...): with OSTREL_FUZZ a libFuzzer
# target; otherwise a replay program that runs the target's seed inputs (and
# every kept crash input) as an ordinary test.
function(ostrel_add_fuzzer name)
  cmake_parse_arguments(ARG "" "SOURCE" "LIBS" ${ARGN})
  set(target fuzz_${name})
  if(OSTREL_FUZZ)
    add_executable(${target} ${ARG_SOURCE})
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  else()
    add_executable(${target} ${ARG_SOURCE} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
    if(OSTREL_TESTS)
      add_test(NAME fuzz_replay.${name}
               COMMAND ${target} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    endif()
  endif()
  target_link_libraries(${target} PRIVATE ${ARG_LIBS})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
endfunction()
