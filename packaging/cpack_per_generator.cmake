# Read by cpack once per generator.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  # The Debian generator strips the binaries itself after copying their debug
  # symbols into the -dbgsym packages; stripping at install would leave none.
  set(CPACK_STRIP_FILES OFF)
else()
  set(CPACK_PACKAGING_INSTALL_PREFIX /)
endif()
