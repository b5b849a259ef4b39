# Builds for the board: ARMv5TE without a floating-point unit, Debian's `armel`. Tests run under qemu's
# emulation of the board's processor. scripts/sysroot makes the sysroot; another one, with a board's own Qt
# in it, is named by -DIRMCORE_SYSROOT=DIRECTORY.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv5tejl)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(IRMCORE_CROSS arm-linux-gnueabi- CACHE STRING "What the names of the cross compilers begin with, a path included")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES IRMCORE_CROSS)
set(CMAKE_C_COMPILER ${IRMCORE_CROSS}gcc)
set(CMAKE_CXX_COMPILER ${IRMCORE_CROSS}g++)
foreach(language C CXX)
  set(CMAKE_${language}_FLAGS_INIT "-march=armv5te -mfloat-abi=soft -Wno-psabi")
endforeach()

set(IRMCORE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-armel CACHE PATH "The board's libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES IRMCORE_SYSROOT)
get_filename_component(CMAKE_SYSROOT ${IRMCORE_SYSROOT} ABSOLUTE)
if(NOT EXISTS ${CMAKE_SYSROOT}/usr/include)
  message(FATAL_ERROR "no sysroot ${CMAKE_SYSROOT}: scripts/sysroot makes one")
endif()
set(CMAKE_FIND_ROOT_PATH ${CMAKE_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(what LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${what} ONLY)
endforeach()

# Qt's own tools run on this machine.
set(QT_HOST_PATH /usr CACHE PATH "Where this machine's Qt is")
set(QT_HOST_PATH_CMAKE_DIR ${QT_HOST_PATH}/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake
    CACHE PATH "Where its CMake packages are")

# Without an emulator the build is the same; its tests cannot run here then.
find_program(IRMCORE_QEMU NAMES qemu-arm-static qemu-arm)
if(IRMCORE_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${IRMCORE_QEMU} -cpu arm926 -L ${CMAKE_SYSROOT})
endif()
