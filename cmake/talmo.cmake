# talmo_module(<folder> SOURCES ... [LIBS ...])
# One static library per folder; the repository root is the include root, so a face
# header is included as "folder/folder.h".
function(talmo_module name)
  cmake_parse_arguments(M "" "" "SOURCES;LIBS" ${ARGN})
  if(M_SOURCES)
    add_library(talmo_${name} STATIC ${M_SOURCES})
    target_include_directories(talmo_${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(talmo_${name} PUBLIC ${M_LIBS})
  else()
    # A folder whose sources have not landed yet: headers only.
    add_library(talmo_${name} INTERFACE)
    target_include_directories(talmo_${name} INTERFACE ${PROJECT_SOURCE_DIR})
    target_link_libraries(talmo_${name} INTERFACE ${M_LIBS})
  endif()
endfunction()

# talmo_test(<module> SOURCES ... [LIBS ...])
# One GoogleTest executable per module; tests are discovered when ctest runs.
function(talmo_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(test_${name} ${T_SOURCES})
  target_link_libraries(test_${name} PRIVATE ${T_LIBS} GTest::gtest_main GTest::gmock)
  target_compile_definitions(test_${name} PRIVATE
    TALMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}" TALMO_BINARY_DIR="${PROJECT_BINARY_DIR}")
  gtest_discover_tests(test_${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "TALMO_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()

# talmo_fuzz(<name> SOURCE file LIBS ...)
# With TALMO_FUZZ a libFuzzer binary; otherwise a replay binary that runs the target over
# every file of fuzz/corpus/<name>/ as an ordinary test, so kept crashers stay fixed.
function(talmo_fuzz name)
  cmake_parse_arguments(F "" "SOURCE" "LIBS" ${ARGN})
  if(TALMO_FUZZ)
    add_executable(fuzz_${name} ${F_SOURCE})
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  else()
    add_executable(fuzz_${name} ${F_SOURCE} ${PROJECT_SOURCE_DIR}/fuzz/replay-main.cpp)
    if(TALMO_TESTS AND EXISTS ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
      add_test(NAME fuzz_replay_${name}
               COMMAND fuzz_${name} ${PROJECT_SOURCE_DIR}/fuzz/corpus/${name})
    endif()
  endif()
  target_link_libraries(fuzz_${name} PRIVATE ${F_LIBS})
endfunction()
