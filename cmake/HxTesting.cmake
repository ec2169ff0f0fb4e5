include(GoogleTest)

# hx_test(NAME SOURCES... LIBS...) builds one GoogleTest executable and
# registers every test in it with CTest. Its main (hx::test_main) runs each test process in a
# temporary directory of its own; hx::test_support gives the allocation counter and scoped
# temporary directories.
function(hx_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} hx::test_main hx::options)
  target_compile_definitions(${name} PRIVATE
    HX_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
    HX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "HX_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()
