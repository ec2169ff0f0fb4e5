# hx_add_library(NAME ALIAS <hx::name> OUTPUT_NAME <file name> [STATIC]
#     SOURCES <files...> PUBLIC <targets...> PRIVATE <targets...>)
# One library of the project, shared unless STATIC: its alias, its public include root (the
# build tree's include links, or <prefix>/include/hxSimulationAnalysis once installed), the
# project's flags kept private, and for shared libraries the ABI version. Which libraries are
# installed is HxInstall.cmake's business.
function(hx_add_library name)
  cmake_parse_arguments(ARG "STATIC" "ALIAS;OUTPUT_NAME" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  set(kind SHARED)
  if(ARG_STATIC)
    set(kind STATIC)
  endif()
  add_library(${name} ${kind} ${ARG_SOURCES})
  add_library(${ARG_ALIAS} ALIAS ${name})
  string(REPLACE "hx::" "" export_name ${ARG_ALIAS})
  set_target_properties(${name} PROPERTIES OUTPUT_NAME ${ARG_OUTPUT_NAME} EXPORT_NAME ${export_name})
  if(kind STREQUAL SHARED)
    set_target_properties(${name} PROPERTIES
      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
      INSTALL_RPATH "${HX_INSTALL_RPATH_LIBRARY}")
  endif()
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${HX_BUILD_INCLUDE_DIR}> $<INSTALL_INTERFACE:${HX_INSTALL_INCLUDE_DIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE} $<BUILD_INTERFACE:hx::options>)
endfunction()

# hx_public_headers(<var>): the headers a host includes, absolute paths: every header of
# framework/, simulation/ (not the scripted test double) and analysis/, the MuJoCo engine's one
# header when the engine is built and those of the HDF5 library (analysis/hdf5) when it is.
# They are what gets installed and what the API reference documents.
function(hx_public_headers var)
  file(GLOB framework ${PROJECT_SOURCE_DIR}/framework/*.h)
  # The reader's own parts, which name libxml2's types, stay out of the interface.
  list(FILTER framework EXCLUDE REGEX "/(HxLibxmlErrors|HxXmlAttributeScan)\\.h$")
  file(GLOB simulation ${PROJECT_SOURCE_DIR}/simulation/*.h)
  file(GLOB_RECURSE analysis ${PROJECT_SOURCE_DIR}/analysis/*.h)
  list(FILTER analysis EXCLUDE REGEX "/analysis/hdf5/")
  set(headers ${framework} ${simulation} ${analysis})
  if(TARGET hx::mujoco)
    list(APPEND headers ${PROJECT_SOURCE_DIR}/simulation/mujoco/HxMujocoSimulation.h)
  endif()
  # The HDF5 library's headers, when it is built; its HDF5 support header names HDF5's types.
  if(TARGET hx::hdf5)
    file(GLOB hdf5 ${PROJECT_SOURCE_DIR}/analysis/hdf5/*.h)
    list(FILTER hdf5 EXCLUDE REGEX "/HxHdf5Support\\.h$")
    list(APPEND headers ${hdf5})
  endif()
  list(SORT headers)
  set(${var} ${headers} PARENT_SCOPE)
endfunction()
