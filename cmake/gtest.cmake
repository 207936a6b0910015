# GoogleTest for cross builds. The distribution's prebuilt test libraries exist only
# for the build machine, so when cross-compiling GoogleTest is compiled from its
# source tree (Debian's googletest package) as part of this build, and a later
# find_package(GTest) is redirected to those targets (GTest::gtest, GTest::gtest_main,
# GTest::gmock, GTest::gmock_main). Native builds are left to the usual search.
include_guard(GLOBAL)

if(NOT CMAKE_CROSSCOMPILING OR (DEFINED KESH_BUILD_TESTS AND NOT KESH_BUILD_TESTS))
  return()
endif()

set(KESH_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH
    "GoogleTest source tree compiled into cross builds")
if(NOT EXISTS ${KESH_GTEST_SOURCE_DIR}/CMakeLists.txt)
  message(FATAL_ERROR "Cross build with tests needs the GoogleTest sources in "
                      "${KESH_GTEST_SOURCE_DIR} (apt-get install googletest), "
                      "or -DKESH_BUILD_TESTS=OFF")
endif()

set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
add_subdirectory(${KESH_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/_deps/googletest EXCLUDE_FROM_ALL)

# find_package() consults this directory before any Find module or search path.
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/gtest-config.cmake
     "# Targets come from the GoogleTest source tree built in this project.\n")
file(STRINGS ${KESH_GTEST_SOURCE_DIR}/CMakeLists.txt kesh_gtest_version_line
     REGEX "set\\(GOOGLETEST_VERSION [0-9.]+\\)")
string(REGEX MATCH "[0-9.]+" kesh_gtest_version "${kesh_gtest_version_line}")
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/gtest-config-version.cmake
     "set(PACKAGE_VERSION ${kesh_gtest_version})\n"
     "set(PACKAGE_VERSION_COMPATIBLE TRUE)\n")
