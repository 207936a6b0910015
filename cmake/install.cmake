# Installation layout: the tools in bin/, the host library in lib/, the C contract in
# include/kesh/, a CMake package (find_package(KeshPattern) -> Kesh::pattern) and a
# pkg-config file for programs that link the host library, documentation and manual
# pages in share/.
include(CMakePackageConfigHelpers)

set(KESH_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/KeshPattern)
set(KESH_INSTALL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# The installed executables find the host library beside them, wherever the tree is
# unpacked, without LD_LIBRARY_PATH.
set(KESH_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

foreach(tool IN ITEMS kesh_player kesh_pattern_asm kesh_gen_cases)
  get_target_property(tool_rpath ${tool} INSTALL_RPATH)
  if(NOT tool_rpath)
    set_target_properties(${tool} PROPERTIES INSTALL_RPATH "${KESH_INSTALL_RPATH}")
  endif()
  install(TARGETS ${tool} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()

install(FILES ${KESH_CONTRACT_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kesh)

# Consumers write #include <kesh/kesh_pattern.h> and link Kesh::pattern.
set_target_properties(kesh_pattern PROPERTIES EXPORT_NAME pattern)
target_include_directories(kesh_pattern INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
install(TARGETS kesh_pattern EXPORT KeshPatternTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT KeshPatternTargets NAMESPACE Kesh:: DESTINATION ${KESH_INSTALL_CMAKEDIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/packaging/KeshPatternConfig.cmake.in
    ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfig.cmake
    INSTALL_DESTINATION ${KESH_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/packaging/KeshPatternConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfig.cmake
              ${PROJECT_BINARY_DIR}/packaging/KeshPatternConfigVersion.cmake
        DESTINATION ${KESH_INSTALL_CMAKEDIR})

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
        DESTINATION ${KESH_INSTALL_PKGCONFIGDIR})

file(GLOB KESH_DOCS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${KESH_DOCS} OPTIONAL
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
file(GLOB KESH_MAN1 CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.1)
file(GLOB KESH_MAN7 CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.7)
install(FILES ${KESH_MAN1} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${KESH_MAN7} DESTINATION ${CMAKE_INSTALL_MANDIR}/man7)
