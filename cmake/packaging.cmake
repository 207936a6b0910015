# CPack: a Debian package and a .tar.gz of the installed tree (cpack in the build
# folder, or cmake --build <dir> --target package).
set(CPACK_PACKAGE_NAME kesh-player)
set(CPACK_PACKAGE_VENDOR "KESH")
set(CPACK_PACKAGE_CONTACT "KESH tools team <kesh-tools@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Test tool for the KESH neural accelerator, with a host pattern library")
set(CPACK_PACKAGE_DESCRIPTION_FILE ${PROJECT_SOURCE_DIR}/packaging/description.txt)
set(CPACK_GENERATOR DEB TGZ)
# The Debian package installs below /usr; the archive holds the tree itself.
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/packaging/cpack_per_generator.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(CMAKE_CROSSCOMPILING)
  # dpkg-shlibdeps cannot read the target's library database; the libraries the
  # tree needs from the system are the C and C++ runtimes.
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
  endif()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6, libstdc++6, libgcc-s1")
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
