# Installation layout, split into three components that become three packages:
#   tools    the programs in bin/, their manual pages and documentation
#   hostlib  the host library, in a private folder of its own (never the system's
#            library folder), so it can never shadow a vendor's libkesh_pattern_25.so
#   dev      the C contract in include/kesh/, a CMake package
#            (find_package(KeshPattern) -> Kesh::pattern) and a pkg-config file
# kesh_player itself is a launcher in bin/: the program proper, without a RUNPATH,
# runs against whatever libkesh_pattern_25.so the system's loader finds, and only
# when there is none against the host library (packaging/kesh_player.in).
include(CMakePackageConfigHelpers)

# The installed programs besides kesh_player; a new program is one more entry here.
set(KESH_INSTALLED_TOOLS kesh_pattern_asm kesh_gen_cases kesh_check kesh_report)
# Debian package names of the components; each gets its copyright and changelog.
set(KESH_PACKAGE_TOOLS kesh-player)
set(KESH_PACKAGE_HOSTLIB libkesh-pattern-host)
set(KESH_PACKAGE_DEV libkesh-pattern-dev)

set(KESH_INSTALL_HOSTLIBDIR ${CMAKE_INSTALL_LIBDIR}/kesh_pattern_host)
set(KESH_INSTALL_PLAYERDIR ${CMAKE_INSTALL_LIBEXECDIR}/kesh_player)
set(KESH_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/KeshPattern)
set(KESH_INSTALL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(KESH_INSTALL_TOOLS_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/${KESH_PACKAGE_TOOLS})
# Programs that use the host library on purpose find it in its private folder,
# wherever the tree is unpacked, without LD_LIBRARY_PATH.
set(KESH_INSTALL_RPATH "$ORIGIN/../${KESH_INSTALL_HOSTLIBDIR}")

foreach(tool IN LISTS KESH_INSTALLED_TOOLS)
  # The second entry is the build tree's library folder (the same path is linked into both).
  set_target_properties(${tool} PROPERTIES INSTALL_RPATH "${KESH_INSTALL_RPATH};$ORIGIN/../lib")
  install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endforeach()

# The installed player proper carries no RUNPATH: a RUNPATH is searched before the
# system's library folders and would let the host library shadow a vendor's.
# In the build tree it finds the host library in lib/ beside its bin/; the
# installed copy has that entry removed.
install(TARGETS kesh_player RUNTIME DESTINATION ${KESH_INSTALL_PLAYERDIR} COMPONENT tools)
install(CODE "file(RPATH_REMOVE FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${KESH_INSTALL_PLAYERDIR}/kesh_player\")"
        COMPONENT tools)
file(RELATIVE_PATH KESH_BIN_TO_PLAYER /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${KESH_INSTALL_PLAYERDIR})
file(RELATIVE_PATH KESH_BIN_TO_HOSTLIB /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${KESH_INSTALL_HOSTLIBDIR})
configure_file(${PROJECT_SOURCE_DIR}/packaging/kesh_player.in
               ${PROJECT_BINARY_DIR}/packaging/kesh_player @ONLY)
install(PROGRAMS ${PROJECT_BINARY_DIR}/packaging/kesh_player
        DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

install(FILES ${KESH_CONTRACT_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kesh COMPONENT dev)

# Consumers write #include <kesh/kesh_pattern.h> and link Kesh::pattern.
set_target_properties(kesh_pattern PROPERTIES EXPORT_NAME pattern)
target_include_directories(kesh_pattern INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(TARGETS kesh_pattern EXPORT KeshPatternTargets
        LIBRARY DESTINATION ${KESH_INSTALL_HOSTLIBDIR} COMPONENT hostlib
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT hostlib)
install(EXPORT KeshPatternTargets NAMESPACE Kesh:: DESTINATION ${KESH_INSTALL_CMAKEDIR} COMPONENT dev)

configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/KeshPatternConfig.cmake.in
    ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfig.cmake
    INSTALL_DESTINATION ${KESH_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/KeshPatternConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfig.cmake
              ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfigVersion.cmake
        DESTINATION ${KESH_INSTALL_CMAKEDIR} COMPONENT dev)

# pkg-config paths are relative to the .pc file, so a tree installed with
# --prefix or unpacked from the archive anywhere stays usable.
file(RELATIVE_PATH KESH_PC_TO_PREFIX /prefix/${KESH_INSTALL_PKGCONFIGDIR} /prefix)
get_target_property(KESH_PC_LIBRARY_NAME kesh_pattern OUTPUT_NAME)
if(NOT KESH_PC_LIBRARY_NAME)
  set(KESH_PC_LIBRARY_NAME kesh_pattern)
endif()
configure_file(${PROJECT_SOURCE_DIR}/packaging/kesh_pattern.pc.in
               ${PROJECT_BINARY_DIR}/packaging/kesh_pattern.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packaging/kesh_pattern.pc
        DESTINATION ${KESH_INSTALL_PKGCONFIGDIR} COMPONENT dev)

# Manual pages and changelogs are installed compressed (gzip -n: no time stamp, so
# two builds of one commit give the same bytes).
set(KESH_GZIPPED "")
function(kesh_gzip source output)
  add_custom_command(OUTPUT ${output} COMMAND gzip -9nc ${source} > ${output}
                     DEPENDS ${source} VERBATIM)
  set(KESH_GZIPPED ${KESH_GZIPPED} ${output} PARENT_SCOPE)
endfunction()

file(GLOB KESH_MANPAGES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.[17])
foreach(page IN LISTS KESH_MANPAGES)
  get_filename_component(name ${page} NAME)
  string(REGEX REPLACE ".*\\." "" section ${name})
  kesh_gzip(${page} ${PROJECT_BINARY_DIR}/man/${name}.gz)
  install(FILES ${PROJECT_BINARY_DIR}/man/${name}.gz
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tools)
endforeach()

kesh_gzip(${PROJECT_SOURCE_DIR}/packaging/changelog ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz)
# Every package carries its licence terms and changelog in its own doc folder, and
# the lintian warnings it keeps, each with its reason, where lintian reads them.
function(kesh_package_docs component package)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright
                ${PROJECT_BINARY_DIR}/packaging/changelog.Debian.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/lintian/${package}
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component})
endfunction()
kesh_package_docs(tools ${KESH_PACKAGE_TOOLS})
kesh_package_docs(hostlib ${KESH_PACKAGE_HOSTLIB})
kesh_package_docs(dev ${KESH_PACKAGE_DEV})
add_custom_target(kesh_gzipped_docs ALL DEPENDS ${KESH_GZIPPED})

# The pages for users of the installed tools; README.md and the Android build guide
# are about the source tree and stay there.
file(GLOB KESH_DOCS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
list(FILTER KESH_DOCS EXCLUDE REGEX "/android\\.md$")
install(FILES ${KESH_DOCS} DESTINATION ${KESH_INSTALL_TOOLS_DOCDIR} COMPONENT tools)
