# Cross build for 32-bit ARM Linux (hard-float EABI) with Debian's cross toolchain
# (g++-arm-linux-gnueabihf). The resulting binaries run here under qemu-user with the
# cross sysroot as its library prefix; see the arm-linux preset.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(KESH_CROSS_TRIPLE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${KESH_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${KESH_CROSS_TRIPLE}-g++)
set(CMAKE_ASM_COMPILER ${KESH_CROSS_TRIPLE}-gcc)

# Debian's multiarch sysroot for the cross toolchain.
set(KESH_CROSS_SYSROOT /usr/${KESH_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH ${KESH_CROSS_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Target libraries that the cross sysroot lacks (TinyXML-2, for kesh_report), from
# Debian's armhf packages unpacked by scripts/fetch-target-packages.sh (.ci/arm.sh runs it).
get_filename_component(KESH_SOURCE_ROOT ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(KESH_TARGET_PACKAGES ${KESH_SOURCE_ROOT}/build/target-packages-armhf CACHE PATH
    "Folder holding the target's library packages, unpacked")

# Lets ctest, gtest_discover_tests and build-time generators run target binaries.
if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
  find_program(KESH_QEMU_ARM qemu-arm)
  if(KESH_QEMU_ARM)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${KESH_QEMU_ARM};-L;${KESH_CROSS_SYSROOT})
  endif()
endif()

# ARMv7-A with NEON, as the device has: the kernels' SIMD target is NEON.
set(KESH_ARM_FLAGS "-march=armv7-a -mfpu=neon -mfloat-abi=hard")
set(CMAKE_C_FLAGS_INIT "${KESH_ARM_FLAGS}")
set(CMAKE_ASM_FLAGS_INIT "${KESH_ARM_FLAGS}")
# GCC notes on every std::vector iterator that its ARM argument passing changed in
# GCC 7.1; that matters only when linking with objects built by GCC 6 or older.
set(CMAKE_CXX_FLAGS_INIT "${KESH_ARM_FLAGS} -Wno-psabi")
