# Android build for 32-bit ARM (armeabi-v7a). Finds the NDK through the usual
# environment variables (ANDROID_NDK, then ANDROID_NDK_HOME, then ANDROID_NDK_ROOT) and
# hands over to the NDK's own toolchain file. The API level is the lowest Android
# release the tool supports; raise it only together with docs/android.md.
set(ANDROID_ABI armeabi-v7a CACHE STRING "Android ABI")
set(ANDROID_PLATFORM android-24 CACHE STRING "Lowest supported Android API level")
# The tool and the host library share only a C interface, so each carries its own
# copy of the C++ runtime and nothing else has to be pushed to the device.
set(ANDROID_STL c++_static CACHE STRING "C++ runtime")
set(ANDROID_ARM_NEON ON CACHE BOOL "")

set(kesh_ndk "")
foreach(var IN ITEMS ANDROID_NDK ANDROID_NDK_HOME ANDROID_NDK_ROOT)
  if(NOT kesh_ndk AND DEFINED ENV{${var}} AND EXISTS "$ENV{${var}}/build/cmake/android.toolchain.cmake")
    set(kesh_ndk "$ENV{${var}}")
  endif()
endforeach()
if(NOT kesh_ndk)
  message(FATAL_ERROR "No Android NDK: set ANDROID_NDK (or ANDROID_NDK_HOME / ANDROID_NDK_ROOT) "
                      "to an NDK that has build/cmake/android.toolchain.cmake")
endif()
include("${kesh_ndk}/build/cmake/android.toolchain.cmake")
