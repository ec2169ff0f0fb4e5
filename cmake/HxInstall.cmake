# What `cmake --install` puts under the prefix, by component:
#   runtime  the three shared libraries a host loads
#   mujoco   the MuJoCo engine's shared library
#   hdf5     the HDF5 writer's shared library
#   dev      headers under include/hxSimulationAnalysis, the unversioned library links, the CMake
#            package (find_package(hxSimulationAnalysis 3 CONFIG)), pkg-config files, examples/host
#   tools    hxrecord, hxmrd and hxrepair, with the example models and configurations under share/
include(CMakePackageConfigHelpers)
set(HX_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/hxSimulationAnalysis)
set(HX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(HX_SHARE_DIR ${CMAKE_INSTALL_DATADIR}/hxSimulationAnalysis)

# Libraries and their exported targets; the engine's and the HDF5 writer's targets go to files of
# their own, each loaded by the package only where its library is installed.
install(TARGETS hx_framework hx_simulation hx_analysis EXPORT hxSimulationAnalysisTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(EXPORT hxSimulationAnalysisTargets NAMESPACE hx::
  DESTINATION ${HX_CMAKE_PACKAGE_DIR} COMPONENT dev)
# An optional library: its own component, its exported targets in a file of their own. Sets
# `file_variable` to the installed library's file name, empty when the target is not built.
function(hx_install_optional_library target export component output_name file_variable)
  set(file "")
  if(TARGET ${target})
    install(TARGETS ${target} EXPORT ${export}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT dev)
    install(EXPORT ${export} NAMESPACE hx:: DESTINATION ${HX_CMAKE_PACKAGE_DIR} COMPONENT dev)
    set(file ${CMAKE_SHARED_LIBRARY_PREFIX}${output_name}${CMAKE_SHARED_LIBRARY_SUFFIX}.${PROJECT_VERSION})
  endif()
  set(${file_variable} "${file}" PARENT_SCOPE)
endfunction()
hx_install_optional_library(hx_simulation_mujoco hxSimulationAnalysisMujocoTargets mujoco hxSimulationMujoco
  HX_MUJOCO_LIBRARY_FILE)
hx_install_optional_library(hx_analysis_hdf5 hxSimulationAnalysisHdf5Targets hdf5 hxSimulationHdf5
  HX_HDF5_LIBRARY_FILE)

# Public headers, under one include root, laid out as the project includes them.
hx_public_headers(HX_PUBLIC_HEADERS)
foreach(header ${HX_PUBLIC_HEADERS})
  file(RELATIVE_PATH relative ${PROJECT_SOURCE_DIR} ${header})
  get_filename_component(directory ${relative} DIRECTORY)
  install(FILES ${header} DESTINATION ${HX_INSTALL_INCLUDE_DIR}/${directory} COMPONENT dev)
endforeach()

# CMake package.
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/hxSimulationAnalysisConfig.cmake.in
  ${PROJECT_BINARY_DIR}/hxSimulationAnalysisConfig.cmake
  INSTALL_DESTINATION ${HX_CMAKE_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/hxSimulationAnalysisConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/hxSimulationAnalysisConfig.cmake
  ${PROJECT_BINARY_DIR}/hxSimulationAnalysisConfigVersion.cmake
  DESTINATION ${HX_CMAKE_PACKAGE_DIR} COMPONENT dev)

# pkg-config files, one per library.
file(RELATIVE_PATH HX_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" HX_PC_TO_PREFIX "${HX_PC_TO_PREFIX}")
function(hx_pkg_config name library requires description)
  set(HX_PC_NAME ${name})
  set(HX_PC_LIBRARY ${library})
  set(HX_PC_REQUIRES "${requires}")
  set(HX_PC_DESCRIPTION "${description}")
  configure_file(${PROJECT_SOURCE_DIR}/cmake/hx.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc DESTINATION ${HX_PKGCONFIG_DIR} COMPONENT dev)
endfunction()
hx_pkg_config(hxXmlFramework hxXmlFramework ""
  "XML object framework: serialisable objects, reader and writer")
hx_pkg_config(hxSimulation hxSimulation "hxXmlFramework = ${PROJECT_VERSION}"
  "Simulation interface of robot manipulators: state, manipulator and math types")
hx_pkg_config(hxSimulationAnalysis hxSimulationAnalysis
  "hxSimulation = ${PROJECT_VERSION}, hxXmlFramework = ${PROJECT_VERSION}"
  "Records the quantities of a robot-manipulator simulation to CSV, XML, MRD, MATLAB and Mathematica files")
if(TARGET hx_simulation_mujoco)
  hx_pkg_config(hxSimulationMujoco hxSimulationMujoco "hxSimulation = ${PROJECT_VERSION}"
    "MuJoCo engine behind the simulation interface")
endif()
if(TARGET hx_analysis_hdf5)
  hx_pkg_config(hxSimulationHdf5 hxSimulationHdf5 "hxSimulationAnalysis = ${PROJECT_VERSION}"
    "HDF5 writer and reader of libhxSimulationAnalysis recordings")
endif()

# The stand-alone host example, to copy.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/host DESTINATION ${HX_SHARE_DIR}/examples COMPONENT dev)

# Tools and the files they are used with.
if(HX_BUILD_TOOLS)
  install(TARGETS ${HX_TOOLS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/models ${PROJECT_SOURCE_DIR}/examples/config
    ${PROJECT_SOURCE_DIR}/examples/sweep DESTINATION ${HX_SHARE_DIR}/examples COMPONENT tools)
endif()
