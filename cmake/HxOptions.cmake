# Flags for the project's own targets. hx::options is linked PRIVATE by every target built here,
# so warnings, -Werror and the sanitizers never reach a host that links one of the libraries.
add_library(hx_options INTERFACE)
add_library(hx::options ALIAS hx_options)
target_compile_features(hx_options INTERFACE cxx_std_17)
# Tools, tests and benchmarks include their own helpers from the repository root
# ("tools/lib/HxRecord.h", "bench/HxAllocationCounter.h").
target_include_directories(hx_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(hx_options INTERFACE -Wall -Wextra -Wshadow -pedantic)
if(HX_WARNINGS_AS_ERRORS)
  target_compile_options(hx_options INTERFACE -Werror)
endif()
if(HX_SANITIZE)
  target_compile_options(hx_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(hx_options INTERFACE -fsanitize=address,undefined)
endif()
# Fuzzing: every target gets libFuzzer's coverage instrumentation and the sanitizers; the fuzz
# targets themselves link libFuzzer (tests/fuzz).
if(HX_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "HX_BUILD_FUZZERS needs clang++ (CMAKE_CXX_COMPILER=clang++)")
  endif()
  target_compile_options(hx_options INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(hx_options INTERFACE -fsanitize=address,undefined)
endif()

# The include root a host sees in the build tree: the public layers only, laid out as under
# <prefix>/include/hxSimulationAnalysis once installed. Links, not copies, so edits show at once.
set(HX_BUILD_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
set(HX_INSTALL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/hxSimulationAnalysis)
file(MAKE_DIRECTORY ${HX_BUILD_INCLUDE_DIR})
foreach(layer framework simulation analysis)
  file(REMOVE ${HX_BUILD_INCLUDE_DIR}/${layer})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${layer} ${HX_BUILD_INCLUDE_DIR}/${layer} SYMBOLIC)
endforeach()

# Installed programs and libraries find the project's libraries next to them when installed
# under a prefix the dynamic linker does not search; a system prefix (/usr) gets no RPATH.
file(RELATIVE_PATH HX_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
list(FIND CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES ${CMAKE_INSTALL_FULL_LIBDIR} HX_LIBDIR_IS_SYSTEM)
if(HX_LIBDIR_IS_SYSTEM EQUAL -1)
  set(HX_INSTALL_RPATH_PROGRAM "$ORIGIN/${HX_BIN_TO_LIB}")
  set(HX_INSTALL_RPATH_LIBRARY "$ORIGIN")
else()
  set(HX_INSTALL_RPATH_PROGRAM "")
  set(HX_INSTALL_RPATH_LIBRARY "")
endif()
