# Debian packages, one per install component (`cpack -G DEB` in a build configured with the
# "package" preset: Release, prefix /usr, so no RPATH and multiarch library paths):
#   libhxsimulationanalysis3        runtime  the libraries a host loads
#   libhxsimulationanalysis-dev     dev      headers, CMake package, pkg-config, library links
#   libhxsimulationmujoco3          mujoco   the MuJoCo engine behind the simulation interface
#   libhxsimulationhdf5-3           hdf5     the HDF5 writer and reader
#   hxsimulationanalysis-tools      tools    hxrecord, hxinfo, hxmrd, hxrepair, example models and configurations
#   python3-hxsim                   python   the Python package hxsim, hxplot and hxsweep (Architecture all)
# Dependencies on system libraries come from dpkg-shlibdeps; those between the packages are
# exact versions.
set(HX_DEB_MAINTAINER "libhxSimulationAnalysis developers <hxsimulationanalysis@example.org>")
set(HX_DEB_PACKAGES
  runtime libhxsimulationanalysis3 libs
  dev libhxsimulationanalysis-dev libdevel
  mujoco libhxsimulationmujoco3 libs
  hdf5 libhxsimulationhdf5-3 libs
  tools hxsimulationanalysis-tools science
  python python3-hxsim python)

# Every package carries the copyright and the changelog (compressed as Debian wants it).
set(HX_DEB_CHANGELOG ${PROJECT_BINARY_DIR}/debian/changelog.gz)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/debian)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
  OUTPUT_FILE ${HX_DEB_CHANGELOG} COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/debian/changelog)
set(HX_DEB_COMPONENTS "")
while(HX_DEB_PACKAGES)
  list(POP_FRONT HX_DEB_PACKAGES component package section)
  if(component STREQUAL "mujoco" AND NOT TARGET hx_simulation_mujoco)
    continue()
  endif()
  if(component STREQUAL "hdf5" AND NOT TARGET hx_analysis_hdf5)
    continue()
  endif()
  if(component MATCHES "^(tools|python)$" AND NOT HX_BUILD_TOOLS)
    continue()
  endif()
  list(APPEND HX_DEB_COMPONENTS ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright ${HX_DEB_CHANGELOG}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endwhile()

set(CPACK_PACKAGE_NAME hxsimulationanalysis)
set(CPACK_PACKAGE_VENDOR "libhxSimulationAnalysis developers")
set(CPACK_PACKAGE_CONTACT "${HX_DEB_MAINTAINER}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${HX_DEB_COMPONENTS})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${HX_DEB_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
# The project's own libraries, as built, for dpkg-shlibdeps to find the engine's and the tools'
# needs among; the dependencies on their packages are the component dependencies below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/framework ${PROJECT_BINARY_DIR}/simulation ${PROJECT_BINARY_DIR}/simulation/mujoco
  ${PROJECT_BINARY_DIR}/analysis ${PROJECT_BINARY_DIR}/analysis/hdf5)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
# Library packages activate dpkg's ldconfig trigger, as Debian requires. CPack also writes
# maintainer scripts that call ldconfig (lintian warns about them); it has no switch to omit
# them, and empty scripts of our own would only trade that warning for another.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_MUJOCO_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_HDF5_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
"recorder of robot-manipulator simulations - shared libraries
libhxSimulationAnalysis records what happens inside a running simulation of
one or more robot manipulators: joint, Cartesian, force, power and
reach-target quantities, chosen per manipulator, link and end effector. Every
sample is streamed to CSV, XML, MRD (binary), MATLAB and Mathematica files.
.
This package holds the shared libraries a host application loads: the
recorder, the simulation interface it reads and the XML object framework its
configurations are kept in.")
set(CPACK_COMPONENT_DEV_DESCRIPTION
"recorder of robot-manipulator simulations - development files
libhxSimulationAnalysis records what happens inside a running simulation of
one or more robot manipulators and streams every sample to CSV, XML, MRD,
MATLAB and Mathematica files.
.
This package holds the headers, the CMake package
(find_package(hxSimulationAnalysis 3 CONFIG)), the pkg-config files and an
example host application.")
set(CPACK_COMPONENT_MUJOCO_DESCRIPTION
"recorder of robot-manipulator simulations - MuJoCo engine
libhxSimulationMujoco loads a MuJoCo model (MJCF or URDF), finds its
manipulators, links, end effectors, motors and path points, and steps it
behind the simulation interface that libhxSimulationAnalysis records.")
set(CPACK_COMPONENT_HDF5_DESCRIPTION
"recorder of robot-manipulator simulations - HDF5 writer
libhxSimulationHdf5 adds an HDF5 output writer to libhxSimulationAnalysis:
every sample's values as exact float64 in one chunked, extendible dataset,
optionally compressed, with the columns' labels and units as attributes, and
readable while it is written and after a crash (single-writer/multiple-reader
mode). It also reads such files back, and gives configuration readers an
object factory that lets writer lists name the HDF5 writer.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"recorder of robot-manipulator simulations - command-line tools
hxrecord records a MuJoCo scene of robot manipulators with one command into
CSV, XML, MRD, MATLAB, Mathematica and HDF5 files with a manifest that
describes every column; hxinfo summarises a recording in any of its formats;
hxmrd prints the header, labels and samples of an MRD file; hxrepair finishes
the files of a recording that was cut short. Example models and capture
configurations are under /usr/share/hxSimulationAnalysis/examples.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
"recorder of robot-manipulator simulations - Python package
hxsim reads the CSV, XML, MRD, MATLAB, Mathematica and HDF5 (with h5py)
files of a recording into pandas DataFrames (also files cut short, up to
their last whole sample), with the units and column descriptions of
hxrecord's manifest, and summarises them. hxplot draws a display description
from a recording into a PNG, SVG or PDF file with matplotlib. hxsweep runs
many recordings from one sweep file (a grid, cases or random draws of
hxrecord options and model template values) on a local pool of processes, a
Dask cluster or a Slurm job array, resumes an interrupted sweep, and sums up
its runs in one table.")
# Pure Python: no compiled code, the interpreter's packages as dependencies.
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3, python3-numpy, python3-pandas, python3-matplotlib, python3-yaml, python3-jinja2")
# h5py only serves the HDF5 files, which hxrecord writes only when asked to; Dask and Slurm's
# client commands only hxsweep's --dask and --slurm.
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-h5py, python3-distributed, slurm-client")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_MUJOCO_DEPENDS runtime)
set(CPACK_COMPONENT_HDF5_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime mujoco hdf5)
include(CPack)
