# CPack: three Debian packages (tools, host library, development files), each with a
# -dbgsym package holding its separated debug symbols when the build has them, and a
# .tar.gz of the whole installed tree. scripts/build-packages.sh configures a build
# for it; cpack in that build folder or cmake --build <dir> --target package runs it.
set(CPACK_PACKAGE_NAME ${KESH_PACKAGE_TOOLS})
set(CPACK_PACKAGE_VENDOR "KESH")
set(CPACK_PACKAGE_CONTACT "KESH tools team <kesh-tools@users.noreply.github.com>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
# The Debian packages install below /usr; the archive holds the tree itself.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/cpack_per_generator.cmake)
set(CPACK_STRIP_FILES ON)  # the archive; see packaging/cpack_per_generator.cmake
set(CPACK_COMPONENTS_ALL tools hostlib dev)

# Debian's names for the architecture; they end every package file name.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  set(KESH_PACKAGE_ARCH amd64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(KESH_PACKAGE_ARCH arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
  set(KESH_PACKAGE_ARCH armhf)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
  set(KESH_PACKAGE_ARCH i386)
else()
  set(KESH_PACKAGE_ARCH ${CMAKE_SYSTEM_PROCESSOR})
endif()
set(KESH_PACKAGE_RELEASE 1)
set(CPACK_PACKAGE_FILE_NAME
    ${CPACK_PACKAGE_NAME}_${PROJECT_VERSION}-${KESH_PACKAGE_RELEASE}_${KESH_PACKAGE_ARCH})
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KESH_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${KESH_PACKAGE_ARCH})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${KESH_PACKAGE_TOOLS})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_COMPONENT_TOOLS_DEPENDS hostlib)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"test tool for the KESH neural accelerator
kesh_player plays pattern binaries on the KESH accelerator through the KESH
pattern library, compares every output with golden data and reports the
result through its output and exit status. It runs against the
libkesh_pattern_25.so of the system (a vendor's, on a device) and against the
host library only when the system has none.
.
The package also holds the pattern assembler and disassembler
(kesh_pattern_asm) and the built-in case generator (kesh_gen_cases).")

set(CPACK_DEBIAN_HOSTLIB_PACKAGE_NAME ${KESH_PACKAGE_HOSTLIB})
set(CPACK_DEBIAN_HOSTLIB_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_HOSTLIB_DESCRIPTION
"host implementation of the KESH pattern library
A software accelerator with the C interface, soname and symbol version of the
device's libkesh_pattern_25.so, so that the KESH tools and programs linked
against the library run on any Linux machine.
.
The library is installed in a private folder, never in the system's library
folders: it cannot shadow a vendor's library of the same soname.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${KESH_PACKAGE_DEV})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS hostlib)
set(CPACK_COMPONENT_DEV_DESCRIPTION
"development files for the KESH pattern library
The C header <kesh/kesh_pattern.h>, a CMake package (find_package(KeshPattern),
target Kesh::pattern) and a pkg-config file (kesh_pattern) for programs that
drive the KESH accelerator through libkesh_pattern_25.so.")

if(CMAKE_CROSSCOMPILING)
  # dpkg-shlibdeps cannot read the target's library database; the libraries the
  # tree needs from the system are the C and C++ runtimes, and the XML library of
  # kesh_report.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libstdc++6, libgcc-s1")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${CPACK_DEBIAN_PACKAGE_DEPENDS}, libtinyxml2-9")
  if(CMAKE_OBJCOPY)
    set(CPACK_OBJCOPY_EXECUTABLE ${CMAKE_OBJCOPY})
  endif()
  if(CMAKE_READELF)
    set(CPACK_READELF_EXECUTABLE ${CMAKE_READELF})
  endif()
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  # The host library lives in its own package: the tools' dependency on it is
  # declared above, dpkg-shlibdeps only needs to see it.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()

include(CPack)
