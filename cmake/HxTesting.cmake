include(GoogleTest)

# hx_test(NAME SOURCES... LIBS...) builds one GoogleTest executable and
# registers every test in it with CTest.
function(hx_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main hx::options)
  target_compile_definitions(${name} PRIVATE
    HX_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
    HX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "HX_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()
